#include "driver/rename.h"

#include "log/file_error.h"
#include "platform/clock.h"
#include "platform/file_move.h"
#include "platform/paths.h"

#include <filesystem>
#include <string_view>
#include <system_error>

namespace velmora {

namespace {

/// An old path taken apart.
struct ExplodedPath {
    std::string folder; ///< with its separator
    std::string base;   ///< name without extension
};

ExplodedPath Explode(const std::string& path)
{
    // Found by listing a folder, the path has native separators; any other one belongs to a name.
    const std::size_t name = path.find_last_of(kPathSeparator) + 1; // 0 without a separator
    const std::size_t dot = path.find_last_of('.');
    if (dot == path.npos || dot < name)
        throw RuntimeError(runtime_errors::kInvalidProcedureCall,
                           "The file [" + path + "] cannot be renamed: its name has no extension");
    return {path.substr(0, name), path.substr(name, dot - name)};
}

char LowerCase(char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string Decoded(char code, const ExplodedPath& old, std::time_t time)
{
    switch (LowerCase(code)) {
    case 'd':
        return FormatTime(time, "%d");
    case 'm':
        return FormatTime(time, "%m");
    case 'y':
        return FormatTime(time, "%Y");
    case 'h':
        return FormatTime(time, "%H");
    case 'n':
        return FormatTime(time, "%M");
    case 's':
        return FormatTime(time, "%S");
    case 'p':
        return old.folder;
    case 'f':
        return old.base;
    default:
        return {code};
    }
}

std::string FillIn(std::string_view pattern, const ExplodedPath& old, std::time_t time)
{
    std::string path;
    bool insideCode = false;
    for (const char c : NativePath(pattern)) {
        if (c == '%')
            insideCode = !insideCode;
        else if (insideCode)
            path += Decoded(c, old, time);
        else
            path += c;
    }
    return path;
}

/// Two separators in a row, as in "%p%\sub", become one; those at the beginning are a network path's.
std::string WithoutDoubleSeparators(const std::string& path)
{
    constexpr std::size_t kKept = 2;
    std::string result = path.substr(0, kKept);
    for (std::size_t i = kKept; i < path.size(); ++i) {
        result += path[i];
        if (path[i] == kPathSeparator && i + 1 < path.size() && path[i + 1] == kPathSeparator)
            ++i;
    }
    return result;
}

void MakeFoldersOf(const std::string& path)
{
    for (std::size_t i = path.find(kPathSeparator); i != path.npos; i = path.find(kPathSeparator, i + 1)) {
        const std::string folder = path.substr(0, i + 1);
        if (FolderExists(folder))
            continue;
        std::error_code error;
        std::filesystem::create_directory(PathFromUtf8(folder), error);
        if (error)
            throw FileError("The folder", folder, "cannot be made", error.default_error_condition().value());
    }
}

} // namespace

void RenameConvertedFile(Job& job, const std::string& oldPath, std::time_t time)
{
    job.log.Trace("Explode old filename");
    const ExplodedPath old = Explode(oldPath);
    job.log.Trace("Convert pattern to new filename");
    const std::string spelledOut = FillIn(job.controls.txtFILE_XML_RENAMED.text, old, time);
    job.log.Trace("Finalize new filename");
    const std::string newPath = WithoutDoubleSeparators(spelledOut);
    job.log.Trace("Create all subdirectories to the new filename");
    MakeFoldersOf(newPath);
    job.log.Trace("Rename XML file to new name");
    const std::error_code error = MoveWithoutReplacing(oldPath, newPath);
    if (error == std::errc::file_exists)
        throw RuntimeError(runtime_errors::kFileExists, "The file [" + oldPath + "] cannot be renamed to [" + newPath +
                                                            "]: a file of that name is there already");
    if (error)
        throw FileError("The file", oldPath, "cannot be renamed to [" + newPath + "]",
                        error.default_error_condition().value());
}

} // namespace velmora
