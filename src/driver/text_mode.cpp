#include "driver/text_mode.h"

#include "log/runtime_error.h"
#include "platform/paths.h"
#include "schema/target_check.h"

#include <filesystem>
#include <optional>
#include <system_error>

namespace velmora {

namespace {

constexpr std::string_view kScratchDatabase = "temporary_import_database";
constexpr std::string_view kScratchEnd = ".mdb";
constexpr int kMaxScratchDatabases = 1000; // nobody runs so many at once: something else is wrong then

/// One level only: a mistyped path must not grow a tree of folders.
void MakeExportFolder(Job& job, Step& step)
{
    const std::string& folder = job.controls.txtFILE_TXT.text;
    if (FolderExists(folder))
        return;
    step("Export folder");
    job.log.Trace("Create directory [" + folder + "] for delimited exports");
    std::error_code error;
    std::filesystem::create_directory(PathFromUtf8(NativePath(folder)), error);
    if (error)
        throw FileError("The folder", folder, "cannot be made", error.default_error_condition().value());
}

/// False when the user cancels. The answer may be empty.
bool AskForDelimiter(Job& job)
{
    job.log.Trace("Missing delimiter, ask for one");
    std::optional<std::string> answer =
        job.host.InputBox("Delimiter", "No delimiter specitied\r\nUse \\t for tabulator");
    if (!answer)
        return false;
    job.controls.txtDELIMITER.text = std::move(*answer);
    return true;
}

std::string ScratchDatabase(const Places& places, int number)
{
    std::string path = std::string(places.files).append(1, kPathSeparator).append(kScratchDatabase);
    if (number > 1)
        path.append("_").append(std::to_string(number));
    return path.append(kScratchEnd);
}

/// The tables stand in a database even when only their text files are wanted. It stays where the controls show it, and
/// makes room for the next one.
void UseScratchDatabase(Job& job, const Places& places, Step& step)
{
    step("Scratch database");
    MakeFilesFolder(places);
    job.controls.txtFILE_MDB.text = ScratchDatabase(places, 1);
    job.controls.chkRecreateDatabase.value = CheckState::Checked;
    job.controls.UpdateEnabled();
}

} // namespace

bool PrepareTextMode(Job& job, const Places& places, Step& step)
{
    Controls& controls = job.controls;
    if (controls.txtFILE_TXT.text.empty())
        return true;
    MakeExportFolder(job, step);
    if (controls.txtDELIMITER.text.empty() && !controls.chkQuiet.Checked() && !AskForDelimiter(job))
        return false;
    if (controls.txtFILE_MDB.text.empty())
        UseScratchDatabase(job, places, step);
    job.host.ControlsChanged();
    return true;
}

void TakeFreeScratchDatabase(Job& job, const Places& places)
{
    std::string& target = job.controls.txtFILE_MDB.text;
    for (int number = 2; IsTargetInUse(target) && number <= kMaxScratchDatabases; ++number)
        target = ScratchDatabase(places, number);
    job.log.ProtocolAppend("Temporary database: " + target);
    job.host.ControlsChanged();
}

} // namespace velmora
