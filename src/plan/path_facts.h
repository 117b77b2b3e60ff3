#pragma once

#include "plan/value_forms.h"
#include "xml/document.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace velmora {

struct AttributeFacts {
    NameId name = 0;
    bool isLong = false;    ///< some value does not fit a text column
    bool hasEmpty = false;  ///< some value is empty, or white space only
    std::int64_t count = 0; ///< of the elements that have it
    ValuesSeen values{};    ///< those that are not white space only; nothing unless asked for
    bool hasBlank = false;  ///< some is white space only, but not empty; likewise
};

/// What the elements of one path have, all over the document.
struct PathFacts {
    std::int64_t count = 0;                 ///< of the elements
    bool hasChildren = false;               ///< some has
    bool isRepeated = false;                ///< some stands beside another of its tag
    bool hasText = false;                   ///< some has text of its own that is not white space only
    bool hasLongText = false;               ///< some text does not fit a text column
    bool hasEmptyText = false;              ///< some has no other text than white space
    ValuesSeen texts;                       ///< those that are not white space only; nothing unless asked for
    std::vector<AttributeFacts> attributes; ///< in the order in which they first appeared
};

/// By PathId: numbers ascend with the first appearance. One walk over the document; `onPiece` is called now and then.
/// `looksAtForms`: what values are like is asked for.
[[nodiscard]] std::vector<PathFacts> GatherFacts(const Document& document, bool looksAtForms,
                                                 const std::function<void()>& onPiece);

} // namespace velmora
