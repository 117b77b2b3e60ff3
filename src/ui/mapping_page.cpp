#include "ui/mapping_page.h"

#include "mapping/tag_map.h"
#include "settings/job.h"
#include "ui/controls_form.h"
#include "ui/message_box.h"
#include "ui/text_page.h"

#include <QCheckBox>
#include <QCompleter>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStringListModel>

namespace velmora {

namespace {

QString Text(const std::string& text)
{
    return QString::fromStdString(text);
}

} // namespace

MappingPage::MappingPage(Job& job, TagMap& map, ControlsForm& form, Desktop& desktop, QWidget* parent)
    : QWidget(parent), job_(job), map_(map), form_(form), desktop_(desktop), editor_(map)
{
    MakeWidgets();
    connect(enable_, &QCheckBox::clicked, this, [this](bool on) {
        form_.State().chkEnableTagMapping.value = on ? CheckState::Checked : CheckState::Unchecked;
        form_.Commit();
    });
    connect(list_, &QListWidget::itemPressed, this,
            [this](QListWidgetItem* item) { lstMAPPING_Click(list_->row(item)); });
    connect(list_, &QListWidget::currentRowChanged, this, [this](int line) {
        if (line >= 0) {
            editor_.Select(static_cast<std::size_t>(line));
            Show();
        }
    });
    connect(tag_, &QLineEdit::textEdited, this, &MappingPage::Changed);
    connect(name_, &QLineEdit::textEdited, this, &MappingPage::Changed);
    connect(remove_, &QPushButton::clicked, this, &MappingPage::btnREMOVE_PAIR_Click);
    list_->installEventFilter(this);
    Show();
}

void MappingPage::MakeWidgets()
{
    auto* grid = new QGridLayout(this);
    grid->setColumnStretch(1, 1);
    enable_ = new QCheckBox(tr("&Enable Tag-mapping"));
    enable_->setObjectName("chkEnableTagMapping");
    enable_->setToolTip(tr("Use the names below in place of the tags of the document"));
    enable_->setAccessibleName(PlainLabel(enable_->text()));
    grid->addWidget(enable_, 0, 0, 1, 4);

    QLineEdit* file = form_.Text(&Controls::txtFILE_MAPPING);
    grid->addWidget(form_.LabelOf(file), 1, 0);
    grid->addWidget(file, 1, 1);
    auto* open = MakeTextButton("btnMappingOpen", tr("Open &mapping…"), tr("Read the names from a file"));
    auto* save = MakeTextButton("btnMappingSave", tr("&Save…"), tr("Write the names to a file"));
    connect(open, &QPushButton::clicked, this, &MappingPage::btnMappingOpen_Click);
    connect(save, &QPushButton::clicked, this, &MappingPage::btnMappingSave_Click);
    grid->addWidget(open, 1, 2);

    list_ = new QListWidget;
    list_->setObjectName("lstMAPPING");
    list_->setAccessibleName(tr("Mappings"));
    list_->setToolTip(tr("The names in place of tags: Insert adds one, Delete removes it"));
    grid->addWidget(save, 1, 3);
    grid->addWidget(list_, 3, 0, 1, 4);
    grid->setRowStretch(3, 1);

    const auto edit = [&](int row, const char* name, const QString& text, const QString& explanation) {
        auto* made = new QLineEdit;
        made->setObjectName(name);
        made->setAccessibleName(PlainLabel(text));
        made->setToolTip(explanation);
        auto* label = new QLabel(text);
        label->setBuddy(made);
        grid->addWidget(label, row, 0);
        grid->addWidget(made, row, 1, 1, 2);
        return made;
    };
    tag_ = edit(4, "txtTAG", tr("XML &tag"), tr("The tag as it stands in the document, without its namespace prefix"));
    name_ = edit(5, "txtCOLUMN", tr("Table or column &name"), tr("The name in place of the tag"));
    remove_ = MakeTextButton("btnREMOVE_PAIR", tr("&Remove"), tr("Remove the selected name"));
    grid->addWidget(remove_, 5, 3);

    knownTags_ = new QStringListModel(this);
    auto* completer = new QCompleter(knownTags_, this);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    tag_->setCompleter(completer);
    connect(completer, qOverload<const QString&>(&QCompleter::activated), this, &MappingPage::Changed);
}

void MappingPage::Refresh(const Controls& controls)
{
    enable_->setChecked(controls.chkEnableTagMapping.Checked());
    QStringList tags;
    for (const std::string& tag : controls.documentTags)
        tags.append(Text(tag));
    if (knownTags_->stringList() != tags)
        knownTags_->setStringList(tags);
}

void MappingPage::Redraw()
{
    editor_.Redraw(std::nullopt);
    Show();
}

void MappingPage::btnMappingOpen_Click()
{
    const QString path = desktop_.AskForFile(QuestionOf(*PickerOf(&Controls::txtFILE_MAPPING), form_.State()));
    if (!path.isEmpty())
        Load(path);
}

void MappingPage::Load(const QString& path)
{
    job_.controls.txtFILE_MAPPING.text = path.toStdString();
    static_cast<void>(velLoadTagMapping(job_, map_, path.toStdString()));
    Redraw();
    emit ProtocolWritten();
    form_.Commit();
}

void MappingPage::btnMappingSave_Click()
{
    const bool isSomethingThere = PrepareSaving(job_, map_);
    Redraw();
    if (!isSomethingThere) {
        TellInBox(*this, QString::fromUtf8(kNothingToSave.data(), kNothingToSave.size()));
        return;
    }
    FileQuestion question = QuestionOf(*PickerOf(&Controls::txtFILE_MAPPING), form_.State());
    question.title = tr("Save Mapping");
    const QString path = AskForFileToWrite(desktop_, *this, question);
    if (path.isEmpty())
        return;
    static_cast<void>(SaveTagMapping(job_, map_, path.toStdString()));
    emit ProtocolWritten();
    form_.Commit();
}

void MappingPage::Show()
{
    const QSignalBlocker quiet(list_);
    const auto count = static_cast<int>(editor_.LineCount());
    while (list_->count() > count)
        delete list_->takeItem(list_->count() - 1);
    while (list_->count() < count)
        list_->addItem(QString());
    for (int line = 0; line < count; ++line)
        list_->item(line)->setText(Text(editor_.Line(static_cast<std::size_t>(line))));
    const auto selected = editor_.Selected();
    list_->setCurrentRow(selected ? static_cast<int>(*selected) : -1);
    if (tag_->text() != Text(editor_.Tag()))
        tag_->setText(Text(editor_.Tag()));
    if (name_->text() != Text(editor_.Name()))
        name_->setText(Text(editor_.Name()));
    remove_->setEnabled(selected.has_value());
}

void MappingPage::lstMAPPING_Click(int line)
{
    editor_.Click(static_cast<std::size_t>(line));
    job_.settings.blAbort = false; // a click in the list also takes back an abort
    Show();
    tag_->setFocus();
}

void MappingPage::Changed()
{
    editor_.Type(tag_->text().toStdString(), name_->text().toStdString());
    Show();
}

void MappingPage::btnREMOVE_PAIR_Click()
{
    editor_.Remove();
    Show();
}

bool MappingPage::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == list_ && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const bool isOnAddLine = list_->currentRow() == list_->count() - 1;
        if (key == Qt::Key_Insert || (isOnAddLine && (key == Qt::Key_Return || key == Qt::Key_Enter))) {
            lstMAPPING_Click(list_->count() - 1);
            return true;
        }
        if (key == Qt::Key_Delete) {
            btnREMOVE_PAIR_Click();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace velmora
