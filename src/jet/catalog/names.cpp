#include "jet/catalog/names.h"

#include "jet/base/error.h"
#include "jet/base/text_codec.h"
#include "jet/index/index_key.h"

#include <algorithm>

namespace jet {

namespace {

bool IsForbidden(char c)
{
    return static_cast<unsigned char>(c) < 0x20 || std::string_view(".![]`").find(c) != std::string_view::npos;
}

std::string_view Objection(const Format& format, std::string_view name)
{
    if (name.empty())
        return "It is empty.";
    if (name.front() == ' ')
        return "It begins with a blank.";
    if (std::ranges::any_of(name, IsForbidden))
        return "It holds one of the characters . ! [ ] ` or a control character.";
    if (Utf16Length(name) > kMaxNameUnits)
        return "It has more than 64 characters.";
    if (Bytes encoded; format.version == JetVersion::Jet3 && AppendCp1252(encoded, name) != 0)
        return "It holds a character that Access 97 cannot store.";
    return {};
}

} // namespace

std::string NameKey(const Format& format, std::string_view name)
{
    const Bytes key = TextKey(format, name);
    return {key.begin(), key.end()};
}

void CheckName(const Format& format, std::string_view name)
{
    if (const std::string_view objection = Objection(format, name); !objection.empty())
        throw Error(ErrorNumber::InvalidName, {name}, objection);
}

void IndexNames::Note(const TableDef& def)
{
    const PageNumber table = def.pages.front();
    Forget(table);
    std::vector<std::string>& keys = keysOf_[table];
    for (const LogicalIndex& index : def.logicalIndexes) {
        keys.push_back(NameKey(*format_, index.name));
        tables_[keys.back()].insert(table);
    }
}

void IndexNames::Forget(PageNumber table)
{
    const auto known = keysOf_.find(table);
    if (known == keysOf_.end())
        return;
    for (const std::string& key : known->second) {
        const auto tables = tables_.find(key);
        tables->second.erase(table);
        if (tables->second.empty())
            tables_.erase(tables);
    }
    keysOf_.erase(known);
}

std::vector<PageNumber> IndexNames::TablesWith(std::string_view name) const
{
    const auto found = tables_.find(NameKey(*format_, name));
    return found == tables_.end() ? std::vector<PageNumber>() : std::vector(found->second.begin(), found->second.end());
}

} // namespace jet
