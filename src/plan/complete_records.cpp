#include "plan/complete_model.h"

namespace velmora {

namespace {

using Kind = ColumnOrigin::Kind;

class RecordFinder {
public:
    explicit RecordFinder(CompleteModel& model) : model_(model) {}

    void FindRecords();
    void FindWrappers();
    void FindRecordsAround();

private:
    [[nodiscard]] bool IsRecord(PathId path) const;
    void CollectWants(PathId path);
    void AddWant(Family family, Want want);
    [[nodiscard]] bool HasOneWayIn();
    [[nodiscard]] bool NeedsNoTable(const FamilyPlan& family) const;

    CompleteModel& model_;
};

bool RecordFinder::IsRecord(PathId path) const
{
    const PathFacts& facts = model_.facts[path];
    if (model_.ParentOf(path) == 0 || facts.hasChildren || facts.isRepeated || model_.HasAttributes(path))
        return true;
    if (!model_.shares)
        return model_.families[path].known != kNoKnownTable;
    return model_.there.inside.contains(
        CompleteModel::Pair(model_.document.Paths().Name(model_.ParentOf(path)), model_.document.Paths().Name(path)));
}

void RecordFinder::FindRecords()
{
    model_.isRecord.resize(model_.facts.size());
    for (PathId path = 1; path < model_.facts.size(); ++path) {
        if (model_.facts[path].count == 0)
            continue;
        model_.isRecord[path] = IsRecord(path);
        if (model_.ParentOf(path) != 0)
            model_.childPlaces.Note(model_.FamilyOf(model_.ParentOf(path)), model_.document.Paths().Name(path));
        CollectWants(path);
    }
}

void RecordFinder::CollectWants(PathId path)
{
    const PathFacts& facts = model_.facts[path];
    if (!model_.isRecord[path]) {
        AddWant(model_.FamilyOf(model_.ParentOf(path)),
                {Kind::Child, model_.document.Paths().Name(path), path, facts.hasLongText, facts.hasEmptyText,
                 facts.isRepeated ? 0 : facts.count, facts.texts});
        return;
    }
    const Family number = model_.FamilyOf(path);
    FamilyPlan& family = model_.families[number];
    family.first = family.first == 0 ? path : family.first;
    family.paths.push_back(path);
    family.recordCount += facts.count;
    family.hasRoot = family.hasRoot || model_.ParentOf(path) == 0;
    if (facts.hasText || (!facts.hasChildren && !model_.HasAttributes(path)))
        AddWant(number, {Kind::Text, 0, path, facts.hasLongText, facts.hasEmptyText,
                         facts.hasChildren ? 0 : facts.count, facts.texts});
    if (!model_.settings.blImportAttributes)
        return;
    for (const AttributeFacts& attribute : facts.attributes) {
        model_.attributePlaces.Note(number, attribute.name);
        AddWant(number, {Kind::Attribute, attribute.name, path, attribute.isLong, attribute.hasEmpty, attribute.count,
                         attribute.values});
    }
}

void RecordFinder::AddWant(Family number, Want want)
{
    std::vector<Want>& wants = model_.families[number].wants;
    const auto [at, isNew] = model_.wants[static_cast<std::size_t>(want.kind)].try_emplace(
        CompleteModel::Pair(number, want.name), wants.size());
    if (isNew) {
        wants.push_back(want);
        return;
    }
    Want& known = wants[at->second];
    known.isLong = known.isLong || want.isLong;
    known.hasEmpty = known.hasEmpty || want.hasEmpty;
    known.count += want.count;
    known.values.Add(want.values);
}

bool RecordFinder::NeedsNoTable(const FamilyPlan& family) const
{
    if (!family.wants.empty() || family.known != kNoKnownTable)
        return false;
    // Without keys and values a table would have no column at all.
    return !model_.settings.blCreateTableRelations || (model_.settings.blSkipEmptyWrappingTags && !family.hasRoot);
}

/// Families with a table get the mark for one; its number comes later.
void RecordFinder::FindWrappers()
{
    for (FamilyPlan& family : model_.families)
        family.table = family.first != 0 && !NeedsNoTable(family) ? 1 : kNoTable;
    while (model_.shares && model_.settings.blCreateTableRelations && !HasOneWayIn())
        ;
}

/// From a record of one shared table to those of another leads one way only: else nobody could tell by the records
/// through which wrapping tags. Where a second one appears its tags become records; false then.
bool RecordFinder::HasOneWayIn()
{
    std::unordered_map<std::uint64_t, std::string> wayIn = model_.there.wayIn;
    for (PathId path = 1; path < model_.facts.size(); ++path) {
        if (model_.facts[path].count == 0 || !model_.isRecord[path] ||
            model_.families[model_.FamilyOf(path)].table == kNoTable)
            continue;
        std::vector<PathId> between;
        PathId above = model_.ParentOf(path);
        for (; above != 0 && model_.families[model_.FamilyOf(above)].table == kNoTable; above = model_.ParentOf(above))
            between.push_back(above);
        if (above == 0)
            continue;
        std::string tags;
        for (auto wrapper = between.rbegin(); wrapper != between.rend(); ++wrapper)
            tags.append(model_.TagOf(*wrapper)).append("/");
        const auto [way, isNew] =
            wayIn.try_emplace(CompleteModel::Pair(model_.FamilyOf(above), model_.FamilyOf(path)), tags);
        if (isNew || way->second == tags)
            continue;
        for (const PathId wrapper : between)
            model_.families[model_.FamilyOf(wrapper)].table = 1;
        if (!between.empty())
            return false;
        // It stands there without tags between: those of the way that came first become records.
        bool hasChanged = false;
        for (const std::string_view tag : CompleteModel::StepsOf(way->second)) {
            FamilyPlan& wrapper = model_.families[model_.document.Intern(tag)];
            hasChanged = hasChanged || (wrapper.table == kNoTable && wrapper.first != 0);
            wrapper.table = wrapper.first != 0 ? 1 : kNoTable;
        }
        if (hasChanged)
            return false;
    }
    return true;
}

void RecordFinder::FindRecordsAround()
{
    model_.around.assign(model_.facts.size(), 0);
    for (PathId path = 1; path < model_.facts.size(); ++path) {
        const PathId parent = model_.ParentOf(path);
        if (model_.facts[path].count == 0 || parent == 0)
            continue;
        model_.around[path] =
            model_.families[model_.FamilyOf(parent)].table != kNoTable ? parent : model_.around[parent];
        // Records that are there refer to the one that was around them then.
        const auto known = model_.there.stepsToParent.find(path);
        if (known == model_.there.stepsToParent.end())
            continue;
        PathId above = path;
        for (std::size_t i = 0; i < known->second && above != 0; ++i)
            above = model_.ParentOf(above);
        if (above != 0 && above != path && model_.families[above].known != kNoKnownTable)
            model_.around[path] = above;
    }
}

} // namespace

void FindRecords(CompleteModel& model)
{
    RecordFinder(model).FindRecords();
}

void FindTablesAndRecordsAround(CompleteModel& model)
{
    RecordFinder finder(model);
    finder.FindWrappers();
    finder.FindRecordsAround();
}

} // namespace velmora
