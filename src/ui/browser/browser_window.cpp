#include "ui/browser/browser_window.h"

#include "ui/browser/diagram.h"
#include "ui/desktop.h"
#include "ui/message_box.h"
#include "ui/text_page.h"

#include <QClipboard>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QSplitter>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>
#include <optional>

namespace velmora {

namespace {

QString Text(const std::string& text)
{
    return QString::fromStdString(text);
}

QTableWidget* MakeList(const char* name, const QString& title, const QStringList& headings)
{
    auto* list = new QTableWidget(0, static_cast<int>(headings.size()));
    list->setObjectName(name);
    list->setAccessibleName(title);
    list->setToolTip(title);
    list->setHorizontalHeaderLabels(headings);
    list->verticalHeader()->hide();
    SetCompactRows(*list);
    list->setSelectionBehavior(QAbstractItemView::SelectRows);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->setShowGrid(false);
    list->setTabKeyNavigation(false);
    return list;
}

QTableWidgetItem* Cell(const QString& text, bool isNumber = false)
{
    auto* item = new QTableWidgetItem(text);
    item->setToolTip(text);
    if (isNumber)
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return item;
}

std::uint64_t PageCount(const DatabaseContents::Table& table)
{
    return std::max<std::uint64_t>(1, (table.rows + DatabaseView::kPageRows - 1) / DatabaseView::kPageRows);
}

} // namespace

BrowserWindow::BrowserWindow(const std::string& path, Desktop& desktop, QWidget* parent)
    : QWidget(parent, Qt::Window), view_(path), desktop_(desktop)
{
    setObjectName("frmBrowser");
    setWindowTitle(QFileInfo(Text(path)).fileName() + " - velmora");
    setAttribute(Qt::WA_DeleteOnClose);

    auto* pages = new QTabWidget;
    pages->setObjectName("tabBrowser");
    pages->setAccessibleName(tr("What of the table is shown"));
    pages->addTab(MakeRowsPage(), tr("Rows"));
    pages->addTab(MakeColumnsPage(), tr("Columns"));
    pages->addTab(MakeDiagramPage(), tr("Diagram"));
    auto* halves = new QSplitter;
    halves->addWidget(MakeTableList());
    halves->addWidget(pages);
    halves->setStretchFactor(1, 1);

    status_ = new QLabel;
    status_->setObjectName("lblBrowser");
    status_->setTextFormat(Qt::PlainText);
    status_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    stopButton_ = MakeTextButton("btnStop", tr("&Stop"), tr("Stop reading"));
    stopButton_->setEnabled(false);
    connect(stopButton_, &QPushButton::clicked, this, [this] { stop_ = true; });
    auto* reload = MakeTextButton("btnReload", tr("Read &again"), tr("Read the file again (F5)"));
    connect(reload, &QPushButton::clicked, this, &BrowserWindow::Reload);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(status_, 1);
    bottom->addWidget(stopButton_);
    bottom->addWidget(reload);
    auto* column = new QVBoxLayout(this);
    column->addWidget(halves, 1);
    column->addLayout(bottom);
    connect(new QShortcut(Qt::Key_F5, this), &QShortcut::activated, this, &BrowserWindow::Reload);
    connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, search_, qOverload<>(&QWidget::setFocus));
    connect(new QShortcut(QKeySequence::Copy, rows_), &QShortcut::activated, this, &BrowserWindow::CopyRows);
    resize(fontMetrics().averageCharWidth() * 140, fontMetrics().height() * 38);
    halves->setSizes({width() / 4, width() * 3 / 4});
}

BrowserWindow::~BrowserWindow()
{
    stop_ = true;
    if (thread_.joinable())
        thread_.join();
}

QWidget* BrowserWindow::MakeTableList()
{
    tables_ = MakeList("tblTables", tr("Tables"), {tr("Table"), tr("Rows")});
    tables_->setSelectionMode(QAbstractItemView::SingleSelection);
    tables_->horizontalHeader()->setHighlightSections(false);
    tables_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    tables_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    connect(tables_, &QTableWidget::currentCellChanged, this, [this](int row) { ShowTable(row); });
    return tables_;
}

