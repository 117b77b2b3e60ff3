#include "schema/database_session.h"

#include "jet/error.h"
#include "platform/paths.h"
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
        throw FromEngine(error);
    }
}

/// A new database will take the place of what stands at `target`.
void RemoveOld(Job& job, const fs::path& target)
{
    if (jet::Connection::CanReplace(target)) {
        job.log.ProtocolAppend("MDB file deleted");
        return;
    }
    job.log.ProtocolAppend("Could not delete MDB file");
    throw RuntimeError(
        runtime_errors::kPermissionDenied,
        "The database \"" + job.controls.txtFILE_MDB.text +
            "\" could not be deleted: it is no ordinary file, is in use or must not be written; it was left as "
            "it is (-recreate_database keeps it and adds to it)");
}

void CreateNew(Job& job, DatabaseSession& session, const fs::path& target, Step& step)
{
    step("Create MDB File");
    job.log.ProtocolAppend("Create database");
    const bool access97 = job.controls.cboDatabase.Text() == "Access 97";
    session.Create(target, access97 ? jet::JetVersion::Jet3 : jet::JetVersion::Jet4,
                   job.settings.blRecreateDatabase ? jet::Existing::Replace : jet::Existing::Refuse);
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
        if (job.settings.blRecreateDatabase && exists)
            RemoveOld(job, target);
        if (job.settings.blRecreateDatabase || !exists) {
            CreateNew(job, session, target, step);
            return; // a new database is open already
        }
        step("Open ADO Connection");
        session.Open(target);
    });
}

} // namespace velmora
