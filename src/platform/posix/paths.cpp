#include "platform/paths.h"

#include <sys/stat.h>

namespace velmora {

namespace fs = std::filesystem;

const bool kNamesIgnoreCase = false;

fs::path PathFromUtf8(std::string_view text)
{
    return fs::path(std::u8string(text.begin(), text.end()));
}

std::string Utf8FromPath(const fs::path& path)
{
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::string FileIdentity(const std::string& path)
{
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return path;
    return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

std::FILE* OpenFileStream(std::string_view path, const char* mode)
{
    return std::fopen(std::string(path).c_str(), mode);
}

} // namespace velmora