QWidget* BrowserWindow::MakeRowsPage()
{
    auto* page = new QWidget;
    rows_ = new QTableView;
    rows_->setObjectName("tblRows");
    rows_->setAccessibleName(tr("Rows"));
    rows_->setModel(&model_);
    rows_->setWordWrap(false);
    SetCompactRows(*rows_);
    rows_->setTabKeyNavigation(false);

    pageNumber_ = new QSpinBox;
    pageNumber_->setObjectName("spnPage");
    pageNumber_->setAccessibleName(tr("Page"));
    pageNumber_->setToolTip(tr("Pages of %1 rows").arg(DatabaseView::kPageRows));
    pageNumber_->setMinimum(1);
    pageNumber_->setKeyboardTracking(false);
    connect(pageNumber_, &QSpinBox::valueChanged, this,
            [this](int number) { ShowPage(static_cast<std::uint64_t>(number) - 1); });
    pageText_ = new QLabel;
    search_ = new QLineEdit;
    search_->setObjectName("txtSearch");
    search_->setPlaceholderText(tr("Find in the whole table"));
    search_->setAccessibleName(search_->placeholderText());
    search_->setToolTip(tr("Return finds the next row"));
    search_->setClearButtonEnabled(true);
    find_ = MakeTextButton("btnFindRow", tr("&Find"), tr("Find the next row with this text"));
    auto* copy =
        MakeTextButton("btnCopyRows", tr("&Copy"), tr("Copy the selected rows, or all of this page, with headings"));
    connect(find_, &QPushButton::clicked, this, &BrowserWindow::FindNext);
    connect(search_, &QLineEdit::returnPressed, this, &BrowserWindow::FindNext);
    connect(search_, &QLineEdit::textEdited, this, [this] { nextFind_ = 0; });
    connect(copy, &QPushButton::clicked, this, &BrowserWindow::CopyRows);

    auto* row = new QHBoxLayout;
    auto* label = new QLabel(tr("&Page"));
    label->setBuddy(pageNumber_);
    row->addWidget(label);
    row->addWidget(pageNumber_);
    row->addWidget(pageText_);
    row->addStretch();
    row->addWidget(search_, 1);
    row->addWidget(find_);
    row->addWidget(copy);
    auto* column = new QVBoxLayout(page);
    column->addWidget(rows_, 1);
    column->addLayout(row);
    return page;
}

QWidget* BrowserWindow::MakeColumnsPage()
{
    columns_ = MakeList("tblColumns", tr("Columns"), {tr("Column"), tr("Type"), tr("Required"), tr("Key")});
    columns_->horizontalHeader()->setStretchLastSection(true);
    auto* page = new QWidget;
    auto* column = new QVBoxLayout(page);
    column->addWidget(columns_);
    return page;
}

QWidget* BrowserWindow::MakeDiagramPage()
{
    auto* page = new QWidget;
    diagram_ = new Diagram;
    auto* save = MakeTextButton("btnSaveDiagram", tr("Save as &picture…"), tr("Save the diagram as SVG or PNG"));
    auto* all = MakeTextButton("btnShowAll", tr("Sho&w all"), tr("Show the whole diagram"));
    auto* larger = MakeTextButton("btnLarger", tr("Larger"), tr("Zoom in"));
    auto* smaller = MakeTextButton("btnSmaller", tr("Smaller"), tr("Zoom out"));
    connect(save, &QPushButton::clicked, this, &BrowserWindow::SaveDiagram);
    connect(all, &QPushButton::clicked, diagram_, &Diagram::ShowAll);
    connect(larger, &QPushButton::clicked, diagram_, [this] { diagram_->Zoom(1.25); });
    connect(smaller, &QPushButton::clicked, diagram_, [this] { diagram_->Zoom(1 / 1.25); });
    auto* row = new QHBoxLayout;
    for (QPushButton* button : {all, larger, smaller})
        row->addWidget(button);
    row->addStretch();
    row->addWidget(save);
    auto* column = new QVBoxLayout(page);
    column->addWidget(diagram_, 1);
    column->addLayout(row);
    return page;
}

