#include "xml/element_line.h"

#include "platform/paths.h"
#include "xml/input_encoding.h"

#include <cstdio>
#include <memory>
#include <string_view>

#include <expat.h>

namespace velmora {

namespace {

constexpr std::size_t kChunkBytes = std::size_t{128} * 1024;

/// Elements have their numbers in the order in which they begin.
struct Search {
    XML_Parser parser;
    ElementId toPass;
    std::optional<std::size_t> line;

    static void XMLCALL OnStart(void* self, const XML_Char*, const XML_Char**)
    {
        auto& search = *static_cast<Search*>(self);
        if (search.line || search.toPass-- > 0)
            return;
        search.line = XML_GetCurrentLineNumber(search.parser);
        XML_StopParser(search.parser, XML_FALSE);
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

} // namespace

std::optional<std::size_t> LineOfElement(const std::string& path, ElementId element)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(OpenFileStream(path, "rb"), std::fclose);
    if (!file)
        return std::nullopt;
    std::string chunk(kChunkBytes, '\0');
    const auto read = [&] {
        return std::string_view(chunk.data(), std::fread(chunk.data(), 1, chunk.size(), file.get()));
    };
    std::string_view bytes = read();
    const char* const encoding = ParserEncoding(DetectEncoding(bytes.substr(0, kEncodingSniffBytes)));
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(encoding), XML_ParserFree);
    Search search{parser.get(), element, std::nullopt};
    XML_SetUserData(parser.get(), &search);
    XML_SetStartElementHandler(parser.get(), Search::OnStart);
    while (!bytes.empty() && XML_Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), 0) == XML_STATUS_OK)
        bytes = read();
    return search.line;
}

} // namespace velmora
