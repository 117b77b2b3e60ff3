#include "platform/process.h"

#include "platform/clock.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velmora {

namespace {

constexpr int kPatienceMilliseconds = 2000;

/// A pipe that holds a text which fits into it, to be read from.
class FilledPipe {
public:
    explicit FilledPipe(std::string_view text)
    {
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0)
            return;
        reading_ = ends[0];
        fcntl(ends[0], F_SETFD, FD_CLOEXEC);
        // What does not fit must not wait for a reader that is not there yet.
        fcntl(ends[1], F_SETFL, O_NONBLOCK);
        isFilled_ = write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size());
        close(ends[1]);
    }
    ~FilledPipe()
    {
        if (reading_ >= 0)
            close(reading_);
    }
    FilledPipe(const FilledPipe&) = delete;
    FilledPipe& operator=(const FilledPipe&) = delete;

    [[nodiscard]] bool IsFilled() const noexcept { return isFilled_; }
    [[nodiscard]] int Reading() const noexcept { return reading_; }

private:
    int reading_ = -1;
    bool isFilled_ = false;
};

/// What a started program gets to see of this one.
class SpawnOptions {
public:
    explicit SpawnOptions(const FilledPipe& input)
    {
        posix_spawn_file_actions_init(&files_);
        posix_spawn_file_actions_adddup2(&files_, input.Reading(), STDIN_FILENO);
        posix_spawn_file_actions_addopen(&files_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
#if defined(__GLIBC__) && __GLIBC_PREREQ(2, 34)
        // The open database and protocol are none of its business.
        posix_spawn_file_actions_addclosefrom_np(&files_, STDERR_FILENO + 1);
#endif
        posix_spawnattr_init(&attributes_);
        sigset_t usual;
        sigemptyset(&usual);
        sigaddset(&usual, SIGPIPE); // ignored by this program, which the other one would inherit
        posix_spawnattr_setsigdefault(&attributes_, &usual);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnOptions()
    {
        posix_spawn_file_actions_destroy(&files_);
        posix_spawnattr_destroy(&attributes_);
    }
    SpawnOptions(const SpawnOptions&) = delete;
    SpawnOptions& operator=(const SpawnOptions&) = delete;

    [[nodiscard]] const posix_spawn_file_actions_t* Files() const noexcept
    {
        return &files_;
    }
    [[nodiscard]] const posix_spawnattr_t* Attributes() const noexcept
    {
        return &attributes_;
    }

private:
    posix_spawn_file_actions_t files_;
    posix_spawnattr_t attributes_;
};

} // namespace

ChildProcess::~ChildProcess()
{
    Terminate();
}

std::unique_ptr<ChildProcess> ChildProcess::Start(const std::string& commandLine, std::string_view input)
{
    std::vector<std::string> words = SplitProgramLine(commandLine);
    const FilledPipe pipe(input);
    if (words.empty() || !pipe.IsFilled())
        return nullptr;
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const SpawnOptions options(pipe);
    pid_t id = 0;
    if (posix_spawnp(&id, arguments[0], options.Files(), options.Attributes(), arguments.data(), environ) != 0)
        return nullptr;
    return std::unique_ptr<ChildProcess>(new ChildProcess(id));
}

bool ChildProcess::HasEnded(int milliseconds)
{
    constexpr int kSliceMilliseconds = 10;
    const std::int64_t begin = CoarseMilliseconds();
    for (;;) {
        // A process that is nobody's child any more counts as ended, too.
        if (!ended_)
            ended_ = waitpid(static_cast<pid_t>(id_), nullptr, WNOHANG) != 0;
        const auto left = milliseconds - static_cast<int>(CoarseMilliseconds() - begin);
        if (ended_ || left <= 0)
            return ended_;
        if (poll(nullptr, 0, std::min(left, kSliceMilliseconds)) < 0 && errno == EINTR)
            milliseconds = 0;
    }
}

void ChildProcess::Terminate()
{
    if (HasEnded(0))
        return;
    kill(static_cast<pid_t>(id_), SIGTERM);
    if (HasEnded(kPatienceMilliseconds))
        return;
    kill(static_cast<pid_t>(id_), SIGKILL);
    while (waitpid(static_cast<pid_t>(id_), nullptr, 0) < 0 && errno == EINTR) {
    }
    ended_ = true;
}

} // namespace velmora
