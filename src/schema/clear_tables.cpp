#include "schema/clear_tables.h"

#include "schema/lock_retry.h"

#include <string>
#include <string_view>
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

/// What the user is asked, and what the protocol says when the answer is no.
struct LockedQuestion {
    std::string_view caption;
    std::string text;
    std::string refusal;
};

/// Runs the statement, again and again while its table is locked and the user wants another try. A user who does not
/// ends the run.
void ExecuteWhenUnlocked(Job& job, DatabaseSession& session, const std::string& sql, const LockedQuestion& question)
{
    const auto wantsAnotherTry = [&] {
        if (job.settings.blQuiet)
            return false;
        const Answer answer =
            job.host.Ask(question.text, question.caption, Buttons::RetryCancel, Icon::Question, Answer::Retry);
        if (answer == Answer::Retry)
            return true;
        job.log.ProtocolAppend(question.refusal);
        throw Aborted();
    };
    RetryWhile(
        IsLockConflict, [&] { session.ExecuteSql(sql); }, wantsAnotherTry);
}

LockedQuestion AboutRelation(const std::string& relation, const std::string& parent)
{
    return {"Drop constraint",
            "Table [" + parent + "] is locked.\r\nConstraint [" + relation +
                "] could not be dropped.\r\nDo you want to try to drop the constraint one more time?",
            "Error: Drop constraint [" + relation + "] failed. Table [" + parent + "] is locked. No retry."};
}

void DropRelations(Job& job, DatabaseSession& session, Step& step)
{
    step("Drop all foreign keys");
    for (jet::Rowset keys = session.OpenSchema(jet::SchemaKind::ForeignKeys, {}); !keys.Eof(); keys.MoveNext()) {
        job.ProcessEvents();
        // A key of several columns has a row for each; the first one stands for it.
        if (keys.Text("ORDINAL") != "1")
            continue;
        const std::string relation = keys.Text("FK_NAME");
        const std::string parent = keys.Text("PK_TABLE_NAME");
        ExecuteWhenUnlocked(job, session,
                            "ALTER TABLE [" + keys.Text("FK_TABLE_NAME") + "] DROP CONSTRAINT [" + relation + "]",
                            AboutRelation(relation, parent));
    }
}

void DropUserTables(Job& job, DatabaseSession& session, Step& step)
{
    step("Drop all tables");
    for (const std::string& table : session.UserTables()) {
        job.ProcessEvents();
        ExecuteWhenUnlocked(job, session, "DROP TABLE [" + table + "]",
                            {"Drop table",
                             "Table [" + table +
                                 "] is locked und could not be dropped.\r\n"
                                 "Do you want to try to drop the table one more time?",
                             "Error: Drop table [" + table + "] failed. Table is locked. No retry."});
    }
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

void velDropTablesAll(Job& job, DatabaseSession& session)
{
    Procedure(job, "velDropTablesAll", [&](Step& step) {
        job.log.ProtocolAppend("Drop all tables");
        DropRelations(job, session, step);
        DropUserTables(job, session, step);
    });
}

} // namespace velmora
