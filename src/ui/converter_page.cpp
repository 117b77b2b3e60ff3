#include "ui/converter_page.h"

#include "ui/control_table.h"
#include "ui/controls_form.h"
#include "ui/field_aids.h"

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

#include <algorithm>
#include <utility>

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
    for (QWidget* widget : {scroll->viewport(), content}) // what lies behind shows, as on the other pages
        widget->setAutoFillBackground(false);
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

QToolButton* ConverterPage::MakeFindButton(TextControl Controls::*field)
{
    const FilePicker& picker = *PickerOf(field);
    return MakeButton(picker.button, QStringLiteral("…"), QuestionOf(picker, {}).title);
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
           {MakeFindButton(&Controls::txtFILE_XML),
            MakeButton("btnXML_APPLICATION", tr("Open"), tr("Open the XML file in its program"))});
    QLineEdit* renamed = form.Text(&Controls::txtFILE_XML_RENAMED);
    AddRow(*grid, form, renamed);
    const int row = grid->rowCount() - 1;
    grid->addWidget(renamed, row, kFieldColumn); // as wide as the field above
    grid->addWidget(MakeRenameCodes(*renamed), row, kFieldColumn + 1, 1, -1);
    auto* hint = new QLabel(tr("After sucessfull conversion of XML file this file will be renamed"));
    hint->setWordWrap(true);
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
    QToolButton* findMdb = MakeFindButton(&Controls::txtFILE_MDB);
    QToolButton* openMdb = MakeButton("btnMS_ACCESS", tr("Open"), tr("Open the database in its program"));
    AddRow(*grid, form, mdb, {findMdb, openMdb, form.Combo(&Controls::cboDatabase)});

    QLineEdit* txt = form.Text(&Controls::txtFILE_TXT);
    QToolButton* findTxt = MakeFindButton(&Controls::txtFILE_TXT);
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
    AddRow(*grid, form, log, {MakeFindButton(&Controls::txtFILE_LOG)});
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

/// The additions that belong to `group`, below its name; nothing when there are none.
void ConverterPage::AddAdditions(QGridLayout& grid, ControlsForm& form, OptionGroup group)
{
    bool isFirst = true;
    for (const ControlRow* row : additions_) {
        if (row->option->group != group)
            continue;
        if (std::exchange(isFirst, false)) {
            auto* title = new QLabel(GroupTitle(group));
            QFont bold = title->font();
            bold.setBold(true);
            title->setFont(bold);
            grid.addWidget(title, grid.rowCount(), 0, 1, -1);
        }
        QWidget* widget = form.Widget(row->option->control);
        if (row->option->IsSwitch())
            grid.addWidget(widget, grid.rowCount(), 0, 1, -1);
        else if (row->picker != nullptr)
            AddRow(grid, form, widget, {MakeFindButton(row->picker->field)});
        else
            AddRow(grid, form, widget);
    }
}

QWidget* ConverterPage::MakeAdditions(ControlsForm& form)
{
    auto* group = new QWidget;
    auto* layout = new QVBoxLayout(group);
    layout->setContentsMargins(0, 0, 0, 0);
    fold_ = new QToolButton;
    fold_->setObjectName("btnMore");
    fold_->setToolTip(tr("Show or hide the options that are needed less often"));
    fold_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    fold_->setArrowType(Qt::RightArrow);
    fold_->setAutoRaise(true);
    fold_->setCheckable(true);
    fold_->setFocusPolicy(Qt::StrongFocus);

    auto* content = new QWidget;
    content->setObjectName("grpMore");
    QGridLayout* grid = MakeGrid(*content);
    additions_ = form.Additions();
    for (const OptionHeading& heading : OptionHeadings())
        AddAdditions(*grid, form, heading.group);
    content->setVisible(false);
    connect(fold_, &QToolButton::toggled, content, [this, content](bool on) {
        fold_->setArrowType(on ? Qt::DownArrow : Qt::RightArrow);
        content->setVisible(on);
    });
    layout->addWidget(fold_);
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
    const auto used = std::count_if(additions_.begin(), additions_.end(),
                                    [&](const ControlRow* row) { return !IsAtStart(*row->option, controls); });
    fold_->setText(used == 0 ? tr("More options") : tr("More options (%1 in use)").arg(used));
    fold_->setAccessibleName(fold_->text());
}

} // namespace velmora
