#include "xml/document_data.h"

#include <functional>

namespace velmora {

namespace {

constexpr std::size_t kFirstSlots = 64;

std::uint32_t HashName(std::string_view name)
{
    return static_cast<std::uint32_t>(std::hash<std::string_view>{}(name));
}

struct PathNode {
    PathId parent = PathTree::kNoPath;
    NameId name = 0;
};

std::size_t HashChild(PathId parent, NameId name)
{
    // Fibonacci hashing: ids are small and dense, so the product's high bits spread them best.
    const std::uint64_t key = (std::uint64_t{parent} << 32) | name;
    return static_cast<std::size_t>((key * 0x9E3779B97F4A7C15u) >> 32);
}

} // namespace

NameId NameTable::Intern(std::string_view name)
{
    if (2 * (names_.size() + 1) > slots_.size())
        Grow();
    const std::uint32_t hash = HashName(name);
    Slot& slot = slots_[FindSlot(name, hash)];
    if (slot.id == kFree) {
        names_.emplace_back(name);
        slot = Slot{hash, static_cast<NameId>(names_.size() - 1)};
    }
    return slot.id;
}

std::size_t NameTable::FindSlot(std::string_view name, std::uint32_t hash) const noexcept
{
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].id != kFree && (slots_[at].hash != hash || names_[slots_[at].id] != name))
        at = (at + 1) & mask;
    return at;
}

void NameTable::Grow()
{
    const std::vector<Slot> before = std::move(slots_);
    slots_.assign(before.empty() ? kFirstSlots : 2 * before.size(), Slot{});
    const std::size_t mask = slots_.size() - 1;
    for (const Slot& slot : before) {
        if (slot.id == kFree)
            continue;
        std::size_t at = slot.hash & mask;
        while (slots_[at].id != kFree)
            at = (at + 1) & mask;
        slots_[at] = slot;
    }
}

class PathTree::Impl {
public:
    /// The slot of the child, or the free one where it belongs.
    [[nodiscard]] std::size_t FindSlot(PathId parent, NameId name) const noexcept
    {
        const std::size_t mask = slots.size() - 1;
        std::size_t at = HashChild(parent, name) & mask;
        while (slots[at] != kNoPath && (nodes[slots[at]].name != name || nodes[slots[at]].parent != parent))
            at = (at + 1) & mask;
        return at;
    }

    void Grow()
    {
        slots.assign(2 * slots.size(), kNoPath);
        for (PathId path = 1; path < nodes.size(); ++path)
            slots[FindSlot(nodes[path].parent, nodes[path].name)] = path;
    }

    std::vector<PathNode> nodes{PathNode{}};                               ///< 0 is "/"
    std::vector<PathId> slots = std::vector<PathId>(kFirstSlots, kNoPath); ///< open addressing; at most half full
};

PathTree::PathTree() : impl_(std::make_unique<Impl>()) {}
PathTree::~PathTree() = default;
PathTree::PathTree(PathTree&&) noexcept = default;
PathTree& PathTree::operator=(PathTree&&) noexcept = default;

PathId PathTree::Child(PathId parent, NameId name)
{
    if (2 * (impl_->nodes.size() + 1) > impl_->slots.size())
        impl_->Grow();
    PathId& slot = impl_->slots[impl_->FindSlot(parent, name)];
    if (slot == kNoPath) {
        impl_->nodes.push_back({parent, name});
        slot = static_cast<PathId>(impl_->nodes.size() - 1);
    }
    return slot;
}

PathId PathTree::FindChild(PathId parent, NameId name) const noexcept
{
    return impl_->slots[impl_->FindSlot(parent, name)];
}

PathId PathTree::Parent(PathId path) const noexcept
{
    return impl_->nodes[path].parent;
}

NameId PathTree::Name(PathId path) const noexcept
{
    return impl_->nodes[path].name;
}

std::size_t PathTree::Size() const noexcept
{
    return impl_->nodes.size();
}

void Document::Impl::GiveBack() const noexcept
{
    elements.GiveBack();
    further.GiveBack();
    attributes.GiveBack();
    text.GiveBack();
}

} // namespace velmora
