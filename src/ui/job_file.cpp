#include "ui/job_file.h"

#include "log/passwords.h"
#include "platform/file_changes.h"
#include "platform/paths.h"
#include "platform/program.h"
#include "settings/command_line.h"

#include <fstream>
#include <stdexcept>

namespace velmora {

std::error_code SaveJob(const Controls& controls, const std::string& path)
{
    Controls shown = controls;
    shown.txtXML_PASSWORD.text.clear();
    shown.txtXML_URL.text = WithoutUserOfUrl(shown.txtXML_URL.text);
    // The program stands first, and its path is where a job is the machine's own.
    const std::string program = ProgramFolder() + kPathSeparator + ProgramName() + std::string(kProgramSuffix);
    std::string line = BuildCommandLine(shown).substr(program.size());
    line.erase(0, line.find_first_not_of(' '));
    return ReplaceFile(NativePath(path), line + "\n");
}

std::string ReadJob(const std::string& path)
{
    std::ifstream file(PathFromUtf8(NativePath(path)));
    std::string line;
    if (!std::getline(file, line))
        throw std::runtime_error("The job [" + path + "] cannot be read");
    if (line.ends_with('\r'))
        line.pop_back();
    return line;
}

} // namespace velmora
