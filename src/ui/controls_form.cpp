#include "ui/controls_form.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QStyle>

#include <algorithm>
#include <cassert>

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

void ControlsForm::Describe(QWidget& widget, const ControlRow& row) const
{
    widget.setObjectName(QString::fromStdString(row.name));
    widget.setAccessibleName(PlainLabel(row.label));
    widget.setToolTip(ToolTip(*row.option));
}

QCheckBox* ControlsForm::Check(CheckControl Controls::*control)
{
    const ControlRow& row = RowOf(control);
    auto* box = new QCheckBox(row.label);
    Describe(*box, row);
    box->setTristate(row.isThreeState);
    // What is called grey stands between the two for Qt, and behind them here.
    connect(box, &QCheckBox::clicked, this, [this, box, control] {
        const Qt::CheckState state = box->checkState();
        (controls_.*control).value = state == Qt::Checked            ? CheckState::Checked
                                     : state == Qt::PartiallyChecked ? CheckState::Grey
                                                                     : CheckState::Unchecked;
        Commit();
    });
    refreshers_.emplace_back([box, control](const Controls& controls) {
        const CheckControl& state = controls.*control;
        box->setCheckState(state.value == CheckState::Checked ? Qt::Checked
                           : state.value == CheckState::Grey  ? Qt::PartiallyChecked
                                                              : Qt::Unchecked);
        box->setEnabled(state.enabled);
        box->setVisible(state.visible);
    });
    widgets_.emplace_back(box, &row);
    return box;
}

QLineEdit* ControlsForm::Text(TextControl Controls::*control)
{
    const ControlRow& row = RowOf(control);
    auto* edit = new QLineEdit;
    Describe(*edit, row);
    edit->setPlaceholderText(row.hint);
    edit->setAcceptDrops(false); // the window knows what a file means
    // Only a person's hand is told, so that showing a state cannot change it.
    connect(edit, &QLineEdit::textEdited, this, [this, control](const QString& text) {
        (controls_.*control).text = text.toStdString();
        Commit();
    });
    refreshers_.emplace_back([edit, control](const Controls& controls) {
        const TextControl& state = controls.*control;
        const QString text = QString::fromStdString(state.text);
        if (edit->text() != text) // keeps the cursor where the person types
            edit->setText(text);
        edit->setEnabled(state.enabled);
    });
    widgets_.emplace_back(edit, &row);
    return edit;
}

QComboBox* ControlsForm::Combo(ComboControl Controls::*control)
{
    const ControlRow& row = RowOf(control);
    auto* box = new QComboBox;
    Describe(*box, row);
    for (const std::string& item : (controls_.*control).items)
        box->addItem(QString::fromStdString(item));
    connect(box, &QComboBox::activated, this, [this, control](int index) {
        (controls_.*control).selected = static_cast<std::size_t>(index);
        Commit();
    });
    refreshers_.emplace_back([box, control](const Controls& controls) {
        box->setCurrentIndex(static_cast<int>((controls.*control).selected));
        box->setEnabled((controls.*control).enabled);
    });
    widgets_.emplace_back(box, &row);
    return box;
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
