#include "ui/converter_page.h"

#include "ui/controls_form.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace velmora {

namespace {

constexpr int kFieldColumn = 1;

/// One row of a form: label, field, and what stands behind it.
void AddRow(QGridLayout& grid, ControlsForm& form, QWidget* field, std::initializer_list<QWidget*> behind = {})
{
    const int row = grid.rowCount();
    grid.addWidget(form.LabelOf(field), row, 0);
    const int span = behind.size() == 0 ? -1 : 1;
    grid.addWidget(field, row, kFieldColumn, 1, span);
    int column = kFieldColumn + 1;
    for (QWidget* widget : behind)
        grid.addWidget(widget, row, column++);
}

QGridLayout* MakeGrid(QWidget& owner)
{
    auto* grid = new QGridLayout(&owner);
    grid->setColumnStretch(kFieldColumn, 1);
    return grid;
}

/// A box with the fields that it governs below, set in.
void AddGoverned(QGridLayout& grid, ControlsForm& form, QCheckBox* box, std::initializer_list<QLineEdit*> fields)
{
    if (box != nullptr)
        grid.addWidget(box, grid.rowCount(), 0, 1, 2);
    for (QLineEdit* field : fields) {
        const int row = grid.rowCount();
        QLabel* label = form.LabelOf(field);
        if (box != nullptr)
            label->setIndent(box->iconSize().width() + label->fontMetrics().averageCharWidth());
        grid.addWidget(label, row, 0);
        grid.addWidget(field, row, 1);
    }
}

} // namespace

ConverterPage::ConverterPage(ControlsForm& form, QWidget* parent) : QWidget(parent)
{
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->addWidget(MakeSource(form));
    column->addWidget(MakeDestination(form));
    column->addWidget(MakeOptions(form));
    column->addWidget(MakeAdditions(form));
    column->addStretch();

    auto* scroll = new QScrollArea;
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setWidget(content);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setMinimumWidth(content->minimumSizeHint().width() + scroll->verticalScrollBar()->sizeHint().width());
    content_ = content;
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scroll);
}

QToolButton* ConverterPage::MakeButton(const char* name, const QString& text, const QString& explanation)
{
    auto* button = new QToolButton;
    button->setObjectName(name);
    button->setText(text);
    button->setToolTip(explanation);
    button->setAccessibleName(explanation);
    button->setFocusPolicy(Qt::StrongFocus);
    connect(button, &QToolButton::clicked, this, [this, button] { emit ButtonPressed(button->objectName()); });
    return button;
}

QToolButton* ConverterPage::MakeFindButton(const char* name, const QLineEdit& edit)
{
    return MakeButton(name, QStringLiteral("…"), tr("Choose: %1").arg(edit.accessibleName()));
}

QGroupBox* ConverterPage::MakeSource(ControlsForm& form)
{
    auto* group = new QGroupBox(tr("Source"));
    auto* layout = new QVBoxLayout(group);
    sourceTypes_ = new QTabWidget;
    sourceTypes_->setObjectName("tabSourceType");
    sourceTypes_->setAccessibleName(tr("Source"));
    sourceTypes_->setDocumentMode(true);
    sourceTypes_->addTab(MakeLocalSource(form), tr("Local file"));
    sourceTypes_->addTab(MakeUrlSource(form), tr("URL"));
    connect(sourceTypes_, &QTabWidget::currentChanged, this, [&form](int index) {
        if (form.State().tabSourceType == index)
            return;
        form.State().tabSourceType = index;
        form.Commit();
    });
    layout->addWidget(sourceTypes_);
    return group;
}

QWidget* ConverterPage::MakeLocalSource(ControlsForm& form)
{
    auto* page = new QWidget;
    auto* grid = MakeGrid(*page);
    xml_ = form.Text(&Controls::txtFILE_XML);
    AddRow(*grid, form, xml_,
           {MakeFindButton("btnFindXML", *xml_),
            MakeButton("btnXML_APPLICATION", tr("Open"), tr("Open the XML file in its program"))});
    QLineEdit* renamed = form.Text(&Controls::txtFILE_XML_RENAMED);
    AddRow(*grid, form, renamed);
    auto* hint = new QLabel(tr("After sucessfull conversion of XML file this file will be renamed"));
    hint->setWordWrap(true);
    hint->setEnabled(false);
    grid->addWidget(hint, grid->rowCount(), kFieldColumn, 1, -1);
    grid->setRowStretch(grid->rowCount(), 1);
    return page;
}

QWidget* ConverterPage::MakeUrlSource(ControlsForm& form)
{
    auto* page = new QWidget;
    auto* grid = MakeGrid(*page);
    AddRow(*grid, form, form.Text(&Controls::txtXML_URL));
    AddRow(*grid, form, form.Text(&Controls::txtXML_USER));
    QLineEdit* password = form.Text(&Controls::txtXML_PASSWORD);
    password->setEchoMode(QLineEdit::Password);
    AddRow(*grid, form, password);
    grid->setRowStretch(grid->rowCount(), 1);
    return page;
}

