#include "xml/parse_ahead.h"

#include "platform/at_end.h"
#include "platform/worker.h"

#include <utility>

namespace velmora {

namespace {

/// Ends the parse when nobody listens any more.
struct Stopped {};

} // namespace

/// The parser's end: fills parts with what it finds. A part that begins with text holds no element: the text belongs to
/// the same piece of text as what is ahead of it.
class ParseAhead::Sender final : public DocumentEvents {
public:
    Sender(ParseAhead& ahead, Blanks blanks) : ahead_(ahead), blanks_(blanks) { BeginPart(); }

    /// Sends what there is; with the bytes taken when that is a whole chunk.
    void Send(std::optional<std::int64_t> bytesTaken)
    {
        piece_.bytesTaken = bytesTaken;
        if (!ahead_.filled_.Push(std::move(piece_)))
            throw Stopped();
        std::optional<Piece> next = ahead_.joined_.Pop();
        if (!next)
            throw Stopped();
        piece_ = std::move(*next);
        BeginPart();
    }

    void StartElement(std::string_view name, const char* const* attributes) override
    {
        if (state_ == State::IsText || IsFull())
            Send(std::nullopt);
        state_ = State::HasTags;
        ++depth_;
        piece_.part->Builder().StartElement(name, attributes);
    }
    void Text(std::string_view text) override
    {
        if (IsFull())
            Send(std::nullopt);
        if (state_ == State::IsEmpty)
            state_ = State::IsText;
        piece_.part->Builder().Text(text);
    }
    void EndElement() override
    {
        if (depth_ == 0) {
            if (IsFull())
                Send(std::nullopt);
            state_ = State::HasTags;
            piece_.part->EndOuter({}, 0);
        } else {
            --depth_;
            piece_.part->Builder().EndElement();
        }
    }

private:
    /// Of the part.
    enum class State : std::uint8_t { IsEmpty, IsText, HasTags };

    void BeginPart()
    {
        if (piece_.part)
            piece_.part->Clear();
        else
            piece_.part = std::make_unique<DocumentPart>(blanks_);
        state_ = State::IsEmpty;
        depth_ = 0;
    }
    [[nodiscard]] bool IsFull() const noexcept
    {
        return state_ != State::IsEmpty && piece_.part->Bytes() >= ahead_.partBytes_;
    }

    ParseAhead& ahead_;
    const Blanks blanks_;
    Piece piece_;
    State state_ = State::IsEmpty;
    std::size_t depth_ = 0; ///< how many elements are open that have begun in the part
};

ParseAhead::ParseAhead(const Source& source, std::size_t partBytes) : source_(source), partBytes_(partBytes)
{
    for (std::size_t i = 0; i < kPieces; ++i)
        static_cast<void>(joined_.Push({}));
}

std::unique_ptr<SourceParse> ParseAhead::Run(DocumentBuilder& builder, const std::function<void(std::int64_t)>& onPiece)
{
    const std::unique_ptr<Worker> worker = Worker::Start([this, blanks = builder.BlanksRule()] { Parse(blanks); });
    if (!worker)
        return nullptr;
    // The worker is waited for when it has nothing more to wait for.
    const AtEnd stop([this] {
        filled_.Close();
        joined_.Close();
    });
    while (std::optional<Piece> piece = filled_.Pop()) {
        piece->part->JoinTo(builder, [&](std::string_view, std::size_t) {
            builder.EndElement();
            return true;
        });
        if (piece->bytesTaken)
            onPiece(*piece->bytesTaken);
        static_cast<void>(joined_.Push(std::move(*piece)));
    }
    worker->Join();
    return std::move(parse_);
}

/// All that the parser uses is made here: memory that two threads write to by turns is slow where it is close together.
void ParseAhead::Parse(Blanks blanks)
{
    const AtEnd end([this] { filled_.Close(); });
    const auto sender = std::make_unique<Sender>(*this, blanks);
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
