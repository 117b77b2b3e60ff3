#pragma once

#include "xml/document_builder.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// A part of a document that is built by itself, and joined later on to what is ahead of it: names, paths, elements and
/// texts have numbers of the part's own until then. It begins with a tag, or is text only. Where an element ends that
/// has begun before the part, one stretch of it ends and the next one begins: what stands at the top level of a stretch
/// are children of the innermost element that is open in the document then.
class DocumentPart {
public:
    /// Told of an end tag whose element has begun before the part, and where in the part that tag ends. False: what
    /// stands behind it is left alone.
    using OnOuterEnd = std::function<bool(std::string_view tag, std::size_t behind)>;

    explicit DocumentPart(Blanks blanks);

    /// To be told of what is in the part, and of the ends of elements that have begun in it.
    [[nodiscard]] DocumentBuilder& Builder() noexcept { return *builder_; }
    /// To be told of the others.
    void EndOuter(std::string_view tag, std::size_t behind);

    /// Brings `whole` to where it would be had it been told of the part itself.
    /// `onOuterEnd` is to end the elements that it is told of. Throws what `whole` and `onOuterEnd` throw. The part is
    /// to be told of nothing more.
    void JoinTo(DocumentBuilder& whole, const OnOuterEnd& onOuterEnd);

    /// Begins anew. Keeps its memory, unless it has taken a lot.
    void Clear();
    /// About as much as there is in it.
    [[nodiscard]] std::size_t Bytes() const noexcept;

private:
    /// How much there is in the part's arrays at some place of it.
    struct Extent {
        std::size_t elements, further, attributes, textBytes, mixedBytes, paths;
    };
    struct Stretch {
        PathId around; ///< stands for the path of the element around it; the paths of what is in it follow
        Extent begin;
        Extent end{};
        std::size_t pieceBegin = 0;            ///< of the piece of text that ends with it
        DocumentBuilder::OpenElement parent{}; ///< the element around it, as far as it is known here
        std::string endTag{};
        std::size_t behindEnd = 0;
    };
    class Joint;

    [[nodiscard]] Extent Here() const noexcept;
    void BeginStretch(PathId around);
    void EndStretch();

    std::unique_ptr<DocumentBuilder> builder_;
    std::vector<Stretch> stretches_; ///< the last one is being built
};

} // namespace velmora
