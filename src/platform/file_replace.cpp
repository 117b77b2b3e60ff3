#include "platform/file_replace.h"

#include "platform/paths.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>

#ifndef _WIN32
#include <unistd.h>
#endif

namespace velmora {

namespace {

namespace fs = std::filesystem;

struct FileCloser {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

std::error_code LastError() noexcept
{
    return {errno, std::generic_category()};
}

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
    bool isWritten =
        std::fwrite(content.data(), 1, content.size(), file.get()) == content.size() && std::fflush(file.get()) == 0;
#ifndef _WIN32
    // Else a crash of the system could leave the new name with nothing behind it.
    isWritten = isWritten && fsync(fileno(file.get())) == 0;
#endif
    const std::error_code error = isWritten ? std::error_code() : LastError();
    return std::fclose(file.release()) == 0 || error ? error : LastError();
}

} // namespace

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
