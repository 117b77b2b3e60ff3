#include "settings/threads.h"

#include <algorithm>
#include <charconv>
#include <thread>

namespace velmora {

namespace {

constexpr int kUsualMost = 4; ///< what a run can do at the same time is not more than that
constexpr int kMost = 1'000;

/// nullopt for what is no number of threads.
std::optional<int> NamedThreads(const std::string& text)
{
    int threads = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), threads);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber && threads > 0 && threads <= kMost ? std::optional(threads) : std::nullopt;
}

} // namespace

std::optional<std::string> UnfitThreads(const ConversionSettings& settings)
{
    if (settings.threads.empty() || NamedThreads(settings.threads))
        return std::nullopt;
    return "threads= takes a number from 1 to " + std::to_string(kMost) + ", not \"" + settings.threads +
           "\"; nothing was converted";
}

int ThreadsOf(const ConversionSettings& settings)
{
    // Where nobody knows how many processors there are, that is 0.
    const int processors = static_cast<int>(std::max(std::thread::hardware_concurrency(), 1U));
    return NamedThreads(settings.threads).value_or(std::min(processors, kUsualMost));
}

} // namespace velmora
