#include "driver/rename.h"

#include "log/runtime_error.h"
#include "platform/clock.h"
#include "platform/file_changes.h"
#include "platform/paths.h"

#include <filesystem>
#include <string_view>
#include <system_error>
#include <unordered_set>

namespace velmora {

namespace {

/// An old path taken apart.
struct ExplodedPath {
    std::string folder; ///< with its separator
    std::string base;   ///< name without extension
};

/// nullopt for a name without an extension.
std::optional<ExplodedPath> Explode(const std::string& path)
{
    // Found by listing a folder, the path has native separators; any other one belongs to a name.
    const std::size_t name = path.find_last_of(kPathSeparator) + 1; // 0 without a separator
    const std::size_t dot = path.find_last_of('.');
    if (dot == path.npos || dot < name)
        return std::nullopt;
    // A pattern may go on with a separator of its own: a file of the current folder must not move to the root.
    const std::string folder = name == 0 ? std::string{'.', kPathSeparator} : path.substr(0, name);
    return ExplodedPath{folder, path.substr(name, dot - name)};
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
    const std::size_t kept = path.starts_with(std::string(2, kPathSeparator)) ? 2 : 0;
    std::string result = path.substr(0, kept);
    for (std::size_t i = kept; i < path.size(); ++i) {
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

/// What a message says of a rename that cannot be.
std::string Refusal(const std::string& path, const std::string& why)
{
    return "The file [" + path + "] cannot be renamed" + why;
}

constexpr const char* kNoExtension = ": its name has no extension";

/// Does the pattern hold a code for the time of day? The names that it gives then are not known beforehand.
bool HoldsTimeOfDay(std::string_view pattern)
{
    bool insideCode = false;
    for (const char c : pattern) {
        if (c == '%')
            insideCode = !insideCode;
        else if (insideCode && std::string_view("hns").find(LowerCase(c)) != std::string_view::npos)
            return true;
    }
    return false;
}

std::string PlainSpelling(const std::string& path)
{
    return Utf8FromPath(PathFromUtf8(path).lexically_normal());
}

/// Goes through the files in the order in which they will be renamed.
class RenameCheck {
public:
    explicit RenameCheck(std::string_view pattern, std::time_t time)
        : pattern_(pattern), time_(time), namesAreKnown_(!HoldsTimeOfDay(pattern))
    {
    }

    /// Why the next file's rename must fail; nullopt when it need not.
    [[nodiscard]] std::optional<std::string> Next(const std::string& path)
    {
        const std::optional<ExplodedPath> old = Explode(path);
        if (!old)
            return Refusal(path, kNoExtension);
        const std::string newPath = WithoutDoubleSeparators(FillIn(pattern_, *old, time_));
        const std::string_view name = NamePart(newPath);
        if (name.empty() || name == "." || name == "..")
            return Refusal(path, " to [" + newPath + "]: that leaves no name");
        return namesAreKnown_ ? Meeting(path, newPath) : std::nullopt;
    }

private:
    /// What the new name meets.
    [[nodiscard]] std::optional<std::string> Meeting(const std::string& path, const std::string& newPath)
    {
        const std::string plain = PlainSpelling(newPath);
        if (plain == PlainSpelling(path))
            return Refusal(path, " to [" + newPath + "]: that is the name it has");
        if (!given_.insert(plain).second)
            return Refusal(path, " to [" + newPath + "]: another file of the run gets that name");
        std::error_code error;
        const bool isThere = std::filesystem::exists(std::filesystem::symlink_status(PathFromUtf8(newPath), error));
        if (isThere && !movedAway_.contains(plain))
            return Refusal(path, " to [" + newPath + "]: a file of that name is there already");
        movedAway_.insert(PlainSpelling(path));
        return std::nullopt;
    }

    std::string_view pattern_;
    std::time_t time_;
    bool namesAreKnown_;
    std::unordered_set<std::string> given_;
    std::unordered_set<std::string> movedAway_;
};

} // namespace

std::optional<std::string> ImpossibleRename(const ConversionSettings& settings, const std::vector<std::string>& files,
                                            std::time_t time)
{
    const std::string& pattern = settings.renamePattern;
    if (pattern.empty())
        return std::nullopt;
    RenameCheck check(pattern, time);
    for (const std::string& file : files)
        if (auto reason = check.Next(file))
            return *reason + "; nothing was converted";
    return std::nullopt;
}

void RenameConvertedFile(Job& job, const std::string& oldPath, std::time_t time)
{
    job.log.Trace("Explode old filename");
    const std::optional<ExplodedPath> old = Explode(oldPath);
    if (!old)
        throw RuntimeError(runtime_errors::kInvalidProcedureCall, Refusal(oldPath, kNoExtension));
    job.log.Trace("Convert pattern to new filename");
    const std::string spelledOut = FillIn(job.settings.renamePattern, *old, time);
    job.log.Trace("Finalize new filename");
    const std::string newPath = WithoutDoubleSeparators(spelledOut);
    job.log.Trace("Create all subdirectories to the new filename");
    MakeFoldersOf(newPath);
    job.log.Trace("Rename XML file to new name");
    const std::error_code error = MoveWithoutReplacing(oldPath, newPath);
    if (error == std::errc::file_exists)
        throw RuntimeError(runtime_errors::kFileExists,
                           Refusal(oldPath, " to [" + newPath + "]: a file of that name is there already"));
    if (error)
        throw FileError("The file", oldPath, "cannot be renamed to [" + newPath + "]",
                        error.default_error_condition().value());
}

} // namespace velmora
