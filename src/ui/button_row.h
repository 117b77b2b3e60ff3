#pragma once

#include <QWidget>

class QMenu;
class QPushButton;

namespace velmora {

/// The buttons below the pages, which are there on each of them.
class ButtonRow : public QWidget {
    Q_OBJECT

public:
    explicit ButtonRow(QMenu* jobMenu, QWidget* parent = nullptr);

    enum class RunState { Idle, Running, Cancelling };
    void Show(RunState state);
    /// As if "Convert" had been pressed, if it can be.
    void PressConvert();

signals:
    void CommandLinePressed();
    void OpenFolderPressed();
    void PreviewPressed();
    void ConvertPressed();
    void QuitPressed();

private:
    QPushButton* job_;
    QPushButton* commandLine_;
    QPushButton* openDirectory_;
    QPushButton* preview_;
    QPushButton* convert_;
    QPushButton* quit_;
};

} // namespace velmora
