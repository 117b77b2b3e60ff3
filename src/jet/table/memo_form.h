#pragma once

#include "jet/base/bytes.h"
#include "jet/base/format.h"

namespace jet {

/// The two forms in which a memo may be stored. Views of the value or of `buffer`.
struct MemoForm {
    ByteSpan plain; ///< outside the row
    ByteSpan inRow; ///< for a memo short enough to stay in the row
};

/// A memo is compressed only in the row, and exactly when all its characters are 0x01 to 0xFF and there are at least 3
/// of them; `stored` may come in either form. Uses `buffer` when one has to be made. Source: memos written by Access
/// 2000 and 2003, of which none outside a row is compressed.
[[nodiscard]] MemoForm FormOfMemo(ByteSpan stored, const Format& format, Bytes& buffer);

} // namespace jet
