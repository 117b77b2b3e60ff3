#include "platform/clock.h"

#include <chrono>

namespace velmora {

std::tm LocalTime(std::time_t time) noexcept
{
    std::tm local{};
    localtime_r(&time, &local);
    return local;
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
