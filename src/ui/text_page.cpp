#include "ui/text_page.h"

#include "ui/desktop.h"
#include "ui/message_box.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHeaderView>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSaveFile>
#include <QTableView>

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

void SetCompactRows(QTableView& table)
{
    table.verticalHeader()->setMinimumSectionSize(0);
    table.verticalHeader()->setDefaultSectionSize(table.fontMetrics().height() * 3 / 2);
}

void CopyText(const QPlainTextEdit& text)
{
    const QString selected = text.textCursor().selectedText();
    QString copied = selected.isEmpty() ? text.toPlainText() : selected;
    QGuiApplication::clipboard()->setText(copied.replace(QChar::ParagraphSeparator, '\n'));
}

void SaveText(QWidget& window, Desktop& desktop, const QString& text, const QString& proposal)
{
    const QString path = AskForFileToWrite(
        desktop, window,
        {QCoreApplication::translate("TextPage", "Save as"),
         QCoreApplication::translate("TextPage", "Text (*.txt *.log)|*.txt *.log") + "|All Files (*.*)|*.*", QString(),
         proposal});
    if (path.isEmpty())
        return;
    QSaveFile file(path);
    const QByteArray bytes = (text.endsWith('\n') ? text : text + '\n').toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        TellInBox(window, path + ": " + file.errorString());
}

} // namespace velmora
