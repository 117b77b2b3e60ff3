#pragma once

#include <QWidget>

#include <string>

class QLineEdit;
class QPlainTextEdit;

namespace velmora {

class Desktop;
struct Controls;

/// The page "XML Info": the structure that was found in the document converted last.
class StructurePage : public QWidget {
    Q_OBJECT

public:
    /// `desktop` asks for files.
    explicit StructurePage(Desktop& desktop, QWidget* parent = nullptr);

    void Refresh(const Controls& controls);
    void FocusSearch();

private:
    void FindNext();

    QPlainTextEdit* text_;
    QLineEdit* search_;
    std::string shown_; ///< what of the state is shown already
};

} // namespace velmora
