#include "xml/path_filter.h"

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

constexpr std::size_t kNone = 0; ///< no node leads to the document

/// Takes what stands before `separator` off the front of `text`.
std::string_view TakePart(std::string_view& text, char separator)
{
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

} // namespace

PathFilter::PathFilter(std::string_view paths)
{
    while (!paths.empty())
        Add(TakePart(paths, ';'));
}

void PathFilter::Add(std::string_view path)
{
    std::size_t node = 0;
    for (std::string_view rest = path; !rest.empty();) {
        const std::string_view tag = TakePart(rest, '/');
        if (tag.empty())
            continue;
        if (!nodes_[node].path.empty())
            return; // it is taken with what is above it
        std::size_t next = NextOf(node, tag);
        if (next == kNone) {
            next = nodes_.size();
            nodes_.push_back({.tag = std::string(tag)});
            nodes_[node].next.push_back(next);
        }
        node = next;
    }
    if (node == 0)
        return;
    nodes_[node].path = path;
    nodes_[node].next.clear(); // what is below is taken with it
}

std::size_t PathFilter::NextOf(std::size_t node, std::string_view tag) const
{
    const std::vector<std::size_t>& next = nodes_[node].next;
    const auto found = std::find_if(next.begin(), next.end(), [&](std::size_t n) { return nodes_[n].tag == tag; });
    return found == next.end() ? kNone : *found;
}

bool PathFilter::Enter(std::string_view tag)
{
    if (leftDepth_ > 0) {
        ++leftDepth_;
        return false;
    }
    if (takenDepth_ > 0) {
        ++takenDepth_;
        return true;
    }
    const std::size_t node = NextOf(around_.back(), tag);
    if (node == kNone) {
        leftDepth_ = 1;
        return false;
    }
    if (nodes_[node].path.empty()) {
        around_.push_back(node);
        wrapping_.emplace_back(tag);
        return false;
    }
    nodes_[node].wasMet = true;
    takenDepth_ = 1;
    return true;
}

std::vector<std::string> PathFilter::TakeWrapping()
{
    return std::exchange(wrapping_, {});
}

bool PathFilter::Leave()
{
    if (leftDepth_ > 0) {
        --leftDepth_;
        return false;
    }
    if (takenDepth_ > 0) {
        --takenDepth_;
        return true;
    }
    around_.pop_back();
    if (wrapping_.empty())
        return true;
    wrapping_.pop_back();
    return false;
}

std::vector<std::string> PathFilter::Unmatched() const
{
    std::vector<std::string> paths;
    std::vector<std::size_t> toVisit{0};
    while (!toVisit.empty()) {
        const Node& node = nodes_[toVisit.back()];
        toVisit.pop_back();
        if (!node.path.empty() && !node.wasMet)
            paths.push_back(node.path);
        toVisit.insert(toVisit.end(), node.next.rbegin(), node.next.rend());
    }
    return paths;
}

} // namespace velmora
