#include "platform/process.h"

#include "platform/clock.h"
#include "platform/paths.h"

#include <algorithm>
#include <array>

#ifdef _WIN32
#include <windows.h>
#else
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace velmora {

namespace {

constexpr int kPatienceMilliseconds = 2000;

/// The end of the program's path at the beginning of `line`, which stands without quotes.
std::size_t ProgramEnd(std::string_view line)
{
    const std::size_t firstBlank = line.find(' ');
    if (FolderPart(line.substr(0, firstBlank)).empty())
        return firstBlank;
    for (std::size_t blank = firstBlank; blank != line.npos; blank = line.find(' ', blank + 1))
        if (FileExists(line.substr(0, blank)))
            return blank;
    return firstBlank;
}

} // namespace

std::vector<std::string> SplitProgramLine(std::string_view line)
{
    std::vector<std::string> words;
    std::string word;
    bool hasWord = false;
    bool quoted = false;
    std::size_t position = 0;
    if (!line.empty() && line.front() != '"' && line.front() != ' ') {
        position = std::min(ProgramEnd(line), line.size());
        words.emplace_back(line.substr(0, position));
    }
    for (; position < line.size(); ++position) {
        const char c = line[position];
        if (c == ' ' && !quoted) {
            if (hasWord)
                words.push_back(std::move(word));
            word.clear();
            hasWord = false;
            continue;
        }
        hasWord = true;
        if (c == '"')
            quoted = !quoted;
        else
            word += c;
    }
    if (hasWord)
        words.push_back(std::move(word));
    return words;
}

ChildProcess::~ChildProcess()
{
    Terminate();
#ifdef _WIN32
    CloseHandle(reinterpret_cast<HANDLE>(id_));
#endif
}

#ifdef _WIN32

namespace {

/// The end of a pipe from which a program reads `input`; nullptr when that is empty, and after a failure.
HANDLE PipeWith(std::string_view input)
{
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    if (input.empty() || !CreatePipe(&reading, &writing, &inherited, static_cast<DWORD>(input.size())))
        return nullptr;
    SetHandleInformation(writing, HANDLE_FLAG_INHERIT, 0);
    DWORD written = 0;
    WriteFile(writing, input.data(), static_cast<DWORD>(input.size()), &written, nullptr);
    CloseHandle(writing);
    return reading;
}

} // namespace

std::unique_ptr<ChildProcess> ChildProcess::Start(const std::string& commandLine, std::string_view input)
{
    // The system splits the line itself, blanks in the program's path included.
    std::wstring line = PathFromUtf8(commandLine).wstring();
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOWMINNOACTIVE;
    const HANDLE pipe = PipeWith(input);
    if (pipe != nullptr) {
        startup.dwFlags |= STARTF_USESTDHANDLES;
        startup.hStdInput = pipe;
        startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    }
    PROCESS_INFORMATION process{};
    const BOOL started = CreateProcessW(nullptr, line.data(), nullptr, nullptr, pipe != nullptr, 0, nullptr, nullptr,
                                        &startup, &process);
    if (pipe != nullptr)
        CloseHandle(pipe);
    if (!started)
        return nullptr;
    CloseHandle(process.hThread);
    return std::unique_ptr<ChildProcess>(new ChildProcess(reinterpret_cast<std::intptr_t>(process.hProcess)));
}

bool ChildProcess::HasEnded(int milliseconds)
{
    if (!ended_)
        ended_ = WaitForSingleObject(reinterpret_cast<HANDLE>(id_), static_cast<DWORD>(milliseconds)) == WAIT_OBJECT_0;
    return ended_;
}

void ChildProcess::Terminate()
{
    if (HasEnded(0))
        return;
    TerminateProcess(reinterpret_cast<HANDLE>(id_), 1);
    ended_ = HasEnded(kPatienceMilliseconds);
}

#else

namespace {

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

#endif

} // namespace velmora
