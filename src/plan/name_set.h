#pragma once

#include "plan/known_database.h"

#include <string>
#include <string_view>
#include <unordered_map>

namespace velmora {

/// Names that must differ to the database: of its tables, of one table's columns and so on.
class NameSet {
public:
    explicit NameSet(const NameRules& rules) : rules_(rules) {}

    [[nodiscard]] bool Contains(std::string_view name) const { return next_.contains(rules_.key(name)); }
    /// Nobody else gets `name`.
    void Reserve(std::string_view name) { next_.try_emplace(rules_.key(name), 2); }
    /// `wanted` made valid, and if it is taken, with the first of the endings "_2", "_3" ... by which it is not.
    [[nodiscard]] std::string Take(std::string_view wanted);

private:
    const NameRules& rules_;
    std::unordered_map<std::string, std::size_t> next_; ///< by key: the number to try first when it is wanted again
};

} // namespace velmora
