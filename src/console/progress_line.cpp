#include "console/progress_line.h"

#include <algorithm>

namespace velmora {

namespace {

constexpr std::size_t kWidestBar = 30;
constexpr std::size_t kNarrowestBar = 5;
/// A rate taken over less than this jumps about.
constexpr std::int64_t kSettledMilliseconds = 500;

/// `number`, below 100, behind a colon and in two digits.
std::string ColonTwoDigits(std::int64_t number)
{
    return {':', static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10)};
}

/// `0:07`, `12:30`, `1:02:30`.
std::string Duration(std::int64_t seconds)
{
    const std::int64_t minutes = seconds / 60;
    const std::string end = ColonTwoDigits(seconds % 60);
    return minutes < 60 ? std::to_string(minutes) + end
                        : std::to_string(minutes / 60) + ColonTwoDigits(minutes % 60) + end;
}

std::string RateAndTimeLeft(const ProgressState& state, std::int64_t records)
{
    if (state.importMilliseconds < kSettledMilliseconds)
        return {};
    const std::int64_t perSecond = state.records * 1000 / state.importMilliseconds;
    std::string text = ", " + std::to_string(perSecond) + "/s";
    if (perSecond > 0)
        text += ", " + Duration((state.recordsTotal - records + perSecond - 1) / perSecond) + " left";
    return text;
}

} // namespace

std::string ProgressLine(const ProgressState& state, std::size_t columns)
{
    const std::int64_t file = std::min(state.filesDone + 1, state.files);
    std::string head = state.files > 1 ? std::to_string(file) + " of " + std::to_string(state.files) + "  " : "";
    if (state.records == 0 || state.recordsTotal <= 0)
        return (head + "reading, " + Duration(state.fileMilliseconds / 1000)).substr(0, columns);

    const std::int64_t records = std::min(state.records, state.recordsTotal);
    const std::string percent = std::to_string(records * 100 / state.recordsTotal) + "%";
    std::string tail = "  " + std::string(4 - percent.size(), ' ') + percent + "  " + std::to_string(state.records) +
                       " of about " + std::to_string(state.recordsTotal) + " records" + RateAndTimeLeft(state, records);
    const std::size_t taken = head.size() + tail.size() + 2;
    if (taken + kNarrowestBar > columns)
        return (head + tail.substr(tail.find_first_not_of(' '))).substr(0, columns);

    const std::size_t width = std::min(columns - taken, kWidestBar);
    const auto filled = static_cast<std::size_t>(records * static_cast<std::int64_t>(width) / state.recordsTotal);
    return head + "[" + std::string(filled, '#') + std::string(width - filled, ' ') + "]" + tail;
}

} // namespace velmora
