#pragma once

#include "jet/base/format.h"
#include "jet/base/value.h"

#include <string_view>

namespace jet {

/// What the stored form of a value depends on besides the value.
struct ValueType {
    ColumnType type = ColumnType::Long;
    std::size_t sizeBytes = 0;   ///< the column's declared size
    bool compressed = false;     ///< Jet 4 text: compressed form wanted
    std::uint8_t precision = 0, scale = 0;
};

/// A value as a row holds it. Throws FieldTooSmall, WrongType. Null and booleans have no stored form: not for them.
void EncodeValue(Bytes& out, const Format& format, const ValueType& type, const Value& value);
/// Text of a user (a document's content) as a value of the column's type: numbers, dates, GUIDs and booleans are read the way a
/// provider converts text. Throws WrongType when it cannot be read, FieldTooSmall when it is too long.
void EncodeText(Bytes& out, const Format& format, const ValueType& type, std::string_view utf8);
/// The reverse. Throws CorruptPage-like Error when the bytes do not fit the type.
[[nodiscard]] Value DecodeValue(ByteSpan stored, const Format& format, const ValueType& type);
/// A value as text: how a text export or a dump shows it. Null is empty; numbers in the shortest form that reads back the same.
[[nodiscard]] std::string ToText(const Value& value);

} // namespace jet
