#include "platform/clock.h"

#include <chrono>

namespace velmora {

std::string FormatTime(std::time_t time, const char* format)
{
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &time);
#else
    localtime_r(&time, &local);
#endif
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

std::int64_t CoarseMilliseconds() noexcept
{
#ifdef CLOCK_MONOTONIC_COARSE
    std::timespec now{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
#else
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
#endif
}

} // namespace velmora
