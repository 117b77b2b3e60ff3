#pragma once

#include "settings/controls.h"
#include "settings/conversion_settings.h"

#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velmora {

/// What belongs together for a reader of the help.
enum class OptionGroup { Source, Target, TextFiles, Database, Tables, Running };

/// When the setting of an option follows its control, at the start of a run.
enum class Reading {
    Always,
    WhileEnabled,  ///< a check box that is disabled counts as off
    GreyIsOn,      ///< so does not the third state of this check box; that of all others counts as off
    InTextMode,    ///< without a folder for text files the setting keeps what an earlier run left; `\t` is a tab
    OffOrTextMode, ///< without such a folder it is off
};

/// One option: all that there is to be said about it. Parser, builder, settings, start values, enabling, help and the
/// manual's tables follow from it. A further option is a control, a setting where the run needs one, and a row.
struct Option {
    using Control = std::variant<CheckControl Controls::*, TextControl Controls::*, ComboControl Controls::*>;
    using Setting = std::variant<std::monostate, bool ConversionSettings::*, std::string ConversionSettings::*>;
    using Condition = bool (*)(const Controls&);

    OptionGroup group;
    Control control; ///< a check box is a switch, a text box or a list is a key
    Setting setting{};
    Reading reading = Reading::Always;

    /// Words, in lower case, a blank between two. The first one is written by the builder; those of a key end in "=".
    std::string_view words;
    std::string_view offWords{}; ///< of a switch: what switches it off
    std::string_view value{};    ///< of a key: what stands for its value in the help; of a list: its choices, by "|"
    std::string_view endings{};  ///< of a key for a file: how the names of such files end, for completion
    bool othersMeanLast = false; ///< of a list: what is none of the choices stands for the last one

    bool startsOn = false;        ///< of a switch
    std::string_view startText{}; ///< of a text

    Condition enabledIf = nullptr; ///< none: always
    Condition writtenIf = nullptr; ///< the builder leaves it out otherwise; none: always
    Condition namedIf = nullptr;   ///< the builder writes it even where it stands as at the start; none: never

    std::string_view help; ///< what it does, for help and manual; the default is added
    std::string_view offHelp{};

    [[nodiscard]] bool IsSwitch() const noexcept { return std::holds_alternative<CheckControl Controls::*>(control); }
};

/// What a key has at the start: its text, or the first of its choices.
[[nodiscard]] std::string_view StartValue(const Option& key);

/// All options, in the order in which the builder writes them.
[[nodiscard]] std::span<const Option> Options() noexcept;

struct OptionHeading {
    OptionGroup group;
    std::string_view text;
};
/// The groups in the order in which they are read.
[[nodiscard]] std::span<const OptionHeading> OptionHeadings() noexcept;

/// A word as the table has it: letters A to Z become small ones.
[[nodiscard]] std::string LowerCase(std::string_view word);

/// The parts of `list`, which stand between `separator`s.
[[nodiscard]] std::vector<std::string_view> Listed(std::string_view list, char separator = ' ');

} // namespace velmora
