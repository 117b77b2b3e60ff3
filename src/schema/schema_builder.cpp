#include "schema/schema_builder.h"

#include "schema/catalog_queries.h"
#include "schema/engine_errors.h"
#include "schema/refused_change.h"

#include <algorithm>
#include <numeric>
#include <span>
#include <unordered_set>

namespace velmora {

namespace {

using namespace schema_pass;

std::string_view TypeName(ColumnType type)
{
    switch (type) {
    case ColumnType::Memo:
        return "Longtext";
    case ColumnType::YesNo:
        return "YesNo";
    case ColumnType::Long:
        return "Long";
    case ColumnType::Double:
        return "Double";
    case ColumnType::Date:
    case ColumnType::Time:
        return "DateTime";
    case ColumnType::Text:
        break;
    }
    return "String";
}

/// One pass over one plan.
class SchemaBuilder {
public:
    SchemaBuilder(Job& job, DatabaseSession& session, const Document& document, const MappingPlan& plan, int pass)
        : job_(job), session_(session), document_(document), plan_(plan), pass_(pass)
    {
    }

    void Run(Step& step);

private:
    [[nodiscard]] std::vector<TableNumber> TablesByLevel() const;
    void RefuseTooManyObjects();
    void BuildTable(const PlannedTable& table, Step& step);
    void AddMissingColumns(const PlannedTable& table, TableColumns& known, Step& step);
    [[nodiscard]] ColumnType TypeOfAdded(const PlannedTable& table, const PlannedColumn& column) const;
    void NoteType(const PlannedColumn& column, ColumnType type);
    void CreateTable(const PlannedTable& table, Step& step);
    void CreateRelation(const PlannedTable& table, Step& step);
    [[nodiscard]] bool CreateLinkIndex(const PlannedTable& table, Step& step);
    void TellOrigins(const PlannedTable& table, Step& step);
    void DropMasterTable(const PlannedTable& table, TableColumns& known, Step& step);
    void Execute(const std::string& sql, const DdlSubject& subject);
    [[nodiscard]] bool ExecuteIfAllowed(const std::string& sql, const DdlSubject& subject, const std::string& table,
                                        const std::string& parent);

    [[nodiscard]] bool CreatesTables() const noexcept { return pass_ == kCreateTables || pass_ == kExtendStructure; }
    [[nodiscard]] std::string PathOf(const PlannedTable& table) const { return document_.PathText(table.path); }
    [[nodiscard]] std::string PathOf(const PlannedColumn& column) const { return document_.PathText(column.origin); }

