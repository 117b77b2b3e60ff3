#include "plan/complete_model.h"

#include <algorithm>

namespace velmora {

std::string CompleteModel::PathText(PathId path) const
{
    constexpr std::size_t kUncut = std::numeric_limits<std::size_t>::max();
    return document.PathText(path, kUncut);
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
