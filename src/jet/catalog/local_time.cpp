#include "jet/catalog/local_time.h"

#include <chrono>
#include <ctime>

namespace jet {

DateTime LocalNow()
{
    using namespace std::chrono;
    const auto now = floor<milliseconds>(system_clock::now());
    const std::time_t seconds = system_clock::to_time_t(floor<std::chrono::seconds>(now));
    const std::tm local = *std::localtime(&seconds);

    constexpr sys_days kDayZero = year{1899} / December / 30;
    const sys_days day = year{local.tm_year + 1900} / month{static_cast<unsigned>(local.tm_mon + 1)} /
                         std::chrono::day{static_cast<unsigned>(local.tm_mday)};
    const milliseconds timeOfDay = hours{local.tm_hour} + minutes{local.tm_min} + std::chrono::seconds{local.tm_sec} +
                                   now.time_since_epoch() % std::chrono::seconds{1};
    constexpr double kMillisecondsPerDay = 86'400'000.0;
    return {static_cast<double>((day - kDayZero).count()) +
            static_cast<double>(timeOfDay.count()) / kMillisecondsPerDay};
}

} // namespace jet
