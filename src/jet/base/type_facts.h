#pragma once

#include "jet/base/value.h"

#include <array>
#include <cstddef>

namespace jet {

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

} // namespace jet
