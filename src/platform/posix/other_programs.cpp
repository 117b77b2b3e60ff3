#include "platform/other_programs.h"

#include "platform/paths.h"

#include <unistd.h>

namespace velmora {

const char kBetweenFolders = ':';

bool IsProgram(const std::string& path)
{
    return FileExists(path) && access(path.c_str(), X_OK) == 0;
}

std::string FindAssociatedProgram(const std::string& filePath)
{
    const std::string folder(FolderPart(filePath));
    if (!folder.empty() && !FolderExists(folder))
        return "Error: Path Not Found";
    if (!FileExists(filePath))
        return "Error: File Not Found";
        // Which program it is depends on the desktop; its opener knows.
#ifdef __APPLE__
    const std::string opener = FindOnPath("open");
#else
    const std::string opener = FindOnPath("xdg-open");
#endif
    return opener.empty() ? "Error: No Association" : opener;
}

bool BecomeProgram(const std::string& program, const std::vector<std::string>& arguments)
{
    std::vector<std::string> texts{program};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    execv(program.c_str(), pointers.data());
    return false;
}

} // namespace velmora
