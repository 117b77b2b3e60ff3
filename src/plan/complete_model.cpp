#include "plan/complete_model.h"

#include "plan/plain_names.h"

#include <algorithm>

namespace velmora {

std::string CompleteModel::PathText(PathId path) const
{
    constexpr std::size_t kUncut = std::numeric_limits<std::size_t>::max();
    return document.PathText(path, kUncut);
}

std::string CompleteModel::WantedTable(const FamilyPlan& family) const
{
    return settings.strTablePrefix + MappedName(TagOf(family.first), settings, map) + settings.strTableSuffix;
}

std::string CompleteModel::WantedColumn(const Want& want, const FamilyPlan& family) const
{
    switch (want.kind) {
    case ColumnOrigin::Kind::Text:
        return MappedName(TagOf(family.first), settings, map);
    case ColumnOrigin::Kind::Attribute: {
        // Its prefix stays, whatever namespace prefix stands behind it.
        std::string_view name = document.NameText(want.name);
        if (const std::size_t colon = name.find(':'); colon != name.npos)
            name.remove_prefix(colon + 1);
        return MappedName(settings.strAttrPrefix + std::string(name), settings, map);
    }
    default:
        return MappedName(document.NameText(want.name), settings, map);
    }
}

const ValuePlace& CompleteModel::PlaceOf(Family family, ColumnOrigin::Kind kind, NameId name) const
{
    return families[family].wants[wants[static_cast<std::size_t>(kind)].at(Pair(family, name))].place;
}

std::vector<std::string_view> CompleteModel::StepsOf(std::string_view path)
{
    std::vector<std::string_view> steps;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        steps.push_back(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return steps;
}

} // namespace velmora
