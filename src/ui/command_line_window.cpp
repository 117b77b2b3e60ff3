#include "ui/command_line_window.h"

#include "platform/paths.h"
#include "platform/program.h"
#include "settings/command_line.h"
#include "ui/text_page.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

namespace velmora {

namespace {

constexpr std::string_view kConsoleProgram = "velmora";

/// The line as the builder has it, for the console program that stands beside this one.
QString ForConsole(const std::string& line)
{
    const std::string own = ProgramFolder() + kPathSeparator + ProgramName();
    const std::string console = ProgramFolder() + kPathSeparator + std::string(kConsoleProgram);
    return QString::fromStdString(line.starts_with(own) ? console + line.substr(own.size()) : line);
}

} // namespace

CommandLineWindow::CommandLineWindow(const Controls& controls, QWidget* parent)
    : QWidget(parent, Qt::Dialog), controls_(controls)
{
    setWindowTitle(tr("Command Line"));
    setObjectName("frmCommandLine");
    text_ = MakeReadOnlyText("txtCommandLine", tr("Command Line"), true);
    text_->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    showPassword_ = new QCheckBox(tr("&Show the password"));
    showPassword_->setObjectName("chkShowPassword");
    auto* copy = MakeTextButton("btnCopyCommandLine", tr("&Copy"), tr("Copy the command line as it is shown"));
    auto* close = MakeTextButton("btnCloseCommandLine", tr("C&lose"), tr("Close this window"));
    connect(showPassword_, &QCheckBox::toggled, this, &CommandLineWindow::Refresh);
    connect(copy, &QPushButton::clicked, this, [this] { CopyText(*text_); });
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this, &QWidget::close);

    auto* column = new QVBoxLayout(this);
    column->addWidget(text_);
    column->addWidget(showPassword_);
    auto* row = new QHBoxLayout;
    row->addWidget(copy);
    row->addStretch();
    row->addWidget(close);
    column->addLayout(row);
    resize(fontMetrics().averageCharWidth() * 90, fontMetrics().height() * 14);
    Refresh();
}

void CommandLineWindow::Refresh()
{
    showPassword_->setVisible(!controls_.txtXML_PASSWORD.text.empty() && controls_.FromUrl());
    const bool isShown = showPassword_->isChecked();
    text_->setPlainText(ForConsole(isShown ? BuildCommandLine(controls_) : ShownCommandLine(controls_)));
}

} // namespace velmora
