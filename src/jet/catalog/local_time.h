#pragma once

#include "jet/base/value.h"

namespace jet {

/// The moment, in local time, to the millisecond: what the catalog stamps its objects with.
[[nodiscard]] DateTime LocalNow();

} // namespace jet
