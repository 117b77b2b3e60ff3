#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace velmora {

/// The wall clock as a text, made anew only when the second has changed: it is asked for every line that is written.
class TimeStampClock {
public:
    /// Local time, as in `2024-03-05 14:07:09`. The view holds until the next call.
    [[nodiscard]] std::string_view Now();

private:
    std::time_t second_ = -1;
    std::string text_;
};

/// `time` in local time, with the rules for summer that were in force on that day.
[[nodiscard]] std::tm LocalTime(std::time_t time) noexcept;
/// `time` in local time by a format of strftime (no more than 100 characters come out).
[[nodiscard]] std::string FormatTime(std::time_t time, const char* format);
/// `time` in local time, as in `2024-03-05 14:07:09`.
[[nodiscard]] std::string TimeStamp(std::time_t time);

/// Milliseconds since some moment, never running backwards, exact to some 10 ms; costs next to nothing.
[[nodiscard]] std::int64_t CoarseMilliseconds() noexcept;

} // namespace velmora
