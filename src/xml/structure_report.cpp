#include "xml/structure_report.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace velmora {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kTableNoWidth = 7;
constexpr std::size_t kLevelWidth = 3;
constexpr std::size_t kChildrenWidth = 5;
constexpr std::size_t kCountWidth = 3; ///< of siblings, and of attributes
constexpr std::size_t kTypeWidth = 16;
constexpr std::size_t kMaxNameWidth = 64;

void AppendPadded(std::string& line, std::string_view text, std::size_t width)
{
    line.append(text).append(width - std::min(width, text.size()) + 1, ' ');
}

std::string SizeText(double size)
{
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, size).ptr};
}

std::string Heading(std::size_t nameWidth)
{
    const std::string indent(kTableNoWidth + 1, ' ');
    std::string text;
    for (const std::string_view line : {"Level", "|   Children", "|   |     Siblings", "|   |     |   Attributes"})
        text.append(indent).append(line).append(kLineEnd);
    std::string last = indent + "|   |     |   |   ";
    AppendPadded(last, "Type", kTypeWidth);
    AppendPadded(last, "Name", nameWidth);
    last += "XPath";
    return text + last + std::string(kLineEnd) + std::string(last.size(), '-') + std::string(kLineEnd);
}

} // namespace

std::string StructureReport(const StructureModel& model, const Document& document)
{
    std::size_t nameWidth = 0;
    for (std::size_t i = 1; i <= model.UpperBound(); ++i)
        nameWidth = std::max(nameWidth, std::min(model.Element(i).strName.size(), kMaxNameWidth));
    std::string text = Heading(nameWidth);
    for (std::size_t i = 1; i <= model.UpperBound(); ++i) {
        const ElementInfo& entry = model.Element(i);
        AppendPadded(text, std::to_string(entry.lngTableNo), kTableNoWidth);
        AppendPadded(text, std::to_string(entry.intLevel), kLevelWidth);
        AppendPadded(text, std::to_string(entry.lngMaxChildren), kChildrenWidth);
        AppendPadded(text, std::to_string(entry.lngMaxTwins), kCountWidth);
        AppendPadded(text, std::to_string(entry.lngAttributes), kCountWidth);
        const std::string_view type = entry.lngDataType == kNumericContent ? "Num(" : "Str(";
        AppendPadded(text, std::string(type) + SizeText(entry.dblMaxSize) + ")", kTypeWidth);
        AppendPadded(text, entry.strName, nameWidth);
        text.append(document.PathText(entry.strPath)).append(kLineEnd);
    }
    return text;
}

} // namespace velmora
