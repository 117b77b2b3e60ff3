#pragma once

#include "settings/options.h"
#include "ui/desktop.h"

#include <QString>

#include <string>
#include <vector>

namespace velmora {

/// The dialog that fills a field which names a file or a folder. Title and filter are translated in the context
/// "Option".
struct FilePicker {
    TextControl Controls::*field;
    const char* button; ///< the control that opens it
    const char* title;
    const char* filter; ///< none: the field names a folder
    const char* suffix;
};

/// How one control of the options looks in the window.
struct ControlRow {
    const Option* option;
    std::string name;         ///< of the control, which is the widget's object name
    QString label;            ///< translated, with the letter for Alt
    QString hint;             ///< what an empty field shows; may be empty
    bool isAddition;          ///< stands in the group that is folded at first
    bool isThreeState;        ///< of a check box
    const FilePicker* picker; ///< of a field that names a file or a folder
};

/// The options' controls, in the order of the option table. An option that has no label here is an addition that is
/// called by its first word on the command line.
[[nodiscard]] std::vector<ControlRow> ControlRows();

/// Null for a field that names no file.
[[nodiscard]] const FilePicker* PickerOf(const Option::Control& control);
/// What the dialog asks for, beginning where the field is.
[[nodiscard]] FileQuestion QuestionOf(const FilePicker& picker, const Controls& controls);

/// A group of options, as the help calls it, translated.
[[nodiscard]] QString GroupTitle(OptionGroup group);

/// A sentence or two about what the option does, translated, with its words on the command line, as rich text.
[[nodiscard]] QString ToolTip(const Option& option);

/// Is the option as it is at the start?
[[nodiscard]] bool IsAtStart(const Option& option, const Controls& controls);

/// The label without the mark of its Alt letter.
[[nodiscard]] QString PlainLabel(const QString& label);

} // namespace velmora
