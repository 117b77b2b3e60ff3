#pragma once

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <string_view>

namespace velmora {

/// Counts the references that have no text because their entities are declared outside of the document, where nobody
/// reads.
class SkippedEntities {
public:
    /// An entity that the document itself declares.
    void Declare(std::string_view name) { declared_.emplace(name); }
    /// A reference that the parser reported as skipped.
    void Count(std::string_view name);
    /// Finds the skipped references in the attributes of a start tag, which the parser does not report. `startTag` is
    /// the tag as it stands in the document, in an encoding that has ASCII in it.
    void CountInTag(std::string_view startTag);

    [[nodiscard]] std::size_t Number() const noexcept { return number_; }
    [[nodiscard]] const std::string& First() const noexcept { return first_; }

private:
    std::set<std::string, std::less<>> declared_{"amp", "apos", "gt", "lt", "quot"};
    std::size_t number_ = 0;
    std::string first_;
};

} // namespace velmora