    Job& job_;
    DatabaseSession& session_;
    const Document& document_;
    const MappingPlan& plan_;
    const int pass_;
    std::vector<ChosenType> chosenTypes_; ///< of columns that the table at hand was given
};

/// Level by level, in the plan's order within a level.
std::vector<TableNumber> SchemaBuilder::TablesByLevel() const
{
    std::vector<TableNumber> tables(plan_.LastTable());
    std::iota(tables.begin(), tables.end(), TableNumber{1});
    std::ranges::stable_sort(tables, {}, [&](TableNumber table) { return plan_.tables[table].level; });
    return tables;
}

void SchemaBuilder::Run(Step& step)
{
    if (CreatesTables())
        RefuseTooManyObjects();
    for (const TableNumber table : TablesByLevel()) {
        job_.ProcessEvents();
        BuildTable(plan_.tables[table], step);
    }
}

/// A file that would run full half way is refused before the first statement. The count is exact for a new database;
/// tables that are there already are looked up only when it matters.
void SchemaBuilder::RefuseTooManyObjects()
{
    const std::size_t perTable = job_.settings.blCreateTableRelations ? 2 : 1;
    const std::size_t left = session_.ObjectsLeft();
    if (plan_.LastTable() * perTable <= left)
        return;
    std::unordered_set<std::string> wanted;
    for (const PlannedTable& table : std::span(plan_.tables).subspan(1))
        if (!table.isWrapper)
            wanted.insert(table.name);
    if (wanted.size() * perTable <= left)
        return;
    std::size_t missing = 0;
    for (const std::string& table : wanted)
        missing += velCheckExistsTable(job_, session_, table) ? 0 : perTable;
    if (missing > left)
        throw RuntimeError(
            runtime_errors::kApplicationDefined,
            "The document needs " + std::to_string(wanted.size()) + " tables (" + std::to_string(missing) +
                " new tables and relations), a database file has room for " + std::to_string(left) +
                " more; nothing was created (-relations, +one_table_per_element and a tag mapping need fewer)");
}

void SchemaBuilder::BuildTable(const PlannedTable& table, Step& step)
{
    const bool exists = velCheckExistsTable(job_, session_, table.name);
    if (job_.log.IsTracing())
        for (const ColumnNumber column : table.asked)
            step("New column [" + table.name + "].[" + plan_.columns[column].name + "]?");
    if (pass_ == kCreateRelations) {
        if (exists && table.parent != kNoTable && !table.isShared)
            CreateRelation(table, step);
        else if (exists && table.indexesParents)
            (void)CreateLinkIndex(table, step);
        return;
    }
    TableColumns known{table.name, {}};
    chosenTypes_.clear();
    if (exists)
        AddMissingColumns(table, known, step);
    else if (!table.isWrapper)
        CreateTable(table, step);
    if (table.keys.dropsMaster)
        DropMasterTable(table, known, step);
    TellOrigins(table, step);
}

void SchemaBuilder::AddMissingColumns(const PlannedTable& table, TableColumns& known, Step& step)
{
    for (const PlannedColumn& column : plan_.MadeColumns(table)) {
        if (velCheckExistsColumn(job_, session_, known, column.name))
            continue;
        job_.log.ProtocolAppend("New column: [" + table.name + "].[" + column.name + "]");
        step("Add column [" + column.name + "] into table [" + table.name + "]");
        const ColumnType type = TypeOfAdded(table, column);
        Execute("ALTER TABLE [" + table.name + "] ADD COLUMN [" + column.name + "] " + std::string(TypeName(type)),
                {PathOf(column), DdlObject::Column, column.name});
        NoteType(column, type);
        known.NoteAdded(column.name);
        ++session_.Report(table.name).newColumns;
    }
    if (table.keys.addsMaster)
        Execute("ALTER TABLE [" + table.name + "] ADD COLUMN [" + table.keys.master + "] String",
                {PathOf(table), DdlObject::Column, table.keys.master});
}

/// Records that are there lack the value, which a Yes/No column could not tell.
ColumnType SchemaBuilder::TypeOfAdded(const PlannedTable& table, const PlannedColumn& column) const
{
    const bool isYesNo = column.type == ColumnType::YesNo;
    return isYesNo && session_.OpenTable(table.name).RecordCount() > 0 ? ColumnType::Text : column.type;
}

void SchemaBuilder::NoteType(const PlannedColumn& column, ColumnType type)
{
    if (IsTyped(type))
        chosenTypes_.push_back({column.name, type});
}

void SchemaBuilder::CreateTable(const PlannedTable& table, Step& step)
{
    if (pass_ == kExtendStructure)
        job_.log.ProtocolAppend("New table: [" + table.name + "]");
    const PlannedKeys& keys = table.keys;
    std::string fields;
    std::vector<NamedColumn> named;
    const auto addKey = [&](const std::string& name, std::string_view type) {
        fields.append(fields.empty() ? "[" : ", [").append(name).append("] ").append(type);
        named.push_back({"", name});
    };
    if (keys.makesPrimary)
        addKey(keys.primary, table.continues == kNoTable ? "Counter NOT NULL" : "Long NOT NULL");
    if (keys.makesForeign)
        addKey(keys.foreign, "Long");
    if (keys.makesMaster)
        addKey(keys.master, "String");
    for (const PlannedColumn& column : plan_.MadeColumns(table)) {
        fields += (fields.empty() ? "[" : ", [") + column.name + "] ";
        fields += TypeName(column.type);
        NoteType(column, column.type);
    }
    if (!fields.empty()) {
        step("Create table [" + table.name + "]");
        try {
            session_.ExecuteSql("CREATE TABLE [" + table.name + "] (" + fields + ");");
        } catch (const EngineError& error) {
            for (const PlannedColumn& column : plan_.MadeColumns(table))
                named.push_back({PathOf(column), column.name});
            throw Explain(error, RefusedPart({PathOf(table), DdlObject::Table, table.name}, named, error));
        }
    }
    if (keys.makesPrimary) {
        step("Create index [" + keys.primaryIndex + "]");
        Execute("CREATE UNIQUE INDEX [" + keys.primaryIndex + "] ON [" + table.name + "] ([" + keys.primary +
                    "]) WITH PRIMARY;",
                {PathOf(table), DdlObject::Index, keys.primaryIndex});
    }
}

/// The column by which the table's records refer to those of its parent.
const std::string& LinkOf(const PlannedTable& table)
{
    return table.continues == kNoTable ? table.keys.foreign : table.keys.primary;
}

/// False when there can be none.
bool SchemaBuilder::CreateLinkIndex(const PlannedTable& table, Step& step)
{
    std::string index = table.keys.foreignIndex;
    if (velCheckExistsIndex(job_, session_, table.name, LinkOf(table), index))
        return true;
    step("Create Index on [" + index + "]");
    return ExecuteIfAllowed("CREATE INDEX [" + index + "] ON [" + table.name + "] ([" + LinkOf(table) + "]);",
                            {PathOf(table), DdlObject::Index, index}, table.name, plan_.tables[table.parent].name);
}

void SchemaBuilder::CreateRelation(const PlannedTable& table, Step& step)
{
    const PlannedTable& parentTable = plan_.tables[table.parent];
    const std::string& parent = parentTable.name;
    if (session_.IsRelationLeftOut(table.name))
        return;
    step("Create relation between [" + table.name + "] and [" + parent + "]");
    if (LinkOf(table).empty() || parentTable.keys.primary.empty()) {
        session_.LeaveOutRelation(table.name);
        job_.log.Warn("relation-left-out", "Relation between [" + table.name + "] and [" + parent +
                                               "] left out: one of them has no key column");
        return;
    }
    if (!CreateLinkIndex(table, step))
        return;
    std::string relation = table.relation;
    if (velCheckExistsRelation(job_, session_, parent, table.name, relation))
        return;
    const bool made = ExecuteIfAllowed("ALTER TABLE [" + table.name + "] ADD CONSTRAINT [" + relation +
                                           "] FOREIGN KEY ([" + LinkOf(table) + "]) REFERENCES [" + parent + "] ([" +
                                           parentTable.keys.primary + "]) ON UPDATE CASCADE ON DELETE CASCADE;",
                                       {PathOf(table), DdlObject::Relation, relation}, table.name, parent);
    if (made)
        session_.NoteRelation(relation);
}

/// Lets the database know what was made, and what it did not know of what was there.
void SchemaBuilder::TellOrigins(const PlannedTable& table, Step& step)
{
    using Kind = ColumnOrigin::Kind;
    const PlannedKeys& keys = table.keys;
    Origins origins;
    origins.table = table.told;
    origins.types = std::move(chosenTypes_);
    const auto tell = [&](bool isMade, const std::string& column, Kind kind) {
        if (isMade)
            origins.columns.push_back({column, {.kind = kind}});
    };
    if (table.told) { // of a table that nobody has told of, nobody made the keys
        tell(keys.makesPrimary, keys.primary, Kind::Key);
        tell(keys.makesForeign, keys.foreign, Kind::Parent);
        tell(keys.makesMaster, keys.master, Kind::Master);
    }
    tell(keys.addsMaster, keys.master, Kind::Master);
    for (const PlannedColumn& column : plan_.MadeColumns(table))
        if (column.told)
            origins.columns.push_back({column.name, *column.told});
    if (!origins.table && origins.columns.empty() && origins.types.empty())
        return;
    step("Describe table [" + table.name + "]");
    session_.SetOrigins(table.name, origins);
}

/// MASTER_TABLE stays only in tables that several elements of one name share.
void SchemaBuilder::DropMasterTable(const PlannedTable& table, TableColumns& known, Step& step)
{
    const std::string column(kMasterTable);
    if (!velCheckExistsColumn(job_, session_, known, column))
        return;
    step("Drop column [" + column + "] from table [" + known.table + "]");
    Execute("ALTER TABLE [" + known.table + "] DROP COLUMN [" + column + "];",
            {PathOf(table), DdlObject::Column, column});
}

void SchemaBuilder::Execute(const std::string& sql, const DdlSubject& subject)
{
    try {
        session_.ExecuteSql(sql);
    } catch (const EngineError& error) {
        throw Explain(error, subject);
    }
}

/// Tables that somebody else made may have no key columns, or such as cannot be related; rows that are there may forbid
/// the relation; and a table holds only so many indexes.
bool IsRelationImpossible(const RuntimeError& error)
{
    switch (error.Number()) {
    case engine_errors::kNoSuchField:
    case engine_errors::kRelationTypesDiffer:
    case engine_errors::kNoPrimaryKey:
    case engine_errors::kNotUniquelyIndexed:
    case engine_errors::kDataViolatesRelation:
    case engine_errors::kTooManyIndexes:
        return true;
    default:
        return false;
    }
}

/// False, with a protocol line, when the relation is impossible: the records are worth more than it.
bool SchemaBuilder::ExecuteIfAllowed(const std::string& sql, const DdlSubject& subject, const std::string& table,
                                     const std::string& parent)
{
    try {
        session_.ExecuteSql(sql);
        return true;
    } catch (const EngineError& error) {
        if (!IsRelationImpossible(error))
            throw Explain(error, subject);
        session_.LeaveOutRelation(table);
        job_.log.Warn("relation-left-out",
                      "Relation between [" + table + "] and [" + parent + "] left out: " + error.what());
        return false;
    }
}

std::string_view Caption(int pass)
{
    switch (pass) {
    case kCreateTables:
        return "Create tables";
    case kCreateRelations:
        return "Create relations";
    case kExtendStructure:
        return "Extend MDB structure";
    default:
        return {};
    }
}

} // namespace

void velCreateDatabase(Job& job, DatabaseSession& session, const Document& document, const MappingPlan& plan, int pass)
{
    Procedure(job, "velCreateDatabase", [&](Step& step) {
        if (Caption(pass).empty()) {
            job.log.ProtocolAppend("Not supported option");
            return;
        }
        job.log.ProtocolAppend(Caption(pass));
        SchemaBuilder(job, session, document, plan, pass).Run(step);
    });
}

} // namespace velmora
