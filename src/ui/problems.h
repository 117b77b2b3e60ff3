#pragma once

#include "settings/controls.h"

#include <QString>

#include <vector>

namespace velmora {

/// What a run would stumble over, beside the field that it is about.
struct FieldProblem {
    TextControl Controls::*field;
    QString text;
};

/// All that can be seen before a run. Looks at files and folders: not for every keystroke.
[[nodiscard]] std::vector<FieldProblem> FindProblems(const Controls& controls);

} // namespace velmora
