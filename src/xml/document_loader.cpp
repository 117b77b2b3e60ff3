#include "xml/document_loader.h"

#include "xml/document_builder.h"
#include "xml/input_encoding.h"
#include "xml/parse_ahead.h"
#include "xml/parse_segments.h"
#include "xml/path_filter.h"
#include "xml/source_parse.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <expat.h>

namespace velmora {

namespace {

constexpr std::size_t kChunkBytes = std::size_t{128} * 1024;

LoadResult Unreadable(std::string problem)
{
    LoadResult result;
    result.problem = std::move(problem);
    return result;
}

using OnPiece = std::function<void(std::int64_t)>;

/// nullopt when one parser has to do it all.
std::optional<LoadResult> LoadInSegments(const Source& source, const OnPiece& onPiece, MemoryBudget budget,
                                         Blanks blanks, const Parsing& parsing)
{
    if (parsing.threads < 2 || !source.only.empty())
        return std::nullopt;
    DocumentBuilder builder(std::move(budget), blanks);
    ParseSegments segments(source, parsing.segmentBytes, parsing.threads);
    if (!segments.Run(builder, onPiece))
        return std::nullopt;
    LoadResult result;
    result.controlBytes = segments.ControlBytes();
    result.document = builder.Take();
    return result;
}

/// With one parser, which has a thread of its own where there is one to be had.
LoadResult LoadInOne(const Source& source, const OnPiece& onPiece, MemoryBudget budget, Blanks blanks,
                     const Parsing& parsing)
{
    DocumentBuilder builder(std::move(budget), blanks);
    std::unique_ptr<SourceParse> parse;
    if (parsing.threads > 1)
        parse = ParseAhead(source, parsing.segmentBytes).Run(builder, onPiece);
    if (!parse) {
        parse = std::make_unique<SourceParse>(source, builder);
        while (parse->Next())
            onPiece(parse->BytesTaken());
    }
    if (std::string problem = parse->Problem(builder.OpenTag()); !problem.empty())
        return Unreadable(std::move(problem));
    LoadResult result = parse->Result();
    result.document = builder.Take();
    return result;
}

LoadResult Load(const Source& source, const OnPiece& onPiece, MemoryBudget budget, Blanks blanks,
                const Parsing& parsing)
{
    // What has been taken is not taken back in the eyes of those who watch.
    std::int64_t furthest = 0;
    const OnPiece onFurtherPiece = [&](std::int64_t bytes) { onPiece(furthest = std::max(furthest, bytes)); };
    if (std::optional<LoadResult> result = LoadInSegments(source, onFurtherPiece, budget, blanks, parsing))
        return std::move(*result);
    return LoadInOne(source, onFurtherPiece, std::move(budget), blanks, parsing);
}

} // namespace

LoadResult LoadDocument(const Source& source, const std::function<void(std::int64_t)>& onPiece, MemoryBudget budget,
                        Blanks blanks, const Parsing& parsing)
{
    try {
        return Load(source, onPiece, std::move(budget), blanks, parsing);
    } catch (const SourceError& error) {
        return Unreadable(error.what());
    } catch (const std::length_error& tooLarge) {
        return Unreadable(tooLarge.what());
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
