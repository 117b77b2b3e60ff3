#pragma once

#include <QString>

class QHBoxLayout;
class QPlainTextEdit;
class QPushButton;
class QTableView;
class QWidget;

namespace velmora {

class Desktop;

/// A text to read and select, in a font of fixed width where its columns are to line up.
[[nodiscard]] QPlainTextEdit* MakeReadOnlyText(const char* name, const QString& title, bool fixedWidth);
[[nodiscard]] QPushButton* MakeTextButton(const char* name, const QString& text, const QString& explanation);
/// Rows as high as their text wants them, in a table of many.
void SetCompactRows(QTableView& table);
/// Copies what is selected in `text`, or all of it.
void CopyText(const QPlainTextEdit& text);
/// Asks for a file and writes the text to it.
void SaveText(QWidget& window, Desktop& desktop, const QString& text, const QString& proposal);

} // namespace velmora
