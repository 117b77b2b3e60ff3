#include "plan/rules.h"

#include <algorithm>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>

namespace velmora {

namespace {

/// Several entries of the plan may be one table of the database: what bears one name there is one column.
class PlainTypes {
public:
    PlainTypes(const std::vector<PathFacts>& facts, const ConversionSettings& settings, MappingPlan& plan)
        : facts_(facts), settings_(settings), plan_(plan), seen_(plan.columns.size())
    {
    }

    void Choose()
    {
        for (PathId path = 0; path < std::min(facts_.size(), plan_.paths.size()); ++path)
            LookAt(plan_.paths[path], facts_[path]);
        JoinTables();
        for (const PlannedTable& table : plan_.tables)
            for (ColumnNumber i = table.firstColumn; i < table.endOfMade; ++i)
                ChooseType(table, plan_.columns[i]);
    }

private:
    void LookAt(const PathPlan& path, const PathFacts& facts)
    {
        for (const ValuePlace& place : {path.outerText, path.ownText})
            if (place.column != kNoColumn)
                seen_[place.column].Add(facts.texts);
        for (const AttributePlan& attribute : plan_.AttributesOf(path)) {
            const auto found = std::ranges::find(facts.attributes, attribute.name, &AttributeFacts::name);
            if (found == facts.attributes.end() || attribute.place.column == kNoColumn)
                continue;
            ValuesSeen& seen = seen_[attribute.place.column];
            seen.Add(found->values);
            if (found->hasBlank) // which is kept as it is
                seen.forms |= value_forms::kOther;
        }
    }

    void JoinTables()
    {
        for (const PlannedTable& table : plan_.tables) {
            records_[table.name] += table.path == 0 ? 0 : facts_[table.path].count;
            for (ColumnNumber i = table.firstColumn; i < table.endOfMade; ++i)
                columns_[{table.name, plan_.columns[i].name}].Add(seen_[i]);
        }
    }

    /// A column that bears a key's name is taken for one when it holds numbers.
    void ChooseType(const PlannedTable& table, PlannedColumn& column) const
    {
        const bool mayBeKey = column.name == settings_.strKeyPrimary || column.name == settings_.strKeyForeign;
        if (column.type == ColumnType::Text && !mayBeKey)
            column.type = columns_.at({table.name, column.name}).NarrowestType(records_.at(table.name));
    }

    const std::vector<PathFacts>& facts_;
    const ConversionSettings& settings_;
    MappingPlan& plan_;
    std::vector<ValuesSeen> seen_; ///< by ColumnNumber
    std::unordered_map<std::string, std::int64_t> records_;
    std::map<std::pair<std::string, std::string>, ValuesSeen> columns_; ///< by names of table and column
};

} // namespace

void ChoosePlainTypes(const std::vector<PathFacts>& facts, const ConversionSettings& settings, MappingPlan& plan)
{
    PlainTypes(facts, settings, plan).Choose();
}

} // namespace velmora
