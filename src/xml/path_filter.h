#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Takes a part of a document, as its elements come by: those at certain paths, with all that is in them. The elements
/// around them are taken as wrapping tags, without attributes and text, once something in them is taken.
class PathFilter {
public:
    /// Paths as messages write them, `//doc/item`, with ";" between them.
    explicit PathFilter(std::string_view paths);

    /// An element begins. True when it is taken: behind those of TakeWrapping(), which have begun before it.
    [[nodiscard]] bool Enter(std::string_view tag);
    /// The tags of the elements around it that nothing was taken of yet, the outermost first.
    [[nodiscard]] std::vector<std::string> TakeWrapping();
    /// The innermost element ends. True when it was taken.
    [[nodiscard]] bool Leave();
    /// Whether text that comes now is taken.
    [[nodiscard]] bool IsInside() const noexcept { return takenDepth_ > 0; }
    /// The paths at which nothing was.
    [[nodiscard]] std::vector<std::string> Unmatched() const;

private:
    /// A step of one or more paths.
    struct Node {
        std::string tag;
        std::string path{}; ///< that ends here; empty when none does
        bool wasMet = false;
        std::vector<std::size_t> next{};
    };

    void Add(std::string_view path);
    [[nodiscard]] std::size_t NextOf(std::size_t node, std::string_view tag) const;

    std::vector<Node> nodes_{Node{}};
    std::vector<std::size_t> around_{0}; ///< of the elements around what is taken: their nodes, the document's first
    std::vector<std::string> wrapping_;  ///< the innermost of them that have not begun yet
    std::size_t takenDepth_ = 0;         ///< of elements that are taken whole
    std::size_t leftDepth_ = 0;          ///< of elements that are left out
};

} // namespace velmora
