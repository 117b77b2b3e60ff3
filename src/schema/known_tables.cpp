#include "schema/known_tables.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace velmora {

namespace {

// With MASTER_TABLE, the keys and a memo outside the row in each of these columns a record fits its page.
constexpr std::size_t kMaxDataColumns2000 = 250;
constexpr std::size_t kMaxDataColumns97 = 140;

// As the engine shows types: those of texts, and of memos among them.
bool TakesText(const std::string& dataType)
{
    constexpr std::string_view kText = "130";
    return dataType == kText;
}

constexpr std::string_view kNo = "False"; // as the engine shows Booleans

KnownTable ReadTable(DatabaseSession& session, std::string name)
{
    KnownTable table;
    table.name = std::move(name);
    Origins origins = session.OriginsOf(table.name);
    table.origin = std::move(origins.table);
    std::unordered_set<std::string> chosen;
    for (ChosenType& type : origins.types)
        chosen.insert(std::move(type.column));
    std::unordered_map<std::string, ColumnOrigin> known;
    for (NamedColumnOrigin& column : origins.columns)
        known.emplace(std::move(column.column), std::move(column.origin));
    jet::Rowset rows = session.OpenSchema(jet::SchemaKind::Columns, {"", "", table.name});
    for (; !rows.Eof(); rows.MoveNext()) {
        KnownColumn column{rows.Text("COLUMN_NAME"), TakesText(rows.Text("DATA_TYPE"))};
        column.takesText = column.takesText || chosen.contains(column.name);
        column.needsValue = rows.Text("IS_NULLABLE") == kNo;
        if (const auto origin = known.find(column.name); origin != known.end())
            column.origin = origin->second;
        table.columns.push_back(std::move(column));
    }
    return table;
}

/// Relations and indexes, with what they demand of the columns of tables that say nothing of themselves.
class RulesReader {
public:
    explicit RulesReader(KnownDatabase& known) : known_(known)
    {
        for (std::size_t i = 0; i < known.tables.size(); ++i)
            if (!known.tables[i].origin)
                untold_.emplace(known.tables[i].name, i);
    }

    void Read(DatabaseSession& session)
    {
        for (jet::Rowset rows = session.OpenSchema(jet::SchemaKind::ForeignKeys, {}); !rows.Eof(); rows.MoveNext()) {
            known_.relations.push_back(rows.Text("FK_NAME"));
            if (KnownColumn* const column = Find(rows.Text("FK_TABLE_NAME"), rows.Text("FK_COLUMN_NAME"))) {
                column->refersTo = rows.Text("PK_TABLE_NAME");
                column->hasRules = true;
            }
        }
        constexpr std::string_view kDisallow = "1";
        for (jet::Rowset rows = session.OpenSchema(jet::SchemaKind::Indexes, {}); !rows.Eof(); rows.MoveNext()) {
            known_.indexes.push_back(rows.Text("INDEX_NAME"));
            if (KnownColumn* const column = Find(rows.Text("TABLE_NAME"), rows.Text("COLUMN_NAME"))) {
                column->hasRules = true;
                column->needsValue = column->needsValue || rows.Text("NULLS") == kDisallow;
            }
        }
        for (const auto& [name, table] : untold_)
            ReadRulesOfFields(session.OpenTable(name), known_.tables[table]);
    }

private:
    KnownColumn* Find(const std::string& table, const std::string& column)
    {
        const auto found = untold_.find(table);
        if (found == untold_.end())
            return nullptr;
        std::vector<KnownColumn>& columns = known_.tables[found->second].columns;
        const auto at = std::ranges::find(columns, column, &KnownColumn::name);
        return at == columns.end() ? nullptr : &*at;
    }
    static void ReadRulesOfFields(const Recordset& records, KnownTable& table)
    {
        for (KnownColumn& column : table.columns)
            if (const auto field = records.FieldIndex(column.name)) {
                column.refusesEmpty = records.RefusesEmptyText(*field);
                column.needsValue = column.needsValue && !records.IsAutonumber(*field);
            }
    }

    KnownDatabase& known_;
    std::unordered_map<std::string, std::size_t> untold_;
};

KnownDatabase ReadKnownDatabase(DatabaseSession& session)
{
    KnownDatabase known;
    known.names = session.Names();
    known.maxDataColumns = session.IsAccess97() ? kMaxDataColumns97 : kMaxDataColumns2000;
    for (jet::Rowset rows = session.OpenSchema(jet::SchemaKind::Tables, {}); !rows.Eof(); rows.MoveNext()) {
        if (rows.Text("TABLE_TYPE") == "TABLE")
            known.tables.push_back(ReadTable(session, rows.Text("TABLE_NAME")));
        else
            known.otherNames.push_back(rows.Text("TABLE_NAME"));
    }
    RulesReader(known).Read(session);
    return known;
}

} // namespace

const KnownDatabase& KnownTables::Read()
{
    if (state_ != session_.SchemaState()) {
        state_.reset();
        known_ = ReadKnownDatabase(session_);
        state_ = session_.SchemaState();
    }
    return known_;
}

} // namespace velmora
