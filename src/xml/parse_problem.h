#pragma once

#include <string>
#include <string_view>

#include <expat.h>

namespace velmora {

/// "line 12, column 7: " and `reason`: lines and columns count from 1, columns in characters. The place is where the
/// parser is.
[[nodiscard]] std::string AtPosition(XML_Parser parser, std::string_view reason);

/// What the parser found wrong, with its place, in words for the owner of the file. `openTag` is the innermost element
/// that is open there; empty when none is.
[[nodiscard]] std::string DescribeParserError(XML_Parser parser, std::string_view openTag);

} // namespace velmora
