#pragma once

#include "host/host.h"

#include <QString>

class QMessageBox;
class QWidget;

namespace velmora {

/// The caption of the main window and of every message box.
[[nodiscard]] QString Caption();

/// A box in front of `window`, as all of the program are: with plain text, which can be selected.
[[nodiscard]] QMessageBox* MakeMessageBox(QWidget& window, const QString& text, Buttons buttons, Icon icon,
                                          Answer defaultAnswer);
/// Shows such a box and waits for the answer. Closed otherwise, it means Cancel.
[[nodiscard]] Answer AskInBox(QWidget& window, const QString& text, Buttons buttons, Icon icon, Answer defaultAnswer,
                              const QString& caption = Caption());
/// The same with nothing to choose.
void TellInBox(QWidget& window, const QString& text);

} // namespace velmora
