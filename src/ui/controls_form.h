#pragma once

#include "settings/controls.h"
#include "ui/control_table.h"
#include "ui/problems.h"

#include <QObject>

#include <functional>
#include <vector>

class QCheckBox;
class QComboBox;
class QFileSystemModel;
class QLabel;
class QLineEdit;
class QWidget;

namespace velmora {

/// Makes the widgets of the options' controls and ties each to its control: what a person changes goes into the state,
/// and Refresh() shows the state. The widgets hold no truth of their own.
class ControlsForm : public QObject {
    Q_OBJECT

public:
    explicit ControlsForm(Controls& controls, QObject* parent = nullptr);

    // One widget each, without a parent, for a layout to take; named, with tool tip and accessible name.
    [[nodiscard]] QCheckBox* Check(CheckControl Controls::*control);
    [[nodiscard]] QLineEdit* Text(TextControl Controls::*control);
    [[nodiscard]] QComboBox* Combo(ComboControl Controls::*control);
    /// The label for a widget that was made before.
    [[nodiscard]] QLabel* LabelOf(QWidget* widget);

    /// The options that stand in the folded group.
    [[nodiscard]] std::vector<const ControlRow*> Additions() const;
    /// Makes the widget of any option.
    [[nodiscard]] QWidget* Widget(const Option::Control& control);

    /// Shows `controls`: the state itself while nothing runs, what a run has handed out meanwhile.
    void Refresh(const Controls& controls);
    /// Marks the fields that a run would stumble over, each with a sign that says why.
    void ShowProblems(const std::vector<FieldProblem>& problems);
    /// Puts `text` into a field, as a person would.
    void SetText(TextControl Controls::*control, const QString& text);
    /// For what else writes into the state: enables what depends on it, shows it and tells it.
    void Commit();
    [[nodiscard]] Controls& State() noexcept { return controls_; }

signals:
    /// The state was changed by a person.
    void Changed();

private:
    [[nodiscard]] const ControlRow& RowOf(const Option::Control& control) const;
    /// Names and explains the widget of `control`, and has it follow the state by `refresh`.
    const ControlRow& Tie(QWidget& widget, const Option::Control& control,
                          std::function<void(const Controls&)> refresh);
    void CompletePaths(QLineEdit& edit, const FilePicker& picker);

    Controls& controls_;
    const std::vector<ControlRow> rows_;
    std::vector<std::function<void(const Controls&)>> refreshers_;
    std::vector<std::pair<QWidget*, const ControlRow*>> widgets_;
    QFileSystemModel* files_ = nullptr; ///< made when somebody types a path
    QFileSystemModel* folders_ = nullptr;
};

} // namespace velmora
