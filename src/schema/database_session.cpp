#include "schema/database_session.h"

#include "jet/base/error.h"
#include "platform/paths.h"
#include "schema/clear_tables.h"
#include "schema/engine_errors.h"
#include "schema/origin_properties.h"
#include "settings/threads.h"

#include <algorithm>
#include <iterator>

namespace velmora {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kCreated = "Create database";

void CreateNew(Job& job, DatabaseSession& session, const fs::path& target, jet::Existing existing)
{
    const fs::path folder = target.parent_path();
    if (!folder.empty() && !fs::is_directory(folder))
        throw RuntimeError(runtime_errors::kPathNotFound, "The database \"" + job.settings.targetFile +
                                                              "\" cannot be made: its folder does not exist");
    const bool access97 = job.settings.databaseFormat == "Access 97";
    session.Create(target, access97 ? jet::JetVersion::Jet3 : jet::JetVersion::Jet4, existing);
}

/// Puts a new database in the place of the one at `target`. False when that one must not be touched; a full or failing
/// disk is no such reason, and the run ends with it.
bool TryReplace(Job& job, DatabaseSession& session, const fs::path& target, Step& step)
{
    if (!jet::Connection::CanReplace(target))
        return false;
    step("Create MDB File");
    try {
        CreateNew(job, session, target, jet::Existing::Replace);
    } catch (const RuntimeError& error) {
        if (!IsDiskFailure(error))
            return false;
        throw;
    }
    session.AnnounceWithCommit("MDB file deleted");
    session.AnnounceWithCommit(std::string(kCreated));
    return true;
}

/// Of a type that the program chooses by itself.
jet::ColumnType TypeInFile(ColumnType type)
{
    switch (type) {
    case ColumnType::YesNo:
        return jet::ColumnType::Boolean;
    case ColumnType::Long:
        return jet::ColumnType::Long;
    case ColumnType::Double:
        return jet::ColumnType::Double;
    case ColumnType::Date:
    case ColumnType::Time:
        return jet::ColumnType::DateTime;
    case ColumnType::Memo:
        return jet::ColumnType::Memo;
    case ColumnType::Text:
        break;
    }
    return jet::ColumnType::Text;
}

std::string_view FormatName(jet::JetVersion version)
{
    return version == jet::JetVersion::Jet3 ? "Access 97" : "Access 2000";
}

/// A database that is kept keeps its format, whatever is asked for.
void TellOfOtherFormat(Job& job, const DatabaseSession& session)
{
    const std::string_view stays = FormatName(session.Version());
    const std::string_view wanted = job.settings.databaseFormat;
    if (stays == wanted)
        return;
    std::string line = "The database stays in the format of " + std::string(stays);
    if (session.Version() == jet::JetVersion::Jet3)
        line += ", with the characters of code page 1252";
    job.log.Warn("format-kept", line + "; " + std::string(wanted) + " (ver=) is for new ones");
}

/// The old database is kept, but for its tables.
void OpenAndDropTables(Job& job, DatabaseSession& session, const fs::path& target, Step& step)
{
    job.log.ProtocolAppend("Could not delete MDB file");
    if (!fs::is_regular_file(target))
        throw RuntimeError(runtime_errors::kPermissionDenied,
                           "The database \"" + job.settings.targetFile +
                               "\" could not be deleted: it is no ordinary file; it was left as it is");
    job.log.Trace("blAllTabelesWillBeDropped = True");
    step("Open ADO Connection");
    session.Open(target);
    TellOfOtherFormat(job, session);
    velDropTablesAll(job, session);
}

} // namespace

void DatabaseSession::Create(const fs::path& path, jet::JetVersion version, jet::Existing existing)
{
    ++schemaState_;
    connection_ = Translated([&] { return jet::Connection::Create(path, version, existing, Files(), Threads()); });
}

void DatabaseSession::Open(const fs::path& path)
{
    ++schemaState_;
    connection_ = Translated([&] { return jet::Connection::Open(path, Files(), Threads()); });
}

