#include "plan/rules.h"

#include "plan/complete_model.h"

#include <limits>

namespace velmora {

namespace {

using Kind = ColumnOrigin::Kind;

/// What the import does with the elements of a path.
void PlanPath(const CompleteModel& model, MappingPlan& plan, PathId path)
{
    PathPlan& way = plan.paths[path];
    way.keepsEmpty = true;
    if (!model.isRecord[path]) {
        way.outerText =
            model.PlaceOf(model.FamilyOf(model.ParentOf(path)), Kind::Child, model.document.Paths().Name(path));
        return;
    }
    const PathFacts& facts = model.facts[path];
    const Family number = model.FamilyOf(path);
    way.isEntered = true;
    way.hasOnlyLeaves = true; // until the first of its records comes
    plan.paths[model.ParentOf(path)].hasOnlyLeaves = false;
    way.table = model.families[number].table;
    way.readsLeaves = facts.hasChildren;
    way.writesOwnText = facts.hasText || (!facts.hasChildren && !model.HasAttributes(path));
    if (way.table == kNoTable)
        return;
    plan.recordEstimate += static_cast<std::int32_t>(facts.count);
    if (way.writesOwnText)
        way.ownText = model.PlaceOf(number, Kind::Text, 0);
    way.firstAttribute = static_cast<std::uint32_t>(plan.attributes.size());
    if (!model.settings.blImportAttributes)
        return;
    for (const AttributeFacts& attribute : facts.attributes)
        plan.attributes.push_back({attribute.name, model.PlaceOf(number, Kind::Attribute, attribute.name)});
    way.attributeCount = static_cast<std::uint32_t>(plan.attributes.size()) - way.firstAttribute;
}

} // namespace

MappingPlan PlanByCompleteRules(Document& document, const std::vector<PathFacts>& facts, const KnownDatabase& known,
                                const ConversionSettings& settings, const TagMap& map)
{
    CompleteModel model{document, facts, known, settings, map};
    ReadWhatIsKnown(model);
    FindRecords(model);
    TakeTablesByName(model);

    MappingPlan plan;
    plan.importsAttributes = settings.blImportAttributes;
    plan.keepsEmptyAttributes = true;
    plan.widensByTag = false;
    plan.importsEverything = true;
    PlanTables(model, plan);
    plan.paths.resize(facts.size());
    for (PathId path = 1; path < facts.size(); ++path)
        if (facts[path].count > 0)
            PlanPath(model, plan, path);
    return plan;
}

} // namespace velmora
