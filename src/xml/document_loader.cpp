#include "xml/document_loader.h"

#include "platform/utf8_converter.h"
#include "xml/document_parser.h"
#include "xml/input_encoding.h"
#include "xml/path_filter.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include <expat.h>

namespace velmora {

namespace {

constexpr std::size_t kChunkBytes = std::size_t{128} * 1024;
constexpr std::size_t kMaxChunkBytes = std::size_t{64} << 20;

LoadResult Unreadable(std::string problem)
{
    LoadResult result;
    result.problem = std::move(problem);
    return result;
}

/// The bytes of a source, a chunk at a time, in the form that the parser takes.
class ChunkedInput {
public:
    ChunkedInput(SourceStream& stream, DocumentParser& parser, const InputEncoding& encoding)
        : stream_(stream), parser_(parser), charset_(encoding.convertFrom),
          isLatin1_(encoding.parseAs == ParseAs::Latin1)
    {
        if (!charset_.empty())
            converter_ = std::make_unique<Utf8Converter>(charset_);
    }

    /// Gives the parser bytes that were read already.
    [[nodiscard]] bool Give(std::string_view bytes)
    {
        CountControlBytes(bytes);
        return converter_ ? GiveConverted(bytes) : parser_.Parse(bytes);
    }
    /// Gives the parser the next chunk. False when it will have no more: the file has ended, or there is a problem.
    [[nodiscard]] bool GiveNext();
    /// To be called when the file has ended.
    [[nodiscard]] bool Finish();
    /// Of this class; empty when all is well, or when the parser has it.
    [[nodiscard]] const std::string& Problem() const noexcept { return problem_; }
    [[nodiscard]] bool HasEnded() const noexcept { return ended_; }
    [[nodiscard]] std::size_t ControlBytes() const noexcept { return controlBytes_; }

private:
    void CountControlBytes(std::string_view bytes) noexcept;
    [[nodiscard]] bool GiveConverted(std::string_view bytes);
    [[nodiscard]] bool SetBadBytes(const char* what);
    [[nodiscard]] std::size_t Read(void* buffer, std::size_t bytes);

    SourceStream& stream_;
    DocumentParser& parser_;
    std::string charset_;
    bool isLatin1_;
    std::unique_ptr<Utf8Converter> converter_;
    std::size_t controlBytes_ = 0; ///< see LoadResult
    std::string raw_, text_;
    std::size_t line_ = 1;
    std::size_t chunkBytes_ = kChunkBytes;
    std::string problem_;
    bool ended_ = false;
};

std::size_t ChunkedInput::Read(void* buffer, std::size_t bytes)
{
    const std::size_t count = stream_.Read(static_cast<char*>(buffer), bytes);
    ended_ = count < bytes;
    return count;
}

bool ChunkedInput::GiveNext()
{
    // The parser reads a token from its start whenever more of it comes: chunks that grow keep a long one from costing
    // the square of its length.
    chunkBytes_ = parser_.IsStuck() ? std::min(2 * chunkBytes_, kMaxChunkBytes) : kChunkBytes;
    bool good = true;
    if (converter_) {
        raw_.resize(chunkBytes_);
        const std::size_t count = Read(raw_.data(), chunkBytes_);
        good = GiveConverted(std::string_view(raw_).substr(0, count));
    } else {
        void* const buffer = parser_.Buffer(chunkBytes_);
        const std::size_t count = Read(buffer, chunkBytes_);
        CountControlBytes({static_cast<const char*>(buffer), count});
        good = parser_.ParseBuffer(count);
    }
    return good && !ended_;
}

void ChunkedInput::CountControlBytes(std::string_view bytes) noexcept
{
    const auto isControl = [](char byte) { return (static_cast<unsigned char>(byte) & 0xE0) == 0x80; };
    if (isLatin1_)
        controlBytes_ += static_cast<std::size_t>(std::count_if(bytes.begin(), bytes.end(), isControl));
}

bool ChunkedInput::GiveConverted(std::string_view bytes)
{
    text_.clear();
    const bool converted = converter_->Convert(bytes, text_);
    line_ += static_cast<std::size_t>(std::count(text_.begin(), text_.end(), '\n'));
    return parser_.Parse(text_) && (converted || SetBadBytes("bytes that are not"));
}

bool ChunkedInput::Finish()
{
    if (converter_) {
        text_.clear();
        if (!converter_->Finish(text_))
            return SetBadBytes("the file ends in the middle of a character of");
        if (!parser_.Parse(text_))
            return false;
    }
    return parser_.Finish();
}

bool ChunkedInput::SetBadBytes(const char* what)
{
    problem_ = "line " + std::to_string(line_) + ": " + what + " " + charset_ + ", at byte " +
               std::to_string(converter_->ConvertedBytes() + 1) + " of the file";
    return false;
}

/// What the source is said to be, or what its first bytes tell.
InputEncoding EncodingOf(const Source& source, std::string_view firstBytes)
{
    if (!source.encoding.empty() && !HasByteOrderMark(firstBytes))
        if (const auto named = EncodingNamed(source.encoding))
            return *named;
    return DetectEncoding(firstBytes);
}

std::string FirstBytes(SourceStream& stream)
{
    std::string head(kEncodingSniffBytes, '\0');
    head.resize(stream.Read(head.data(), head.size()));
    return head;
}

LoadResult Load(const Source& source, const std::function<void(std::int64_t)>& onPiece, MemoryBudget budget,
                Blanks blanks)
{
    const std::unique_ptr<SourceStream> stream = OpenSource(source);
    const std::string head = FirstBytes(*stream);
    const InputEncoding encoding = EncodingOf(source, head);
    DocumentParser parser(encoding.parseAs, std::move(budget), blanks, source.only);
    ChunkedInput input(*stream, parser, encoding);
    bool more = input.Give(head);
    while (more) {
        onPiece(stream->BytesTaken());
        more = input.GiveNext();
    }
    const bool good = input.HasEnded() && input.Problem().empty() && parser.Problem().empty() && input.Finish();
    if (!good)
        return Unreadable(input.Problem().empty() ? parser.Problem() : input.Problem());
    LoadResult result = parser.Take();
    result.controlBytes = input.ControlBytes();
    return result;
}

} // namespace

LoadResult LoadDocument(const Source& source, const std::function<void(std::int64_t)>& onPiece, MemoryBudget budget,
                        Blanks blanks)
{
    try {
        return Load(source, onPiece, std::move(budget), blanks);
    } catch (const SourceError& error) {
        return Unreadable(error.what());
    }
}

namespace {

/// Elements have their numbers in the order in which they begin.
struct Search {
    XML_Parser parser;
    ElementId toPass;
    std::optional<std::size_t> line;
    PathFilter filter;
    bool isFiltered;

