#include "text_forms.h"

namespace jet {

const char* TypeName(ColumnType type)
{
    switch (type) {
    case ColumnType::Boolean:
        return "boolean";
    case ColumnType::Byte:
        return "byte";
    case ColumnType::Integer:
        return "integer";
    case ColumnType::Long:
        return "long";
    case ColumnType::Currency:
        return "currency";
    case ColumnType::Single:
        return "single";
    case ColumnType::Double:
        return "double";
    case ColumnType::DateTime:
        return "datetime";
    case ColumnType::Binary:
    case ColumnType::FixedBinary:
        return "binary";
    case ColumnType::Text:
        return "text";
    case ColumnType::Ole:
        return "ole";
    case ColumnType::Memo:
        return "memo";
    case ColumnType::Guid:
        return "guid";
    case ColumnType::Numeric:
        return "numeric";
    }
    return "unknown";
}

std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char c : text) {
        if (c == '\n')
            escaped += "\\n";
        else if (c == '\r')
            escaped += "\\r";
        else if (c == '|' || c == '\\')
            (escaped += '\\') += c;
        else
            escaped += c;
    }
    return escaped;
}

std::string Hex(ByteSpan bytes)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const Byte byte : bytes) {
        if (!text.empty())
            text += ' ';
        (text += kDigits[byte >> 4]) += kDigits[byte & 15];
    }
    return text;
}

std::string Offset(std::size_t at)
{
    std::string text;
    for (int shift = 12; shift >= 0; shift -= 4)
        text += "0123456789abcdef"[at >> shift & 15];
    return text;
}

std::string PageList(const std::vector<PageNumber>& pages)
{
    std::string text;
    for (std::size_t i = 0; i < pages.size();) {
        std::size_t end = i + 1;
        while (end < pages.size() && pages[end] == pages[end - 1] + 1)
            ++end;
        text += (text.empty() ? "" : ", ") + std::to_string(pages[i]);
        if (end - i > 1)
            text += "-" + std::to_string(pages[end - 1]);
        i = end;
    }
    return text.empty() ? "none" : text;
}

std::string Pointer(RowId row)
{
    return row.IsNone() ? "nowhere" : "page " + std::to_string(row.page) + " row " + std::to_string(row.slot);
}

} // namespace jet
