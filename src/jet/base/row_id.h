#pragma once

#include "jet/base/bytes.h"

#include <compare>
#include <cstdint>

namespace jet {

/// 0-based number of a page in the file.
using PageNumber = std::uint32_t;

/// A row's place: page and slot. On disk a row pointer is the u32 `page << 8 | slot`; 0 means none.
struct RowId {
    PageNumber page = 0;
    std::uint8_t slot = 0;

    auto operator<=>(const RowId&) const = default; // NOLINT(modernize-use-nullptr): the zero is the compiler's
    [[nodiscard]] bool IsNone() const noexcept { return page == 0 && slot == 0; }
    [[nodiscard]] std::uint32_t Pointer() const noexcept { return page << 8 | slot; }
    [[nodiscard]] static RowId FromPointer(std::uint32_t pointer) noexcept
    {
        return {pointer >> 8, static_cast<std::uint8_t>(pointer)};
    }
};

} // namespace jet
