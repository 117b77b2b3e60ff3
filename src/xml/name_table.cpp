#include "xml/name_table.h"

#include <functional>

namespace velmora {

namespace {

constexpr std::size_t kFirstSlots = 64;

std::uint32_t HashName(std::string_view name)
{
    return static_cast<std::uint32_t>(std::hash<std::string_view>{}(name));
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

} // namespace velmora
