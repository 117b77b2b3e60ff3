#pragma once

#include "settings/options.h"

#include <QWidget>

#include <vector>

class QGridLayout;
class QGroupBox;
class QLineEdit;
class QPushButton;
class QTabWidget;
class QToolButton;

namespace velmora {

class ControlsForm;
struct ControlRow;

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
    void AddAdditions(QGridLayout& grid, ControlsForm& form, OptionGroup group);
    [[nodiscard]] QToolButton* MakeButton(const char* name, const QString& text, const QString& explanation);
    /// "..." for a field that names a file or a folder.
    [[nodiscard]] QToolButton* MakeFindButton(TextControl Controls::*field);

    std::vector<const ControlRow*> additions_;
    QWidget* content_ = nullptr;
    QToolButton* fold_ = nullptr;
    QTabWidget* sourceTypes_ = nullptr;
    QLineEdit* xml_ = nullptr;
};

} // namespace velmora
