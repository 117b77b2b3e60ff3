#include "import/quoted_field.h"

#include <algorithm>

namespace velmora {

void QuoteField(std::string& line, std::size_t begin, std::string_view delimiter)
{
    constexpr char kQuote = '"';
    // Of a delimiter of several characters the first is enough: a value's last one may run into the delimiter itself.
    const char first = delimiter.empty() ? kQuote : delimiter.front();
    const auto value = line.begin() + static_cast<std::ptrdiff_t>(begin);
    if (std::none_of(value, line.end(),
                     [first](char c) { return c == kQuote || c == '\r' || c == '\n' || c == first; }))
        return;

    const auto quotes = static_cast<std::size_t>(std::count(value, line.end(), kQuote));
    std::size_t from = line.size();
    line.resize(from + quotes + 2);
    std::size_t to = line.size();
    line[--to] = kQuote;
    while (from > begin) {
        const char c = line[--from];
        line[--to] = c;
        if (c == kQuote)
            line[--to] = kQuote;
    }
    line[begin] = kQuote;
}

} // namespace velmora
