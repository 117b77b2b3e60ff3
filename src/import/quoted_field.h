#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velmora {

/// Turns the value that begins at `begin` in `line`, and ends with it, into a field as RFC 4180 has it: in quotation
/// marks, its own doubled, when it holds one, a line break, or anything that could be taken for the beginning of
/// `delimiter`. Other values stay as they are.
void QuoteField(std::string& line, std::size_t begin, std::string_view delimiter);

} // namespace velmora
