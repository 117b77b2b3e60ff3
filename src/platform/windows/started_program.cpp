#include "platform/windows/started_program.h"

#include "platform/paths.h"
#include "platform/program.h"
#include "platform/windows/windows.h"

namespace velmora {

namespace {

/// A backslash means itself, but in front of a quote it has to be doubled.
std::string Quoted(const std::string& word)
{
    if (!word.empty() && word.find_first_of(" \t\n\v\"") == word.npos)
        return word;
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char c : word) {
        if (c == '"')
            quoted.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    return quoted.append(backslashes, '\\').append(1, '"');
}

/// The file that `name` means; empty when there is none.
std::string ProgramFile(std::string name)
{
    if (name.ends_with(kProgramSuffix))
        name.resize(name.size() - kProgramSuffix.size());
    if (FolderPart(name).empty())
        return FindOnPath(name);
    return name.append(kProgramSuffix);
}

} // namespace

std::string QuotedWords(const std::vector<std::string>& words)
{
    std::string line;
    for (const std::string& word : words)
        line.append(line.empty() ? "" : " ").append(Quoted(word));
    return line;
}

HANDLE StartProgram(std::vector<std::string> words, STARTUPINFOW& startup)
{
    words[0] = ProgramFile(words[0]);
    if (!FileExists(words[0]))
        return nullptr;
    std::wstring line = WideFromUtf8(QuotedWords(words));
    const BOOL inherits = (startup.dwFlags & STARTF_USESTDHANDLES) != 0;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(PathFromUtf8(words[0]).c_str(), line.data(), nullptr, nullptr, inherits, 0, nullptr, nullptr,
                        &startup, &process))
        return nullptr;
    CloseHandle(process.hThread);
    return process.hProcess;
}

} // namespace velmora
