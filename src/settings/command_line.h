#pragma once

#include "settings/command_line_split.h"
#include "settings/controls.h"

#include <functional>
#include <span>
#include <string_view>

namespace velmora {

/// One option that is switched on or off by any of its words.
struct SwitchRow {
    std::initializer_list<std::string_view> words; ///< lower case
    CheckControl Controls::*control;
    CheckState value;
};

/// One option whose value is written behind any of its words and "=".
struct KeyRow {
    std::initializer_list<std::string_view> words; ///< lower case
    TextControl Controls::*control;                ///< nullptr: the database format
};

/// Every switch and key of the command line, in the order in which a token is compared with them. The set is uneven on
/// purpose: scripts rely on it as it stands.
[[nodiscard]] std::span<const SwitchRow> SwitchTable() noexcept;
[[nodiscard]] std::span<const KeyRow> KeyTable() noexcept;

/// Sets `controls` and `debug` by a raw command line (without the program's name), token by token; later ones override
/// earlier ones. Each token that is no switch and no key goes to `reportUnknown`, as it stands, and is skipped. An
/// empty line does nothing. Throws CommandLineError, before anything is set, when the line makes no sense as a whole.
void ApplyCommandLine(std::string_view line, Controls& controls, bool& debug,
                      const std::function<void(std::string_view token)>& reportUnknown);

} // namespace velmora
