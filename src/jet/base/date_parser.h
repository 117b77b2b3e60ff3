#pragma once

#include "jet/base/value.h"

#include <optional>
#include <string_view>

namespace jet {

struct ParsedDate {
    DateTime date;
    bool hasZone = false; ///< a time zone was named, and left out: the time is the one that was written
};

/// A date, a time, or both with a blank or "T" between them; blanks around them are passed over. nullopt when it is
/// none of these.
///
/// Dates and times are those of ISO 8601: calendar, ordinal (2024-065) and week dates (2024-W10-2) and times, in their
/// extended and basic forms; a fraction of the last part of a time; 24:00 for the end of a day; "Z" or an offset
/// behind. What is not a whole day (2024-03) is no date. Besides, as people write them: 3/5/2024, month first, a year
/// of two digits lying between 1930 and 2029, and 2:07 PM.
[[nodiscard]] std::optional<ParsedDate> ParseDate(std::string_view text);

} // namespace jet
