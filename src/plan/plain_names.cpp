#include "plan/plain_names.h"

#include "platform/utf8.h"

#include <algorithm>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace velmora {

namespace {

constexpr std::int32_t kFirstTableNo = 10;

/// Does the entry stand for a table of its own name? Every other is a column of the nearest table above it.
bool IsNamedTable(const ElementInfo& info, const ConversionSettings& settings)
{
    return info.lngMaxChildren >= 1 || info.lngMaxTwins >= 1 ||
           (settings.blImportAttributes && info.lngAttributes >= 1);
}

std::string_view WithoutNamespacePrefix(std::string_view name)
{
    const std::size_t colon = name.find(':');
    return colon == name.npos ? name : TrimWhiteSpace(name.substr(colon + 1));
}

/// All tables of one name share the number of the first.
void ShareTables(StructureModel& model, const ConversionSettings& settings)
{
    std::unordered_map<std::string, std::size_t> firstOfName;
    for (std::size_t i = 1; i < model.UpperBound(); ++i) {
        ElementInfo& entry = model.Element(i);
        if (!IsNamedTable(entry, settings))
            continue;
        const auto [first, isNew] = firstOfName.try_emplace(entry.strName, i);
        if (isNew) {
            entry.lngTableNo = static_cast<std::int32_t>(i) + kFirstTableNo;
            continue;
        }
        ElementInfo& shared = model.Element(first->second);
        shared.blSharedTable = true;
        entry.blSharedTable = true;
        entry.lngTableNo = shared.lngTableNo;
    }
}

/// Each entry in turn renames those behind it that bear its name. A name made here may be one that the document has as
/// well: what then meets is told apart by a second suffix, when the turn of the first of them comes.
void NumberTables(StructureModel& model, const ConversionSettings& settings)
{
    std::unordered_map<std::string, std::vector<std::size_t>> entriesOfName; // in ascending order
    entriesOfName.reserve(model.UpperBound());
    for (std::size_t i = 1; i < model.UpperBound(); ++i) {
        if (IsNamedTable(model.Element(i), settings))
            entriesOfName[model.Element(i).strName].push_back(i);
    }
    for (std::size_t i = 1; i < model.UpperBound(); ++i) {
        ElementInfo& entry = model.Element(i);
        if (!IsNamedTable(entry, settings))
            continue;
        entry.lngTableNo = static_cast<std::int32_t>(i) + kFirstTableNo;
        // Those before it have had their turn, so nobody asks for this name's entries again.
        const auto sameName = entriesOfName.extract(entry.strName);
        if (sameName.empty())
            continue;
        const std::string& name = sameName.key();
        int counter = 1;
        for (const std::size_t j : sameName.mapped()) {
            if (j <= i)
                continue;
            ElementInfo& other = model.Element(j);
            entry.strName = name + "_L1";
            other.strName = name + "_L" + std::to_string(++counter);
            std::vector<std::size_t>& renamed = entriesOfName[other.strName];
            renamed.insert(std::lower_bound(renamed.begin(), renamed.end(), j), j);
        }
    }
}

} // namespace

void ResolveTableNames(StructureModel& model, const ConversionSettings& settings)
{
    if (settings.blOneTablePerElement)
        ShareTables(model, settings);
    else
        NumberTables(model, settings);
}

std::string MappedName(std::string_view name, const ConversionSettings& settings, const TagMap& map)
{
    const std::string_view tag = WithoutNamespacePrefix(name);
    std::string result(settings.blEnableTagMapping ? map.Lookup(tag) : tag);
    std::replace(result.begin(), result.end(), '.', '_');
    return result;
}

std::string RelationName(std::string_view name)
{
    std::string relation = std::string(WithoutNamespacePrefix(name)).append("_LINK");
    std::replace(relation.begin(), relation.end(), '.', '_'); // like a table it can have no "." in its name
    return relation;
}

std::vector<std::string> NamesToMap(const StructureModel& model)
{
    std::set<std::string> names;
    for (std::size_t i = 1; i <= model.UpperBound(); ++i)
        names.emplace(WithoutNamespacePrefix(model.Element(i).strName));
    return {names.begin(), names.end()};
}

} // namespace velmora
