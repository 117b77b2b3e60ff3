#pragma once

#include "jet/base/bytes.h"

namespace jet {

/// XORs `data` with the RC4 key stream of `key` (1 to 256 bytes), from the stream's beginning. Applying it twice undoes
/// it.
void ApplyRc4(ByteSpan key, MutableBytes data);

} // namespace jet
