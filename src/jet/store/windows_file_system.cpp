#include "jet/store/file_system.h"

#include "jet/base/date_text.h"
#include "jet/base/error.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <windows.h>

#include <aclapi.h>

namespace jet {

namespace {

namespace fs = std::filesystem;

/// Others may read, write, rename and remove: what they must not do, locks forbid.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::string TextOf(const fs::path& path)
{
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

[[noreturn]] void ThrowIo(const std::string& name, DWORD code)
{
    constexpr DWORD kQuotaExceeded = 1295; // ERROR_DISK_QUOTA_EXCEEDED, which some headers lack
    const bool full = code == ERROR_DISK_FULL || code == ERROR_HANDLE_DISK_FULL || code == kQuotaExceeded;
    throw Error(full ? ErrorNumber::DiskFull : ErrorNumber::DiskError, {},
                "(" + name + ": " + std::system_category().message(static_cast<int>(code)) + ")");
}

[[noreturn]] void ThrowOpen(const fs::path& path, DWORD code)
{
    const std::string name = TextOf(path);
    switch (code) {
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        throw Error(ErrorNumber::DatabaseExists, {}, "(" + name + ")");
    case ERROR_FILE_NOT_FOUND:
        throw Error(ErrorNumber::FileNotFound, {name});
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        throw Error(ErrorNumber::FileInUse, {name});
    case ERROR_ACCESS_DENIED: {
        std::error_code ignored;
        if (fs::is_directory(path, ignored))
            throw Error(ErrorNumber::InvalidPath, {name});
        throw Error(ErrorNumber::ReadOnly, {}, "(" + name + ")");
    }
    case ERROR_WRITE_PROTECT:
        throw Error(ErrorNumber::ReadOnly, {}, "(" + name + ")");
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_DIRECTORY:
    case ERROR_FILENAME_EXCED_RANGE:
        throw Error(ErrorNumber::InvalidPath, {name});
    default:
        ThrowIo(name, code);
    }
}

OVERLAPPED PlaceOf(std::uint64_t offset)
{
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return place;
}

class WindowsFile final : public File {
public:
    WindowsFile(HANDLE file, std::string name, bool writable) : file_(file), name_(std::move(name)), writable_(writable)
    {
    }
    /// The locks first: the system takes its time with those of a file that is merely closed.
    ~WindowsFile() override
    {
        for (const auto& [offset, size] : locks_) {
            OVERLAPPED place = PlaceOf(offset);
            UnlockFileEx(file_, 0, static_cast<DWORD>(size), static_cast<DWORD>(size >> 32), &place);
        }
        CloseHandle(file_);
    }
    WindowsFile(const WindowsFile&) = delete;
    WindowsFile& operator=(const WindowsFile&) = delete;

    void ReadAt(std::uint64_t offset, MutableBytes out) override
    {
        while (!out.empty()) {
            OVERLAPPED place = PlaceOf(offset);
            DWORD n = 0;
            const BOOL good = ReadFile(file_, out.data(), AtOnce(out.size()), &n, &place);
            if (const DWORD code = good ? ERROR_SUCCESS : GetLastError(); !good && code != ERROR_HANDLE_EOF)
                ThrowIo(name_, code);
            if (n == 0)
                throw Error(ErrorNumber::DiskError, {}, "(" + name_ + " ends at byte " + std::to_string(offset) + ")");
            offset += n;
            out = out.subspan(n);
        }
    }

    void WriteAt(std::uint64_t offset, ByteSpan bytes) override
    {
        while (!bytes.empty()) {
            OVERLAPPED place = PlaceOf(offset);
            DWORD n = 0;
            if (!WriteFile(file_, bytes.data(), AtOnce(bytes.size()), &n, &place))
                ThrowIo(name_, GetLastError());
            if (n == 0)
                ThrowIo(name_, ERROR_DISK_FULL);
            offset += n;
            bytes = bytes.subspan(n);
        }
    }

    std::uint64_t Size() override
    {
        LARGE_INTEGER size{};
        if (!GetFileSizeEx(file_, &size))
            ThrowIo(name_, GetLastError());
        return static_cast<std::uint64_t>(size.QuadPart);
    }

    void Truncate(std::uint64_t size) override
    {
        FILE_END_OF_FILE_INFO end{};
        end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
        if (!SetFileInformationByHandle(file_, FileEndOfFileInfo, &end, sizeof end))
            ThrowIo(name_, GetLastError());
    }

    void Sync() override
    {
        if (!FlushFileBuffers(file_))
            ThrowIo(name_, GetLastError());
    }

    [[nodiscard]] bool TryLock(std::uint64_t offset, std::uint64_t size) override
    {
        constexpr std::uint64_t kFarthest = 0x7FFF'FFFF'FFFF'FFFF;
        if (size == kToTheEnd)
            size = kFarthest - offset;
        OVERLAPPED place = PlaceOf(offset);
        const DWORD kind = LOCKFILE_FAIL_IMMEDIATELY | (writable_ ? LOCKFILE_EXCLUSIVE_LOCK : 0);
        if (LockFileEx(file_, kind, 0, static_cast<DWORD>(size), static_cast<DWORD>(size >> 32), &place)) {
            locks_.emplace_back(offset, size);
            return true;
        }
        const DWORD code = GetLastError();
        return code != ERROR_LOCK_VIOLATION && code != ERROR_IO_PENDING; // a file system without locks lets everyone in
    }

    [[nodiscard]] std::string Name() const override { return name_; }

private:
    static DWORD AtOnce(std::size_t bytes)
    {
        constexpr std::size_t kMost = std::size_t{1} << 30;
        return static_cast<DWORD>(std::min(bytes, kMost));
    }

    HANDLE file_;
    std::string name_;
    bool writable_;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> locks_;
};

class WindowsFileSystem final : public FileSystem {
public:
    std::unique_ptr<File> Open(const fs::path& path, OpenMode mode) override
    {
        const bool writable = mode != OpenMode::ReadOnly;
        const HANDLE file =
            CreateFileW(path.c_str(), GENERIC_READ | (writable ? GENERIC_WRITE : 0), kShareAll, nullptr,
                        mode == OpenMode::CreateNew ? CREATE_NEW : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE)
            ThrowOpen(path, GetLastError());
        auto opened = std::make_unique<WindowsFile>(file, TextOf(path), writable);
        if (GetFileType(file) != FILE_TYPE_DISK)
            throw Error(ErrorNumber::InvalidPath, {TextOf(path)});
        return opened;
    }

    std::unique_ptr<File> OpenTemporary() override
    {
        std::array<wchar_t, MAX_PATH + 1> folder{};
        std::array<wchar_t, MAX_PATH> name{};
        if (GetTempPathW(static_cast<DWORD>(folder.size()), folder.data()) == 0 ||
            GetTempFileNameW(folder.data(), L"vel", 0, name.data()) == 0)
            ThrowIo("temporary file", GetLastError());
        const HANDLE file = CreateFileW(name.data(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                        FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (file == INVALID_HANDLE_VALUE)
            ThrowIo(TextOf(name.data()), GetLastError());
        return std::make_unique<WindowsFile>(file, TextOf(name.data()), true);
    }

    bool Exists(const fs::path& path) override { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

    void Remove(const fs::path& path) override
    {
        if (!DeleteFileW(path.c_str()))
            ThrowIo(TextOf(path), GetLastError());
    }

    /// What looks through every new file, a virus scanner or an index, may have one of the two open for a moment.
    void Rename(const fs::path& from, const fs::path& to) override
    {
        constexpr int kTries = 20;
        constexpr DWORD kPauseMilliseconds = 100;
        for (int tries = 1; !MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
             ++tries) {
            const DWORD code = GetLastError();
            if ((code != ERROR_ACCESS_DENIED && code != ERROR_SHARING_VIOLATION) || tries == kTries)
                ThrowIo(TextOf(to), code);
            Sleep(kPauseMilliseconds);
        }
    }

    /// Nothing to ask for: renaming writes through, and the file system's own journal keeps the rest.
    void SyncFolder(const fs::path&) override {}

    void CopyRights(const fs::path& from, const fs::path& to) override
    {
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        PACL rights = nullptr;
        std::wstring name = from.wstring();
        if (GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &rights,
                                  nullptr, &descriptor) != ERROR_SUCCESS)
            return;
        SECURITY_DESCRIPTOR_CONTROL control = 0;
        DWORD revision = 0;
        GetSecurityDescriptorControl(descriptor, &control, &revision);
        // What the old file had from its folder the new one has already.
        const DWORD own = (control & SE_DACL_PROTECTED) != 0 ? PROTECTED_DACL_SECURITY_INFORMATION
                                                             : UNPROTECTED_DACL_SECURITY_INFORMATION;
        name = to.wstring();
        SetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION | own, nullptr, nullptr, rights,
                              nullptr);
        LocalFree(descriptor);
    }

    fs::path Resolve(const fs::path& path) override
    {
        const DWORD attributes = GetFileAttributesW(path.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
            return path;
        const HANDLE file =
            CreateFileW(path.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
        if (file == INVALID_HANDLE_VALUE)
            return path;
        std::wstring target(GetFinalPathNameByHandleW(file, nullptr, 0, 0), L'\0');
        target.resize(GetFinalPathNameByHandleW(file, target.data(), static_cast<DWORD>(target.size()), 0));
        CloseHandle(file);
        return target.empty() ? path : fs::path(target);
    }

    bool MayReplace(const fs::path& file) override
    {
        const HANDLE opened = CreateFileW(file.c_str(), DELETE, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
        if (opened == INVALID_HANDLE_VALUE)
            return false;
        CloseHandle(opened);
        return MayMake(file);
    }

    /// Rights of a folder are more than its attributes tell: a file that goes again with its handle finds out.
    bool MayMake(const fs::path& file) override
    {
        fs::path probe = file;
        probe += ".velmora-probe" + std::to_string(GetCurrentProcessId());
        const HANDLE made = CreateFileW(probe.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                        FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (made == INVALID_HANDLE_VALUE)
            return false;
        CloseHandle(made);
        return true;
    }

    std::string ComputerName() override
    {
        std::array<wchar_t, MAX_COMPUTERNAME_LENGTH + 1> name{};
        auto size = static_cast<DWORD>(name.size());
        return GetComputerNameW(name.data(), &size) ? TextOf(name.data()) : std::string();
    }
};

} // namespace

DateTime FileSystem::LocalTime()
{
    using namespace std::chrono;
    SYSTEMTIME local{};
    GetLocalTime(&local);
    return DateOf(year{local.wYear} / month{local.wMonth} / day{local.wDay},
                  hours{local.wHour} + minutes{local.wMinute} + seconds{local.wSecond} +
                      milliseconds{local.wMilliseconds});
}

FileSystem& RealFileSystem() noexcept
{
    static WindowsFileSystem system;
    return system;
}

} // namespace jet
