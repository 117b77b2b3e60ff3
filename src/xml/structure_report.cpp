#include "xml/structure_model.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <string_view>

namespace velmora {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kMaxNameWidth = 64;

/// The columns before the path. What is wider than a column widens it, a long name excepted.
struct ReportColumn {
    std::string_view heading; ///< a line of its own, but for those of the last two
    std::size_t width;        ///< at least; the blank behind it is not counted
};
constexpr ReportColumn kColumns[] = {{"", 7},           {"Level", 3}, {"Children", 5}, {"Siblings", 3},
                                     {"Attributes", 3}, {"Type", 16}, {"Name", 0}};
constexpr std::size_t kColumnCount = std::size(kColumns);
constexpr std::size_t kName = kColumnCount - 1;
constexpr std::size_t kType = kName - 1;
using Widths = std::array<std::size_t, kColumnCount>;

/// In characters: a name may have any letters.
std::size_t Length(std::string_view text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

void AppendPadded(std::string& line, std::string_view text, std::size_t width)
{
    line.append(text).append(width - std::min(width, Length(text)) + 1, ' ');
}

std::string SizeText(double size)
{
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, size).ptr};
}

std::array<std::string, kColumnCount> Cells(const ElementInfo& entry)
{
    const std::string type = entry.lngDataType == kNumericContent ? "Num(" : "Str(";
    return {std::to_string(entry.lngTableNo),
            std::to_string(entry.intLevel),
            std::to_string(entry.lngMaxChildren),
            std::to_string(entry.lngMaxTwins),
            std::to_string(entry.lngAttributes),
            type + SizeText(entry.dblMaxSize) + ")",
            entry.strName};
}

Widths WidthsOf(const StructureModel& model)
{
    Widths widths{};
    for (std::size_t i = 1; i <= model.UpperBound(); ++i) {
        const auto cells = Cells(model.Element(i));
        for (std::size_t column = 0; column < kColumnCount; ++column)
            widths[column] = std::max(widths[column], Length(cells[column]));
    }
    widths[kName] = std::min(widths[kName], kMaxNameWidth);
    for (std::size_t column = 0; column < kColumnCount; ++column)
        widths[column] = std::max(widths[column], kColumns[column].width);
    return widths;
}

/// Headings that are wider than their columns stand in lines one below the other, each with a bar down to its column.
std::string Heading(const Widths& widths)
{
    std::string text;
    std::string bars(widths[0] + 1, ' ');
    for (std::size_t column = 1; column < kType; ++column) {
        text.append(bars).append(kColumns[column].heading).append(kLineEnd);
        AppendPadded(bars, "|", widths[column]);
    }
    std::string last = bars;
    AppendPadded(last, kColumns[kType].heading, widths[kType]);
    AppendPadded(last, kColumns[kName].heading, widths[kName]);
    last += "XPath";
    return text + last + std::string(kLineEnd) + std::string(last.size(), '-') + std::string(kLineEnd);
}

} // namespace

std::string StructureReport(const StructureModel& model, const Document& document)
{
    const Widths widths = WidthsOf(model);
    std::string text = Heading(widths);
    for (std::size_t i = 1; i <= model.UpperBound(); ++i) {
        const ElementInfo& entry = model.Element(i);
        const auto cells = Cells(entry);
        for (std::size_t column = 0; column < kColumnCount; ++column)
            AppendPadded(text, cells[column], widths[column]);
        text.append(document.PathText(entry.strPath)).append(kLineEnd);
    }
    return text;
}

} // namespace velmora
