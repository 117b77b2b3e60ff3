#include "jet/store/file_system.h"

#include "jet/base/date_text.h"
#include "jet/base/error.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace jet {

namespace {

std::string SystemMessage(int code)
{
    return std::error_code(code, std::generic_category()).message();
}

[[noreturn]] void ThrowIo(const std::string& name, int code)
{
    // A quota or a limit on the size of files leaves as little room as a full disk, and the same can be done about it.
    const bool full = code == ENOSPC || code == EDQUOT || code == EFBIG;
    throw Error(full ? ErrorNumber::DiskFull : ErrorNumber::DiskError, {},
                "(" + name + ": " + SystemMessage(code) + ")");
}

std::filesystem::path FolderOf(const std::filesystem::path& file)
{
    const std::filesystem::path folder = file.parent_path();
    return folder.empty() ? std::filesystem::path(".") : folder;
}

[[noreturn]] void ThrowOpen(const std::filesystem::path& path, int code)
{
    const std::string name = path.string();
    switch (code) {
    case EEXIST:
        throw Error(ErrorNumber::DatabaseExists, {}, "(" + name + ")");
    case ENOENT: {
        // The system has one answer for a file that is not there and for a folder that is not; people ask for different
        // things.
        std::error_code ignored;
        const bool hasFolder = std::filesystem::is_directory(FolderOf(path), ignored);
        throw Error(hasFolder ? ErrorNumber::FileNotFound : ErrorNumber::InvalidPath, {name});
    }
    case EACCES:
    case EPERM:
    case EROFS:
        throw Error(ErrorNumber::ReadOnly, {}, "(" + name + ")");
    case ENOTDIR:
    case EISDIR:
    case ENAMETOOLONG:
    case ELOOP:
        throw Error(ErrorNumber::InvalidPath, {name});
    default:
        ThrowIo(name, code);
    }
}

/// fcntl and flock have each their own way to say so.
bool IsTaken(int code)
{
    return code == EAGAIN || code == EACCES || code == EWOULDBLOCK;
}

class PosixFile final : public File {
public:
    PosixFile(int descriptor, std::string name, bool writable)
        : descriptor_(descriptor), name_(std::move(name)), writable_(writable)
    {
    }
    ~PosixFile() override { ::close(descriptor_); }
    PosixFile(const PosixFile&) = delete;
    PosixFile& operator=(const PosixFile&) = delete;

    void ReadAt(std::uint64_t offset, MutableBytes out) override
    {
        while (!out.empty()) {
            const ssize_t n = ::pread(descriptor_, out.data(), out.size(), static_cast<off_t>(offset));
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0)
                ThrowIo(name_, errno);
            if (n == 0)
                throw Error(ErrorNumber::DiskError, {}, "(" + name_ + " ends at byte " + std::to_string(offset) + ")");
            offset += static_cast<std::uint64_t>(n);
            out = out.subspan(static_cast<std::size_t>(n));
        }
    }

    /// A signal or a nearly full disk may let a write end early; what is left is tried again, and the disk then says
    /// why.
    void WriteAt(std::uint64_t offset, ByteSpan bytes) override
    {
        while (!bytes.empty()) {
            const ssize_t n = ::pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0)
                ThrowIo(name_, errno);
            offset += static_cast<std::uint64_t>(n);
            bytes = bytes.subspan(static_cast<std::size_t>(n));
        }
    }

    std::uint64_t Size() override
    {
        struct stat status {};
        if (::fstat(descriptor_, &status) != 0)
            ThrowIo(name_, errno);
        return static_cast<std::uint64_t>(status.st_size);
    }

    void Truncate(std::uint64_t size) override
    {
        if (::ftruncate(descriptor_, static_cast<off_t>(size)) != 0)
            ThrowIo(name_, errno);
    }

    /// The data and what is needed to read them back, which is all that a commit promises; times may come later.
    void Sync() override
    {
        if (::fdatasync(descriptor_) != 0)
            ThrowIo(name_, errno);
    }

    void BeginToWrite(std::uint64_t offset, std::uint64_t size) override
    {
        // Where it cannot be done, or fails, Sync() does all of it and says why.
        static_cast<void>(::sync_file_range(descriptor_, static_cast<off64_t>(offset), static_cast<off64_t>(size),
                                            SYNC_FILE_RANGE_WRITE));
    }

    [[nodiscard]] bool TryLock(std::uint64_t offset, std::uint64_t size) override
    {
        // Locks of the open file, not of the process: those would be gone with the first descriptor closed.
        struct flock range {};
        range.l_type = static_cast<short>(writable_ ? F_WRLCK : F_RDLCK);
        range.l_whence = SEEK_SET;
        range.l_start = static_cast<off_t>(offset);
        range.l_len = static_cast<off_t>(size);
        if (::fcntl(descriptor_, F_OFD_SETLK, &range) == 0)
            return true;
        if (IsTaken(errno))
            return false;
        // Some file systems know only locks of whole files; where there are none at all everyone is let in.
        const bool whole = offset == 0 && size == kToTheEnd;
        return !whole || ::flock(descriptor_, (writable_ ? LOCK_EX : LOCK_SH) | LOCK_NB) == 0 || !IsTaken(errno);
    }

    [[nodiscard]] std::string Name() const override { return name_; }

private:
    int descriptor_;
    std::string name_;
    bool writable_;
};

