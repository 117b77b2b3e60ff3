#include "plan/analyse_xml.h"

#include "plan/complete_rules.h"
#include "plan/plain_rules.h"
#include "xml/structure_analysis.h"

#include <algorithm>

namespace velmora {

namespace {

MappingPlan PlanCompletely(Job& job, Document& document, const TagMap& map, const KnownDatabase& known)
{
    const std::vector<PathFacts> facts = GatherFacts(document, [&] { job.ProcessEvents(); });
    MappingPlan plan = PlanByCompleteRules(document, facts, known, job.settings, map);
    for (const std::string& note : plan.notes)
        job.log.Warn("plan-note", note);
    job.host.SetProgressRange(ProgressBarId::Records, std::max(1, plan.recordEstimate));
    return plan;
}

} // namespace

void velAnalyseXML(Job& job, Document& document, const TagMap& map, StructureModel& model, MappingPlan& plan,
                   const std::function<const KnownDatabase&()>& readDatabase)
{
    Procedure(job.log, "velAnalyseXML", {}, [&](Step& step) {
        job.log.ProtocolAppend("Analyse XML");
        if (job.settings.blComplete) {
            job.ProcessEvents(); // throws when there is no database
            if (!document.IsEmpty())
                plan = PlanCompletely(job, document, map, readDatabase());
            return;
        }
        model = StructureModel();
        model.Reserve(document.Paths().Size());
        if (!document.IsEmpty()) {
            step("Analyse structure");
            try {
                AnalyseStructure(job, document, model);
            } catch (const Aborted&) {
                step("Resolve table names"); // traced however the walk has ended: readers of traces count on it
                throw;
            }
        }
        model.lngProgressMax = model.lngRecordEstimate - 1;
        job.host.SetProgressRange(ProgressBarId::Records, std::max(1, model.lngRecordEstimate));
        step("Resolve table names");
        plan = PlanByPlainRules(document, model, job.settings, map);
    });
}

} // namespace velmora
