#include "xml_export/content_order.h"

#include <algorithm>
#include <utility>

namespace velmora {

using Kind = ContentStep::Kind;

std::size_t ContentOrder::Add(std::size_t wrapper, std::size_t place, ContentStep step)
{
    nodes_.push_back({place, std::move(step)});
    nodes_[wrapper].children.push_back(nodes_.size() - 1);
    return nodes_.size() - 1;
}

void ContentOrder::AddLeaf(const NamedValue& value, std::size_t leaf)
{
    Add(0, value.place, {Kind::Leaf, leaf});
}

void ContentOrder::AddRecords(const std::vector<std::string>& steps, const std::vector<std::size_t>& places,
                              std::size_t edge)
{
    const auto placeOf = [&](std::size_t step) {
        const std::size_t behind = steps.size() - step;
        return behind <= places.size() ? places[places.size() - behind] : 0;
    };
    std::size_t at = 0;
    for (std::size_t step = 0; step + 1 < steps.size(); ++step)
        at = Wrapper(at, steps[step], placeOf(step));
    Add(at, placeOf(steps.size() - 1), {Kind::Records, edge});
}

std::size_t ContentOrder::Wrapper(std::size_t around, const std::string& name, std::size_t place)
{
    for (const std::size_t child : nodes_[around].children)
        if (nodes_[child].step.kind == Kind::OpenWrapper && nodes_[child].step.name == name)
            return child;
    return Add(around, place, {Kind::OpenWrapper, 0, name});
}

std::vector<ContentStep> ContentOrder::Steps() const
{
    std::vector<ContentStep> steps;
    std::vector<std::pair<std::size_t, bool>> toDo; // nodes, the next one last; is it the wrapper's end?
    const auto enter = [&](std::size_t node) {
        std::vector<std::size_t> children = nodes_[node].children;
        std::ranges::stable_sort(children, {}, [this](std::size_t child) { return nodes_[child].place; });
        for (auto child = children.rbegin(); child != children.rend(); ++child)
            toDo.emplace_back(*child, false);
    };
    enter(0);
    while (!toDo.empty()) {
        const auto [node, isEnd] = toDo.back();
        toDo.pop_back();
        const ContentStep& step = nodes_[node].step;
        if (isEnd) {
            steps.push_back({Kind::CloseWrapper, 0, step.name});
            continue;
        }
        steps.push_back(step);
        if (step.kind == Kind::OpenWrapper) {
            toDo.emplace_back(node, true);
            enter(node);
        }
    }
    return steps;
}

} // namespace velmora
