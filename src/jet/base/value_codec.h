#pragma once

#include "jet/base/format.h"
#include "jet/base/value.h"

#include <string>
#include <string_view>

namespace jet {

/// What the stored form of a value depends on besides the value.
struct ValueType {
    ColumnType type = ColumnType::Long;
    std::size_t sizeBytes = 0; ///< the column's declared size
    bool compressed = false;   ///< Jet 4 text: compressed form wanted
    bool filled = false;       ///< text, binary: always sizeBytes long, filled up with blanks or zeros
    std::uint8_t precision = 0, scale = 0;
};

/// A value as a row holds it. A number may stand for every numeric type that can hold it; text (std::string) is read as
/// ParseText does. Throws FieldTooSmall, WrongType. Null and booleans have no stored form: not for them.
void EncodeValue(Bytes& out, const Format& format, const ValueType& type, const Value& value);
/// Text of a user (a document's content) as a value of the column's type; see ParseText. Throws WrongType when it
/// cannot be read, FieldTooSmall when it is too long.
void EncodeText(Bytes& out, const Format& format, const ValueType& type, std::string_view utf8);
/// Text as a value of the column's type, the way a provider converts it: numbers (half is rounded to even), dates,
/// GUIDs, booleans ("True", "False", or a number), bytes from pairs of hexadecimal digits, those of an OLE object from
/// base64 as well. A time zone is left out. Throws WrongType when it cannot be read.
[[nodiscard]] Value ParseText(const ValueType& type, std::string_view utf8);
/// A value as a boolean: text as ParseText reads it, a number when it is not 0. Throws WrongType.
[[nodiscard]] bool ToBoolean(const Value& value);
/// Fills the text or binary value that begins at `begin` in `out` up to the size of a column that is `filled`; the
/// others stay as they are.
void FillUp(Bytes& out, std::size_t begin, const Format& format, const ValueType& type);
/// The reverse of EncodeValue; for a long value of the bytes themselves, not of its field. Throws CorruptValue when the
/// bytes do not fit the type.
[[nodiscard]] Value DecodeValue(ByteSpan stored, const Format& format, const ValueType& type);

} // namespace jet
