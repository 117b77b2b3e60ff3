#pragma once

#include "jet/base/bytes.h"

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>

namespace jet {

/// Column types; the numbers are those of the file.
enum class ColumnType : std::uint8_t {
    Boolean = 1, ///< has no bytes: its value is its bit of the row's null mask
    Byte = 2,
    Integer = 3,
    Long = 4,
    Currency = 5, ///< 64 bits, in ten-thousandths
    Single = 6,
    Double = 7,
    DateTime = 8, ///< a double, see DateTime
    Binary = 9,   ///< up to 510 bytes
    Text = 10,
    Ole = 11,  ///< a long value of bytes
    Memo = 12, ///< a long value of text
    Guid = 15,
    Numeric = 16,     ///< Jet 4: up to 28 digits
    FixedBinary = 17, ///< in a system table of Access's only
};

[[nodiscard]] constexpr bool IsLongValue(ColumnType type) noexcept
{
    return type == ColumnType::Ole || type == ColumnType::Memo;
}

[[nodiscard]] constexpr bool IsText(ColumnType type) noexcept
{
    return type == ColumnType::Text || type == ColumnType::Memo;
}

/// How a value looks in an index key.
enum class KeyForm : std::uint8_t {
    None, ///< cannot be indexed
    Boolean,
    Unsigned,
    Signed,
    Float,
    Guid,
    Numeric,
    Groups, ///< bytes in groups of eight
    Text,
};

/// What all columns of a type have in common.
struct TypeFacts {
    bool isKnown = false;
    bool isVariable = false; ///< a new column lies in the variable part of the row
    std::size_t size = 0;    ///< bytes of every value; 0 for a boolean, and where values differ in size
    KeyForm key = KeyForm::None;
};

namespace type_facts {

/// By the type's number; the gaps are numbers that no column of these formats has.
inline constexpr std::array<TypeFacts, 18> kByNumber = [] {
    std::array<TypeFacts, 18> facts{};
    const auto set = [&](ColumnType type, bool isVariable, std::size_t size, KeyForm key) {
        facts[static_cast<std::size_t>(type)] = {true, isVariable, size, key};
    };
    set(ColumnType::Boolean, false, 0, KeyForm::Boolean);
    set(ColumnType::Byte, false, 1, KeyForm::Unsigned);
    set(ColumnType::Integer, false, 2, KeyForm::Signed);
    set(ColumnType::Long, false, 4, KeyForm::Signed);
    set(ColumnType::Currency, false, 8, KeyForm::Signed);
    set(ColumnType::Single, false, 4, KeyForm::Float);
    set(ColumnType::Double, false, 8, KeyForm::Float);
    set(ColumnType::DateTime, false, 8, KeyForm::Float);
    set(ColumnType::Binary, true, 0, KeyForm::Groups);
    set(ColumnType::Text, true, 0, KeyForm::Text);
    set(ColumnType::Ole, true, 0, KeyForm::None);
    set(ColumnType::Memo, true, 0, KeyForm::Text);
    set(ColumnType::Guid, false, 16, KeyForm::Guid);
    set(ColumnType::Numeric, false, 17, KeyForm::Numeric);
    set(ColumnType::FixedBinary, false, 0, KeyForm::Groups);
    return facts;
}();

} // namespace type_facts

/// Of any number; a type that the format does not know has `isKnown` false.
[[nodiscard]] constexpr const TypeFacts& FactsOf(ColumnType type) noexcept
{
    const auto number = static_cast<std::size_t>(type);
    return type_facts::kByNumber[number < type_facts::kByNumber.size() ? number : 0];
}

using Null = std::monostate;

struct Currency {
    static constexpr unsigned kScale = 4; ///< digits behind the point
    std::int64_t tenThousandths = 0;
    auto operator<=>(const Currency&) const = default;
};

/// Days since 1899-12-30; the fraction is the time of day and counts forward also for negative days.
struct DateTime {
    double days = 0;
    auto operator<=>(const DateTime&) const = default;
};

struct Guid {
    std::array<Byte, 16> bytes{}; ///< in the order of the text form
    auto operator<=>(const Guid&) const = default;
};

struct Numeric {
    bool negative = false;
    std::array<std::uint32_t, 4> magnitude{}; ///< most significant first; the value is magnitude / 10^scale
    std::uint8_t scale = 0;
    auto operator<=>(const Numeric&) const = default;
};

/// One field's content. Byte, Integer and Long are std::int32_t; Single is float, Double is double; Text and Memo are
/// UTF-8 (an unpaired surrogate as its three-byte form, so that every value comes back as it was); Binary and Ole are
/// Bytes.
using Value =
    std::variant<Null, bool, std::int32_t, float, double, Currency, DateTime, std::string, Bytes, Guid, Numeric>;

[[nodiscard]] inline bool IsNull(const Value& value) noexcept
{
    return std::holds_alternative<Null>(value);
}

/// One property of a table or of one of its columns that holds text, such as "Description".
struct Property {
    std::string column; ///< empty: of the table itself
    std::string name;
    std::string value;                  ///< UTF-8
    ColumnType type = ColumnType::Text; ///< Text or Memo; Access shows those of both types alike

    bool operator==(const Property&) const = default;
};

} // namespace jet
