#include "ui/text_page.h"

#include "host/host.h"

#include <QClipboard>
#include <QFileDialog>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSaveFile>

namespace velmora {

QPlainTextEdit* MakeReadOnlyText(const char* name, const QString& title, bool fixedWidth)
{
    auto* edit = new QPlainTextEdit;
    edit->setObjectName(name);
    edit->setAccessibleName(title);
    edit->setToolTip(title);
    edit->setReadOnly(true);
    edit->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    edit->setTabChangesFocus(true);
    edit->setLineWrapMode(QPlainTextEdit::NoWrap);
    edit->setUndoRedoEnabled(false);
    if (fixedWidth)
        edit->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    return edit;
}

QPushButton* MakeTextButton(const char* name, const QString& text, const QString& explanation)
{
    auto* button = new QPushButton(text);
    button->setObjectName(name);
    button->setToolTip(explanation);
    button->setAccessibleName(explanation);
    return button;
}

void CopyText(const QPlainTextEdit& text)
{
    const QString selected = text.textCursor().selectedText();
    QString copied = selected.isEmpty() ? text.toPlainText() : selected;
    QGuiApplication::clipboard()->setText(copied.replace(QChar::ParagraphSeparator, '\n'));
}

void SaveText(QWidget& parent, const QPlainTextEdit& text, const QString& proposal)
{
    const QString path =
        QFileDialog::getSaveFileName(&parent, QCoreApplication::translate("TextPage", "Save as"), proposal);
    if (path.isEmpty())
        return;
    QSaveFile file(path);
    const QByteArray bytes = text.toPlainText().toUtf8() + '\n';
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        QMessageBox::warning(&parent, QString::fromUtf8(kCaption.data(), kCaption.size()), file.errorString());
}

} // namespace velmora
