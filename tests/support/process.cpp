#include "support/process.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velmora::testing {
namespace {

/// A file without a name, for what a program writes.
using Output = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

Output NewOutput()
{
    return {std::tmpfile(), &std::fclose};
}

std::string TextOf(const Output& output)
{
    std::string text;
    std::array<char, 65536> buffer;
    std::rewind(output.get());
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), output.get()))
        text.append(buffer.data(), count);
    return text;
}

/// The child's half: never returns. The parent has one thread only, so the heap may be used here.
[[noreturn]] void Become(const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment, const std::filesystem::path& folder,
                         const Output& output, const Output& errors)
{
    const int nothing = ::open("/dev/null", O_RDONLY);
    ::dup2(nothing, STDIN_FILENO);
    ::dup2(::fileno(output.get()), STDOUT_FILENO);
    ::dup2(::fileno(errors.get()), STDERR_FILENO);
    for (const auto& [name, value] : environment)
        ::setenv(name.c_str(), value.c_str(), 1);
    if (!folder.empty() && ::chdir(folder.c_str()) != 0)
        ::_exit(127);
    std::vector<char*> pointers;
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    ::execvp(pointers[0], pointers.data());
    ::_exit(127);
}

} // namespace

ProcessResult RunProcess(const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment, const std::filesystem::path& folder)
{
    const Output output = NewOutput();
    const Output errors = NewOutput();
    const pid_t child = ::fork();
    if (child < 0)
        throw std::runtime_error("cannot start " + arguments.at(0));
    if (child == 0)
        Become(arguments, environment, folder, output, errors);
    ProcessResult result;
    int state = 0;
    rusage used{};
    while (::wait4(child, &state, 0, &used) < 0) {
        if (errno != EINTR)
            throw std::runtime_error("lost sight of " + arguments[0]);
    }
    result.status = WIFSIGNALED(state) ? 128 + WTERMSIG(state) : WEXITSTATUS(state);
    result.output = TextOf(output);
    result.errors = TextOf(errors);
    result.peakKilobytes = used.ru_maxrss;
    return result;
}

} // namespace velmora::testing
