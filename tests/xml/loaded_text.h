#pragma once

#include "support/shared.h"
#include "xml/document_loader.h"

#include <string>
#include <string_view>

namespace velmora::testing {

/// As this run of the tests is to parse.
inline LoadResult LoadFile(
    const Source& source, const std::function<void(std::int64_t)>& onPiece = [](std::int64_t) {},
    MemoryBudget budget = MemoryBudget(kDocumentMemoryBudgetBytes))
{
    const Parsing parsing = std::string_view(TestThreads()) == "1" ? Parsing::Beside : Parsing::Ahead;
    return LoadDocument(source, onPiece, std::move(budget), Blanks::BesideChildrenDropped, parsing);
}

/// Loads `bytes` as a file.
inline LoadResult LoadBytes(std::string_view bytes, MemoryBudget budget = MemoryBudget(kDocumentMemoryBudgetBytes))
{
    const TempFolder folder;
    const std::string path = (folder / "document.xml").string();
    WriteFile(path, bytes);
    return LoadFile(
        path, [](std::int64_t) {}, std::move(budget));
}

/// One line per element: tag, attributes, content in brackets when there is any, and how many siblings bear the tag.
inline std::string DocumentText(const Document& document)
{
    std::string text;
    for (ElementId element = 0; element < document.ElementCount(); ++element) {
        for (ElementId above = document.Parent(element); above != kNoElement; above = document.Parent(above))
            text += ' ';
        text += document.NameText(document.Name(element));
        for (std::uint32_t i = 0; i < document.AttributeCount(element); ++i) {
            text.append(" ").append(document.NameText(document.AttributeName(element, i)));
            text.append("=").append(document.AttributeValue(element, i));
        }
        if (!document.Content(element).empty())
            text.append(" [").append(document.Content(element)).append("]");
        text.append(" x").append(std::to_string(document.SameTagCount(element))).append("\n");
    }
    return text;
}

} // namespace velmora::testing
