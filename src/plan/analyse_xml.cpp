#include "plan/analyse_xml.h"

#include "plan/rules.h"
#include "xml/structure_model.h"

#include <algorithm>

namespace velmora {

namespace {

MappingPlan PlanCompletely(Job& job, Document& document, const TagMap& map, const KnownDatabase& known)
{
    const std::vector<PathFacts> facts = GatherFacts(document, job.settings.blTypes, [&] { job.ProcessEvents(); });
    MappingPlan plan = PlanByCompleteRules(document, facts, known, job.settings, map);
    for (const std::string& note : plan.notes)
        job.log.Warn("plan-note", note);
    job.host.SetProgressRange(ProgressBarId::Records, std::max(1, plan.recordEstimate));
    return plan;
}

/// The complete rules do without the structure: only who looks at it wants it. Its paths are new ones, behind the
/// plan's.
void DescribeStructure(Job& job, Document& document, const MappingPlan& plan, StructureModel& model)
{
    AnalyseStructure(job, document, model);
    for (std::size_t i = 1; i <= model.UpperBound(); ++i) {
        ElementInfo& entry = model.Element(i);
        if (entry.strPath < plan.paths.size())
            entry.lngTableNo = static_cast<std::int32_t>(plan.paths[entry.strPath].table);
    }
}

} // namespace

void velAnalyseXML(Job& job, Document& document, const TagMap& map, StructureModel& model, MappingPlan& plan,
                   const std::function<const KnownDatabase&()>& readDatabase)
{
    Procedure(job.log, "velAnalyseXML", {}, [&](Step& step) {
        job.log.ProtocolAppend("Analyse XML");
        model = StructureModel();
        model.Reserve(document.Paths().Size());
        if (job.settings.blComplete) {
            job.ProcessEvents(); // throws when there is no database
            if (document.IsEmpty())
                return;
            plan = PlanCompletely(job, document, map, readDatabase());
            if (job.host.ShowsStructure())
                DescribeStructure(job, document, plan, model);
            return;
        }
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
        if (job.settings.blTypes && !document.IsEmpty()) {
            step("Choose column types");
            const auto onPiece = [&] { job.ProcessEvents(); };
            ChoosePlainTypes(GatherFacts(document, true, onPiece), job.settings, plan);
        }
    });
}

} // namespace velmora
