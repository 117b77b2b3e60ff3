#include "xml/document_loader.h"

#include "xml/document_builder.h"
#include "xml/input_encoding.h"
#include "xml/parse_problem.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <stdexcept>

#include <expat.h>

namespace velmora {

namespace {

constexpr std::size_t kChunkBytes = 128 * 1024;
constexpr std::size_t kMaxChunkBytes = std::size_t{64} << 20;

/// Entities may multiply a document by a hundred (the parser's own limit), but only until their text comes to this
/// size.
constexpr unsigned long long kEntityThresholdBytes = 1 << 20;
/// However long the file is, its text stays below this and four times what was read so far. Every encoding stays below
/// as well.
constexpr std::size_t kTextAllowanceBytes = std::size_t{128} << 20;
constexpr std::size_t kTextPerByte = 4;

struct ParserDeleter {
    void operator()(XML_Parser parser) const noexcept { XML_ParserFree(parser); }
};
using ParserHandle = std::unique_ptr<XML_ParserStruct, ParserDeleter>;

/// One parse: takes the parser's events and gives them to the builder.
class DocumentParser {
public:
    DocumentParser(const InputEncoding& encoding, std::size_t memoryBudgetBytes);

    /// Where up to `bytes` bytes for the next ParseBuffer go.
    [[nodiscard]] void* Buffer(std::size_t bytes);
    /// These return false when the document is not well-formed or too large: Problem() says why then.
    [[nodiscard]] bool ParseBuffer(std::size_t bytes);
    [[nodiscard]] bool Parse(std::string_view bytes);
    [[nodiscard]] bool Finish();

    /// Is the parser waiting for the end of a token that began before the last call?
    [[nodiscard]] bool IsStuck() noexcept;
    [[nodiscard]] const std::string& Problem() const noexcept { return problem_; }
    /// The finished document and what is known of skipped entities.
    [[nodiscard]] LoadResult Take();

private:
    static void XMLCALL OnStart(void* self, const XML_Char* name, const XML_Char** attributes);
    static void XMLCALL OnEnd(void* self, const XML_Char* name);
    static void XMLCALL OnText(void* self, const XML_Char* text, int length);
    static void XMLCALL OnSkippedEntity(void* self, const XML_Char* name, int isParameterEntity);
    static int XMLCALL OnExternalEntity(XML_Parser self, const XML_Char* context, const XML_Char* base,
                                        const XML_Char* systemId, const XML_Char* publicId);

    /// Runs `step`; what it throws is kept until the parser, which is C, has returned.
    template <class Step>
    void Guard(Step&& step) noexcept;
    [[nodiscard]] bool Succeeded(XML_Status status);
    void CountSkipped(std::string_view name);

    ParserHandle parser_;
    DocumentBuilder builder_;
    std::exception_ptr failure_;
    std::string problem_;
    std::size_t bytesGiven_ = 0;
    std::size_t textLimit_ = kTextAllowanceBytes;
    XML_Index lastIndex_ = -1;
    std::size_t skippedEntities_ = 0;
    std::string firstSkipped_;
};

DocumentParser::DocumentParser(const InputEncoding& encoding, std::size_t memoryBudgetBytes)
    : parser_(XML_ParserCreate(encoding.parserName.empty() ? nullptr : encoding.parserName.c_str())),
      builder_(memoryBudgetBytes)
{
    if (!parser_)
        throw std::bad_alloc();
    XML_Parser parser = parser_.get();
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser, OnText);
    XML_SetSkippedEntityHandler(parser, OnSkippedEntity);
    XML_SetParamEntityParsing(parser, XML_PARAM_ENTITY_PARSING_NEVER);
    // The handler is there to count: it reads nothing, so the entity has no text.
    XML_SetExternalEntityRefHandler(parser, OnExternalEntity);
    XML_SetExternalEntityRefHandlerArg(parser, this);
    XML_SetBillionLaughsAttackProtectionActivationThreshold(parser, kEntityThresholdBytes);
}

template <class Step>
void DocumentParser::Guard(Step&& step) noexcept
{
    if (failure_)
        return; // the parser may still report what it has at hand
    try {
        step();
    } catch (...) {
        failure_ = std::current_exception();
        XML_StopParser(parser_.get(), XML_FALSE);
    }
}

void DocumentParser::OnStart(void* self, const XML_Char* name, const XML_Char** attributes)
{
    auto& parser = *static_cast<DocumentParser*>(self);
    parser.Guard([&] { parser.builder_.StartElement(name, attributes); });
}

void DocumentParser::OnEnd(void* self, const XML_Char*)
{
    auto& parser = *static_cast<DocumentParser*>(self);
    parser.Guard([&] { parser.builder_.EndElement(); });
}

void DocumentParser::OnText(void* self, const XML_Char* text, int length)
{
    auto& parser = *static_cast<DocumentParser*>(self);
    parser.Guard([&] {
        parser.builder_.Text({text, static_cast<std::size_t>(length)});
        if (parser.builder_.TextBytes() > parser.textLimit_)
            throw std::length_error("its entities make too much text of it");
    });
}

void DocumentParser::OnSkippedEntity(void* self, const XML_Char* name, int isParameterEntity)
{
    auto& parser = *static_cast<DocumentParser*>(self);
    if (isParameterEntity == 0)
        parser.Guard([&] { parser.CountSkipped(name); });
}

int DocumentParser::OnExternalEntity(XML_Parser self, const XML_Char* context, const XML_Char*, const XML_Char*,
                                     const XML_Char*)
{
    // The argument set for this handler comes in the parser's place.
    auto& parser = *reinterpret_cast<DocumentParser*>(self);
    parser.Guard([&] {
        const std::string_view open =
            context == nullptr ? std::string_view{} : context; // names with form feeds between
        parser.CountSkipped(open.substr(open.rfind('\f') + 1));
    });
    return XML_STATUS_OK;
}

void DocumentParser::CountSkipped(std::string_view name)
{
    if (skippedEntities_++ == 0)
        firstSkipped_ = name;
}

void* DocumentParser::Buffer(std::size_t bytes)
{
    void* const buffer = XML_GetBuffer(parser_.get(), static_cast<int>(bytes));
    if (buffer == nullptr)
        throw std::bad_alloc();
    return buffer;
}

bool DocumentParser::ParseBuffer(std::size_t bytes)
{
    bytesGiven_ += bytes;
    textLimit_ = kTextAllowanceBytes + kTextPerByte * bytesGiven_;
    return Succeeded(XML_ParseBuffer(parser_.get(), static_cast<int>(bytes), XML_FALSE));
}

bool DocumentParser::Parse(std::string_view bytes)
{
    bytesGiven_ += bytes.size();
    textLimit_ = kTextAllowanceBytes + kTextPerByte * bytesGiven_;
    return Succeeded(XML_Parse(parser_.get(), bytes.data(), static_cast<int>(bytes.size()), XML_FALSE));
}

bool DocumentParser::Finish()
{
    return Succeeded(XML_Parse(parser_.get(), "", 0, XML_TRUE));
}

bool DocumentParser::Succeeded(XML_Status status)
{
    if (failure_) {
        try {
            std::rethrow_exception(failure_);
        } catch (const std::length_error& tooLarge) {
            problem_ = AtPosition(parser_.get(), tooLarge.what());
            return false;
        }
    }
    if (status == XML_STATUS_OK)
        return true;
    if (XML_GetErrorCode(parser_.get()) == XML_ERROR_NO_MEMORY)
        throw std::bad_alloc();
    problem_ = DescribeParserError(parser_.get(), builder_.OpenTag());
    return false;
}

bool DocumentParser::IsStuck() noexcept
{
    const XML_Index index = XML_GetCurrentByteIndex(parser_.get());
    const bool stuck = index == lastIndex_;
    lastIndex_ = index;
    return stuck;
}

LoadResult DocumentParser::Take()
{
    LoadResult result;
    result.document = builder_.Take();
    result.skippedEntities = skippedEntities_;
    result.firstSkipped = firstSkipped_;
    return result;
}

struct FileCloser {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

LoadResult Unreadable(std::string problem)
{
    LoadResult result;
    result.problem = std::move(problem);
    return result;
}

std::string SystemProblem(int error)
{
    return "cannot be read: " + std::string(std::strerror(error));
}

/// The bytes of a file, a chunk at a time, in the form that the parser takes.
class ChunkedInput {
public:
    ChunkedInput(std::FILE* file, DocumentParser& parser, const std::string& convertFrom)
        : file_(file), parser_(parser), charset_(convertFrom)
    {
        if (!charset_.empty())
            converter_ = std::make_unique<Utf8Converter>(charset_);
    }