void BrowserWindow::InBackground(const QString& what, std::function<void()> read, std::function<void()> show)
{
    if (IsReading())
        return;
    stop_ = false;
    ShowBusy(what);
    thread_ = std::thread([this, read = std::move(read), show = std::move(show)] {
        QString problem;
        try {
            read();
        } catch (const std::exception& error) {
            problem = QString::fromUtf8(error.what());
        }
        QMetaObject::invokeMethod(
            this,
            [this, show, problem] {
                thread_.join();
                ShowBusy({});
                if (problem.isEmpty()) {
                    show();
                } else {
                    status_->setText(problem);
                    QMessageBox* box = MakeMessageBox(*this, problem, Buttons::Ok, Icon::Exclamation, Answer::Ok);
                    box->setAttribute(Qt::WA_DeleteOnClose);
                    box->open();
                }
                if (!IsReading())
                    emit Idle();
            },
            Qt::QueuedConnection);
    });
}

void BrowserWindow::ShowBusy(const QString& what)
{
    const bool isBusy = !what.isEmpty();
    status_->setText(what);
    stopButton_->setEnabled(isBusy);
    tables_->setEnabled(!isBusy);
    pageNumber_->setEnabled(!isBusy);
    find_->setEnabled(!isBusy);
}

const DatabaseContents::Table* BrowserWindow::Current() const
{
    return current_ < 0 ? nullptr : &contents_.tables[static_cast<std::size_t>(current_)];
}

void BrowserWindow::Reload()
{
    auto read = std::make_shared<DatabaseContents>();
    InBackground(
        tr("Reading…"), [this, read] { *read = view_.Read(); },
        [this, read] {
            contents_ = std::move(*read);
            ShowStructure();
        });
}

void BrowserWindow::ShowStructure()
{
    const QLocale locale;
    {
        const QSignalBlocker quiet(tables_);
        tables_->setRowCount(static_cast<int>(contents_.tables.size()));
        for (int i = 0; i < tables_->rowCount(); ++i) {
            const DatabaseContents::Table& table = contents_.tables[static_cast<std::size_t>(i)];
            tables_->setItem(i, 0, Cell(Text(table.name)));
            tables_->setItem(i, 1, Cell(table.isLinked ? tr("linked") : locale.toString(qulonglong{table.rows}), true));
        }
        tables_->setCurrentCell(contents_.tables.empty() ? -1 : 0, 0);
    }
    diagram_->Show(contents_);
    diagram_->ShowAll();
    ShowTable(contents_.tables.empty() ? -1 : 0);
}

void BrowserWindow::ShowTable(int number)
{
    current_ = number;
    nextFind_ = 0;
    const DatabaseContents::Table* table = Current();
    columns_->setRowCount(table == nullptr ? 0 : static_cast<int>(table->columns.size()));
    if (table == nullptr) {
        model_.Show({}, 0, {});
        return;
    }
    for (int i = 0; i < columns_->rowCount(); ++i) {
        const DatabaseContents::Column& column = table->columns[static_cast<std::size_t>(i)];
        columns_->setItem(i, 0, Cell(Text(column.name)));
        columns_->setItem(i, 1, Cell(Text(column.type)));
        columns_->setItem(i, 2, Cell(column.isRequired ? tr("yes") : QString()));
        columns_->setItem(i, 3,
                          Cell(column.isPrimaryKey   ? tr("primary key")
                               : column.isForeignKey ? tr("refers to another table")
                                                     : QString()));
    }
    columns_->resizeColumnsToContents();
    const QSignalBlocker quiet(pageNumber_);
    pageNumber_->setMaximum(static_cast<int>(PageCount(*table)));
    pageNumber_->setValue(1);
    pageText_->setText(tr("of %1").arg(QLocale().toString(qulonglong{PageCount(*table)})));
    if (table->isLinked) {
        model_.Show(*table, 0, {});
        status_->setText(tr("The table stands in another database, which is not looked at"));
        return;
    }
    ShowPage(0);
}

