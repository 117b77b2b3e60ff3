#pragma once

#include "schema/engine_errors.h"

#include <chrono>
#include <concepts>
#include <functional>
#include <optional>

namespace velmora {

/// How a run meets the locks of others: time, and what a test puts in their place.
struct LockSeam {
    std::function<std::chrono::milliseconds()> now;       ///< none: a steady clock
    std::function<void(std::chrono::milliseconds)> pause; ///< none: a sleep
    std::function<void()> onWrite; ///< before each statement and each record saved; may throw jet::Error
};

/// The only place that tries again: calls `attempt()` until it succeeds, as long as its failures are `passing` ones and
/// `again()`, asked after each, wants it. The last one is the failure of the procedure that has tried, wherever further
/// in it was met.
template <std::invocable Attempt, std::predicate Again>
void RetryWhile(bool (*passing)(const RuntimeError&) noexcept, Attempt&& attempt, Again&& again)
{
    for (;;) {
        try {
            attempt();
            return;
        } catch (RuntimeError& error) {
            if (!passing(error))
                throw;
            if (!again()) {
                error.ForgetPlace();
                throw;
            }
        }
    }
}

/// The time that a lock is waited for when nobody is asked: 10 seconds from the first try that has failed.
class LockWait {
public:
    explicit LockWait(const LockSeam& seam) : seam_(seam) {}

    /// To be asked after each try that has failed.
    [[nodiscard]] bool IsOver();
    void Pause() const;

private:
    [[nodiscard]] std::chrono::milliseconds Now() const;

    const LockSeam& seam_;
    std::optional<std::chrono::milliseconds> begin_; ///< of the waiting
};

} // namespace velmora
