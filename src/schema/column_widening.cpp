#include "schema/column_widening.h"

#include "schema/engine_errors.h"
#include "schema/refused_change.h"

namespace velmora {

namespace {

/// "[a], [b]", each followed by `typeOf(column)`.
template <class TypeOf>
std::string Listed(const std::vector<ColumnToWiden>& columns, TypeOf&& typeOf)
{
    std::string list;
    for (const ColumnToWiden& column : columns) {
        list += list.empty() ? "[" : ", [";
        list += column.column + "]";
        list += typeOf(column);
    }
    return list;
}

std::string AlterStatement(const std::string& table, const std::vector<ColumnToWiden>& columns)
{
    const auto typeOf = [](const ColumnToWiden& column) {
        return column.target == ColumnToWiden::Target::Memo ? " LONGTEXT" : " TEXT(255)";
    };
    return "ALTER TABLE [" + table + "] ALTER COLUMN " + Listed(columns, typeOf) + ";";
}

/// A relation or an index stands in the way, or a row has no room for the text.
bool KeepsItsType(std::int32_t error)
{
    switch (error) {
    case engine_errors::kFieldInRelation:
    case engine_errors::kFieldInIndex:
    case engine_errors::kRecordTooLarge:
    case engine_errors::kDuplicateKey:
        return true;
    default:
        return false;
    }
}

} // namespace

void velChangeColumnToMemo(Job& job, DatabaseSession& session, const std::string& table,
                           const std::vector<ColumnToWiden>& columns)
{
    const std::string names = Listed(columns, [](const ColumnToWiden&) { return ""; });
    Procedure(job.log, "velChangeColumnToMemo", names + " " + table, [&](Step& step) {
        const std::string statement = AlterStatement(table, columns);
        step(statement);
        try {
            session.ExecuteSql(statement);
        } catch (const RuntimeError& error) {
            const ColumnToWiden& first = columns.front();
            throw ExplainWidening(error, {table, first.column, first.characters, first.path});
        }
        for (const ColumnToWiden& column : columns)
            job.log.ProtocolAppend("Column widened: [" + table + "].[" + column.column + "], " +
                                   std::to_string(column.characters) + " characters at " + column.path);
        session.Report(table).widenedColumns += static_cast<std::int64_t>(columns.size());
    });
}

void TurnIntoText(Job& job, DatabaseSession& session, const std::string& table, const ChosenType& column,
                  const std::string& reason)
{
    Procedure(
        job.log, "TurnIntoText", [&] { return "[" + column.column + "] " + table; },
        [&](Step& step) {
            const std::string statement = "ALTER TABLE [" + table + "] ALTER COLUMN [" + column.column + "] TEXT(255);";
            step(statement);
            try {
                session.ExecuteSql(statement);
            } catch (const RuntimeError& error) {
                if (!KeepsItsType(error.Number()))
                    throw;
                throw RuntimeError(engine_errors::kWrongType, error.what());
            }
            session.SetOrigins(table, {{}, {}, {{column.column, ColumnType::Text}}});
            std::string line = "Column became a text: [";
            line.append(table).append("].[").append(column.column).append("] was ").append(NameOf(column.type));
            job.log.Warn("column-became-text", line.append(", ").append(reason));
            ++session.Report(table).widenedColumns;
        });
}

void AddColumnBeside(Job& job, DatabaseSession& session, const std::string& table, const std::string& besides,
                     const std::string& name, const std::string& path)
{
    Procedure(job.log, "AddColumnBeside", table, [&](Step& step) {
        const std::string statement = "ALTER TABLE [" + table + "] ADD COLUMN [" + name + "] LONGTEXT";
        step(statement);
        session.ExecuteSql(statement);
        session.SetOrigins(table, {{}, {{name, {.kind = ColumnOrigin::Kind::Overflow, .name = besides}}}});
        job.log.ProtocolAppend("New column: [" + table + "].[" + name + "], for values that do not fit [" + besides +
                               "], the first at " + path);
        ++session.Report(table).newColumns;
    });
}

} // namespace velmora
