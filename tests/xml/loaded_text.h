#pragma once

#include "support/shared.h"
#include "xml/document_loader.h"
#include "xml/document_text.h"

#include <string>
#include <string_view>

namespace velmora::testing {

/// As this run of the tests is to parse.
inline LoadResult LoadFile(
    const Source& source, const std::function<void(std::int64_t)>& onPiece = [](std::int64_t) {},
    MemoryBudget budget = MemoryBudget(kDocumentMemoryBudgetBytes))
{
    return LoadDocument(source, onPiece, std::move(budget), Blanks::BesideChildrenDropped,
                        {.threads = std::stoi(TestThreads()), .segmentBytes = 1000});
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

} // namespace velmora::testing
