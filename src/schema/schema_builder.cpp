#include "schema/schema_builder.h"

#include "schema/catalog_queries.h"
#include "schema/ddl_problem.h"
#include "schema/engine_errors.h"
#include "schema/table_name.h"
#include "xml/map_name.h"

#include <algorithm>
#include <numeric>
#include <unordered_set>

namespace velmora {

namespace {

using namespace schema_pass;

/// The builder's own test: it does not ask whether attributes are imported.
bool GetsTable(const ElementInfo& element)
{
    return element.lngMaxChildren >= 1 || element.lngAttributes >= 1 || element.lngMaxTwins >= 1;
}

/// Texts longer than a text column become memos. Numbers too are kept as text, so that nothing of their spelling is
/// lost.
std::string_view ColumnType(const ElementInfo& element)
{
    constexpr double kTextCharacters = 255;
    return element.lngDataType == kTextContent && element.dblMaxSize > kTextCharacters ? "Longtext" : "String";
}

/// One pass over one model. Work is linear in the number of entries: the children of a path are found through the tree
/// of paths.
class SchemaBuilder {
public:
    SchemaBuilder(Job& job, DatabaseSession& session, const Document& document, StructureModel& model,
                  const TagMap& map, int pass)
        : job_(job), session_(session), document_(document), model_(model), map_(map), pass_(pass)
    {
    }

    void Run(Step& step);

private:
    struct Column {
        std::size_t entry;
        std::string name;
    };

    void LinkChildren();
    [[nodiscard]] std::vector<std::size_t> EntriesByLevel() const;
    void RefuseTooManyObjects(const std::vector<std::size_t>& entries);
    void BuildEntry(std::size_t entry, Step& step);
    [[nodiscard]] std::vector<Column> PlainColumns(std::size_t entry, const std::string& table, Step& step);
    void AddMissingColumns(const std::vector<Column>& columns, TableColumns& known, Step& step);
    void CreateTable(std::size_t entry, const std::vector<Column>& columns, const std::string& table, Step& step);
    void CreateRelation(std::size_t entry, const std::string& table, Step& step);
    void DropMasterTable(std::size_t entry, TableColumns& known, Step& step);
    void Execute(const std::string& sql, const DdlSubject& subject);
    [[nodiscard]] bool ExecuteIfAllowed(const std::string& sql, const DdlSubject& subject, const std::string& table,
                                        const std::string& parent);

    [[nodiscard]] bool CreatesTables() const noexcept { return pass_ == kCreateTables || pass_ == kExtendStructure; }
    [[nodiscard]] bool IsSkippedWrapper(std::size_t columnCount) const noexcept
    {
        return job_.settings.blSkipEmptyWrappingTags && columnCount == 0;
    }
    [[nodiscard]] std::string ColumnName(std::size_t entry)
    {
        return MapName(model_.Element(entry).strName, job_.settings, map_);
    }
    [[nodiscard]] std::string PathOf(std::size_t entry) const
    {
        return document_.PathText(model_.Element(entry).strPath);
    }

    Job& job_;
    DatabaseSession& session_;
    const Document& document_;
    StructureModel& model_;
    const TagMap& map_;
    const int pass_;

