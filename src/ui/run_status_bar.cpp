#include "ui/run_status_bar.h"

#include "ui/text_page.h"

#include <QLabel>
#include <QLocale>
#include <QPushButton>

namespace velmora {

RunStatusBar::RunStatusBar(QWidget* parent) : QStatusBar(parent)
{
    text_ = new QLabel;
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
