#pragma once

#include "plan/known_database.h"
#include "plan/mapping_plan.h"
#include "plan/name_set.h"

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace velmora {

/// The columns of one table and of those that continue it, while they are planned.
class ColumnLayout {
public:
    struct Part {
        const KnownTable* known = nullptr;
        std::vector<PlannedColumn> columns{};
        std::size_t count = 0; ///< of data columns, those that are there included
    };
    struct Position {
        std::size_t part = 0, index = 0;
    };
    ColumnLayout(std::size_t maxColumns, NameSet& names) : maxColumns_(maxColumns), names_(names)
    {
        parts_.emplace_back();
    }

    /// `table` is the first part, or the next one.
    void AddKnown(const KnownTable& table, const NameRules& rules);

    /// The column that is there for it; nullopt: none.
    [[nodiscard]] std::optional<Position> PlaceKnown(const ColumnOrigin& origin, const std::string& nameKey,
                                                     PlannedColumn column);
    [[nodiscard]] Position PlaceNew(PlannedColumn column);
    void Forget(const std::string& nameKey) { byName_.erase(nameKey); }
    [[nodiscard]] std::vector<Part>& Parts() noexcept { return parts_; }

private:
    struct Found {
        std::size_t part;
        const KnownColumn* column;
    };

    [[nodiscard]] Position Put(const Found& found, PlannedColumn column, std::optional<ColumnOrigin> told);

    std::size_t maxColumns_;
    NameSet& names_;
    std::vector<Part> parts_;
    std::unordered_map<std::string, Found> byOrigin_, byName_;
};

} // namespace velmora
