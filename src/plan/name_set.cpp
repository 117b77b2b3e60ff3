#include "plan/name_set.h"

namespace velmora {

namespace {

constexpr std::size_t kMaxCharacters = 64;

} // namespace

std::string NameSet::Take(std::string_view wanted)
{
    std::string name = rules_.valid(wanted, kMaxCharacters);
    const auto [taken, isFree] = next_.try_emplace(rules_.key(name), 2);
    if (isFree)
        return name;
    for (std::size_t number = taken->second;; ++number) {
        const std::string ending = "_" + std::to_string(number);
        name = rules_.valid(wanted, kMaxCharacters - ending.size()) + ending;
        if (!Contains(name)) {
            taken->second = number + 1;
            Reserve(name); // may move what `taken` refers to
            return name;
        }
    }
}

} // namespace velmora
