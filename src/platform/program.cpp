#include "platform/program.h"

#include "platform/paths.h"

namespace velmora {

std::string ProgramFolder()
{
    return Utf8FromPath(PathFromUtf8(ExecutablePath()).parent_path());
}

std::string ProgramName()
{
    const std::filesystem::path path = PathFromUtf8(ExecutablePath());
    return Utf8FromPath(path.extension() == ".exe" ? path.stem() : path.filename());
}

} // namespace velmora
