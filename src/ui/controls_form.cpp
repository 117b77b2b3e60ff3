#include "ui/controls_form.h"

#include "ui/field_aids.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFileSystemModel>
#include <QLabel>
#include <QLineEdit>
#include <QStyle>

#include <algorithm>
#include <cassert>
#include <utility>

namespace velmora {

namespace {

constexpr const char* kProblemSign = "problem";

} // namespace

ControlsForm::ControlsForm(Controls& controls, QObject* parent)
    : QObject(parent), controls_(controls), rows_(ControlRows())
{
}

const ControlRow& ControlsForm::RowOf(const Option::Control& control) const
{
    const auto row = std::find_if(rows_.begin(), rows_.end(),
                                  [&](const ControlRow& candidate) { return candidate.option->control == control; });
    assert(row != rows_.end());
    return *row;
}

const ControlRow& ControlsForm::Tie(QWidget& widget, const Option::Control& control,
                                    std::function<void(const Controls&)> refresh)
{
    const ControlRow& row = RowOf(control);
    widget.setObjectName(QString::fromStdString(row.name));
    widget.setAccessibleName(PlainLabel(row.label));
    widget.setToolTip(ToolTip(*row.option));
    refreshers_.push_back(std::move(refresh));
    widgets_.emplace_back(&widget, &row);
    return row;
}

QCheckBox* ControlsForm::Check(CheckControl Controls::*control)
{
    auto* box = new QCheckBox;
    const ControlRow& row = Tie(*box, control, [box, control](const Controls& controls) {
        const CheckControl& state = controls.*control;
        box->setCheckState(state.value == CheckState::Checked ? Qt::Checked
                           : state.value == CheckState::Grey  ? Qt::PartiallyChecked
                                                              : Qt::Unchecked);
        box->setEnabled(state.enabled);
        box->setVisible(state.visible);
    });
    box->setText(row.label);
    box->setTristate(row.isThreeState);
    // What is called grey stands between the two for Qt, and behind them here.
    connect(box, &QCheckBox::clicked, this, [this, box, control] {
        const Qt::CheckState state = box->checkState();
        (controls_.*control).value = state == Qt::Checked            ? CheckState::Checked
                                     : state == Qt::PartiallyChecked ? CheckState::Grey
                                                                     : CheckState::Unchecked;
        Commit();
    });
    return box;
}

QLineEdit* ControlsForm::Text(TextControl Controls::*control)
{
    auto* edit = new QLineEdit;
    const ControlRow& row = Tie(*edit, control, [edit, control](const Controls& controls) {
        const TextControl& state = controls.*control;
        const QString text = QString::fromStdString(state.text);
        if (edit->text() != text) // keeps the cursor where the person types
            edit->setText(text);
        edit->setEnabled(state.enabled);
    });
    edit->setPlaceholderText(row.hint);
    edit->setAcceptDrops(false); // the window knows what a file means
    // Only a person's hand is told, so that showing a state cannot change it.
    connect(edit, &QLineEdit::textEdited, this, [this, edit, control, picker = row.picker](const QString& text) {
        if (picker != nullptr && edit->completer() == nullptr)
            CompletePaths(*edit, *picker);
        SetText(control, text);
    });
    return edit;
}

QComboBox* ControlsForm::Combo(ComboControl Controls::*control)
{
    auto* box = new QComboBox;
    Tie(*box, control, [box, control](const Controls& controls) {
        box->setCurrentIndex(static_cast<int>((controls.*control).selected));
        box->setEnabled((controls.*control).enabled);
    });
    for (const std::string& item : (controls_.*control).items)
        box->addItem(QString::fromStdString(item));
    connect(box, &QComboBox::activated, this, [this, control](int index) {
        (controls_.*control).selected = static_cast<std::size_t>(index);
        Commit();
    });
    return box;
}

void ControlsForm::CompletePaths(QLineEdit& edit, const FilePicker& picker)
{
    const bool isFolder = picker.filter == nullptr;
    QFileSystemModel*& model = isFolder ? folders_ : files_;
    if (model == nullptr)
        model = MakeFileSystemModel(isFolder, this);
    auto* completer = new PathCompleter(*model, &edit);
    edit.setCompleter(completer);
    connect(completer, qOverload<const QString&>(&QCompleter::activated), this,
            [this, field = picker.field](const QString& path) { SetText(field, path); });
}

void ControlsForm::SetText(TextControl Controls::*control, const QString& text)
{
    (controls_.*control).text = text.toStdString();
    Commit();
}

QLabel* ControlsForm::LabelOf(QWidget* widget)
{
    const auto found =
        std::find_if(widgets_.begin(), widgets_.end(), [&](const auto& entry) { return entry.first == widget; });
    assert(found != widgets_.end());
    auto* label = new QLabel(found->second->label);
    label->setBuddy(widget);
    label->setToolTip(widget->toolTip());
    return label;
}

std::vector<const ControlRow*> ControlsForm::Additions() const
{
    std::vector<const ControlRow*> additions;
    for (const ControlRow& row : rows_)
        if (row.isAddition)
            additions.push_back(&row);
    return additions;
}

QWidget* ControlsForm::Widget(const Option::Control& control)
{
    struct Maker {
        ControlsForm& form;
        QWidget* operator()(CheckControl Controls::*member) const { return form.Check(member); }
        QWidget* operator()(TextControl Controls::*member) const { return form.Text(member); }
        QWidget* operator()(ComboControl Controls::*member) const { return form.Combo(member); }
    };
    return std::visit(Maker{*this}, control);
}

void ControlsForm::ShowProblems(const std::vector<FieldProblem>& problems)
{
    for (const auto& [widget, row] : widgets_) {
        const auto* field = std::get_if<TextControl Controls::*>(&row->option->control);
        if (field == nullptr)
            continue;
        const auto problem = std::find_if(problems.begin(), problems.end(),
                                          [&](const FieldProblem& candidate) { return candidate.field == *field; });
        const QString text = problem == problems.end() ? QString() : problem->text;
        if (widget->accessibleDescription() == text)
            continue;
        widget->setAccessibleDescription(text);
        delete widget->findChild<QAction*>(kProblemSign);
        if (text.isEmpty())
            continue;
        auto* sign = static_cast<QLineEdit*>(widget)->addAction(
            widget->style()->standardIcon(QStyle::SP_MessageBoxWarning), QLineEdit::TrailingPosition);
        sign->setObjectName(kProblemSign);
        sign->setToolTip(text);
    }
}

void ControlsForm::Refresh(const Controls& controls)
{
    for (const auto& refresh : refreshers_)
        refresh(controls);
}

void ControlsForm::Commit()
{
    controls_.UpdateEnabled();
    Refresh(controls_);
    emit Changed();
}

} // namespace velmora
