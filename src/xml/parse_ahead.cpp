#include "xml/parse_ahead.h"

#include "platform/at_end.h"
#include "platform/worker.h"

#include <utility>

namespace velmora {

namespace {

/// Ends the parse when nobody listens any more.
struct Stopped {};

} // namespace

/// The parser's end: fills pieces with its events.
class ParseAhead::Sender : public DocumentEvents {
public:
    explicit Sender(ParseAhead& ahead) : ahead_(ahead) {}

    /// Sends what there is; with the bytes taken when that is a whole chunk.
    void Send(std::optional<std::int64_t> bytesTaken)
    {
        piece_.bytesTaken = bytesTaken;
        if (!ahead_.filled_.Push(std::move(piece_)))
            throw Stopped();
        std::optional<Piece> next = ahead_.told_.Pop();
        if (!next)
            throw Stopped();
        piece_ = std::move(*next);
    }

    void StartElement(std::string_view name, const char* const* attributes) override
    {
        MakeRoom();
        piece_.batch.AddStart(name, attributes);
    }
    void Text(std::string_view text) override
    {
        MakeRoom();
        piece_.batch.AddText(text);
    }
    void EndElement() override
    {
        MakeRoom();
        piece_.batch.AddEnd();
    }

private:
    void MakeRoom()
    {
        if (piece_.batch.IsFull())
            Send(std::nullopt);
    }

    ParseAhead& ahead_;
    Piece piece_;
};

ParseAhead::ParseAhead(const Source& source) : source_(source)
{
    for (std::size_t i = 0; i < kPieces; ++i)
        static_cast<void>(told_.Push({}));
}

std::unique_ptr<SourceParse> ParseAhead::Run(DocumentEvents& events, const std::function<void(std::int64_t)>& onPiece)
{
    const std::unique_ptr<Worker> worker = Worker::Start([this] { Parse(); });
    if (!worker)
        return nullptr;
    // The worker is waited for when it has nothing more to wait for.
    const AtEnd stop([this] {
        filled_.Close();
        told_.Close();
    });
    while (std::optional<Piece> piece = filled_.Pop()) {
        piece->batch.Tell(events);
        if (piece->bytesTaken)
            onPiece(*piece->bytesTaken);
        piece->batch.Clear();
        static_cast<void>(told_.Push(std::move(*piece)));
    }
    worker->Join();
    return std::move(parse_);
}

/// All that the parser uses is made here: memory that two threads write to by turns is slow where it is close together.
void ParseAhead::Parse()
{
    const AtEnd end([this] { filled_.Close(); });
    const auto sender = std::make_unique<Sender>(*this);
    try {
        parse_ = std::make_unique<SourceParse>(source_, *sender);
        while (parse_->Next())
            sender->Send(parse_->BytesTaken());
        sender->Send(std::nullopt);
    } catch (const Stopped&) {
        return; // whoever has stopped it knows why
    }
}

} // namespace velmora