    // By number of the model's entry; 0 stands for none.
    std::vector<std::size_t> parent_;
    std::vector<std::size_t> firstChild_;
    std::vector<std::size_t> nextSibling_;
    std::vector<std::size_t> nearestTable_; ///< entry whose table holds the records that this entry's records belong to
    std::vector<std::string> tables_;
};

void SchemaBuilder::LinkChildren()
{
    const std::size_t count = model_.UpperBound() + 1;
    parent_.resize(count);
    firstChild_.resize(count);
    nextSibling_.resize(count);
    nearestTable_.resize(count);
    tables_.resize(count);
    for (std::size_t entry = count; --entry > 0;) { // backwards, so that lists come out in the model's order
        const std::size_t parent = model_.Find(document_.Paths().Parent(model_.Element(entry).strPath));
        parent_[entry] = parent;
        nextSibling_[entry] = firstChild_[parent];
        firstChild_[parent] = entry;
    }
}

/// The entries that get a table, level by level, in the model's order within a level.
std::vector<std::size_t> SchemaBuilder::EntriesByLevel() const
{
    std::vector<std::size_t> entries;
    for (std::size_t entry = 1; entry <= model_.UpperBound(); ++entry)
        if (GetsTable(model_.Element(entry)))
            entries.push_back(entry);
    std::stable_sort(entries.begin(), entries.end(), [&](std::size_t a, std::size_t b) {
        return model_.Element(a).intLevel < model_.Element(b).intLevel;
    });
    return entries;
}

void SchemaBuilder::Run(Step& step)
{
    LinkChildren();
    const std::vector<std::size_t> entries = EntriesByLevel();
    for (const std::size_t entry : entries)
        tables_[entry] = TableName(model_.Element(entry), job_.settings, map_);
    if (CreatesTables())
        RefuseTooManyObjects(entries);
    for (const std::size_t entry : entries) {
        job_.ProcessEvents();
        BuildEntry(entry, step);
    }
}

/// A file that would run full half way is refused before the first statement. The count is exact for a new database;
/// tables that are there already are looked up only when it matters.
void SchemaBuilder::RefuseTooManyObjects(const std::vector<std::size_t>& entries)
{
    const std::size_t perTable = job_.settings.blCreateTableRelations ? 2 : 1;
    const std::size_t left = session_.ObjectsLeft();
    if (entries.size() * perTable <= left)
        return;
    std::unordered_set<std::string_view> wanted;
    for (const std::size_t entry : entries) {
        bool hasColumn = model_.Element(entry).lngMaxTwins > 0;
        for (std::size_t child = firstChild_[entry]; child != 0 && !hasColumn; child = nextSibling_[child])
            hasColumn = model_.Element(child).lngMaxChildren == 0 && model_.Element(child).lngMaxTwins == 0;
        if (!IsSkippedWrapper(hasColumn ? 1 : 0))
            wanted.insert(tables_[entry]);
    }
    if (wanted.size() * perTable <= left)
        return;
    std::size_t missing = 0;
    for (const std::string_view table : wanted)
        missing += velCheckExistsTable(job_, session_, std::string(table)) ? 0 : perTable;
    if (missing > left)
        throw RuntimeError(
            runtime_errors::kApplicationDefined,
            "The document needs " + std::to_string(wanted.size()) + " tables (" + std::to_string(missing) +
                " new tables and relations), a database file has room for " + std::to_string(left) +
                " more; nothing was created (-relations, +one_table_per_element and a tag mapping need fewer)");
}

void SchemaBuilder::BuildEntry(std::size_t entry, Step& step)
{
    ElementInfo& element = model_.Element(entry);
    const std::string& table = tables_[entry];
    const bool exists = velCheckExistsTable(job_, session_, table);
    const std::vector<Column> columns = PlainColumns(entry, table, step);
    element.lngColumns = static_cast<std::int32_t>(columns.size());
    const std::size_t parent = parent_[entry];
    nearestTable_[entry] = !parent || !IsSkippedWrapper(static_cast<std::size_t>(model_.Element(parent).lngColumns))
                               ? parent
                               : nearestTable_[parent];
    if (pass_ == kCreateRelations) {
        if (exists && nearestTable_[entry] && !element.blSharedTable)
            CreateRelation(entry, table, step);
        return;
    }
    TableColumns known{table, {}};
    if (exists)
        AddMissingColumns(columns, known, step);
    else if (!IsSkippedWrapper(columns.size()))
        CreateTable(entry, columns, table, step);
    if (!element.blSharedTable)
        DropMasterTable(entry, known, step);
}

/// The leaves and attributes one level below, and a repeated leaf's own text; the first of equal names wins.
std::vector<SchemaBuilder::Column> SchemaBuilder::PlainColumns(std::size_t entry, const std::string& table, Step& step)
{
    std::vector<Column> columns;
    std::unordered_set<std::string> names;
    const auto offer = [&](std::size_t candidate) {
        std::string name = ColumnName(candidate);
        if (job_.log.IsTracing())
            step("New column [" + table + "].[" + name + "]?");
        if (names.insert(name).second)
            columns.push_back({candidate, std::move(name)});
    };
    const ElementInfo& element = model_.Element(entry);
    if (element.lngMaxChildren == 0 && element.lngMaxTwins > 0)
        offer(entry);
    for (std::size_t child = firstChild_[entry]; child != 0; child = nextSibling_[child])
        if (model_.Element(child).lngMaxChildren == 0 && model_.Element(child).lngMaxTwins == 0)
            offer(child);
    return columns;
}

void SchemaBuilder::AddMissingColumns(const std::vector<Column>& columns, TableColumns& known, Step& step)
{
    const std::string& table = known.table;
    for (const Column& column : columns) {
        if (velCheckExistsColumn(job_, session_, known, column.name))
            continue;
        job_.log.ProtocolAppend("New column: [" + table + "].[" + column.name + "]");
        step("Add column [" + column.name + "] into table [" + table + "]");
        Execute("ALTER TABLE [" + table + "] ADD COLUMN [" + column.name + "] " +
                    std::string(ColumnType(model_.Element(column.entry))),
                {PathOf(column.entry), DdlObject::Column, column.name});
        known.NoteAdded(column.name);
        ++session_.Report(table).newColumns;
    }
}

void SchemaBuilder::CreateTable(std::size_t entry, const std::vector<Column>& columns, const std::string& table,
                                Step& step)
{
    const ConversionSettings& settings = job_.settings;
    if (pass_ == kExtendStructure)
        job_.log.ProtocolAppend("New table: [" + table + "]");
    std::string fields;
    std::vector<NamedColumn> named;
    if (settings.blCreateTableRelations) {
        fields = "[" + settings.strKeyPrimary + "] Counter NOT NULL, [" + settings.strKeyForeign + "] Long";
        named = {{"", settings.strKeyPrimary}, {"", settings.strKeyForeign}};
        if (settings.blOneTablePerElement) {
            fields += ", [" + std::string(kMasterTable) + "] String";
            named.push_back({"", std::string(kMasterTable)});
        }
    }
    for (const Column& column : columns) {
        fields += (fields.empty() ? "[" : ", [") + column.name + "] ";
        fields += ColumnType(model_.Element(column.entry));
    }
    if (!fields.empty()) {
        step("Create table [" + table + "]");
        try {
            session_.ExecuteSql("CREATE TABLE [" + table + "] (" + fields + ");");
        } catch (const EngineError& error) {
            for (const Column& column : columns)
                named.push_back({PathOf(column.entry), column.name});
            throw Explain(error, RefusedPart({PathOf(entry), DdlObject::Table, table}, named, error));
        }
    }
    if (settings.blCreateTableRelations) {
        const std::string index = table + "_" + settings.strKeyPrimary;
        step("Create index [" + index + "]");
        Execute("CREATE UNIQUE INDEX [" + index + "] ON [" + table + "] ([" + settings.strKeyPrimary +
                    "]) WITH PRIMARY;",
                {PathOf(entry), DdlObject::Index, index});
    }
}

void SchemaBuilder::CreateRelation(std::size_t entry, const std::string& table, Step& step)
{
    const ConversionSettings& settings = job_.settings;
    const std::string& parent = tables_[nearestTable_[entry]];
    if (session_.IsRelationLeftOut(table))
        return;
    step("Create relation between [" + table + "] and [" + parent + "]");
    std::string index = table + "_" + settings.strKeyForeign;
    if (!velCheckExistsIndex(job_, session_, table, settings.strKeyForeign, index)) {
        step("Create Index on [" + index + "]");
        if (!ExecuteIfAllowed("CREATE INDEX [" + index + "] ON [" + table + "] ([" + settings.strKeyForeign + "]);",
                              {PathOf(entry), DdlObject::Index, index}, table, parent))
            return;
    }
    // A relation is named like its table's element, and like a table it can have no "." in its name.
    std::string relation = model_.Element(entry).strName + "_LINK";
    std::replace(relation.begin(), relation.end(), '.', '_');
    if (velCheckExistsRelation(job_, session_, parent, table, relation))
        return;
    const bool made = ExecuteIfAllowed("ALTER TABLE [" + table + "] ADD CONSTRAINT [" + relation + "] FOREIGN KEY ([" +
                                           settings.strKeyForeign + "]) REFERENCES [" + parent + "] ([" +
                                           settings.strKeyPrimary + "]) ON UPDATE CASCADE ON DELETE CASCADE;",
                                       {PathOf(entry), DdlObject::Relation, relation}, table, parent);
    if (made)
        session_.NoteRelation(relation);
}

/// MASTER_TABLE stays only in tables that several elements of one name share.
void SchemaBuilder::DropMasterTable(std::size_t entry, TableColumns& known, Step& step)
{
    const std::string column(kMasterTable);
    if (!velCheckExistsColumn(job_, session_, known, column))
        return;
    step("Drop column [" + column + "] from table [" + known.table + "]");
    Execute("ALTER TABLE [" + known.table + "] DROP COLUMN [" + column + "];",
            {PathOf(entry), DdlObject::Column, column});
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
        job_.log.ProtocolAppend("Relation between [" + table + "] and [" + parent + "] left out: " + error.what());
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

void velCreateDatabase(Job& job, DatabaseSession& session, const Document& document, StructureModel& model,
                       const TagMap& map, int pass)
{
    Procedure(job, "velCreateDatabase", [&](Step& step) {
        if (Caption(pass).empty()) {
            job.log.ProtocolAppend("Not supported option");
            return;
        }
        job.log.ProtocolAppend(Caption(pass));
        SchemaBuilder(job, session, document, model, map, pass).Run(step);
    });
}

} // namespace velmora
