#include "ui/button_row.h"

#include "ui/control_table.h"
#include "ui/text_page.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QPushButton>

namespace velmora {

ButtonRow::ButtonRow(QMenu* jobMenu, QWidget* parent) : QWidget(parent)
{
    job_ =
        MakeTextButton("btnJob", tr("&Job"), tr("Keep all that is filled in as a file, open one, or use a database"));
    job_->setMenu(jobMenu);
    commandLine_ = MakeTextButton("btnCommandLine", tr("Command &Line…"),
                                  tr("The command line that does the same without a window"));
    openDirectory_ =
        MakeTextButton("btnOPEN_DIRECTORY", tr("&Open folder"), tr("Open the folder of the target or the source"));
    preview_ = MakeTextButton("btnPreview", tr("Pre&view"), tr("Show what a conversion would do, and write nothing"));
    convert_ = MakeTextButton("btnConvert", tr("&Convert"), tr("Convert what is named on the first page (F5)"));
    convert_->setDefault(true);
    quit_ = MakeTextButton("btnQuit", tr("E&xit"), tr("Close the window; while a conversion is running, cancel it"));
    connect(commandLine_, &QPushButton::clicked, this, &ButtonRow::CommandLinePressed);
    connect(openDirectory_, &QPushButton::clicked, this, &ButtonRow::OpenFolderPressed);
    connect(preview_, &QPushButton::clicked, this, &ButtonRow::PreviewPressed);
    connect(convert_, &QPushButton::clicked, this, &ButtonRow::ConvertPressed);
    connect(quit_, &QPushButton::clicked, this, &ButtonRow::QuitPressed);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QPushButton* button : {job_, commandLine_, openDirectory_})
        layout->addWidget(button);
    layout->addStretch();
    layout->addWidget(preview_);
    layout->addWidget(convert_);
    layout->addWidget(quit_);
    Show(RunState::Idle);
}

void ButtonRow::Show(RunState state)
{
    const bool isIdle = state == RunState::Idle;
    convert_->setText(isIdle ? tr("&Convert") : tr("Working..."));
    quit_->setText(isIdle ? tr("E&xit") : state == RunState::Cancelling ? tr("Cancelling...") : tr("Canc&el"));
    quit_->setEnabled(state != RunState::Cancelling);
    for (QPushButton* button : {job_, commandLine_, openDirectory_, preview_, convert_})
        button->setEnabled(isIdle);
    for (QPushButton* button : {job_, commandLine_, openDirectory_, preview_, convert_, quit_})
        button->setAccessibleName(PlainLabel(button->text()));
}

void ButtonRow::PressConvert()
{
    convert_->click();
}

} // namespace velmora
