#include "plan/column_layout.h"

#include <utility>

namespace velmora {

namespace {

using Kind = ColumnOrigin::Kind;

std::string OriginKey(const ColumnOrigin& origin)
{
    return std::to_string(static_cast<int>(origin.kind)).append(" ").append(origin.name);
}

} // namespace

void ColumnLayout::AddKnown(const KnownTable& table, const NameRules& rules)
{
    if (parts_.back().known != nullptr)
        parts_.emplace_back();
    Part& part = parts_.back();
    part.known = &table;
    for (const KnownColumn& column : table.columns) {
        if (column.origin)
            byOrigin_.emplace(OriginKey(*column.origin), Found{parts_.size() - 1, &column});
        else if (!table.origin)
            byName_.emplace(rules.key(column.name), Found{parts_.size() - 1, &column});
        const bool isKey = column.origin && (column.origin->kind == Kind::Key || column.origin->kind == Kind::Parent ||
                                             column.origin->kind == Kind::Master);
        part.count += isKey ? 0 : 1;
    }
}

std::optional<ColumnLayout::Position> ColumnLayout::PlaceKnown(const ColumnOrigin& origin, const std::string& nameKey,
                                                               PlannedColumn column)
{
    const auto known = byOrigin_.find(OriginKey(origin));
    if (known != byOrigin_.end())
        return Put(known->second, std::move(column), std::nullopt);
    const auto named = byName_.find(nameKey);
    if (named == byName_.end())
        return std::nullopt;
    const Found found = named->second;
    byName_.erase(named); // for the first that comes
    return Put(found, std::move(column), origin);
}

ColumnLayout::Position ColumnLayout::PlaceNew(PlannedColumn column)
{
    if (parts_.back().count >= maxColumns_)
        parts_.emplace_back();
    Part& part = parts_.back();
    ++part.count;
    part.columns.push_back(std::move(column));
    return {parts_.size() - 1, part.columns.size() - 1};
}

ColumnLayout::Position ColumnLayout::Put(const Found& found, PlannedColumn column, std::optional<ColumnOrigin> told)
{
    column.name = found.column->name;
    column.told = std::move(told);
    const auto overflow = byOrigin_.find(OriginKey({.kind = Kind::Overflow, .name = column.name}));
    if (overflow != byOrigin_.end() && overflow->second.part == found.part)
        column.overflow = overflow->second.column->name;
    else if (!found.column->takesText)
        column.overflow = names_.Take(column.name + "_text");
    Part& part = parts_[found.part];
    part.columns.push_back(std::move(column));
    return {found.part, part.columns.size() - 1};
}

} // namespace velmora
