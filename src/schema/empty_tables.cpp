#include "schema/empty_tables.h"

#include <string>
#include <utility>
#include <vector>

namespace velmora {

namespace {

/// One pass over all tables; gives the names of those that have rows left.
std::vector<std::string> EmptyEachTable(Job& job, DatabaseSession& session, Step& step)
{
    std::vector<std::string> filled;
    for (const std::string& table : session.UserTables()) {
        job.ProcessEvents();
        const std::string sql = "DELETE * FROM [" + table + "]";
        step(sql);
        session.ExecuteSql(sql);
        if (!session.OpenTable(table).Eof())
            filled.push_back(table);
    }
    return filled;
}

} // namespace

void velEmptyTablesAll(Job& job, DatabaseSession& session)
{
    Procedure(job, "velDropTablesAll", [&](Step& step) {
        job.log.ProtocolAppend("Deleting content of all tables");
        std::vector<std::string> filledBefore;
        for (;;) {
            step("Loop through all tables");
            std::vector<std::string> filled = EmptyEachTable(job, session, step);
            if (filled.empty())
                return;
            if (filled == filledBefore)
                throw RuntimeError(runtime_errors::kApplicationDefined,
                                   "Table [" + filled.front() + "] keeps its rows however often they are deleted");
            filledBefore = std::move(filled);
        }
    });
}

} // namespace velmora
