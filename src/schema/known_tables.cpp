#include "schema/known_tables.h"

#include <unordered_map>
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

KnownTable ReadTable(DatabaseSession& session, std::string name)
{
    KnownTable table;
    table.name = std::move(name);
    Origins origins = session.OriginsOf(table.name);
    table.origin = std::move(origins.table);
    std::unordered_map<std::string, ColumnOrigin> known;
    for (NamedColumnOrigin& column : origins.columns)
        known.emplace(std::move(column.column), std::move(column.origin));
    jet::Rowset rows = session.OpenSchema(jet::SchemaKind::Columns, {"", "", table.name});
    for (; !rows.Eof(); rows.MoveNext()) {
        KnownColumn column{rows.Text("COLUMN_NAME"), TakesText(rows.Text("DATA_TYPE")), {}};
        if (const auto origin = known.find(column.name); origin != known.end())
            column.origin = origin->second;
        table.columns.push_back(std::move(column));
    }
    return table;
}

} // namespace

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
    for (jet::Rowset rows = session.OpenSchema(jet::SchemaKind::ForeignKeys, {}); !rows.Eof(); rows.MoveNext())
        known.relations.push_back(rows.Text("FK_NAME"));
    for (jet::Rowset rows = session.OpenSchema(jet::SchemaKind::Indexes, {}); !rows.Eof(); rows.MoveNext())
        known.indexes.push_back(rows.Text("INDEX_NAME"));
    return known;
}

} // namespace velmora
