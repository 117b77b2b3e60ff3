#include "ui/job_menu.h"

#include "ui/control_table.h"
#include "ui/controls_form.h"
#include "ui/desktop.h"
#include "ui/job_file.h"
#include "ui/memory.h"
#include "ui/message_box.h"

#include <QFileInfo>

namespace velmora {

namespace {

QString JobFilter()
{
    return JobMenu::tr("Job (*.velmora)|*.velmora|All Files (*.*)|*.*");
}

} // namespace

JobMenu::JobMenu(ControlsForm& form, Desktop& desktop, QWidget& window)
    : QMenu(&window), form_(form), desktop_(desktop), window_(window)
{
    addAction(tr("&Open a job…"), this, &JobMenu::OpenJob);
    addAction(tr("&Save as a job…"), this, &JobMenu::SaveJobAs);
    QMenu* recent = addMenu(tr("&Recent files"));
    connect(recent, &QMenu::aboutToShow, this, [this, recent] { ShowRecentFiles(*recent); });
    addSeparator();
    addAction(tr("&Look at a database…"), this, &JobMenu::LookAtDatabase);
    addAction(tr("&Write a database as XML…"), this, &JobMenu::WriteAsXml);
}

void JobMenu::OpenJob()
{
    const QString path = desktop_.AskForFile({tr("Open a job"), JobFilter(), kJobSuffix, {}});
    if (!path.isEmpty())
        emit JobChosen(path);
}

void JobMenu::SaveJobAs()
{
    const QString path = AskForFileToWrite(desktop_, window_, {tr("Save as a job"), JobFilter(), kJobSuffix, {}});
    if (path.isEmpty())
        return;
    if (const std::error_code failure = SaveJob(form_.State(), path.toStdString()))
        TellInBox(window_, tr("The job %1 cannot be written: %2").arg(path, QString::fromStdString(failure.message())));
}

QString JobMenu::AskForDatabase(const QString& title)
{
    FileQuestion question = QuestionOf(*PickerOf(&Controls::txtFILE_MDB), form_.State());
    question.title = title;
    return desktop_.AskForFile(question);
}

void JobMenu::LookAtDatabase()
{
    const QString path = AskForDatabase(tr("Look at a database"));
    if (!path.isEmpty())
        emit DatabaseChosen(path);
}

void JobMenu::WriteAsXml()
{
    const QString database = AskForDatabase(tr("Database to be written as XML"));
    if (database.isEmpty())
        return;
    const QFileInfo file(database);
    FileQuestion question = QuestionOf(*PickerOf(&Controls::txtFILE_EXPORT), form_.State());
    question.start = file.path() + '/' + file.completeBaseName() + ".xml";
    const QString xml = AskForFileToWrite(desktop_, window_, question);
    if (!xml.isEmpty())
        emit WayBackChosen(database, xml);
}

void JobMenu::ShowRecentFiles(QMenu& menu)
{
    menu.clear();
    const auto add = [&](const char* kind, TextControl Controls::*field) {
        for (const QString& path : Memory::RecentFiles(kind))
            menu.addAction(path, this, [this, path, field] { form_.SetText(field, path); });
    };
    add("xml", &Controls::txtFILE_XML);
    menu.addSeparator();
    add("mdb", &Controls::txtFILE_MDB);
}

} // namespace velmora
