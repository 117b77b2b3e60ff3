#pragma once

#include "jet/base/bytes.h"

#include <random>

namespace jet::testing {

/// Changes `file`, a database of either format, in one place: a field of a page's structure, a few bytes anywhere in a
/// page, or a page put in place of another. Lengths and types stay plausible more often than chance would have it, so
/// that reading gets far enough to be misled. Page 0 is left alone mostly: little depends on it.
void Damage(MutableBytes file, std::mt19937& random);

} // namespace jet::testing
