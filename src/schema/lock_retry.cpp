#include "schema/lock_retry.h"

#include <thread>

namespace velmora {

namespace {

constexpr std::chrono::seconds kRetryTime{10};
constexpr std::chrono::milliseconds kRetryPause{100};

} // namespace

std::chrono::milliseconds LockWait::Now() const
{
    if (seam_.now)
        return seam_.now();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
}

bool LockWait::IsOver()
{
    const std::chrono::milliseconds now = Now();
    if (!begin_)
        begin_ = now;
    return now - *begin_ >= kRetryTime;
}

void LockWait::Pause() const
{
    if (seam_.pause)
        seam_.pause(kRetryPause);
    else
        std::this_thread::sleep_for(kRetryPause);
}

} // namespace velmora
