#include "ui/progress_page.h"

#include "ui/text_page.h"

#include <QGridLayout>
#include <QLabel>
#include <QLocale>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTextCursor>

#include <algorithm>
#include <iterator>

namespace velmora {

namespace {

constexpr int kScale = 1000; // numbers of records need not fit what the bars count in

QProgressBar* MakeBar(const char* name, const QString& title)
{
    auto* bar = new QProgressBar;
    bar->setObjectName(name);
    bar->setAccessibleName(title);
    bar->setToolTip(title);
    bar->setRange(0, kScale);
    bar->setValue(0);
    return bar;
}

void SetBar(QProgressBar& bar, std::int64_t value, std::int64_t maximum)
{
    const std::int64_t scaled = maximum <= 0 ? 0 : std::clamp<std::int64_t>(value, 0, maximum) * kScale / maximum;
    bar.setValue(static_cast<int>(scaled));
}

QString ReadSoFar(const RunProgress& progress)
{
    const QLocale locale;
    const QString bytes = locale.formattedDataSize(progress.bytes, 1, QLocale::DataSizeSIFormat);
    const QString total = locale.formattedDataSize(progress.bytesTotal, 1, QLocale::DataSizeSIFormat);
    return progress.bytesTotal == 0 ? ProgressPage::tr(", %1 read").arg(bytes)
                                    : ProgressPage::tr(", %1 of %2 read").arg(bytes, total);
}

QString Duration(std::int64_t milliseconds)
{
    const std::int64_t seconds = milliseconds / 1000;
    return QStringLiteral("%1:%2").arg(seconds / 60, 2, 10, QChar('0')).arg(seconds % 60, 2, 10, QChar('0'));
}

} // namespace

ProgressPage::ProgressPage(Desktop& desktop, QWidget* parent) : QWidget(parent)
{
    auto* grid = new QGridLayout(this);
    grid->setColumnStretch(1, 1);
    files_ = MakeBar("ProgressBarFiles", tr("Files"));
    records_ = MakeBar("ProgressBar", tr("Records"));
    fileNumbers_ = new QLabel;
    recordNumbers_ = new QLabel;
    time_ = new QLabel;
    time_->setObjectName("lblTime");
    grid->addWidget(new QLabel(tr("Files")), 0, 0);
    grid->addWidget(files_, 0, 1);
    grid->addWidget(fileNumbers_, 0, 2);
    grid->addWidget(new QLabel(tr("Records")), 1, 0);
    grid->addWidget(records_, 1, 1);
    grid->addWidget(recordNumbers_, 1, 2);
    grid->addWidget(time_, 2, 1, 1, 2);

    protocol_ = MakeReadOnlyText("txtPROT", tr("Protocol, newest line first"), false);
    auto* label = new QLabel(tr("&Protocol (newest first)"));
    label->setBuddy(protocol_);
    grid->addWidget(label, 3, 0, 1, 3);
    grid->addWidget(protocol_, 4, 0, 1, 3);
    grid->setRowStretch(4, 1);

    auto* buttons = new QHBoxLayout;
    auto* copy = MakeTextButton("btnCopyProtocol", tr("Cop&y"), tr("Copy the selected lines, or all"));
    auto* save = MakeTextButton("btnSaveProtocol", tr("Save as…"), tr("Write the protocol to a file"));
    connect(copy, &QPushButton::clicked, this, [this] { CopyText(*protocol_); });
    connect(save, &QPushButton::clicked, this,
            [this, &desktop] { SaveText(*this, desktop, protocol_->toPlainText(), "velmora.log"); });
    buttons->addWidget(copy);
    buttons->addWidget(save);
    leftOut_ =
        MakeTextButton("btnLeftOutOfRun", tr("&Not imported…"), tr("Show what was not imported, and what cures it"));
    leftOut_->setEnabled(false);
    connect(leftOut_, &QPushButton::clicked, this, &ProgressPage::LeftOutPressed);
    buttons->addWidget(leftOut_);
    buttons->addStretch();
    grid->addLayout(buttons, 5, 0, 1, 3);
}

void ProgressPage::Clear()
{
    protocol_->clear();
    fileAtHand_ = -1;
    OfferLeftOut(false);
    ShowProgress({}, 0);
}

void ProgressPage::OfferLeftOut(bool isThere)
{
    leftOut_->setEnabled(isThere);
}

void ProgressPage::AddLines(const QStringList& lines)
{
    if (lines.isEmpty())
        return;
    QStringList newestFirst;
    newestFirst.reserve(lines.size());
    std::copy(lines.crbegin(), lines.crend(), std::back_inserter(newestFirst));
    QTextCursor start(protocol_->document());
    start.movePosition(QTextCursor::Start);
    const bool isFirst = protocol_->document()->isEmpty();
    start.insertText(newestFirst.join('\n') + (isFirst ? "" : "\n"));
}

void ProgressPage::ShowProgress(const RunProgress& progress, std::int64_t milliseconds)
{
    const QLocale locale;
    SetBar(*files_, progress.filesDone, progress.files);
    SetBar(*records_, progress.records, progress.recordsTotal);
    fileNumbers_->setText(progress.files == 0 ? QString()
                                              : tr("%1 of %2")
                                                    .arg(locale.toString(qlonglong{progress.filesDone}),
                                                         locale.toString(qlonglong{progress.files})));
    recordNumbers_->setText(progress.records == 0 ? QString()
                                                  : tr("%1 of about %2")
                                                        .arg(locale.toString(qlonglong{progress.records}),
                                                             locale.toString(qlonglong{progress.recordsTotal})));
    time_->setText(milliseconds == 0 ? QString() : TimeLine(progress, milliseconds));
}

void ProgressPage::ShowDone(const RunProgress& progress)
{
    if (progress.records == 0)
        return;
    records_->setValue(kScale);
    recordNumbers_->setText(QLocale().toString(qlonglong{progress.records}));
}

QString ProgressPage::TimeLine(const RunProgress& progress, std::int64_t milliseconds)
{
    if (fileAtHand_ != progress.filesDone || progress.records == 0) {
        fileAtHand_ = progress.filesDone;
        importBegin_ = milliseconds;
    }
    QString line = tr("%1 elapsed").arg(Duration(milliseconds));
    if (progress.records == 0 && progress.bytes > 0)
        line += ReadSoFar(progress);
    const std::int64_t left = progress.recordsTotal - progress.records;
    const std::int64_t spent = milliseconds - importBegin_;
    if (progress.records > 0 && left > 0 && spent > 500)
        line += tr(", about %1 left for this file").arg(Duration(left * spent / progress.records));
    return line;
}

} // namespace velmora
