#include "platform/clock.h"

#include "platform/windows/windows.h"

namespace velmora {

/// Not localtime: it takes a TZ that other programs have set for themselves, and reads it in a way of its own.
std::tm LocalTime(std::time_t time) noexcept
{
    constexpr std::int64_t kTicksPerSecond = 10'000'000;
    constexpr std::int64_t kEpoch = 11'644'473'600; // seconds from 1601 to 1970
    const auto ticks = static_cast<std::uint64_t>((time + kEpoch) * kTicksPerSecond);
    const FILETIME fileTime{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SYSTEMTIME universal{};
    SYSTEMTIME local{};
    FileTimeToSystemTime(&fileTime, &universal);
    if (!SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local))
        local = universal;
    std::tm result{};
    result.tm_year = local.wYear - 1900;
    result.tm_mon = local.wMonth - 1;
    result.tm_mday = local.wDay;
    result.tm_hour = local.wHour;
    result.tm_min = local.wMinute;
    result.tm_sec = local.wSecond;
    result.tm_wday = local.wDayOfWeek;
    result.tm_isdst = -1;
    return result;
}

std::int64_t CoarseMilliseconds() noexcept
{
    return static_cast<std::int64_t>(GetTickCount64());
}

} // namespace velmora
