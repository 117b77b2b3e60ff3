#include "plan/column_layout.h"
#include "plan/complete_model.h"
#include "plan/name_set.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace velmora {

namespace {

using Kind = ColumnOrigin::Kind;

std::string Bracketed(std::string_view name)
{
    return std::string("[").append(name).append("]");
}

class TablePlanner {
public:
    TablePlanner(CompleteModel& model, MappingPlan& plan) : model_(model), plan_(plan) {}

    void Plan()
    {
        ReserveNames();
        PlanTables();
    }

private:
    void ReserveNames();
    void PlanTables();
    void PlanTable(Family number);
    void ChooseKeys(PlannedTable& table, const FamilyPlan& family, NameSet& columns) const;
    void NameLinks(PlannedTable& table);
    void TellOfTable(Family number, PlannedTable& table) const;
    [[nodiscard]] std::string RelativePath(PathId path) const;
    void PlanColumns(Family number, NameSet& names);
    void PlanPart(TableNumber first, std::string name);
    [[nodiscard]] ColumnOrigin OriginOf(const Want& want, Family family) const;
    void NoteName(const std::string& what, const std::string& name, const std::string& wanted, PathId path);

    CompleteModel& model_;
    MappingPlan& plan_;
    NameSet tableNames_{model_.known.names};
    NameSet relationNames_{model_.known.names};
    NameSet indexNames_{model_.known.names}; ///< those of all tables: people tell them apart by their names
};

void TablePlanner::ReserveNames()
{
    for (const KnownTable& table : model_.known.tables)
        tableNames_.Reserve(table.name);
    for (const std::string& name : model_.known.otherNames)
        tableNames_.Reserve(name);
    for (const std::string& name : model_.known.relations)
        relationNames_.Reserve(name);
    for (const std::string& name : model_.known.indexes)
        indexNames_.Reserve(name);
}

void TablePlanner::PlanTables()
{
    for (PathId path = 1; path < model_.facts.size(); ++path) {
        const Family number = model_.FamilyOf(path);
        if (model_.families[number].first != path)
            continue;
        if (model_.families[number].table != kNoTable)
            PlanTable(number);
    }
    for (PlannedTable& table : plan_.tables) // a parent's first path may stand behind its child's
        if (table.path != 0 && table.continues == kNoTable && model_.around[table.path] != 0)
            table.parent = model_.families[model_.FamilyOf(model_.around[table.path])].table;
}

void TablePlanner::PlanTable(Family number)
{
    FamilyPlan& family = model_.families[number];
    family.table = static_cast<TableNumber>(plan_.tables.size());
    PlannedTable& table = plan_.tables.emplace_back();
    table.path = family.first;
    for (PathId above = model_.ParentOf(family.first); above != 0; above = model_.ParentOf(above))
        ++table.level;
    table.isShared = model_.shares;
    table.indexesParents =
        model_.settings.blCreateTableRelations && (model_.shares || model_.ParentOf(family.first) != 0);
    table.hasTextFile = table.keepsTextOfRun = true;
    const std::string wanted = model_.WantedTable(family);
    NameSet columns(model_.known.names);
    if (family.known != kNoKnownTable) {
        table.name = model_.known.tables[family.known].name;
    } else {
        table.name = tableNames_.Take(wanted);
        if (!family.refusal.empty())
            plan_.notes.push_back("Table [" + wanted + "] is not filled from " +
                                  model_.document.PathText(family.first) + ": " + family.refusal);
        NoteName("Table " + Bracketed(table.name), table.name, wanted, family.first);
    }
    ChooseKeys(table, family, columns);
    NameLinks(table);
    TellOfTable(number, table);
    PlanColumns(number, columns); // may add tables
}

/// Those of a table that is there are known by what they are, else by their names.
void TablePlanner::ChooseKeys(PlannedTable& table, const FamilyPlan& family, NameSet& columns) const
{
    PlannedKeys& keys = table.keys;
    const bool makesKeys = model_.settings.blCreateTableRelations;
    if (family.known != kNoKnownTable) {
        const KnownTable& there = model_.known.tables[family.known];
        const auto choose = [&](Kind kind, std::string_view name) {
            for (const KnownColumn& column : there.columns)
                if (column.origin ? column.origin->kind == kind : !there.origin && column.name == name)
                    return column.name;
            return std::string();
        };
        keys.primary = choose(Kind::Key, model_.settings.strKeyPrimary);
        keys.foreign = choose(Kind::Parent, model_.settings.strKeyForeign);
        keys.master = choose(Kind::Master, kMasterTable);
        for (const KnownColumn& column : there.columns)
            columns.Reserve(column.name);
        for (const std::size_t part : family.parts)
            for (const KnownColumn& column : model_.known.tables[part].columns)
                columns.Reserve(column.name);
    }
    keys.makesPrimary = makesKeys && family.known == kNoKnownTable;
    keys.makesForeign = makesKeys && family.known == kNoKnownTable;
    keys.makesMaster = makesKeys && model_.shares && family.known == kNoKnownTable;
    keys.addsMaster = makesKeys && model_.shares && family.known != kNoKnownTable && keys.master.empty();
    // A continued table has its key whatever was asked for: without it nobody could tell which records are one.
    const std::size_t values = family.wants.size();
    if (!makesKeys && family.known == kNoKnownTable && values > model_.known.maxDataColumns)
        keys.makesPrimary = true;
    if (keys.makesPrimary)
        keys.primary = columns.Take(model_.settings.strKeyPrimary);
    if (keys.makesForeign)
        keys.foreign = columns.Take(model_.settings.strKeyForeign);
    if (keys.makesMaster || keys.addsMaster)
        keys.master = columns.Take(kMasterTable);
    columns.Reserve(kMasterTable); // which says the same wherever it stands
}

/// A relation stands among the indexes of its table as well.
void TablePlanner::NameLinks(PlannedTable& table)
{
    do
        table.relation = relationNames_.Take(table.name + "_LINK");
    while (indexNames_.Contains(table.relation));
    indexNames_.Reserve(table.relation);
    table.keys.primaryIndex = indexNames_.Take(table.name + "_" + table.keys.primary);
    table.keys.foreignIndex = indexNames_.Take(table.name + "_" + table.keys.foreign);
}

void TablePlanner::TellOfTable(Family number, PlannedTable& table) const
{
    const FamilyPlan& family = model_.families[number];
    TableOrigin origin;
    if (family.known != kNoKnownTable && model_.known.tables[family.known].origin)
        origin = *model_.known.tables[family.known].origin;
    const std::size_t before = origin.paths.size();
    std::unordered_set<std::string> paths;
    for (const TablePath& path : origin.paths)
        paths.insert(path.path);
    const auto add = [&](PathId path) {
        const bool isRoot = model_.ParentOf(path) == 0;
        TablePath told{model_.shares && !isRoot ? RelativePath(path) : model_.PathText(path), {}};
        if (!paths.insert(told.path).second)
            return;
        for (PathId step = path; step != model_.around[path]; step = model_.ParentOf(step))
            told.places.insert(told.places.begin(), model_.ParentOf(step) == 0
                                                        ? 0
                                                        : model_.childPlaces.Of(model_.FamilyOf(model_.ParentOf(step)),
                                                                                model_.document.Paths().Name(step)));
        origin.paths.push_back(std::move(told));
    };
    if (!model_.shares) {
        if (before == 0)
            add(family.first);
    } else {
        for (const PathId path : family.paths)
            add(path);
    }
    if (origin.paths.size() != before)
        table.told = std::move(origin);
}

std::string TablePlanner::RelativePath(PathId path) const
{
    std::string text(model_.TagOf(path));
    for (PathId step = path; step != model_.around[path]; step = model_.ParentOf(step))
        if (model_.ParentOf(step) != 0)
            text.insert(0, std::string(model_.TagOf(model_.ParentOf(step))).append("/"));
    return text;
}

ColumnOrigin TablePlanner::OriginOf(const Want& want, Family family) const
{
    if (want.kind == Kind::Text)
        return {.kind = Kind::Text};
    const SiblingPlaces& places = want.kind == Kind::Child ? model_.childPlaces : model_.attributePlaces;
    return {want.kind, std::string(model_.document.NameText(want.name)), places.Of(family, want.name)};
}

void TablePlanner::PlanColumns(Family number, NameSet& names)
{
    FamilyPlan& family = model_.families[number];
    const TableNumber first = family.table;
    ColumnLayout layout(model_.known.maxDataColumns, names);
    if (family.known != kNoKnownTable)
        layout.AddKnown(model_.known.tables[family.known], model_.known.names);
    for (const std::size_t part : family.parts)
        layout.AddKnown(model_.known.tables[part], model_.known.names);
    const PlannedKeys& keys = plan_.tables[first].keys;
    for (const std::string& key : {keys.primary, keys.foreign, keys.master})
        layout.Forget(model_.known.names.key(key));

    std::vector<ColumnLayout::Position> positions;
    for (const Want& want : family.wants) {
        PlannedColumn column;
        column.origin = want.origin;
        column.type = want.isLong ? ColumnType::Memo : want.values.NarrowestType(family.recordCount);
        const std::string wanted = model_.WantedColumn(want, family);
        const ColumnOrigin origin = OriginOf(want, number);
        if (const auto known =
                layout.PlaceKnown(origin, model_.known.names.key(model_.known.names.valid(wanted, 64)), column)) {
            positions.push_back(*known);
            continue;
        }
        column.name = names.Take(wanted);
        column.told = origin;
        NoteName(Bracketed(plan_.tables[first].name) + "." + Bracketed(column.name), column.name, wanted, want.origin);
        positions.push_back(layout.PlaceNew(std::move(column)));
    }

    std::vector<ColumnNumber> firstColumns;
    for (std::size_t i = 0; i < layout.Parts().size(); ++i) {
        ColumnLayout::Part& part = layout.Parts()[i];
        if (i > 0)
            PlanPart(first, part.known == nullptr ? std::string() : part.known->name);
        PlannedTable& table = plan_.tables.back();
        table.firstColumn = static_cast<ColumnNumber>(plan_.columns.size());
        firstColumns.push_back(table.firstColumn);
        std::ranges::move(part.columns, std::back_inserter(plan_.columns));
        table.endOfMade = static_cast<ColumnNumber>(plan_.columns.size());
    }
    for (std::size_t i = 0; i < positions.size(); ++i) {
        const auto [part, index] = positions[i];
        family.wants[i].place = {.column = firstColumns[part] + static_cast<ColumnNumber>(index),
                                 .part = part == 0 ? kNoTable : first + static_cast<TableNumber>(part)};
    }
}

/// A table that continues `first`, behind those that do so already. `name` is empty for one that is not there yet.
void TablePlanner::PlanPart(TableNumber first, std::string name)
{
    const PlannedTable& whole = plan_.tables[first];
    const bool isNew = name.empty();
    const bool isTied = !whole.keys.primary.empty();
    if (isNew && isTied && !model_.settings.blCreateTableRelations)
        plan_.notes.push_back("Table " + Bracketed(whole.name) +
                              " has a key in spite of -relations: it is continued in a further table");
    PlannedTable part;
    part.name = isNew ? tableNames_.Take(whole.name) : std::move(name);
    part.path = whole.path;
    part.level = whole.level;
    part.hasTextFile = part.keepsTextOfRun = true;
    part.keys.primary = whole.keys.primary;
    part.keys.makesPrimary = isNew && isTied;
    part.continues = part.parent = first;
    if (isNew)
        part.told = TableOrigin{.paths = {}, .continues = whole.name};
    NameLinks(part);
    plan_.tables.push_back(std::move(part));
}

void TablePlanner::NoteName(const std::string& what, const std::string& name, const std::string& wanted, PathId path)
{
    if (name != wanted)
        plan_.notes.push_back("Name changed: " + what + " for " + model_.document.PathText(path) + ", not " +
                              Bracketed(wanted));
}

} // namespace

void PlanTables(CompleteModel& model, MappingPlan& plan)
{
    TablePlanner(model, plan).Plan();
}

} // namespace velmora
