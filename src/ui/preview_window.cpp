#include "ui/preview_window.h"

#include "ui/browser/diagram.h"
#include "ui/text_page.h"

#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QVBoxLayout>

namespace velmora {

PreviewWindow::PreviewWindow(QWidget* parent) : QWidget(parent, Qt::Window)
{
    setObjectName("frmPreview");
    setWindowTitle(tr("Preview: nothing was written"));
    diagram_ = new Diagram;
    text_ = MakeReadOnlyText("txtPREVIEW", tr("What a run would do"), true);
    auto* halves = new QSplitter;
    halves->addWidget(diagram_);
    halves->addWidget(text_);
    auto* all = MakeTextButton("btnPreviewAll", tr("Sho&w all"), tr("Show the whole diagram"));
    auto* copy = MakeTextButton("btnCopyPreview", tr("&Copy"), tr("Copy the selected lines, or all"));
    auto* close = MakeTextButton("btnClosePreview", tr("C&lose"), tr("Close this window"));
    connect(all, &QPushButton::clicked, diagram_, &Diagram::ShowAll);
    connect(copy, &QPushButton::clicked, this, [this] { CopyText(*text_); });
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this, &QWidget::close);

    auto* column = new QVBoxLayout(this);
    column->addWidget(halves, 1);
    auto* row = new QHBoxLayout;
    row->addWidget(all);
    row->addStretch();
    row->addWidget(copy);
    row->addWidget(close);
    column->addLayout(row);
    resize(fontMetrics().averageCharWidth() * 140, fontMetrics().height() * 38);
    halves->setSizes({width() / 2, width() / 2});
}

void PreviewWindow::Show(const RunOutcome& outcome, const ConversionSettings& settings, ExitStatus status)
{
    diagram_->Show(outcome.preview->contents);
    text_->setPlainText(QString::fromStdString(PreviewText(outcome, settings, status)).trimmed());
    show();
    activateWindow();
}

} // namespace velmora
