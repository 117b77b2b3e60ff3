#include "jet/catalog/names.h"

#include "jet/base/error.h"
#include "jet/base/text_codec.h"
#include "jet/index/index_key.h"

#include <algorithm>

namespace jet {

namespace {

/// Each of them has a meaning in the expressions in which Access lets names stand.
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

std::string ValidName(const Format& format, std::string_view name, std::size_t maxUnits)
{
    std::string valid;
    std::size_t units = 0;
    while (!name.empty()) {
        std::size_t size = 1;
        // A character whole, with all of its bytes: half of one would be no text.
        while (size < name.size() && (static_cast<unsigned char>(name[size]) & 0xC0) == 0x80)
            ++size;
        const std::string_view character = name.substr(0, size);
        name.remove_prefix(size);
        Bytes encoded;
        const bool isStorable = format.version != JetVersion::Jet3 || AppendCp1252(encoded, character) == 0;
        const bool isAllowed = isStorable && !IsForbidden(character.front()) && (character != " " || !valid.empty());
        const std::size_t taken = isAllowed ? Utf16Length(character) : 1;
        if (units + taken > maxUnits)
            break;
        valid += isAllowed ? character : "_";
        units += taken;
    }
    return valid.empty() ? "_" : valid;
}

} // namespace jet