void BrowserWindow::ShowPage(std::uint64_t page)
{
    const DatabaseContents::Table* table = Current();
    if (table == nullptr)
        return;
    auto read = std::make_shared<std::vector<DatabaseView::Row>>();
    InBackground(
        tr("Reading %1…").arg(Text(table->name)),
        [this, read, page, name = table->name] { *read = view_.ReadPage(name, page, [this] { return GoesOn(); }); },
        [this, read, page] {
            page_ = page;
            model_.Show(*Current(), page * DatabaseView::kPageRows, std::move(*read));
            rows_->resizeColumnsToContents();
            const int widest = fontMetrics().averageCharWidth() * 40;
            for (int column = 0; column < model_.columnCount(); ++column)
                rows_->setColumnWidth(column, std::min(rows_->columnWidth(column), widest));
            status_->setText(stop_ ? tr("Stopped") : tr("%1, read only").arg(Text(contents_.format)));
            if (nextFind_ > 0 && (nextFind_ - 1) / DatabaseView::kPageRows == page)
                rows_->selectRow(static_cast<int>((nextFind_ - 1) % DatabaseView::kPageRows));
        });
}

void BrowserWindow::FindNext()
{
    const DatabaseContents::Table* table = Current();
    const std::string text = search_->text().toStdString();
    if (table == nullptr || table->isLinked || text.empty())
        return;
    auto found = std::make_shared<std::optional<std::uint64_t>>();
    InBackground(
        tr("Searching…"),
        [this, found, text, name = table->name, first = nextFind_] {
            *found = view_.Find(name, text, first, [this] { return GoesOn(); });
        },
        [this, found] {
            if (!*found) {
                status_->setText(stop_ ? tr("Stopped") : tr("No further row has this text"));
                nextFind_ = 0;
                return;
            }
            nextFind_ = **found + 1;
            const std::uint64_t page = **found / DatabaseView::kPageRows;
            if (page == page_) {
                rows_->selectRow(static_cast<int>(**found % DatabaseView::kPageRows));
                return;
            }
            const QSignalBlocker quiet(pageNumber_);
            pageNumber_->setValue(static_cast<int>(page) + 1);
            ShowPage(page);
        });
}

void BrowserWindow::CopyRows()
{
    const auto value = [](QString text) {
        // As spreadsheets take it: what holds a tab or a line break stands in quotation marks.
        const bool isQuoted = text.contains('\t') || text.contains('\n') || text.contains('"');
        return isQuoted ? '"' + text.replace('"', "\"\"") + '"' : text;
    };
    QList<int> rows;
    for (const QModelIndex& index : rows_->selectionModel()->selectedIndexes())
        if (!rows.contains(index.row()))
            rows.append(index.row());
    if (rows.isEmpty())
        for (int row = 0; row < model_.rowCount(); ++row)
            rows.append(row);
    std::sort(rows.begin(), rows.end());
    QStringList lines, headings;
    for (int column = 0; column < model_.columnCount(); ++column)
        headings.append(value(model_.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString()));
    lines.append(headings.join('\t'));
    for (const int row : rows) {
        QStringList cells;
        for (int column = 0; column < model_.columnCount(); ++column) {
            const QModelIndex index = model_.index(row, column);
            const bool isNull = index.data(Qt::DisplayRole).toString().isEmpty();
            cells.append(isNull ? QString() : value(index.data(Qt::EditRole).toString()));
        }
        lines.append(cells.join('\t'));
    }
    QGuiApplication::clipboard()->setText(lines.join('\n') + '\n');
}

void BrowserWindow::SaveDiagram()
{
    const QString path =
        AskForFileToWrite(desktop_, *this, {tr("Save as picture"), "SVG (*.svg)|*.svg|PNG (*.png)|*.png", ".svg", {}});
    if (!path.isEmpty() && !diagram_->Save(path))
        TellInBox(*this, tr("The picture %1 could not be written").arg(path));
}

} // namespace velmora