class PosixFileSystem final : public FileSystem {
public:
    std::unique_ptr<File> Open(const std::filesystem::path& path, OpenMode mode) override
    {
        const int access = mode == OpenMode::ReadOnly ? O_RDONLY : O_RDWR;
        const int creation = mode == OpenMode::CreateNew ? O_CREAT | O_EXCL : 0;
        constexpr mode_t kPermissions = 0666; // the process's umask takes away what it does not allow
        // Without O_NONBLOCK, opening a pipe would wait for somebody at its other end.
        const int descriptor = ::open(path.c_str(), access | creation | O_CLOEXEC | O_NONBLOCK, kPermissions);
        if (descriptor < 0)
            ThrowOpen(path, errno);
        auto file = std::make_unique<PosixFile>(descriptor, path.string(), mode != OpenMode::ReadOnly);

        struct stat status {};
        if (::fstat(descriptor, &status) != 0)
            ThrowIo(path.string(), errno);
        if (!S_ISREG(status.st_mode))
            throw Error(ErrorNumber::InvalidPath, {path.string()});
        return file;
    }

    /// Its name is gone at once, so nothing is left behind whatever ends the process.
    std::unique_ptr<File> OpenTemporary() override
    {
        std::string name = (std::filesystem::temp_directory_path() / "velmora-XXXXXX").string();
        const int descriptor = ::mkostemp(name.data(), O_CLOEXEC);
        if (descriptor < 0)
            ThrowIo(name, errno);
        auto file = std::make_unique<PosixFile>(descriptor, name, true);
        ::unlink(name.c_str());
        return file;
    }

    /// A symbolic link counts, even one that leads nowhere: its name is taken.
    bool Exists(const std::filesystem::path& path) override
    {
        struct stat status {};
        return ::lstat(path.c_str(), &status) == 0;
    }

    void Remove(const std::filesystem::path& path) override
    {
        if (::unlink(path.c_str()) != 0)
            ThrowIo(path.string(), errno);
    }

    void Rename(const std::filesystem::path& from, const std::filesystem::path& to) override
    {
        if (::rename(from.c_str(), to.c_str()) != 0)
            ThrowIo(to.string(), errno);
    }

    void SyncFolder(const std::filesystem::path& file) override
    {
        const std::string folder = FolderOf(file).string();
        const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        // A folder that may be written but not read cannot be synced, and some file systems cannot do it at all.
        if (descriptor < 0)
            return;
        const int failure = ::fsync(descriptor) == 0 ? 0 : errno;
        ::close(descriptor);
        if (failure == EIO || failure == ENOSPC || failure == EDQUOT)
            ThrowIo(folder, failure);
    }

    void CopyRights(const std::filesystem::path& from, const std::filesystem::path& to) override
    {
        struct stat status {};
        if (::stat(from.c_str(), &status) != 0)
            return;
        // The group first: a change of owner may take rights away.
        static_cast<void>(::chown(to.c_str(), static_cast<uid_t>(-1), status.st_gid) == 0);
        constexpr mode_t kRights = 0777;
        static_cast<void>(::chmod(to.c_str(), status.st_mode & kRights) == 0);
    }

    std::filesystem::path Resolve(const std::filesystem::path& path) override
    {
        std::filesystem::path resolved = path;
        constexpr int kMaxLinks = 40; // as the kernel has it; what goes round fails when it is opened
        std::error_code error;
        for (int i = 0; i < kMaxLinks && std::filesystem::is_symlink(resolved, error); ++i) {
            const std::filesystem::path target = std::filesystem::read_symlink(resolved, error);
            if (error)
                break;
            resolved = target.is_absolute() ? target : resolved.parent_path() / target;
        }
        return resolved;
    }

    bool MayMake(const std::filesystem::path& file) override
    {
        return ::faccessat(AT_FDCWD, FolderOf(file).c_str(), W_OK | X_OK, AT_EACCESS) == 0;
    }

    bool MayReplace(const std::filesystem::path& file) override
    {
        const std::filesystem::path folder = FolderOf(file);
        struct stat entry {};
        struct stat parent {};
        if (::stat(folder.c_str(), &parent) != 0 || ::lstat(file.c_str(), &entry) != 0 || !MayMake(file))
            return false;
        // In a sticky folder, such as the system's for temporary files, only the file's owner may.
        const uid_t user = ::geteuid();
        return !(parent.st_mode & S_ISVTX) || user == 0 || user == entry.st_uid || user == parent.st_uid;
    }

    std::string ComputerName() override
    {
        std::array<char, 256> name{};
        return ::gethostname(name.data(), name.size() - 1) == 0 ? std::string(name.data()) : std::string();
    }
};

} // namespace

DateTime FileSystem::LocalTime()
{
    using namespace std::chrono;
    const auto now = floor<milliseconds>(system_clock::now());
    const std::time_t seconds = system_clock::to_time_t(floor<std::chrono::seconds>(now));
    std::tm local{};
    ::localtime_r(&seconds, &local);
    // Put together from the local fields, not by an offset from universal time, which changes with the season.
    return DateOf(year{local.tm_year + 1900} / month{static_cast<unsigned>(local.tm_mon + 1)} /
                      day{static_cast<unsigned>(local.tm_mday)},
                  hours{local.tm_hour} + minutes{local.tm_min} + std::chrono::seconds{local.tm_sec} +
                      now.time_since_epoch() % std::chrono::seconds{1});
}

FileSystem& RealFileSystem() noexcept
{
    static PosixFileSystem system;
    return system;
}

} // namespace jet
