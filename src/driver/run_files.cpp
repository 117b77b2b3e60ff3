#include "driver/run_files.h"

#include "log/runtime_error.h"
#include "platform/file_changes.h"
#include "platform/paths.h"
#include "platform/program.h"
#include "schema/target_check.h"
#include "source/source_list.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

/// A download gets a name of its own.
bool IsSource(const std::string& path, const ConversionSettings& settings)
{
    return !settings.fromUrl && NamesSource(settings.sourceFile, path);
}

constexpr std::string_view kScratchDatabase = "temporary_import_database";
constexpr std::string_view kScratchEnd = ".mdb";
constexpr int kMaxScratchDatabases = 1000; // nobody runs so many at once: something else is wrong then

std::error_code WhyNotMakeFolder(std::string path)
{
    while (path.ends_with(kPathSeparator))
        path.pop_back();
    return FileExists(path) ? std::make_error_code(std::errc::file_exists) : WhyNotAppend(path);
}

/// One level only: a mistyped path must not grow a tree of folders.
void MakeExportFolder(Job& job, Step& step)
{
    const std::string& folder = job.settings.textFolder;
    if (FolderExists(folder))
        return;
    step("Export folder");
    job.log.Trace("Create directory [" + folder + "] for delimited exports");
    std::error_code error;
    if (job.settings.blPreview)
        error = WhyNotMakeFolder(NativePath(folder));
    else
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

std::string ScratchPath(const Places& places, int number)
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
    job.controls.txtFILE_MDB.text = ScratchPath(places, 1);
    job.controls.chkRecreateDatabase.value = CheckState::Checked;
    job.controls.UpdateEnabled();
}

} // namespace

std::optional<std::string> ClashingFiles(const ConversionSettings& settings)
{
    const std::string& target = settings.targetFile;
    const std::string& log = settings.protocolFile;
    const std::string& mapping = settings.mappingFile;
    const std::string& exported = settings.xmlFile;
    const std::string summary = settings.SummaryPath();
    const auto clash = [](std::string_view what, const std::string& path, std::string_view also) {
        return std::string(what) + " \"" + path + "\" is also the " + std::string(also) +
               "; nothing was written, name another file";
    };
    if (IsSource(target, settings))
        return clash("The target database", target, "XML file");
    if (IsSameFile(target, log))
        return clash("The target database", target, "protocol file");
    if (IsSameFile(target, mapping))
        return clash("The target database", target, "tag-mapping file");
    if (IsSource(log, settings) || IsSameFile(log, exported))
        return clash("The protocol file", log, "XML file");
    if (IsSameFile(exported, target))
        return clash("The XML file", exported, "database");
    if (IsSameFile(exported, mapping))
        return clash("The XML file", exported, "tag-mapping file");
    if (IsSameFile(log, mapping))
        return clash("The protocol file", log, "tag-mapping file");
    if (IsSource(summary, settings) || IsSameFile(summary, exported))
        return clash("The summary", summary, "XML file");
    for (const auto& [other, name] :
         {std::pair(&target, "target database"), {&log, "protocol file"}, {&mapping, "tag-mapping file"}})
        if (IsSameFile(summary, *other))
            return clash("The summary", summary, name);
    return std::nullopt;
}

bool IsSummaryClashing(const ConversionSettings& settings)
{
    const std::string summary = settings.SummaryPath();
    return IsSource(summary, settings) ||
           std::ranges::any_of(
               std::array{&settings.xmlFile, &settings.targetFile, &settings.protocolFile, &settings.mappingFile},
               [&](const std::string* other) { return IsSameFile(summary, *other); });
}

bool IsProtocolClashing(const ConversionSettings& settings)
{
    const std::string& log = settings.protocolFile;
    return IsSameFile(log, settings.targetFile) || IsSameFile(log, settings.mappingFile) ||
           IsSameFile(log, settings.xmlFile) || IsSameFile(log, settings.SummaryPath()) || IsSource(log, settings);
}

Places StandardPlaces()
{
    const std::string program = ProgramFolder();
    return {program, IsWritableFolder(program) ? program : UserDataFolder()};
}

Places TrialPlaces(const Places& places)
{
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    return error ? places : Places{places.program, Utf8FromPath(folder)};
}

void MakeFilesFolder(const Places& places)
{
    std::error_code error;
    std::filesystem::create_directories(PathFromUtf8(places.files), error);
    if (error)
        throw FileError("The folder", places.files, "cannot be made", error.default_error_condition().value());
}

bool PrepareTextMode(Job& job, const Places& places, Step& step)
{
    const ConversionSettings& settings = job.settings;
    if (settings.textFolder.empty())
        return true;
    MakeExportFolder(job, step);
    if (settings.strDelimiter.empty() && !settings.blQuiet && !AskForDelimiter(job))
        return false;
    if (settings.targetFile.empty())
        UseScratchDatabase(job, places, step);
    job.host.ControlsChanged();
    return true;
}

void ScratchDatabase::TakeFree()
{
    std::string& target = job_.settings.targetFile;
    while (IsTargetInUse(target) && number_ < kMaxScratchDatabases)
        target = ScratchPath(places_, ++number_);
    job_.log.ProtocolAppend("Temporary database: " + target);
    job_.controls.txtFILE_MDB.text = target;
    job_.host.ControlsChanged();
}

bool ScratchDatabase::TakeNext()
{
    if (number_ >= kMaxScratchDatabases)
        return false;
    job_.settings.targetFile = ScratchPath(places_, ++number_);
    TakeFree();
    return true;
}

} // namespace velmora
