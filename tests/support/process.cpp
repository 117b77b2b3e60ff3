#include "support/process.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velmora::testing {
namespace {

struct Pipe {
    Pipe()
    {
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            throw std::runtime_error("cannot make a pipe");
    }
    ~Pipe()
    {
        Close(0);
        Close(1);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void Close(std::size_t end)
    {
        if (ends[end] >= 0)
            ::close(ends[end]);
        ends[end] = -1;
    }

    std::array<int, 2> ends{-1, -1}; ///< reading end, writing end
};

/// Reads both pipes side by side until both are closed: a program that fills one must not wait for the other.
void Drain(const Pipe& first, std::string& firstText, const Pipe& second, std::string& secondText)
{
    std::array<pollfd, 2> waiting{pollfd{first.ends[0], POLLIN, 0}, pollfd{second.ends[0], POLLIN, 0}};
    std::array<std::string*, 2> texts{&firstText, &secondText};
    std::array<char, 65536> buffer;
    while (waiting[0].fd >= 0 || waiting[1].fd >= 0) {
        if (::poll(waiting.data(), waiting.size(), -1) < 0 && errno != EINTR)
            throw std::runtime_error("cannot wait for a program's output");
        for (std::size_t i = 0; i < waiting.size(); ++i) {
            if (waiting[i].fd < 0 || waiting[i].revents == 0)
                continue;
            const ssize_t count = ::read(waiting[i].fd, buffer.data(), buffer.size());
            if (count > 0)
                texts[i]->append(buffer.data(), static_cast<std::size_t>(count));
            else if (count == 0 || errno != EINTR)
                waiting[i].fd = -1;
        }
    }
}

/// The child's half: never returns. The parent has one thread only, so the heap may be used here.
[[noreturn]] void Become(const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment, const std::filesystem::path& folder,
                         const Pipe& output, const Pipe& errors)
{
    const int nothing = ::open("/dev/null", O_RDONLY);
    ::dup2(nothing, STDIN_FILENO);
    ::dup2(output.ends[1], STDOUT_FILENO);
    ::dup2(errors.ends[1], STDERR_FILENO);
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

double Seconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

} // namespace

ProcessResult RunProcess(const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment, const std::filesystem::path& folder)
{
    Pipe output;
    Pipe errors;
    const pid_t child = ::fork();
    if (child < 0)
        throw std::runtime_error("cannot start " + arguments.at(0));
    if (child == 0)
        Become(arguments, environment, folder, output, errors);
    output.Close(1);
    errors.Close(1);

    ProcessResult result;
    Drain(output, result.output, errors, result.errors);
    int state = 0;
    rusage used{};
    while (::wait4(child, &state, 0, &used) < 0) {
        if (errno != EINTR)
            throw std::runtime_error("lost sight of " + arguments[0]);
    }
    result.status = WIFSIGNALED(state) ? 128 + WTERMSIG(state) : WEXITSTATUS(state);
    result.peakKilobytes = used.ru_maxrss;
    result.cpuSeconds = Seconds(used.ru_utime) + Seconds(used.ru_stime);
    return result;
}

} // namespace velmora::testing