    /// Gives the parser bytes that were read already.
    [[nodiscard]] bool Give(std::string_view bytes) { return converter_ ? GiveConverted(bytes) : parser_.Parse(bytes); }
    /// Gives the parser the next chunk. False when it will have no more: the file has ended, or there is a problem.
    [[nodiscard]] bool GiveNext();
    /// To be called when the file has ended.
    [[nodiscard]] bool Finish();
    /// Of this class; empty when all is well, or when the parser has it.
    [[nodiscard]] const std::string& Problem() const noexcept { return problem_; }
    [[nodiscard]] bool HasEnded() const noexcept { return ended_; }

private:
    [[nodiscard]] bool GiveConverted(std::string_view bytes);
    [[nodiscard]] bool SetBadBytes(const char* what);
    [[nodiscard]] std::size_t Read(void* buffer, std::size_t bytes);

    std::FILE* file_;
    DocumentParser& parser_;
    std::string charset_;
    std::unique_ptr<Utf8Converter> converter_;
    std::string raw_, text_;
    std::size_t line_ = 1;
    std::size_t chunkBytes_ = kChunkBytes;
    std::string problem_;
    bool ended_ = false;
};

std::size_t ChunkedInput::Read(void* buffer, std::size_t bytes)
{
    const std::size_t count = std::fread(buffer, 1, bytes, file_);
    if (count < bytes) {
        if (std::ferror(file_) != 0)
            problem_ = SystemProblem(errno);
        ended_ = true;
    }
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
        good = parser_.ParseBuffer(Read(buffer, chunkBytes_));
    }
    return good && !ended_;
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

} // namespace

LoadResult LoadDocument(const std::string& path, const std::function<bool()>& proceed, std::size_t memoryBudgetBytes)
{
    const FileHandle file(std::fopen(path.c_str(), "rb"));
    if (!file)
        return Unreadable(SystemProblem(errno));
    std::setvbuf(file.get(), nullptr, _IONBF, 0); // chunks are read whole
    std::string head(kEncodingSniffBytes, '\0');
    head.resize(std::fread(head.data(), 1, head.size(), file.get()));
    if (std::ferror(file.get()) != 0)
        return Unreadable(SystemProblem(errno));

    const InputEncoding encoding = DetectEncoding(head);
    DocumentParser parser(encoding, memoryBudgetBytes);
    ChunkedInput input(file.get(), parser, encoding.convertFrom);
    bool more = input.Give(head);
    while (more) {
        if (!proceed())
            return {};
        more = input.GiveNext();
    }
    const bool good = input.HasEnded() && input.Problem().empty() && parser.Problem().empty() && input.Finish();
    if (!good)
        return Unreadable(input.Problem().empty() ? parser.Problem() : input.Problem());
    return parser.Take();
}

} // namespace velmora
