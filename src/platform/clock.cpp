#include "platform/clock.h"

namespace velmora {

std::string FormatTime(std::time_t time, const char* format)
{
    const std::tm local = LocalTime(time);
    char text[101];
    return {text, std::strftime(text, sizeof text, format, &local)};
}

std::string TimeStamp(std::time_t time)
{
    return FormatTime(time, "%Y-%m-%d %H:%M:%S");
}

std::string_view TimeStampClock::Now()
{
    const std::time_t now = std::time(nullptr);
    if (now != second_) {
        text_ = TimeStamp(now);
        second_ = now;
    }
    return text_;
}

} // namespace velmora
