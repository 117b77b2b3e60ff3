#include "schema/catalog_queries.h"

#include "jet/base/error.h"
#include "schema/engine_errors.h"

namespace velmora {

namespace {

using jet::SchemaKind;

/// Runs `query(Step&)` as the procedure `name`; its first step is its trace line.
template <class Query>
bool AnswerFor(Job& job, std::string_view name, Query&& query)
{
    Step step(job.log, name);
    try {
        return query(step);
    } catch (const jet::Error& error) {
        throw EngineError(error, RuntimeError::Place{std::string(name), step.Statement()});
    } catch (const std::exception&) {
        RethrowWithPlace(step);
    }
}

bool AnyRow(jet::Rowset rows, std::string_view field, std::string_view value)
{
    for (; !rows.Eof(); rows.MoveNext())
        if (rows.Text(field) == value)
            return true;
    return false;
}

/// Leaves `name` when `isTaken` says no, else puts `replacement` in its place, which must be free then.
template <class IsTaken>
void SettleName(std::string& name, const std::string& replacement, std::string_view what, IsTaken&& isTaken)
{
    if (!isTaken(name))
        return;
    if (name == replacement || isTaken(replacement))
        throw RuntimeError(runtime_errors::kApplicationDefined,
                           "No free name for the " + std::string(what) + ": [" + name + "] and [" + replacement +
                               "] are both taken; another table_prefix or table_suffix gives it another name");
    name = replacement;
}

} // namespace

bool velCheckExistsColumn(Job& job, DatabaseSession& session, TableColumns& columns, const std::string& column)
{
    return AnswerFor(job, "velCheckExistsColumn", [&](Step& step) {
        step("Check if column [" + columns.table + "].[" + column + "] exists");
        if (!columns.names) {
            jet::Rowset rows = session.OpenSchema(SchemaKind::Columns, {"", "", columns.table});
            for (columns.names.emplace(); !rows.Eof(); rows.MoveNext())
                columns.names->insert(rows.Text("COLUMN_NAME"));
        }
        return columns.names->contains(column);
    });
}

bool velCheckExistsTable(Job& job, DatabaseSession& session, const std::string& table)
{
    return AnswerFor(job, "velCheckExistsTable", [&](Step& step) {
        step("Check if table [" + table + "] exists");
        return !session.OpenSchema(SchemaKind::Tables, {"", "", table, "TABLE"}).Eof();
    });
}

bool velCheckExistsRelation(Job& job, DatabaseSession& session, const std::string& parent, const std::string& child,
                            std::string& relation)
{
    return AnswerFor(job, "velCheckExistsRelation", [&](Step& step) {
        step("Check if table [" + child + "] references [" + parent + "]");
        if (AnyRow(session.OpenSchema(SchemaKind::TableConstraints, {"", "", "", "", "", child}), "CONSTRAINT_TYPE",
                   "FOREIGN KEY"))
            return true;
        SettleName(relation, child + "_LINK_0", "relation", [&](const std::string& name) {
            step("Check if constraint named [" + name + "] exists");
            return !session.OpenSchema(SchemaKind::ReferentialConstraints, {"", "", name}).Eof();
        });
        return false;
    });
}

bool velCheckExistsIndex(Job& job, DatabaseSession& session, const std::string& table, const std::string& column,
                         std::string& index)
{
    return AnswerFor(job, "velCheckExistsIndex", [&](Step& step) {
        step("Check if index on [" + table + "].[" + column + "] exists");
        if (AnyRow(session.OpenSchema(SchemaKind::Indexes, {"", "", "", "", table}), "COLUMN_NAME", column))
            return true;
        SettleName(index, table + "_" + column + "_0", "index", [&](const std::string& name) {
            step("Check if index named [" + name + "] exists");
            return !session.OpenSchema(SchemaKind::Indexes, {"", "", name}).Eof();
        });
        return false;
    });
}

} // namespace velmora
