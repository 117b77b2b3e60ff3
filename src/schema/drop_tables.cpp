#include "schema/drop_tables.h"

#include "schema/lock_retry.h"

#include <string>
#include <string_view>

namespace velmora {

namespace {

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

void velDropTablesAll(Job& job, DatabaseSession& session)
{
    Procedure(job, "velDropTablesAll", [&](Step& step) {
        job.log.ProtocolAppend("Drop all tables");
        DropRelations(job, session, step);
        DropUserTables(job, session, step);
    });
}

} // namespace velmora
