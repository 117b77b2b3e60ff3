#include "platform/program.h"

#include "platform/paths.h"

#include <algorithm>
#include <filesystem>

namespace velmora {

namespace fs = std::filesystem;

std::string ProgramFolder()
{
    return Utf8FromPath(PathFromUtf8(ExecutablePath()).parent_path());
}

std::string ProgramName()
{
    const fs::path path = PathFromUtf8(ExecutablePath());
    return Utf8FromPath(path.extension() == ".exe" ? path.stem() : path.filename());
}

std::string FindOnPath(std::string_view name)
{
    const std::string folders = EnvironmentVariable("PATH");
    const std::string fileName = std::string(name).append(kProgramSuffix);
    for (std::size_t begin = 0; begin < folders.size();) {
        const std::size_t end = std::min(folders.find(kBetweenFolders, begin), folders.size());
        const fs::path folder = PathFromUtf8(std::string_view(folders).substr(begin, end - begin));
        std::string candidate = Utf8FromPath(folder / PathFromUtf8(fileName));
        // What the current folder holds, possibly downloaded by anybody, must not be taken for a program of the system.
        if (folder.is_absolute() && IsProgram(candidate))
            return candidate;
        begin = end + 1;
    }
    return {};
}

std::string FindInstalled(std::string_view name)
{
    std::string sibling =
        Utf8FromPath(PathFromUtf8(ProgramFolder()) / PathFromUtf8(std::string(name).append(kProgramSuffix)));
    return IsProgram(sibling) ? sibling : FindOnPath(name);
}

} // namespace velmora