QGroupBox* ConverterPage::MakeDestination(ControlsForm& form)
{
    auto* group = new QGroupBox(tr("Destination"));
    auto* grid = MakeGrid(*group);
    QLineEdit* mdb = form.Text(&Controls::txtFILE_MDB);
    QToolButton* findMdb = MakeFindButton("btnFindMDB", *mdb);
    QToolButton* openMdb = MakeButton("btnMS_ACCESS", tr("Open"), tr("Open the database in its program"));
    AddRow(*grid, form, mdb, {findMdb, openMdb, form.Combo(&Controls::cboDatabase)});

    QLineEdit* txt = form.Text(&Controls::txtFILE_TXT);
    QToolButton* findTxt = MakeFindButton("btnFindTXT", *txt);
    AddRow(*grid, form, txt, {findTxt});
    if (auto* label = qobject_cast<QLabel*>(grid->itemAtPosition(grid->rowCount() - 1, 0)->widget()))
        label->setWordWrap(true);

    QLineEdit* delimiter = form.Text(&Controls::txtDELIMITER);
    delimiter->setMaximumWidth(delimiter->fontMetrics().averageCharWidth() * 12);
    auto* beside = new QGridLayout;
    beside->addWidget(delimiter, 0, 0);
    beside->addWidget(form.Check(&Controls::chkEXPORT_COLUMN_NAMES), 0, 1);
    beside->addWidget(form.Check(&Controls::chkAPPEND), 1, 1);
    beside->setColumnStretch(1, 1);
    beside->setHorizontalSpacing(delimiter->fontMetrics().averageCharWidth() * 3);
    const int row = grid->rowCount();
    QLabel* delimiterLabel = form.LabelOf(delimiter);
    grid->addWidget(delimiterLabel, row, 0, Qt::AlignTop);
    delimiterLabel->setMinimumHeight(delimiter->sizeHint().height());
    grid->addLayout(beside, row, kFieldColumn, 1, -1);

    QLineEdit* log = form.Text(&Controls::txtFILE_LOG);
    AddRow(*grid, form, log, {MakeFindButton("btnFindLOG", *log)});
    return group;
}

QGroupBox* ConverterPage::MakeOptions(ControlsForm& form)
{
    auto* group = new QGroupBox(tr("Options"));
    auto* halves = new QHBoxLayout(group);

    auto* left = new QVBoxLayout;
    for (const auto member : {&Controls::chkRecreateDatabase, &Controls::chkExtendMDB, &Controls::chkEmptyTables,
                              &Controls::chkOneTablePerElement, &Controls::chkSkipEmptyWrappingTags,
                              &Controls::chkQuiet, &Controls::chkDebug})
        left->addWidget(form.Check(member));
    left->addStretch();

    auto* right = new QGridLayout;
    right->setColumnStretch(1, 1);
    QCheckBox* relations = form.Check(&Controls::chkCreateTableRelations);
    AddGoverned(*right, form, relations, {form.Text(&Controls::txtKEY_PRIMARY), form.Text(&Controls::txtKEY_FOREIGN)});
    QCheckBox* attributes = form.Check(&Controls::chkImportAttributes);
    AddGoverned(*right, form, attributes, {form.Text(&Controls::txtATTR_PREFIX)});
    AddGoverned(*right, form, nullptr, {form.Text(&Controls::txtTABLE_PREFIX), form.Text(&Controls::txtTABLE_SUFFIX)});
    right->setRowStretch(right->rowCount(), 1);

    halves->addLayout(left, 1);
    halves->addSpacing(fontMetrics().averageCharWidth() * 4);
    halves->addLayout(right, 1);
    return group;
}

QWidget* ConverterPage::MakeAdditions(ControlsForm& form)
{
    auto* group = new QWidget;
    auto* layout = new QVBoxLayout(group);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* fold = new QToolButton;
    fold->setObjectName("btnMore");
    fold->setText(tr("More options"));
    fold->setAccessibleName(fold->text());
    fold->setToolTip(tr("Show or hide the options that are needed less often"));
    fold->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    fold->setArrowType(Qt::RightArrow);
    fold->setAutoRaise(true);
    fold->setCheckable(true);
    fold->setFocusPolicy(Qt::StrongFocus);

    auto* content = new QWidget;
    content->setObjectName("grpMore");
    auto* grid = new QGridLayout(content);
    grid->setColumnStretch(1, 1);
    for (const ControlRow* row : form.Additions()) {
        QWidget* widget = form.Widget(row->option->control);
        const int line = grid->rowCount();
        if (row->option->IsSwitch()) {
            grid->addWidget(widget, line, 0, 1, 2);
            continue;
        }
        grid->addWidget(form.LabelOf(widget), line, 0);
        grid->addWidget(widget, line, 1);
    }
    content->setVisible(false);
    connect(fold, &QToolButton::toggled, content, [fold, content](bool on) {
        fold->setArrowType(on ? Qt::DownArrow : Qt::RightArrow);
        content->setVisible(on);
    });
    layout->addWidget(fold);
    layout->addWidget(content);
    return group;
}

QSize ConverterPage::sizeHint() const
{
    return content_->sizeHint();
}

void ConverterPage::FocusFirst()
{
    xml_->setFocus();
}

void ConverterPage::Refresh(const Controls& controls)
{
    sourceTypes_->setCurrentIndex(controls.tabSourceType);
}

} // namespace velmora
