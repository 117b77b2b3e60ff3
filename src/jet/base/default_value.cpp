#include "jet/base/default_value.h"

#include "jet/base/error.h"

#include <algorithm>

namespace jet {

namespace {

struct Function {
    std::string_view name; ///< in small letters
    DefaultValue::Kind kind;
    ColumnType type; ///< that it gives
};

constexpr Function kFunctions[] = {
    {"now()", DefaultValue::Kind::Now, ColumnType::DateTime},
    {"date()", DefaultValue::Kind::Today, ColumnType::DateTime},
    {"time()", DefaultValue::Kind::TimeOfDay, ColumnType::DateTime},
    {"genguid()", DefaultValue::Kind::NewGuid, ColumnType::Guid},
    {"genuniqueid()", DefaultValue::Kind::RandomNumber, ColumnType::Long},
};

struct Word {
    std::string_view name; ///< in small letters
    bool value;
};

constexpr Word kWords[] = {{"true", true},   {"yes", true}, {"on", true},
                           {"false", false}, {"no", false}, {"off", false}};

std::string_view Trimmed(std::string_view text)
{
    while (text.starts_with(' '))
        text.remove_prefix(1);
    while (text.ends_with(' '))
        text.remove_suffix(1);
    return text;
}

bool EqualIgnoringCase(std::string_view text, std::string_view small)
{
    const auto toSmall = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; };
    return std::ranges::equal(text, small, {}, toSmall);
}

bool IsBetween(std::string_view text, char mark)
{
    return text.size() >= 2 && text.front() == mark && text.back() == mark;
}

/// The content of a text in quotation marks; one that stands twice stands for itself. nullopt when it ends before.
std::optional<std::string> Unquoted(std::string_view text)
{
    const char mark = text.front();
    std::string content;
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        if (text[i] == mark && (i + 2 >= text.size() || text[++i] != mark))
            return std::nullopt;
        content += text[i];
    }
    return content;
}

/// The literal that the expression is.
std::optional<Value> Literal(std::string_view text, const ValueType& type)
{
    for (const Word& word : kWords)
        if (EqualIgnoringCase(text, word.name))
            return Value(word.value);
    if (IsBetween(text, '"') || IsBetween(text, '\'')) {
        std::optional<std::string> content = Unquoted(text);
        return content ? std::optional<Value>(std::move(*content)) : std::nullopt;
    }
    if (IsBetween(text, '#'))
        return ParseText({.type = ColumnType::DateTime}, text.substr(1, text.size() - 2));
    if (EqualIgnoringCase(text, "null"))
        return std::nullopt;
    // Without any marks only a number is a literal.
    const Value number = ParseText({.type = ColumnType::Double}, text);
    const bool isText = IsText(type.type);
    // In a text column the number's own text is what is meant, not how it was typed: 007 is 7. For the other types the
    // text is read as one of a user would be, so that a currency is not rounded on its way through a double.
    return isText ? number : Value(std::string(text));
}

Bytes StoredForm(const Value& value, const Format& format, const ValueType& type)
{
    if (type.type == ColumnType::Boolean)
        return {ToBoolean(value) ? Byte{1} : Byte{0}};
    Bytes stored;
    EncodeValue(stored, format, type, value);
    return stored;
}

} // namespace

std::optional<DefaultValue> ParseDefaultValue(std::string_view expression, const Format& format, const ValueType& type)
{
    std::string_view text = Trimmed(expression);
    if (text.starts_with('='))
        text = Trimmed(text.substr(1));
    for (const Function& function : kFunctions)
        if (EqualIgnoringCase(text, function.name))
            return function.type == type.type ? std::optional(DefaultValue{function.kind, {}}) : std::nullopt;
    try {
        const std::optional<Value> value = Literal(text, type);
        return value ? std::optional(DefaultValue{DefaultValue::Kind::Stored, StoredForm(*value, format, type)})
                     : std::nullopt;
        // Access keeps whole formulas in this property: one that cannot be read here is no damage, the field starts as
        // Null.
    } catch (const Error&) {
        return std::nullopt;
    }
}

} // namespace jet
