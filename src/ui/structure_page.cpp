#include "ui/structure_page.h"

#include "settings/controls.h"
#include "ui/text_page.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextCursor>
#include <QVBoxLayout>

#include <algorithm>

namespace velmora {

namespace {

constexpr std::size_t kMaxShownBytes = 2'000'000; // a hundred times what people read

QString Whole(const std::string& report)
{
    return QString::fromStdString(report).remove('\r');
}

} // namespace

StructurePage::StructurePage(Desktop& desktop, QWidget* parent) : QWidget(parent)
{
    text_ = MakeReadOnlyText("txtXML", tr("Structure of the document converted last"), true);
    text_->setPlaceholderText(tr("After a conversion, the structure of the document stands here."));
    search_ = new QLineEdit;
    search_->setObjectName("txtFIND");
    search_->setPlaceholderText(tr("Find"));
    search_->setAccessibleName(tr("Find"));
    search_->setToolTip(tr("Return finds the next place"));
    search_->setClearButtonEnabled(true);
    auto* find = MakeTextButton("btnFindText", tr("&Find"), tr("Find the next place"));
    auto* copy = MakeTextButton("btnCopyXML", tr("Cop&y"), tr("Copy the selected lines, or all"));
    auto* save = MakeTextButton("btnSaveXML", tr("Save as…"), tr("Write the description to a file"));
    connect(find, &QPushButton::clicked, this, &StructurePage::FindNext);
    connect(search_, &QLineEdit::returnPressed, this, &StructurePage::FindNext);
    connect(copy, &QPushButton::clicked, this, [this] { CopyText(*text_); });
    connect(save, &QPushButton::clicked, this,
            [this, &desktop] { SaveText(*this, desktop, Whole(shown_), "structure.txt"); });

    auto* column = new QVBoxLayout(this);
    column->addWidget(text_, 1);
    auto* row = new QHBoxLayout;
    row->addWidget(search_);
    row->addWidget(find);
    row->addWidget(copy);
    row->addWidget(save);
    column->addLayout(row);
}

void StructurePage::Refresh(const Controls& controls)
{
    if (shown_ == controls.txtXML)
        return;
    shown_ = controls.txtXML;
    QString text = QString::fromUtf8(shown_.data(), static_cast<qsizetype>(std::min(shown_.size(), kMaxShownBytes)));
    if (shown_.size() > kMaxShownBytes)
        text = text.left(text.lastIndexOf('\n') + 1) + tr("The structure goes on: it is too long to be shown.");
    text_->setPlainText(text);
}

void StructurePage::FocusSearch()
{
    search_->setFocus();
    search_->selectAll();
}

void StructurePage::FindNext()
{
    if (search_->text().isEmpty() || text_->find(search_->text()))
        return;
    text_->moveCursor(QTextCursor::Start);
    text_->find(search_->text());
}

} // namespace velmora
