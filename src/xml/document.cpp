#include "xml/document.h"

#include "platform/utf8.h"
#include "xml/document_data.h"

#include <algorithm>
#include <vector>

namespace velmora {

Document::Document() : impl_(std::make_unique<Impl>()) {}
Document::~Document() = default;
Document::Document(Document&&) noexcept = default;
Document& Document::operator=(Document&&) noexcept = default;

std::size_t Document::MemoryBytes() const noexcept
{
    return impl_->budget.usedBytes;
}

std::uint64_t Document::TextBytes() const noexcept
{
    return impl_->text.Size();
}

PathTree& Document::Paths() noexcept
{
    return impl_->paths;
}

const PathTree& Document::Paths() const noexcept
{
    return impl_->paths;
}

NameId Document::Intern(std::string_view name)
{
    return impl_->names.Intern(name);
}

std::string_view Document::NameText(NameId name) const noexcept
{
    return impl_->names.Text(name);
}

std::string Document::PathText(PathId path, std::size_t limit) const
{
    // A path may have a hundred thousand steps: only those that may be shown are turned into text.
    std::vector<PathId> steps;
    for (PathId at = path; at != 0; at = Paths().Parent(at))
        steps.push_back(at);
    const auto stepText = [&](std::size_t depth) { return NameText(Paths().Name(steps[steps.size() - 1 - depth])); };

    constexpr std::string_view kCut = "...";
    std::string head = "/";
    std::size_t depth = 0;
    for (; depth < steps.size() && head.size() <= limit; ++depth)
        head.append("/").append(stepText(depth));
    if (depth == steps.size() && head.size() <= limit)
        return head;

    std::string tail; // as many closing steps as fit into half of the limit
    const std::size_t half = limit / 2;
    for (std::size_t last = steps.size(); last > 0; --last) {
        const std::string_view name = stepText(last - 1);
        if (tail.size() + name.size() + 1 > half)
            break;
        tail.insert(0, name).insert(std::size_t{0}, 1, '/');
    }
    const std::size_t keep = limit - std::min(limit, kCut.size() + tail.size());
    return std::string(CutUtf8(head, keep)).append(kCut).append(tail);
}

std::uint32_t Document::MostChildren(PathId path) const noexcept
{
    return path < impl_->most.size() ? impl_->most[path].children : 0;
}

std::uint32_t Document::MostTwins(PathId path) const noexcept
{
    return path < impl_->most.size() ? impl_->most[path].twins : 0;
}

void Document::PassedLeaf(ElementId leaf) const noexcept
{
    TextSlot slot = ContentSlot(arrays_.elements[leaf]);
    for (std::uint32_t i = AttributeCount(leaf); slot == kNoText && i > 0; --i) // their texts stand in front of it
        slot = Attribute(leaf, i - 1).value;
    if (passage_.IsFar(leaf, slot))
        GiveBack({leaf, slot});
}

void Document::GiveBack(Passage passage) const noexcept
{
    impl_->GiveBack();
    passage_ = passage;
}

} // namespace velmora
