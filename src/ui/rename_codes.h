#pragma once

class QLineEdit;
class QToolButton;
class QWidget;

namespace velmora {

/// A button with a menu of what a rename pattern can be made of; what is chosen is put into `pattern` where the cursor
/// is, as if it had been typed.
[[nodiscard]] QToolButton* MakeRenameCodes(QLineEdit& pattern);

} // namespace velmora
