#pragma once

#include "platform/bounded_queue.h"
#include "source/source.h"
#include "xml/document_builder.h"
#include "xml/document_part.h"
#include "xml/source_parse.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace velmora {

/// Parses a document in a thread of its own, which builds parts of it. The one that calls joins them, a little behind.
class ParseAhead {
public:
    /// Opens nothing yet. `source` must outlive the object. `partBytes` is about what one part takes.
    ParseAhead(const Source& source, std::size_t partBytes);

    /// Brings all that is in the document to `builder`, and gives the parse, which has come to its end. `onPiece` is
    /// called for each of its pieces, with the bytes taken of the source; what it throws, and what `builder` throws,
    /// ends the parse. Throws what the parse does. nullptr when there is no thread to be had: nothing has been done.
    [[nodiscard]] std::unique_ptr<SourceParse> Run(DocumentBuilder& builder,
                                                   const std::function<void(std::int64_t)>& onPiece);

private:
    /// What goes from thread to thread.
    struct Piece {
        std::unique_ptr<DocumentPart> part;
        std::optional<std::int64_t> bytesTaken; ///< with the last one of a chunk
    };
    class Sender;

    void Parse(Blanks blanks);

    static constexpr std::size_t kPieces = 4;

    const Source& source_;
    const std::size_t partBytes_;
    BoundedQueue<Piece> filled_{kPieces};
    BoundedQueue<Piece> joined_{kPieces}; ///< to be filled again
    std::unique_ptr<SourceParse> parse_;
};

} // namespace velmora
