#include "ui/field_aids.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>

namespace velmora {

namespace {

struct Code {
    const char* text;
    const char* meaning; ///< in the context "RenameCodes" of the translations; none: a line between
};
constexpr Code kCodes[] = {
    {"%p%", QT_TRANSLATE_NOOP("RenameCodes", "folder of the file")},
    {"%f%", QT_TRANSLATE_NOOP("RenameCodes", "name of the file, without ending")},
    {nullptr, nullptr},
    {"%y%", QT_TRANSLATE_NOOP("RenameCodes", "year")},
    {"%m%", QT_TRANSLATE_NOOP("RenameCodes", "month")},
    {"%d%", QT_TRANSLATE_NOOP("RenameCodes", "day")},
    {"%h%", QT_TRANSLATE_NOOP("RenameCodes", "hour")},
    {"%n%", QT_TRANSLATE_NOOP("RenameCodes", "minute")},
    {"%s%", QT_TRANSLATE_NOOP("RenameCodes", "second")},
    {nullptr, nullptr},
    {"%p%done/%f%.xml", QT_TRANSLATE_NOOP("RenameCodes", "into the folder \"done\" beside it")},
    {"%p%%f%_%ymd%_%hns%.xml", QT_TRANSLATE_NOOP("RenameCodes", "with date and time behind its name")},
};

QString Translated(const char* text)
{
    return QCoreApplication::translate("RenameCodes", text);
}

} // namespace

PathCompleter::PathCompleter(QFileSystemModel& model, QObject* parent) : QCompleter(&model, parent), model_(model)
{
    setMaxVisibleItems(12);
}

QStringList PathCompleter::splitPath(const QString& path) const
{
    const QFileInfo file(path);
    if (file.isFile())
        return {QString(QChar(0))}; // nothing is called that
    // The model reads a folder when it becomes its root, and says when it has: then the list is there.
    model_.setRootPath(file.absolutePath());
    return QCompleter::splitPath(path);
}

QFileSystemModel* MakeFileSystemModel(bool foldersOnly, QObject* parent)
{
    auto* model = new QFileSystemModel(parent);
    model->setOption(QFileSystemModel::DontWatchForChanges);
    model->setOption(QFileSystemModel::DontUseCustomDirectoryIcons);
    model->setFilter(QDir::AllDirs | QDir::Drives | QDir::NoDotAndDotDot |
                     (foldersOnly ? QDir::Filters() : QDir::Files));
    return model;
}

QToolButton* MakeRenameCodes(QLineEdit& pattern)
{
    auto* button = new QToolButton;
    button->setObjectName("btnRenameCodes");
    button->setText(Translated(QT_TRANSLATE_NOOP("RenameCodes", "Codes")));
    button->setToolTip(Translated(QT_TRANSLATE_NOOP("RenameCodes", "What the new name can be made of")));
    button->setAccessibleName(button->toolTip());
    button->setPopupMode(QToolButton::InstantPopup);
    button->setFocusPolicy(Qt::StrongFocus);
    auto* menu = new QMenu(button);
    for (const Code& code : kCodes) {
        if (code.text == nullptr) {
            menu->addSeparator();
            continue;
        }
        const QString text = QString::fromLatin1(code.text);
        menu->addAction(text + '\t' + Translated(code.meaning), &pattern, [&pattern, text] {
            pattern.insert(text);
            emit pattern.textEdited(pattern.text()); // by a person's hand, if not by keys
        });
    }
    button->setMenu(menu);
    return button;
}

} // namespace velmora
