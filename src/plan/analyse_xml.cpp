#include "plan/analyse_xml.h"

#include "plan/plain_rules.h"
#include "xml/structure_analysis.h"

#include <algorithm>

namespace velmora {

void velAnalyseXML(Job& job, Document& document, const TagMap& map, StructureModel& model, MappingPlan& plan)
{
    Procedure(job.log, "velAnalyseXML", {}, [&](Step& step) {
        job.log.ProtocolAppend("Analyse XML");
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
