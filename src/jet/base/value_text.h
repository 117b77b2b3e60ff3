#pragma once

#include "jet/base/value.h"

#include <string>

namespace jet {

/// A value as text: how a text export or a dump shows it. Null is empty; numbers in the shortest form that reads back
/// the same (of a Single: as a Single), booleans "True" and "False", dates "2024-03-05 14:07:09", bytes hexadecimal,
/// GUIDs in braces.
[[nodiscard]] std::string ToText(const Value& value);
/// The same in the forms that data formats agree on: booleans "true" and "false", dates as IsoDateText() has them,
/// numbers without an exponent unless they are very long then.
[[nodiscard]] std::string ToIsoText(const Value& value, bool isTimeOfDay);

} // namespace jet
