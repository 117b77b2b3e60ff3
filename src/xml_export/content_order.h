#pragma once

#include "xml_export/export_plan.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velmora {

/// What stands in an element of one table, brought into the order in which the names first appeared: leaves, records of
/// other tables, and elements that only wrap such.
class ContentOrder {
public:
    ContentOrder() : nodes_(1) {}

    /// `leaf` is its position among the table's leaves.
    void AddLeaf(const NamedValue& value, std::size_t leaf);
    /// Records at the end of `steps`, all but the last of which are wrappers. `places` are those of the last steps;
    /// what has none stands first.
    void AddRecords(const std::vector<std::string>& steps, const std::vector<std::size_t>& places, std::size_t edge);

    [[nodiscard]] std::vector<ContentStep> Steps() const;

private:
    /// Wrappers may stand in one another a hundred thousand deep, so they lie in one row.
    struct Node {
        std::size_t place = 0;
        ContentStep step{ContentStep::Kind::OpenWrapper};
        std::vector<std::size_t> children{}; ///< in nodes_, of a wrapper
    };

    std::size_t Add(std::size_t wrapper, std::size_t place, ContentStep step);
    std::size_t Wrapper(std::size_t around, const std::string& name, std::size_t place);

    std::vector<Node> nodes_; ///< the first is the element itself
};

} // namespace velmora
