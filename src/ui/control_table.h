#pragma once

#include "settings/options.h"

#include <QString>

#include <string>
#include <vector>

namespace velmora {

/// How one control of the options looks in the window.
struct ControlRow {
    const Option* option;
    std::string name;  ///< of the control, which is the widget's object name
    QString label;     ///< translated, with the letter for Alt
    QString hint;      ///< what an empty field shows; may be empty
    bool isAddition;   ///< stands in the group that is folded at first
    bool isThreeState; ///< of a check box
};

/// The options' controls, in the order of the option table. An option that has no label here is an addition that is
/// called by its first word on the command line.
[[nodiscard]] std::vector<ControlRow> ControlRows();

/// A sentence or two about what the option does, translated, with its words on the command line, as rich text.
[[nodiscard]] QString ToolTip(const Option& option);

/// The label without the mark of its Alt letter.
[[nodiscard]] QString PlainLabel(const QString& label);

} // namespace velmora
