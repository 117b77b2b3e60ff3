#include "platform/file_changes.h"

#include "platform/file_operations.h"
#include "platform/paths.h"
#include "platform/program.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace velmora {

namespace {

namespace fs = std::filesystem;

std::error_code LastError() noexcept
{
    return {errno, std::generic_category()};
}

std::error_code CopyAndDelete(const fs::path& from, const fs::path& to)
{
    std::error_code error;
    if (fs::exists(fs::symlink_status(to, error)))
        return std::make_error_code(std::errc::file_exists);
    std::error_code ignored;
    if (!fs::copy_file(from, to, error)) {
        if (error != std::errc::file_exists)
            fs::remove(to, ignored);
        return error;
    }
    fs::last_write_time(to, fs::last_write_time(from, ignored), ignored);
    if (!fs::remove(from, error))
        fs::remove(to, ignored);
    return error;
}

} // namespace

std::error_code MoveWithoutReplacing(const std::string& from, const std::string& to)
{
    const fs::path source = PathFromUtf8(from);
    const fs::path target = PathFromUtf8(to);
    const std::error_code error = MoveOnOneVolume(source, target);
    return error == std::errc::cross_device_link ? CopyAndDelete(source, target) : error;
}

namespace {

struct FileCloser {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

FileHandle Open(const fs::path& path, const char* mode)
{
    return FileHandle(OpenFileStream(Utf8FromPath(path), mode));
}

/// A file beside `target` that nobody else has; gives `path` its name. Null when it cannot be made, with errno set.
FileHandle OpenBeside(const fs::path& target, fs::path& path)
{
    constexpr int kMostNames = 100;
    for (int number = 1; number <= kMostNames; ++number) {
        path = target;
        path += ".velmora-" + std::to_string(number);
        if (FileHandle file = Open(path, "wbx"); file || errno != EEXIST)
            return file;
    }
    return nullptr;
}

std::error_code WriteAll(FileHandle file, std::string_view content)
{
    const bool isWritten = std::fwrite(content.data(), 1, content.size(), file.get()) == content.size();
    const std::error_code error = isWritten ? SyncFile(file.get()) : LastError();
    return std::fclose(file.release()) == 0 || error ? error : LastError();
}

} // namespace

std::error_code WhyNotAppend(const std::string& path)
{
    std::error_code ignored;
    if (fs::exists(PathFromUtf8(path), ignored)) {
        std::FILE* const file = OpenFileStream(path, "ab"); // which changes nothing as long as nothing is written
        if (file == nullptr)
            return LastError();
        std::fclose(file);
        return {};
    }
    const std::string folder(FolderPart(path).empty() ? "." : FolderPart(path));
    if (!FolderExists(folder))
        return std::make_error_code(std::errc::no_such_file_or_directory);
    return IsWritableFolder(folder) ? std::error_code() : std::make_error_code(std::errc::permission_denied);
}

std::error_code SyncFile(std::FILE* file)
{
    return std::fflush(file) == 0 && SyncToDisk(file) ? std::error_code() : LastError();
}

std::error_code ReplaceFile(const std::string& path, std::string_view content)
{
    std::error_code error;
    fs::path target = PathFromUtf8(path);
    const bool exists = fs::exists(target, error);
    if (exists) {
        if (!Open(target, "r+b")) // a file that must not be written must not be replaced either
            return LastError();
        if (!fs::is_regular_file(target, error))
            return std::make_error_code(std::errc::invalid_argument);
        target = fs::canonical(target, error);
        if (error)
            return error;
    }
    fs::path beside;
    FileHandle file = OpenBeside(target, beside);
    if (!file)
        return LastError();
    error = WriteAll(std::move(file), content);
    if (!error && exists)
        fs::permissions(beside, fs::status(target).permissions(), error);
    if (!error)
        fs::rename(beside, target, error);
    std::error_code ignored;
    if (error)
        fs::remove(beside, ignored);
    return error;
}

} // namespace velmora
