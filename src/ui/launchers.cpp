#include "ui/launchers.h"

#include "platform/paths.h"
#include "ui/control_table.h"
#include "ui/desktop.h"

#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

QString Text(const std::string& text)
{
    return QString::fromStdString(text);
}

/// A file that is made because there was none, and taken away again.
class Placeholder {
public:
    explicit Placeholder(const std::string& path) : path_(path)
    {
        if (FileExists(path_))
            return;
        if (std::FILE* file = OpenFileStream(path_, "wbx")) {
            std::fclose(file);
            isMade_ = true;
        }
    }
    ~Placeholder()
    {
        std::error_code ignored; // an empty file that stays harms nobody
        if (isMade_)
            std::filesystem::remove(PathFromUtf8(path_), ignored);
    }
    Placeholder(const Placeholder&) = delete;
    Placeholder& operator=(const Placeholder&) = delete;
    [[nodiscard]] bool IsMade() const noexcept { return isMade_; }

private:
    const std::string path_;
    bool isMade_ = false;
};

} // namespace

Launchers::Launchers(Controls& controls, Host& host, Desktop& desktop, std::string programFolder)
    : controls_(controls), host_(host), desktop_(desktop), programFolder_(std::move(programFolder))
{
}

bool Launchers::Press(std::string_view button)
{
    for (const ControlRow& row : ControlRows())
        if (row.picker != nullptr && row.picker->button == button)
            return Pick(*row.picker);
    if (button == "btnMS_ACCESS")
        OpenInProgram(controls_.txtFILE_MDB.text, "dummy.mdb");
    else if (button == "btnXML_APPLICATION")
        OpenInProgram(controls_.txtFILE_XML.text, "dummy.xml");
    else if (button == "btnOPEN_DIRECTORY")
        OpenDirectory();
    return false;
}

bool Launchers::Pick(const FilePicker& picker)
{
    const FileQuestion question = QuestionOf(picker, controls_);
    std::string& box = (controls_.*picker.field).text;
    if (picker.filter == nullptr) {
        // A folder dialog that is cancelled has chosen no folder.
        box = desktop_.AskForFolder(question.title, question.start).toStdString();
        return true;
    }
    const QString chosen = desktop_.AskForFile(question);
    if (chosen.isEmpty())
        return false;
    box = chosen.toStdString();
    return true;
}

void Launchers::Complain(const std::string& text)
{
    host_.ShowMessage(text, Icon::Exclamation);
}

/// The look-up of a program wants a file that is there.
void Launchers::OpenInProgram(const std::string& path, std::string_view placeholder)
{
    const std::string file =
        path.empty() ? programFolder_ + kPathSeparator + std::string(placeholder) : NativePath(path);
    std::string program;
    QStringList alone;
    bool isMade = false;
    {
        const Placeholder made(file);
        if (!FileExists(file)) {
            Complain("The file " + file + " could not be found or created!");
            return;
        }
        isMade = made.IsMade();
        if (isMade)
            alone = desktop_.ProgramAlone(file);
        else
            program = desktop_.AssociatedProgram(file);
    }
    if (isMade)
        program = alone.value(0).toStdString();
    if (program.starts_with("Error")) {
        Complain(program);
        return;
    }
    const QStringList arguments = isMade ? alone.mid(1) : QStringList{Text(file)};
    if (!desktop_.Start(Text(program), arguments))
        Complain("Error: " + program + " could not be started");
}

void Launchers::OpenDirectory()
{
    const TextControl Controls::*const kBoxes[] = {&Controls::txtFILE_TXT, &Controls::txtFILE_MDB,
                                                   &Controls::txtFILE_XML, &Controls::txtFILE_LOG};
    std::string path;
    for (const auto box : kBoxes)
        if (path.empty())
            path = (controls_.*box).text;
    OpenFolderOf(path.empty() ? programFolder_ : path);
}

void Launchers::OpenFolderOf(std::string path)
{
    path = NativePath(path);
    while (!path.empty() && !FolderExists(path)) {
        if (path.ends_with(kPathSeparator))
            path.pop_back();
        path = std::string(FolderPart(path));
    }
    if (path.empty())
        return;
    const std::string program = desktop_.AssociatedProgram(path);
    // The opener of files opens folders too; only a look-up for a file says what it is called.
    const bool isOpener = !program.starts_with("Error");
    if (!desktop_.Start(isOpener ? Text(program) : QStringLiteral("xdg-open"), {Text(path)}))
        Complain("The folder " + path + " could not be opened");
}

bool Launchers::OpenManual()
{
    for (const char* place : {"/../share/doc/velmora/manual.md", "/../docs/manual.md", "/../../docs/manual.md"})
        if (const std::string file = programFolder_ + place; FileExists(file)) {
            OpenFile(file);
            return true;
        }
    return false;
}

} // namespace velmora
