#include "schema/database_session.h"

#include "jet/error.h"
#include "platform/paths.h"
#include "schema/drop_tables.h"
#include "schema/engine_errors.h"

namespace velmora {

namespace fs = std::filesystem;

namespace {

template <class Operation>
decltype(auto) Translated(Operation&& operation)
{
    try {
        return operation();
    } catch (const jet::Error& error) {
        throw EngineError(error);
    }
}

void CreateNew(Job& job, DatabaseSession& session, const fs::path& target, jet::Existing existing)
{
    const fs::path folder = target.parent_path();
    if (!folder.empty() && !fs::is_directory(folder))
        throw RuntimeError(runtime_errors::kPathNotFound, "The database \"" + job.controls.txtFILE_MDB.text +
                                                              "\" cannot be made: its folder does not exist");
    const bool access97 = job.controls.cboDatabase.Text() == "Access 97";
    session.Create(target, access97 ? jet::JetVersion::Jet3 : jet::JetVersion::Jet4, existing);
}

void TellOfCreation(Job& job, Step& step)
{
    step("Create MDB File");
    job.log.ProtocolAppend("Create database");
}

/// Puts a new database in the place of the one at `target`. False when that one must not be touched; a full or failing
/// disk is no such reason, and the run ends with it.
bool TryReplace(Job& job, DatabaseSession& session, const fs::path& target, Step& step)
{
    if (!jet::Connection::CanReplace(target))
        return false;
    try {
        CreateNew(job, session, target, jet::Existing::Replace);
    } catch (const RuntimeError& error) {
        if (!IsDiskFailure(error))
            return false;
        TellOfCreation(job, step);
        throw;
    }
    job.log.ProtocolAppend("MDB file deleted");
    TellOfCreation(job, step);
    return true;
}

/// The old database is kept, but for its tables.
void OpenAndDropTables(Job& job, DatabaseSession& session, const fs::path& target, Step& step)
{
    job.log.ProtocolAppend("Could not delete MDB file");
    if (!fs::is_regular_file(target))
        throw RuntimeError(runtime_errors::kPermissionDenied,
                           "The database \"" + job.controls.txtFILE_MDB.text +
                               "\" could not be deleted: it is no ordinary file; it was left as it is");
    job.log.Trace("blAllTabelesWillBeDropped = True");
    step("Open ADO Connection");
    session.Open(target);
    velDropTablesAll(job, session);
}

} // namespace

void DatabaseSession::Create(const fs::path& path, jet::JetVersion version, jet::Existing existing)
{
    connection_ = Translated([&] { return jet::Connection::Create(path, version, existing); });
}

void DatabaseSession::Open(const fs::path& path)
{
    connection_ = Translated([&] { return jet::Connection::Open(path); });
}

void DatabaseSession::ExecuteSql(std::string_view sql)
{
    Translated([&] { connection_->Execute(sql); });
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
    return Recordset(Translated([&] { return connection_->OpenTable(table); }));
}

void DatabaseSession::Reopen(Recordset& recordset)
{
    recordset.Reopen(Translated([&] { return connection_->OpenTable(recordset.Source()); }));
}

void DatabaseSession::Commit()
{
    Translated([&] { connection_->Commit(); });
}

std::size_t DatabaseSession::ObjectsLeft()
{
    return Translated([&] { return connection_->ObjectsLeft(); });
}

TableReport& DatabaseSession::Report(std::string_view table)
{
    TableReport*& report = reportByTable_[std::string(table)];
    if (!report)
        report = &reports_.emplace_back(TableReport{.table = std::string(table)});
    return *report;
}

void velOpenDatabase(Job& job, DatabaseSession& session)
{
    Procedure(job, "velOpenDatabase", [&](Step& step) {
        if (job.controls.txtFILE_MDB.text.empty()) {
            step("Target MDB file not specified");
            throw RuntimeError(runtime_errors::kBadFileName, "Target MDB file not specified");
        }
        const fs::path target = PathFromUtf8(NativePath(job.controls.txtFILE_MDB.text));
        const bool exists = fs::exists(target);
        if (!exists) {
            TellOfCreation(job, step);
            CreateNew(job, session, target, jet::Existing::Refuse);
        } else if (job.settings.blRecreateDatabase && !TryReplace(job, session, target, step)) {
            OpenAndDropTables(job, session, target, step);
            return;
        }
        step("Open ADO Connection");
        if (!session.IsOpen()) // a new database is open already
            session.Open(target);
    });
}

} // namespace velmora
