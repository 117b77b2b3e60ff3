#pragma once

#include <QWidget>

class QGroupBox;
class QHBoxLayout;
class QLineEdit;
class QPushButton;
class QTabWidget;
class QToolButton;

namespace velmora {

class ControlsForm;
struct Controls;

/// The page "Converter": where the documents come from, where they go, and how.
class ConverterPage : public QWidget {
    Q_OBJECT

public:
    explicit ConverterPage(ControlsForm& form, QWidget* parent = nullptr);

    void Refresh(const Controls& controls);
    void FocusFirst();
    /// That of all its content, without scrolling.
    [[nodiscard]] QSize sizeHint() const override;

signals:
    /// The button of this name was pressed: one that finds a file or folder, or opens one.
    void ButtonPressed(const QString& name);

private:
    [[nodiscard]] QGroupBox* MakeSource(ControlsForm& form);
    [[nodiscard]] QWidget* MakeLocalSource(ControlsForm& form);
    [[nodiscard]] QWidget* MakeUrlSource(ControlsForm& form);
    [[nodiscard]] QGroupBox* MakeDestination(ControlsForm& form);
    [[nodiscard]] QGroupBox* MakeOptions(ControlsForm& form);
    [[nodiscard]] QWidget* MakeAdditions(ControlsForm& form);
    [[nodiscard]] QToolButton* MakeButton(const char* name, const QString& text, const QString& explanation);
    /// "..." for `edit`.
    [[nodiscard]] QToolButton* MakeFindButton(const char* name, const QLineEdit& edit);

    QWidget* content_ = nullptr;
    QTabWidget* sourceTypes_ = nullptr;
    QLineEdit* xml_ = nullptr;
};

} // namespace velmora
