#include "platform/process.h"

#include "platform/windows/started_program.h"
#include "platform/windows/windows.h"

namespace velmora {

namespace {

constexpr int kPatienceMilliseconds = 2000;

HANDLE HandleOf(std::intptr_t id)
{
    return reinterpret_cast<HANDLE>(id);
}

/// A handle that a started program inherits, closed with this object.
class InheritedHandle {
public:
    explicit InheritedHandle(HANDLE handle) noexcept : handle_(handle) {}
    ~InheritedHandle()
    {
        if (handle_ != INVALID_HANDLE_VALUE)
            CloseHandle(handle_);
    }
    InheritedHandle(const InheritedHandle&) = delete;
    InheritedHandle& operator=(const InheritedHandle&) = delete;

    [[nodiscard]] HANDLE Get() const noexcept { return handle_; }

private:
    HANDLE handle_;
};

SECURITY_ATTRIBUTES Inherited()
{
    return {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
}

/// The end of a pipe from which `input` is read.
HANDLE PipeWith(std::string_view input)
{
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    SECURITY_ATTRIBUTES inherited = Inherited();
    // With room for all of it, nobody has to read yet.
    if (!CreatePipe(&reading, &writing, &inherited, static_cast<DWORD>(input.size() + 1)))
        return INVALID_HANDLE_VALUE;
    SetHandleInformation(writing, HANDLE_FLAG_INHERIT, 0);
    DWORD written = 0;
    WriteFile(writing, input.data(), static_cast<DWORD>(input.size()), &written, nullptr);
    CloseHandle(writing);
    return reading;
}

HANDLE Nowhere()
{
    SECURITY_ATTRIBUTES inherited = Inherited();
    return CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, OPEN_EXISTING, 0,
                       nullptr);
}

/// This program's standard error, for another one.
HANDLE OwnErrors()
{
    HANDLE copy = INVALID_HANDLE_VALUE;
    const HANDLE own = GetCurrentProcess();
    DuplicateHandle(own, GetStdHandle(STD_ERROR_HANDLE), own, &copy, 0, TRUE, DUPLICATE_SAME_ACCESS);
    return copy;
}

} // namespace

ChildProcess::~ChildProcess()
{
    Terminate();
    CloseHandle(HandleOf(id_));
}

std::unique_ptr<ChildProcess> ChildProcess::Start(const std::string& commandLine, std::string_view input)
{
    const std::vector<std::string> words = SplitProgramLine(commandLine);
    if (words.empty())
        return nullptr;
    const InheritedHandle reading(PipeWith(input));
    const InheritedHandle writing(Nowhere());
    const InheritedHandle errors(OwnErrors());
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW | STARTF_USESTDHANDLES;
    startup.wShowWindow = SW_SHOWMINNOACTIVE;
    startup.hStdInput = reading.Get();
    startup.hStdOutput = writing.Get();
    startup.hStdError = errors.Get();
    const HANDLE process = StartProgram(words, startup);
    if (process == nullptr)
        return nullptr;
    return std::unique_ptr<ChildProcess>(new ChildProcess(reinterpret_cast<std::intptr_t>(process)));
}

bool ChildProcess::HasEnded(int milliseconds)
{
    if (!ended_)
        ended_ = WaitForSingleObject(HandleOf(id_), static_cast<DWORD>(milliseconds)) == WAIT_OBJECT_0;
    return ended_;
}

/// There is no polite way that a program without a window would notice.
void ChildProcess::Terminate()
{
    if (HasEnded(0))
        return;
    TerminateProcess(HandleOf(id_), 1);
    ended_ = HasEnded(kPatienceMilliseconds);
}

} // namespace velmora