void DatabaseSession::OpenReadOnly(const fs::path& path)
{
    ++schemaState_;
    connection_ = Translated([&] { return jet::Connection::OpenReadOnly(path, Files()); });
}

NameRules DatabaseSession::Names() const
{
    const jet::Connection* const connection = connection_.get();
    return {[connection](std::string_view name) { return connection->NameKey(name); },
            [connection](std::string_view name, std::size_t max) { return connection->ValidName(name, max); }};
}

void DatabaseSession::ExecuteSql(std::string_view sql)
{
    ++schemaState_;
    Translated([&] {
        if (locks_.onWrite)
            locks_.onWrite();
        connection_->Execute(sql);
    });
}

jet::Rowset DatabaseSession::OpenSchema(jet::SchemaKind kind, const jet::Restrictions& restrictions)
{
    return Translated([&] { return connection_->OpenSchema(kind, restrictions); });
}

std::vector<std::string> DatabaseSession::UserTables()
{
    std::vector<std::string> names;
    for (jet::Rowset rows = OpenSchema(jet::SchemaKind::Tables, {"", "", "", "TABLE"}); !rows.Eof(); rows.MoveNext())
        names.push_back(rows.Text("TABLE_NAME"));
    return names;
}

Recordset DatabaseSession::OpenTable(std::string_view table)
{
    return Translated([&] {
        // The engine's recordset stays where it is made.
        return Recordset(std::unique_ptr<jet::Recordset>(new jet::Recordset(connection_->OpenTable(table))), locks_);
    });
}

std::vector<ColumnType> DatabaseSession::ChosenTypes(const Recordset& records, std::optional<std::size_t> key)
{
    std::vector<ColumnType> types(records.FieldCount(), ColumnType::Text);
    const auto mayBeChosen = [&](std::size_t field) {
        return records.Type(field) != jet::ColumnType::Text && records.Type(field) != jet::ColumnType::Memo &&
               !records.IsAutonumber(field) && field != key;
    };
    std::size_t candidates = 0;
    for (std::size_t field = 0; field < types.size(); ++field)
        candidates += mayBeChosen(field) ? 1 : 0;
    if (candidates == 0)
        return types;
    for (const ChosenType& chosen : OriginsOf(records.Source()).types) {
        const auto field = records.FieldIndex(chosen.column);
        if (field && mayBeChosen(*field) && records.Type(*field) == TypeInFile(chosen.type))
            types[*field] = chosen.type;
    }
    return types;
}

Origins DatabaseSession::OriginsOf(std::string_view table)
{
    return ToOrigins(Translated([&] { return connection_->Properties(table); }));
}

void DatabaseSession::SetOrigins(std::string_view table, const Origins& origins)
{
    ++schemaState_;
    const std::vector<jet::Property> properties = ToProperties(origins, IsAccess97());
    Translated([&] {
        if (locks_.onWrite)
            locks_.onWrite();
        connection_->SetProperties(table, properties);
    });
}

void DatabaseSession::Commit()
{
    Translated([&] { connection_->Commit(); });
    for (const TableReport& report : pending_) {
        const auto [at, isNew] = committedAt_.emplace(report.table, committed_.size());
        TableReport& total =
            isNew ? committed_.emplace_back(TableReport{.table = report.table}) : committed_[at->second];
        total.records += report.records;
        total.newColumns += report.newColumns;
        total.widenedColumns += report.widenedColumns;
        for (const auto& [column, characters] : report.longest)
            total.longest[column] = std::max(total.longest[column], characters);
        total.columnsWithoutZone = report.columnsWithoutZone; // which began with those known
    }
    pendingBy_.clear();
    pending_.clear();
    std::ranges::move(announced_, std::back_inserter(becomeTrue_));
    announced_.clear();
    noted_.clear();
}

void DatabaseSession::TakeBack()
{
    Close();
    pendingBy_.clear();
    pending_.clear();
    announced_.clear();
    ownNames_.clear();
    for (const auto& [names, name] : noted_)
        names->erase(name);
    noted_.clear();
}

