#include "platform/paths.h"

#include <algorithm>
#include <system_error>

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

} // namespace velmora
