#include "import/table_sinks.h"

#include "import/text_export.h"
#include "schema/catalog_queries.h"
#include "schema/engine_errors.h"

#include <algorithm>
#include <string>

namespace velmora {

TableSink& TableSinks::Append(const PlannedTable& table)
{
    TableSink& sink = sinks_.emplace_back();
    sink.plan = &table;
    return sink;
}

std::int64_t TableSinks::SavedRecords() const noexcept
{
    std::int64_t records = 0;
    for (const TableSink& sink : sinks_)
        records += sink.savedRecords;
    return records;
}

void TableSink::DropPending()
{
    if (records->IsOpen() && records->IsPending())
        records->CancelUpdate();
}

void TableSink::RemoveProvisionalRows()
{
    savedRecords -= static_cast<std::int64_t>(provisionalRows.size());
    if (text.file)
        text.file->RollBack();
    try {
        if (records->IsOpen())
            for (const std::uint64_t row : provisionalRows)
                records->DeleteBookmark(row);
    } catch (const RuntimeError& error) {
        if (error.Number() != engine_errors::kRecordDeleted)
            throw;
        // A widening has made the engine write the table anew, with all rows in other places: their key tells them.
        if (foreignKey)
            records->DeleteRows(*foreignKey, provisionalKey);
    }
    provisionalRows.clear();
}

void velOpenTables(Job& job, DatabaseSession& session, const MappingPlan& plan, FilesOfRun& filesOfRun,
                   TableSinks& sinks)
{
    Procedure(job, "velOpenTables", [&](Step& step) {
        for (TableNumber number = 1; number <= plan.LastTable(); ++number) {
            const PlannedTable& table = plan.tables[number];
            TableSink& sink = sinks.Append(table);
            if (!velCheckExistsTable(job, session, table.name))
                continue;
            step("Open table [" + table.name + "]");
            sink.records.emplace(session.OpenTable(table.name));
        }
        if (job.settings.blTextExport)
            TextFileOpener(job, sinks.Texts(), filesOfRun).OpenAll(sinks, step);
    });
}

namespace {

/// What velCloseTables tells about one document.
struct Shortfall {
    std::size_t replacedCharacters = 0;
    std::string firstReplacedIn; ///< "[table].[column]"
    std::int64_t recordsWithoutText = 0;
    std::string firstTableWithoutText;
};

void Count(const TableSink& sink, bool textExport, Shortfall& shortfall)
{
    const Recordset& records = *sink.records;
    shortfall.replacedCharacters += records.ReplacedCharacters();
    if (shortfall.firstReplacedIn.empty() && records.ReplacedCharacters() > 0)
        shortfall.firstReplacedIn = "[" + records.Source() + "].[" + records.FirstReplacedColumn() + "]";
    if (!textExport || sink.text.file != nullptr || sink.savedRecords == 0)
        return;
    shortfall.recordsWithoutText += sink.savedRecords;
    if (shortfall.firstTableWithoutText.empty())
        shortfall.firstTableWithoutText = records.Source();
}

void Tell(ProtocolLog& log, const Shortfall& shortfall)
{
    if (shortfall.replacedCharacters > 0)
        log.Warn("characters-replaced",
                 "Access 97 cannot store " + std::to_string(shortfall.replacedCharacters) +
                     " characters, which became \"?\", the first in " + shortfall.firstReplacedIn,
                 static_cast<std::int64_t>(shortfall.replacedCharacters));
    if (shortfall.recordsWithoutText > 0)
        log.Warn("records-without-text",
                 "Not in a text file: " + std::to_string(shortfall.recordsWithoutText) +
                     " records, the first of table [" + shortfall.firstTableWithoutText + "]",
                 shortfall.recordsWithoutText);
}

/// One line for each column in a run.
void TellColumnsWithoutZone(ProtocolLog& log, const Recordset& records, TableReport& report)
{
    for (const std::string& column : records.ColumnsWithoutZone())
        if (report.columnsWithoutZone.insert(column).second)
            log.Warn("time-zones-left-out",
                     "Time zones left out, the times are as written: [" + records.Source() + "].[" + column + "]");
}

void CloseRecordset(Recordset& records, Step& step)
{
    if (!records.IsOpen())
        return;
    step("Close table [" + records.Source() + "]");
    records.Close();
}

/// Records that were begun, and rows that were saved for them.
template <class Attempt>
void DropUnfinished(TableSinks& sinks, Attempt&& attempt)
{
    for (TableNumber number = 1; number <= sinks.Last(); ++number) {
        TableSink& sink = sinks[number];
        if (!sink.records)
            continue;
        attempt([&] { sink.DropPending(); });
        if (!sink.provisionalRows.empty())
            attempt([&] { sink.RemoveProvisionalRows(); });
    }
}

} // namespace

std::int64_t velCloseTables(Job& job, DatabaseSession& session, TableSinks& sinks)
{
    job.log.Trace("velCloseTables: ");
    if (sinks.Last() == kNoTable && job.settings.blAbort)
        return 0;
    job.log.ProtocolAppend("Close tables");
    Step step(job.log, "velCloseTables");
    // One failure does not keep the others open.
    const auto attempt = [&](auto&& closing) {
        try {
            closing();
        } catch (const RuntimeError& error) {
            job.log.ErrorReport("velCloseTables", step.Statement(), error);
        }
    };
    DropUnfinished(sinks, attempt);
    Shortfall shortfall;
    for (TableNumber number = 1; number <= sinks.Last(); ++number) {
        TableSink& sink = sinks[number];
        if (!sink.records)
            continue;
        TableReport& report = session.Report(sink.records->Source());
        report.records += sink.savedRecords;
        for (const auto& [column, characters] : sink.longest)
            report.longest[column] = std::max(report.longest[column], characters);
        TellColumnsWithoutZone(job.log, *sink.records, report);
        Count(sink, job.settings.blTextExport, shortfall);
        attempt([&] { CloseRecordset(*sink.records, step); });
        sink.records.reset();
    }
    for (auto& entry : sinks.Texts().All()) {
        attempt([&] {
            step("Close file [" + entry.first + "]");
            entry.second.Flush();
        });
    }
    Tell(job.log, shortfall);
    return shortfall.recordsWithoutText;
}

void FieldFinder::LookUp(const TableSink& sink, ColumnNumber column)
{
    const Recordset& records = *sink.records;
    Slot& slot = slots_[column];
    slot = {.layout = records.Layout()};
    if (const auto field = records.FieldIndex(plan_.columns[column].name)) {
        slot.field = static_cast<std::uint32_t>(*field);
        slot.refusal = IsKey(sink, *field) ? LossReason::KeyColumn : LossReason::None;
    }
}

/// Only its type tells a key column from one of the document's own that bears its name, in a table without keys.
bool FieldFinder::IsKey(const TableSink& sink, std::size_t field)
{
    const Recordset& records = *sink.records;
    const PlannedKeys& keys = sink.plan->keys;
    const std::string& name = records.FieldName(field);
    if (name == keys.primary)
        return records.IsAutonumber(field);
    if (name == keys.foreign)
        return records.IsLong(field);
    if (name != keys.master)
        return false;
    const auto primary = records.FieldIndex(keys.primary);
    return primary && records.IsAutonumber(*primary);
}

} // namespace velmora
