#include "ui/left_out_window.h"

#include "ui/text_page.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QShortcut>
#include <QTableWidget>
#include <QVBoxLayout>

namespace velmora {

namespace {

constexpr int kPath = 0;
constexpr int kExample = 3;

QString Text(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString OrEveryValue(const QString& cure)
{
    return LeftOutWindow::tr("%1, or check “Import every value”").arg(cure);
}

QString Cure(LossReason reason)
{
    switch (reason) {
    case LossReason::NoRecord:
        return OrEveryValue(LeftOutWindow::tr("Uncheck “Do not import wrapping tags”"));
    case LossReason::BesideChildren:
        return LeftOutWindow::tr("Check “Import every value”");
    case LossReason::AttributesOff:
        return LeftOutWindow::tr("Check “Import Attributes”");
    case LossReason::NoColumn:
        return OrEveryValue(LeftOutWindow::tr("Check “Re-create database”, so that the table gets the column"));
    case LossReason::KeyColumn:
        return OrEveryValue(LeftOutWindow::tr("Choose other names for primary and foreign keys"));
    case LossReason::ColumnTaken:
        return OrEveryValue(LeftOutWindow::tr("Choose another column prefix for attributes, map one of the names"));
    case LossReason::Overwritten:
        return OrEveryValue(LeftOutWindow::tr("Map one of the names that meet in this column to another one"));
    case LossReason::DoesNotFitType:
        return OrEveryValue(LeftOutWindow::tr("Make the column a memo in the database, re-create the database"));
    case LossReason::None:
        break;
    }
    return {};
}

QTableWidgetItem* Cell(const QString& text)
{
    auto* item = new QTableWidgetItem(text);
    item->setToolTip(text);
    item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
    return item;
}

} // namespace

LeftOutWindow::LeftOutWindow(QWidget* parent) : QWidget(parent, Qt::Dialog)
{
    setObjectName("frmLeftOut");
    setWindowTitle(tr("Not imported"));
    heading_ = new QLabel;
    table_ = new QTableWidget(0, 5);
    table_->setObjectName("tblLeftOut");
    table_->setAccessibleName(windowTitle());
    table_->setHorizontalHeaderLabels({tr("Path"), tr("Values"), tr("Reason"), tr("Example"), tr("What cures it")});
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->verticalHeader()->hide();
    SetCompactRows(*table_);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setWordWrap(false);
    auto* copy = MakeTextButton("btnCopyLeftOut", tr("&Copy"), tr("Copy the list"));
    auto* close = MakeTextButton("btnCloseLeftOut", tr("C&lose"), tr("Close this window"));
    connect(copy, &QPushButton::clicked, this, &LeftOutWindow::Copy);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this, &QWidget::close);

    auto* column = new QVBoxLayout(this);
    column->addWidget(heading_);
    column->addWidget(table_);
    auto* row = new QHBoxLayout;
    row->addWidget(copy);
    row->addStretch();
    row->addWidget(close);
    column->addLayout(row);
    resize(fontMetrics().averageCharWidth() * 130, fontMetrics().height() * 20);
}

void LeftOutWindow::Show(const LossSummary& summary)
{
    const QLocale locale;
    QString heading = tr("%1 values were not imported.").arg(locale.toString(qlonglong{summary.values}));
    if (summary.groups.size() == LossSummary::kMaxGroups)
        heading +=
            ' ' + tr("The list is cut after %1 lines.").arg(locale.toString(qulonglong{LossSummary::kMaxGroups}));
    heading_->setText(heading);
    table_->setRowCount(static_cast<int>(summary.groups.size()));
    for (int row = 0; row < table_->rowCount(); ++row) {
        const LeftOut& group = summary.groups[static_cast<std::size_t>(row)];
        const QString cells[] = {Text(group.path), locale.toString(qlonglong{group.count}),
                                 QCoreApplication::translate("LossReason", std::string(Describe(group.reason)).c_str()),
                                 Text(group.sample), Cure(group.reason)};
        for (int column = 0; column < table_->columnCount(); ++column)
            table_->setItem(row, column, Cell(cells[column]));
        table_->item(row, 1)->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
    table_->resizeColumnsToContents();
    const int widest = width() / 3;
    for (const int column : {kPath, kExample}) // which the document makes as long as it likes
        table_->setColumnWidth(column, std::min(table_->columnWidth(column), widest));
    show();
    activateWindow();
}

void LeftOutWindow::Copy()
{
    QStringList lines;
    for (int row = 0; row < table_->rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < table_->columnCount(); ++column)
            cells.append(table_->item(row, column)->text());
        lines.append(cells.join('\t'));
    }
    QGuiApplication::clipboard()->setText(lines.join('\n'));
}

} // namespace velmora
