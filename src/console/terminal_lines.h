#pragma once

#include "host/host.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// How far a run is. Times are milliseconds.
struct ProgressState {
    std::int64_t files = 0; ///< files of the run
    std::int64_t filesDone = 0;
    std::int64_t bytes = 0;              ///< read of the current file, packed as it is
    std::int64_t bytesTotal = 0;         ///< 0: not known
    std::int64_t records = 0;            ///< records saved of the current file; 0 while it is read and analysed
    std::int64_t recordsTotal = 0;       ///< an estimate
    std::int64_t fileMilliseconds = 0;   ///< since the current file was begun
    std::int64_t importMilliseconds = 0; ///< since its first record
};

/// One line, in ASCII and at most `columns` long, that shows `state` with rate and time left:
/// `2 of 5  [#######             ]  36%  43100 of about 119700 records, 84000/s, 0:01 left`.
[[nodiscard]] std::string ProgressLine(const ProgressState& state, std::size_t columns);

/// The buttons of a box as one line to answer, the letters that stand for them in brackets:
/// `[R]etry or [C]ancel (Return: Retry)? `.
[[nodiscard]] std::string ButtonLine(Buttons buttons, Answer defaultAnswer);

/// The answer that `line` gives: a button's letter or word in upper or lower case, the default for an empty line.
/// nullopt when it is none of the buttons.
[[nodiscard]] std::optional<Answer> AnswerFrom(std::string_view line, Buttons buttons, Answer defaultAnswer);

/// What closing a box without a choice means.
[[nodiscard]] Answer DismissedAnswer(Buttons buttons) noexcept;

/// The next line of `input` without its end; nullopt at the end of the input.
[[nodiscard]] std::optional<std::string> ReadLine(std::FILE* input);

} // namespace velmora
