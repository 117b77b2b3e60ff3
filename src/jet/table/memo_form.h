#pragma once

#include "jet/base/bytes.h"
#include "jet/base/format.h"

#include <optional>

namespace jet {

// A memo is compressed only in the row, and exactly when all its characters are 0x01 to 0xFF and there are at least 3
// of them; `stored` may come in either form. What is given is a view of it or of `buffer`, where the other form is
// made. Source: memos written by Access 2000 and 2003, of which none outside a row is compressed.

/// The memo as it stands in the row; nullopt when it is too long for that.
[[nodiscard]] std::optional<ByteSpan> MemoInRow(ByteSpan stored, const Format& format, Bytes& buffer);
/// The memo as it stands outside the row.
[[nodiscard]] ByteSpan PlainMemo(ByteSpan stored, const Format& format, Bytes& buffer);

} // namespace jet
