#include "jet/base/error.h"
#include "jet/table/index_build.h"
#include "jet/table/row_codec.h"
#include "jet/table/table_parts.h"

#include <algorithm>

namespace jet {

namespace {

RealIndex DesignRealIndex(const TableDef& def, const IndexSpec& spec, std::string_view table)
{
    if (spec.columns.size() > kMaxIndexColumns)
        throw Error(ErrorNumber::TooManyIndexFields);
    RealIndex index;
    for (const auto& [name, order] : spec.columns) {
        const std::optional<std::size_t> position = def.ColumnIndex(name);
        if (!position)
            throw Error(ErrorNumber::NoSuchField, {name, table});
        const Column& column = def.columns[*position];
        // Jet 3 cannot index a memo, and in Jet 4 only its first 255 characters would count: two long texts that differ
        // behind them would be duplicates.
        if (IsLongValue(column.type))
            throw Error(ErrorNumber::WrongType, {}, "Field '" + column.name + "' is a memo and cannot be indexed.");
        const bool twice = std::any_of(index.columns.begin(), index.columns.end(),
                                       [&](const IndexColumn& part) { return part.column == column.number; });
        if (twice)
            throw Error(ErrorNumber::FieldDefinedTwice, {name});
        index.columns.push_back({column.number, order});
    }
    if (index.columns.empty())
        throw Error(ErrorNumber::SyntaxErrorInCreateIndex);
    if (spec.primary)
        index.flags = index_flags::kUnique | index_flags::kRequired;
    else if (spec.unique)
        index.flags = index_flags::kUnique;
    return index;
}

/// The real index on exactly `columns`, ascending; one that is unique when that is wanted.
/// The same columns in another order, or descending, would sort otherwise, and a look-up by the relation's key would
/// not find what it looks for.
std::optional<std::uint32_t> RealIndexOn(const TableDef& def, const std::vector<std::uint16_t>& columns, bool unique)
{
    for (std::size_t i = 0; i < def.realIndexes.size(); ++i) {
        const RealIndex& index = def.realIndexes[i];
        const bool same = std::equal(index.columns.begin(), index.columns.end(), columns.begin(), columns.end(),
                                     [](const IndexColumn& part, std::uint16_t number) {
                                         return part.column == number && part.order == SortOrder::Ascending;
                                     });
        if (same && (index.IsUnique() || !unique))
            return static_cast<std::uint32_t>(i);
    }
    return std::nullopt;
}

} // namespace

/// Adds a logical index; its tree is planted anew when `wanted` is given, else `entry` names the one that it shares.
void Table::AddIndex(LogicalIndex entry, const RealIndex* wanted)
{
    if (def_.logicalIndexes.size() >= kMaxIndexes)
        throw Error(ErrorNumber::TooManyIndexes);
    TableDef def = def_;
    if (wanted != nullptr) {
        IndexBuild build(pager_->System(), KeyPlan(def_, *wanted));
        Record record;
        for (std::optional<RowId> row = NextRow(std::nullopt); row; row = NextRow(row)) {
            ReadRecord(*pager_, def_, parts_->rows.Find(*row), build.Plan().Columns(), record);
            build.Add(record, *row);
        }
        build.Sort();
        // At the end, since logical indexes name trees by their place.
        entry.realIndex = static_cast<std::uint32_t>(def.realIndexes.size());
        def.realIndexes.push_back(PlantTree(*pager_, def_, *wanted, build));
    }
    def.logicalIndexes.push_back(std::move(entry));
    SortIndexesByName(def);
    WriteTableDef(*pager_, def);
    Adopt(std::move(def));
}

void Table::CreateIndex(const IndexSpec& spec)
{
    if (def_.IndexByName(spec.name) != nullptr)
        throw Error(ErrorNumber::IndexExists, {spec.name, name_});
    if (spec.primary && def_.PrimaryKey() != nullptr)
        throw Error(ErrorNumber::PrimaryKeyExists);
    const RealIndex wanted = DesignRealIndex(def_, spec, name_);
    LogicalIndex entry;
    entry.name = spec.name;
    entry.number = def_.NextIndexNumber();
    entry.type = spec.primary ? IndexType::Primary : IndexType::Plain;
    AddIndex(std::move(entry), &wanted);
}

/// Logical indexes may share a tree, as a relation shares that of an index on the same columns: it goes with the last
/// of them. The definition is written before the tree goes, so that it never names pages that are free.
void Table::DropIndex(std::string_view name)
{
    const LogicalIndex* index = def_.IndexByName(name);
    if (index == nullptr)
        throw Error(ErrorNumber::NoSuchIndex, {name, name_});
    const std::uint32_t real = index->realIndex;
    TableDef def = def_;
    def.logicalIndexes.erase(def.logicalIndexes.begin() + (index - def_.logicalIndexes.data()));
    const bool stillUsed = std::any_of(def.logicalIndexes.begin(), def.logicalIndexes.end(),
                                       [real](const LogicalIndex& other) { return other.realIndex == real; });
    if (!stillUsed) {
        def.realIndexes.erase(def.realIndexes.begin() + real);
        for (LogicalIndex& other : def.logicalIndexes)
            // Those behind it move up, and are named by their place.
            other.realIndex -= other.realIndex > real;
    }
    WriteTableDef(*pager_, def);
    if (!stillUsed)
        UprootTree(*pager_, def_.pages.front(), def_.realIndexes[real]);
    Adopt(std::move(def));
}

void Table::AddRelationIndex(LogicalIndex entry, const std::vector<std::uint16_t>& columns)
{
    if (def_.IndexByName(entry.name) != nullptr)
        throw Error(ErrorNumber::IndexNameTaken, {name_, entry.name});
    entry.type = IndexType::Relation;
    entry.number = def_.NextIndexNumber();
    const bool referenced = entry.side == RelationSide::Referenced;
    const std::optional<std::uint32_t> real = RealIndexOn(def_, columns, referenced);
    if (real) {
        entry.realIndex = *real;
        AddIndex(std::move(entry), nullptr);
    } else if (referenced) {
        throw Error(ErrorNumber::NotUniquelyIndexed, {name_});
    } else {
        RealIndex wanted;
        for (const std::uint16_t column : columns)
            wanted.columns.push_back({column, SortOrder::Ascending});
        AddIndex(std::move(entry), &wanted);
    }
}

} // namespace jet
