#pragma once

#include "xml/document_loader.h"

#include <cstdint>
#include <string>

namespace velmora::testing {

/// One line per element: tag, attributes, content in brackets when there is any, and how often the tag stands in its
/// parent: x1, or for one that is repeated the greatest number at its path, n where none there is without children.
inline std::string DocumentText(const Document& document)
{
    std::string text;
    for (ElementId element = 0; element < document.ElementCount(); ++element) {
        const PathTree& paths = document.Paths();
        for (PathId above = paths.Parent(document.Path(element)); above != 0; above = paths.Parent(above))
            text += ' ';
        text += document.NameText(document.Name(element));
        for (std::uint32_t i = 0; i < document.AttributeCount(element); ++i) {
            text.append(" ").append(document.NameText(document.AttributeName(element, i)));
            text.append("=").append(document.AttributeValue(element, i));
        }
        if (!document.Content(element).empty())
            text.append(" [").append(document.Content(element)).append("]");
        const std::uint32_t most = document.MostTwins(document.Path(element));
        const std::string repeated = most == 0 ? "n" : std::to_string(most + 1);
        text.append(" x").append(document.IsRepeated(element) ? repeated : "1").append("\n");
    }
    return text;
}

/// DocumentText, and all numbers that a document has: of its paths the most children, and of each element its path and
/// next sibling.
inline std::string WholeText(const Document& document)
{
    std::string text = DocumentText(document) + std::to_string(document.ValueCount()) + " values in " +
                       std::to_string(document.TextBytes()) + " bytes\n";
    for (PathId path = 1; path < document.Paths().Size(); ++path)
        text.append(document.PathText(path)).append(" ").append(std::to_string(document.MostChildren(path))) += '\n';
    for (ElementId element = 0; element < document.ElementCount(); ++element)
        for (const std::uint32_t number : {document.Path(element), document.NextSibling(element)})
            text.append(std::to_string(number)).append(" ");
    return text;
}

/// All that a load of `source` tells.
inline std::string LoadText(const Source& source, const Parsing& parsing, Blanks blanks = Blanks::KeptBesideText)
{
    const LoadResult loaded = LoadDocument(
        source, [](std::int64_t) {}, MemoryBudget(kDocumentMemoryBudgetBytes), blanks, parsing);
    return loaded.problem + "\n" + WholeText(loaded.document) + std::to_string(loaded.controlBytes);
}

} // namespace velmora::testing
