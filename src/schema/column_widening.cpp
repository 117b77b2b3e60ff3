#include "schema/column_widening.h"

#include "platform/clock.h"

#include <ctime>

namespace velmora {

namespace {

/// "tmp_20240131235959". Two widenings in one second use one name: the first has dropped its column before the second
/// begins.
std::string TemporaryName()
{
    std::string name = "tmp_" + TimeStamp(std::time(nullptr));
    std::erase_if(name, [](char c) { return c == '-' || c == ':' || c == ' '; });
    return name;
}

} // namespace

bool velChangeColumnToMemo(Job& job, DatabaseSession& session, Recordset& records, std::string column)
{
    const std::string table = records.Source();
    return Procedure(job.log, "velChangeColumnToMemo", "[" + column + "] " + table, [&](Step& step) {
        step("Save the pending record of [" + table + "]");
        const SuspendedRecord suspended(records);
        records.Close();

        const std::string inTable = "ALTER TABLE [" + table + "] ";
        const std::string temporary = TemporaryName();
        const auto execute = [&](const std::string& sql) {
            step(sql);
            session.ExecuteSql(sql);
        };
        execute(inTable + "ADD COLUMN [" + temporary + "] LONGTEXT;");
        execute("UPDATE [" + table + "] SET [" + temporary + "] = [" + column + "]");
        execute(inTable + "DROP COLUMN [" + column + "];");
        execute(inTable + "ADD COLUMN [" + column + "] LONGTEXT;");
        execute("UPDATE [" + table + "] SET [" + column + "] = [" + temporary + "]");
        execute(inTable + "DROP COLUMN [" + temporary + "];");

        step("Restore the pending record of [" + table + "]");
        session.Reopen(records);
        suspended.Restore(records);
        ++session.Report(table).widenedColumns;
    });
}

} // namespace velmora
