#pragma once

#include "platform/paged_memory.h"
#include "source/source.h"
#include "xml/document.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// Beyond it a document's arrays live in a temporary file. With the budgets of the page cache (64 MiB) and of a sort
/// (32 MiB) that makes 224 of the 256 MiB that a run may take.
inline constexpr std::size_t kDocumentMemoryBudgetBytes = std::size_t{128} << 20;

/// Who parses.
struct Parsing {
    int threads = 1; ///< at work, the one that builds the document included, where the system has them to give
    std::size_t segmentBytes = 0; ///< so much one of several parses at a time
};

struct LoadResult {
    Document document;
    std::string problem;             ///< why the document is empty: line, column and reason; empty when it was read
    std::size_t skippedEntities = 0; ///< references that the parser skipped because their declaration was external
    std::string firstSkipped;        ///< name of the first of them
    std::vector<std::string> unmatched{}; ///< paths of Source::only at which the document has no element
    std::size_t controlBytes = 0; ///< of ISO-8859-1: 80 to 9F, control characters where windows-1252 has letters
};

/// Reads an XML document. Never throws for what the source holds: one that is not well-formed, or that cannot be read,
/// gives an empty document and `problem`. No external entity is ever fetched. `onPiece` is called now and then, with
/// the bytes taken of the source so far; what it throws ends the load. The result is the same
/// whoever parses.
[[nodiscard]] LoadResult LoadDocument(const Source& source, const std::function<void(std::int64_t)>& onPiece,
                                      MemoryBudget budget = MemoryBudget(kDocumentMemoryBudgetBytes),
                                      Blanks blanks = Blanks::BesideChildrenDropped, const Parsing& parsing = {});

/// The line, counted from 1, on which `element` begins in the source from which its document was loaded. Reads it up to
/// there: for messages. nullopt when it cannot be told any more, or in this encoding.
[[nodiscard]] std::optional<std::size_t> LineOfElement(const Source& source, ElementId element);

} // namespace velmora
