#pragma once

#include <QWidget>

class QCheckBox;
class QPlainTextEdit;

namespace velmora {

struct Controls;

/// The command line that does without the window what the window would do. It names the console program: a schedule
/// needs no display. The password shows only when asked for.
class CommandLineWindow : public QWidget {
    Q_OBJECT

public:
    /// Of `controls`, as they are whenever Refresh() is called.
    explicit CommandLineWindow(const Controls& controls, QWidget* parent = nullptr);

    void Refresh();

private:
    const Controls& controls_;
    QPlainTextEdit* text_;
    QCheckBox* showPassword_;
};

} // namespace velmora