    /// How many elements of the document begin with this one: those around it may have been left out until now.
    [[nodiscard]] ElementId Begun(const XML_Char* name)
    {
        if (!isFiltered)
            return 1;
        return filter.Enter(name) ? static_cast<ElementId>(filter.TakeWrapping().size() + 1) : 0;
    }

    static void XMLCALL OnStart(void* self, const XML_Char* name, const XML_Char**)
    {
        auto& search = *static_cast<Search*>(self);
        const ElementId begun = search.line ? 0 : search.Begun(name);
        if (begun <= search.toPass) {
            search.toPass -= begun;
            return;
        }
        search.line = XML_GetCurrentLineNumber(search.parser);
        XML_StopParser(search.parser, XML_FALSE);
    }
    static void XMLCALL OnEnd(void* self, const XML_Char*)
    {
        auto& search = *static_cast<Search*>(self);
        if (search.isFiltered && !search.line)
            static_cast<void>(search.filter.Leave());
    }
};

/// What the parser is to take the bytes for. An encoding that it does not know has its line ends, and what it takes for
/// markup, where a one-byte encoding has them.
const char* ParserEncoding(const InputEncoding& encoding)
{
    if (!encoding.convertFrom.empty() || encoding.parseAs == ParseAs::Latin1)
        return "ISO-8859-1";
    return encoding.parseAs == ParseAs::Utf8 ? "UTF-8" : nullptr;
}

/// nullopt when the element is not found.
std::optional<std::size_t> FindLine(const Source& source, ElementId element)
{
    const std::unique_ptr<SourceStream> stream = OpenSource(source);
    std::string bytes = FirstBytes(*stream);
    const char* const encoding = ParserEncoding(EncodingOf(source, bytes));
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(encoding), XML_ParserFree);
    Search search{parser.get(), element, std::nullopt, PathFilter(source.only), !source.only.empty()};
    XML_SetUserData(parser.get(), &search);
    XML_SetElementHandler(parser.get(), Search::OnStart, Search::OnEnd);
    while (!bytes.empty() &&
           XML_Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), 0) == XML_STATUS_OK) {
        bytes.resize(kChunkBytes);
        bytes.resize(stream->Read(bytes.data(), bytes.size()));
    }
    return search.line;
}

} // namespace

std::optional<std::size_t> LineOfElement(const Source& source, ElementId element)
{
    if (source.IsStandardInput())
        return std::nullopt;
    try {
        return FindLine(source.Apart(), element);
    } catch (const SourceError&) {
        return std::nullopt;
    }
}

} // namespace velmora