DatabaseContents DatabaseSession::Contents()
{
    return Translated([&] { return ContentsOf(*connection_); });
}

std::size_t DatabaseSession::ObjectsLeft()
{
    return Translated([&] { return connection_->ObjectsLeft(); });
}

std::string DatabaseSession::OwnName(const std::string& table)
{
    const auto [known, isNew] = ownNames_.emplace(table, table);
    if (!isNew)
        return known->second;
    const jet::Rowset rows = OpenSchema(jet::SchemaKind::Tables, {"", "", table, "TABLE"});
    if (!rows.Eof())
        known->second = rows.Text("TABLE_NAME");
    return known->second;
}

TableReport& DatabaseSession::Report(const std::string& table)
{
    const std::string name = OwnName(table);
    TableReport*& report = pendingBy_[name];
    if (report)
        return *report;
    report = &pending_.emplace_back(TableReport{.table = name});
    if (const auto known = committedAt_.find(name); known != committedAt_.end())
        report->columnsWithoutZone = committed_[known->second].columnsWithoutZone;
    return *report;
}

namespace {

/// With `isOneOfMany` the database is one that others may be making at this moment, too: theirs is left to them.
void OpenTarget(Job& job, DatabaseSession& session, const fs::path& target, bool isOneOfMany, Step& step)
{
    const bool exists = fs::exists(target);
    if (exists && job.settings.blRecreateDatabase) {
        if (TryReplace(job, session, target, step))
            step("Open ADO Connection"); // which a new one is already
        else if (isOneOfMany)
            throw EngineError(jet::Error(jet::ErrorNumber::FileInUse, {job.settings.targetFile}));
        else
            OpenAndDropTables(job, session, target, step);
        return;
    }
    if (!exists) {
        step("Create MDB File");
        CreateNew(job, session, target, isOneOfMany ? jet::Existing::Replace : jet::Existing::Refuse);
        session.AnnounceWithCommit(std::string(kCreated));
        step("Open ADO Connection"); // which a new one is already
        return;
    }
    step("Open ADO Connection");
    session.Open(target);
    TellOfOtherFormat(job, session);
}

/// A user who does not want another try ends the run.
bool WantsAnotherTry(Job& job)
{
    if (job.settings.blQuiet)
        return false;
    const std::string database = "Database [" + job.settings.targetFile + "]";
    const Answer answer =
        job.host.Ask(database + " is in use by somebody else.\r\nDo you want to try to open it one more time?",
                     "Open database", Buttons::RetryCancel, Icon::Question, Answer::Retry);
    if (answer == Answer::Retry)
        return true;
    job.log.ProtocolAppend("Error: Open database failed. " + database + " is in use. No retry.");
    throw Aborted();
}

} // namespace

void velOpenDatabase(Job& job, DatabaseSession& session, const std::function<bool()>& moveOn)
{
    Procedure(job, "velOpenDatabase", [&](Step& step) {
        if (job.settings.targetFile.empty()) {
            step("Target MDB file not specified");
            throw RuntimeError(runtime_errors::kBadFileName, "Target MDB file not specified");
        }
        session.SetThreads(ThreadsOf(job.settings));
        const auto open = [&] {
            OpenTarget(job, session, PathFromUtf8(NativePath(job.settings.targetFile)), moveOn != nullptr, step);
        };
        RetryWhile(IsFileInUse, open, [&] { return (moveOn && moveOn()) || WantsAnotherTry(job); });
    });
}

void velReopenDatabase(Job& job, DatabaseSession& session)
{
    Procedure(job, "velReopenDatabase", [&](Step& step) {
        step("Open ADO Connection");
        const auto open = [&] { session.Open(PathFromUtf8(NativePath(job.settings.targetFile))); };
        RetryWhile(IsFileInUse, open, [&] { return WantsAnotherTry(job); });
    });
}

} // namespace velmora
