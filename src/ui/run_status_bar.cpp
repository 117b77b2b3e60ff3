#include "ui/run_status_bar.h"

#include "app/exit_status.h"
#include "ui/text_page.h"

#include <QCoreApplication>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QPushButton>

namespace velmora {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(RunSummary)
};

/// Singular and plural stand apart: a plain text has no forms of its own.
QString Counted(std::int64_t count, const QString& one, const QString& many)
{
    return (count == 1 ? one : many).arg(QLocale().toString(qlonglong{count}));
}

QString Seconds(std::int64_t milliseconds)
{
    const double seconds = static_cast<double>(milliseconds) / 1000;
    return Text::tr("%1 s").arg(QLocale().toString(seconds, 'f', seconds < 10 ? 1 : 0));
}

QString Beginning(const RunOutcome& outcome, const QString& lastError)
{
    if (outcome.cancelled)
        return Text::tr("Cancelled");
    if (outcome.preview)
        return outcome.failed ? Text::tr("A run would end in an error")
               : StatusOf(outcome, true, true) == ExitStatus::Incomplete
                   ? Text::tr("A run would leave something behind")
                   : Text::tr("A run would be complete");
    if (outcome.failed)
        return lastError.isEmpty() ? Text::tr("Ended by an error") : Text::tr("Error %1").arg(lastError);
    return outcome.unreadableFiles > 0 ? Text::tr("Done, with files that could not be read") : Text::tr("Done");
}

/// Ends in an ellipsis when it has not room enough.
class ElidedLabel : public QLabel {
protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        const QRect room = contentsRect().adjusted(indent(), 0, 0, 0);
        QPainter(this).drawText(room, Qt::AlignLeft | Qt::AlignVCenter,
                                fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
    }
};

} // namespace

QString RunSummary(const RunOutcome& outcome, bool wroteXml, std::int64_t milliseconds, const QString& lastError)
{
    if (outcome.nothingToDo)
        return Text::tr("Nothing was converted: the protocol says why");
    QStringList parts;
    if (!wroteXml) {
        std::int64_t records = 0;
        for (const TableReport& table : outcome.tables)
            records += table.records;
        parts = {Counted(outcome.convertedFiles, Text::tr("%1 file"), Text::tr("%1 files")),
                 Counted(static_cast<std::int64_t>(outcome.tables.size()), Text::tr("%1 table"), Text::tr("%1 tables")),
                 Counted(records, Text::tr("%1 record"), Text::tr("%1 records"))};
        if (outcome.unreadableFiles > 0)
            parts.append(Counted(outcome.unreadableFiles, Text::tr("%1 file not read"), Text::tr("%1 files not read")));
    } else if (!outcome.failed && !outcome.cancelled) {
        parts.append(Text::tr("the database was written as XML"));
    }
    parts.append(Seconds(milliseconds));
    return Beginning(outcome, lastError) + ": " + parts.join(", ");
}

RunStatusBar::RunStatusBar(QWidget* parent) : QStatusBar(parent)
{
    text_ = new ElidedLabel;
    text_->setObjectName("lblStatus");
    text_->setTextFormat(Qt::PlainText);
    text_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // a long text does not widen the window
    leftOut_ = MakeTextButton("btnLeftOut", QString(), tr("Show what was not imported, and what cures it"));
    openResult_ =
        MakeTextButton("btnOpenResult", tr("Open the result"), tr("Show what the last conversion has written"));
    connect(leftOut_, &QPushButton::clicked, this, &RunStatusBar::LeftOutPressed);
    connect(openResult_, &QPushButton::clicked, this, &RunStatusBar::OpenResultPressed);
    text_->setIndent(fontMetrics().averageCharWidth()); // not at the window's very edge
    addWidget(text_, 1);
    addPermanentWidget(leftOut_);
    addPermanentWidget(openResult_);
    leftOut_->hide();
    openResult_->hide();
}

void RunStatusBar::Clear()
{
    Tell({});
    leftOut_->hide();
    openResult_->hide();
}

void RunStatusBar::Tell(const QString& text)
{
    text_->setText(text);
    text_->setToolTip(text);
}

void RunStatusBar::OfferResult(bool isThere)
{
    openResult_->setVisible(isThere);
}

void RunStatusBar::OfferLeftOut(std::int64_t values)
{
    leftOut_->setText(tr("Not imported: %1…").arg(QLocale().toString(qlonglong{values})));
    leftOut_->setAccessibleName(leftOut_->text());
    leftOut_->setVisible(values > 0);
}

void RunStatusBar::EnableForRun(bool running)
{
    openResult_->setEnabled(!running);
}

} // namespace velmora
