#include "platform/paths.h"

#include <algorithm>
#include <system_error>

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace velmora {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kSeparators = "/\\";

fs::path NativeFsPath(std::string_view typed)
{
    return PathFromUtf8(NativePath(typed));
}

/// `path` without links, "." and "..", as far as its beginning exists; absolute. Falls back to the plain spelling when
/// the system cannot tell.
fs::path Resolved(const fs::path& path)
{
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error);
    if (error)
        return path.lexically_normal();
    const fs::path resolved = fs::weakly_canonical(absolute, error);
    return error ? absolute.lexically_normal() : resolved;
}

} // namespace

std::string NativePath(std::string_view typed)
{
    std::string path(typed);
    std::replace_if(
        path.begin(), path.end(), [](char c) { return kSeparators.find(c) != std::string_view::npos; }, kPathSeparator);
    return path;
}

std::string_view FolderPart(std::string_view path) noexcept
{
    return path.substr(0, path.size() - NamePart(path).size());
}

std::string_view NamePart(std::string_view path) noexcept
{
    const std::size_t last = path.find_last_of(kSeparators);
    return last == std::string_view::npos ? path : path.substr(last + 1);
}

fs::path PathFromUtf8(std::string_view text)
{
    return fs::path(std::u8string(text.begin(), text.end()));
}

std::string Utf8FromPath(const fs::path& path)
{
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

bool FolderExists(std::string_view path)
{
    std::error_code error;
    return !path.empty() && fs::is_directory(NativeFsPath(path), error);
}

bool FileExists(std::string_view path)
{
    std::error_code error;
    return !path.empty() && fs::is_regular_file(NativeFsPath(path), error);
}

bool IsSameFile(std::string_view first, std::string_view second)
{
    if (first.empty() || second.empty())
        return false;
    const fs::path a = NativeFsPath(first);
    const fs::path b = NativeFsPath(second);
    std::error_code error;
    if (fs::equivalent(a, b, error) && !error)
        return true;
    return Resolved(a) == Resolved(b);
}

std::string FileIdentity(const std::string& path)
{
#ifdef _WIN32
    std::error_code error;
    return Utf8FromPath(fs::canonical(PathFromUtf8(path), error));
#else
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return path;
    return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
#endif
}

std::FILE* OpenFileStream(std::string_view path, const char* mode)
{
#ifdef _WIN32
    const std::wstring wideMode(mode, mode + std::char_traits<char>::length(mode));
    return _wfopen(PathFromUtf8(path).c_str(), wideMode.c_str());
#else
    return std::fopen(std::string(path).c_str(), mode);
#endif
}

} // namespace velmora
