#pragma once

#include "host/host.h"

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

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
