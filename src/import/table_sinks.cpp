#include "import/table_sinks.h"

#include "schema/catalog_queries.h"
#include "schema/table_name.h"

namespace velmora {

TableSink& TableSinks::Append(const ElementInfo& element)
{
    if (byPath_.size() <= element.strPath)
        byPath_.resize(element.strPath + 1, kNone);
    byPath_[element.strPath] = static_cast<int>(sinks_.size());
    TableSink& sink = sinks_.emplace_back();
    sink.element = element;
    return sink;
}

void velOpenTables(Job& job, DatabaseSession& session, StructureModel& model, const TagMap& map, TableSinks& sinks)
{
    Procedure(job, "velOpenTables", [&](Step& step) {
        for (std::size_t number = 1; number <= model.UpperBound(); ++number) {
            ElementInfo& element = model.Element(number);
            if (element.lngMaxChildren < 1 && element.lngMaxTwins < 1 && element.lngAttributes < 1)
                continue;
            if (job.settings.blAbort)
                return;
            TableSink& sink = sinks.Append(element);
            const std::string table = TableName(element, job.settings, map);
            if (!velCheckExistsTable(job, session, table))
                continue;
            step("Open table [" + table + "]");
            sink.records.emplace(session.OpenTable(table));
        }
    });
}

void velCloseTables(Job& job, DatabaseSession& session, TableSinks& sinks)
{
    job.log.Trace("velCloseTables: ");
    if (sinks.UpperBound() == 0 && job.settings.blAbort)
        return;
    job.log.ProtocolAppend("Close tables");
    Step step(job.log, "velCloseTables");
    try {
        for (int number = 1; number <= sinks.UpperBound(); ++number) {
            TableSink& sink = sinks[number];
            if (!sink.records)
                continue;
            session.Report(sink.records->Source()).records += sink.savedRecords;
            if (sink.records->IsOpen()) {
                if (sink.records->IsPending())
                    sink.records->CancelUpdate();
                step("Close table [" + sink.records->Source() + "]");
                sink.records->Close();
            }
            sink.records.reset();
        }
    } catch (const RuntimeError& error) {
        job.log.ErrorReport("velCloseTables", step.Statement(), error);
    }
}

} // namespace velmora
