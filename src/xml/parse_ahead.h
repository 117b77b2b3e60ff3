#pragma once

#include "platform/bounded_queue.h"
#include "source/source.h"
#include "xml/event_batch.h"
#include "xml/source_parse.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace velmora {

/// Parses a document in a thread of its own, a little ahead of the one that builds from its events.
class ParseAhead {
public:
    /// Opens nothing yet. `source` must outlive the object.
    explicit ParseAhead(const Source& source);

    /// Tells `events` of all that is in the document, and gives the parse, which has come to its end. `onPiece` is
    /// called for each of its pieces, with the bytes taken of the source; what it throws, and what `events` throws,
    /// ends the parse. Throws what the parse does. nullptr when there is no thread to be had: nothing has been done.
    [[nodiscard]] std::unique_ptr<SourceParse> Run(DocumentEvents& events,
                                                   const std::function<void(std::int64_t)>& onPiece);

private:
    /// What goes from thread to thread.
    struct Piece {
        EventBatch batch;
        std::optional<std::int64_t> bytesTaken; ///< with the last one of a chunk
    };
    class Sender;

    void Parse();

    static constexpr std::size_t kPieces = 4;

    const Source& source_;
    BoundedQueue<Piece> filled_{kPieces};
    BoundedQueue<Piece> told_{kPieces}; ///< to be filled again
    std::unique_ptr<SourceParse> parse_;
};

} // namespace velmora
