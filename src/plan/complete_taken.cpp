#include "plan/complete_model.h"

#include <algorithm>

namespace velmora {

namespace {

/// A table is taken by its name by the first family that wants it, unless it would refuse that family's records: when a
/// relation makes its foreign key refer to another table than that of the record around, or when it demands a value
/// that not every record has, or that it may refuse: beside the column would be no place for it then.
class TableTaker {
public:
    explicit TableTaker(CompleteModel& model) : model_(model) {}

    void Take()
    {
        do {
            TakeFreeTables();
            FindTablesAndRecordsAround(model_);
        } while (GivesBackOne());
    }

private:
    void TakeFreeTables();
    [[nodiscard]] bool GivesBackOne();
    [[nodiscard]] std::string ReasonAgainst(const FamilyPlan& family) const;
    [[nodiscard]] std::string OtherParent(const FamilyPlan& family, const std::string& refersTo) const;
    [[nodiscard]] bool FillsAlways(const FamilyPlan& family, const KnownColumn& column) const;

    CompleteModel& model_;
};

void TableTaker::TakeFreeTables()
{
    const NameRules& names = model_.known.names;
    constexpr std::size_t kMaxCharacters = 64;
    for (PathId path = 1; path < model_.facts.size(); ++path) {
        FamilyPlan& family = model_.families[model_.FamilyOf(path)];
        if (family.first != path || family.known != kNoKnownTable || !family.refusal.empty())
            continue;
        const std::string key = names.key(names.valid(model_.WantedTable(family), kMaxCharacters));
        const auto found = model_.there.untoldByName.find(key);
        if (found == model_.there.untoldByName.end())
            continue;
        family.known = found->second;
        family.isTakenByName = true;
        model_.there.untoldByName.erase(found);
    }
}

/// One only, outermost first: whether a table suits depends on which ones those around have taken.
bool TableTaker::GivesBackOne()
{
    for (PathId path = 1; path < model_.facts.size(); ++path) {
        FamilyPlan& family = model_.families[model_.FamilyOf(path)];
        if (family.first != path || !family.isTakenByName)
            continue;
        family.refusal = ReasonAgainst(family);
        if (family.refusal.empty())
            continue;
        const std::string& name = model_.known.tables[family.known].name;
        model_.there.untoldByName.emplace(model_.known.names.key(name), family.known);
        family.known = kNoKnownTable;
        family.isTakenByName = false;
        return true;
    }
    return false;
}

/// Empty when there is none.
std::string TableTaker::ReasonAgainst(const FamilyPlan& family) const
{
    for (const KnownColumn& column : model_.known.tables[family.known].columns) {
        const bool isParentKey = column.name == model_.settings.strKeyForeign;
        if (isParentKey) {
            const std::string parent = OtherParent(family, column.refersTo);
            if (!parent.empty())
                return "its records belong to those of [" + column.refersTo + "], these to " + parent;
        }
        if (column.needsValue && (isParentKey ? family.hasRoot : !FillsAlways(family, column)))
            return "its column [" + column.name + "] needs a value, which not all of them have, or which it may refuse";
    }
    return {};
}

/// A path around the family's records whose table is not `refersTo`; empty when there is none.
std::string TableTaker::OtherParent(const FamilyPlan& family, const std::string& refersTo) const
{
    if (refersTo.empty())
        return {};
    for (const PathId path : family.paths) {
        const PathId around = model_.around[path];
        if (around == 0)
            continue;
        const std::size_t known = model_.families[model_.FamilyOf(around)].known;
        if (known == kNoKnownTable || model_.known.tables[known].name != refersTo)
            return model_.document.PathText(around);
    }
    return {};
}

bool TableTaker::FillsAlways(const FamilyPlan& family, const KnownColumn& column) const
{
    if (!column.takesText || column.hasRules)
        return false;
    const NameRules& names = model_.known.names;
    return std::ranges::any_of(family.wants, [&](const Want& want) {
        return want.count == family.recordCount && !(want.hasEmpty && column.refusesEmpty) &&
               names.key(model_.WantedColumn(want, family)) == names.key(column.name);
    });
}

} // namespace

void TakeTablesByName(CompleteModel& model)
{
    TableTaker(model).Take();
}

} // namespace velmora
