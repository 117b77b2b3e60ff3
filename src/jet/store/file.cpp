#include "jet/store/file.h"

#include "jet/error.h"

#include <cerrno>
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
    const bool full = code == ENOSPC || code == EDQUOT || code == EFBIG;
    throw Error(full ? ErrorNumber::DiskFull : ErrorNumber::DiskError, {},
                "(" + name + ": " + SystemMessage(code) + ")");
}

[[noreturn]] void ThrowOpen(const std::string& name, OpenMode mode, int code)
{
    switch (code) {
    case EEXIST:
        throw Error(ErrorNumber::DatabaseExists, {}, "(" + name + ")");
    case ENOENT:
        throw Error(mode == OpenMode::CreateNew ? ErrorNumber::InvalidPath : ErrorNumber::FileNotFound, {name});
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

/// Keeps other processes out for as long as the descriptor is open. File systems without locks let everyone in.
void LockWhole(int descriptor, const std::string& name)
{
#ifdef F_OFD_SETLK
    struct flock whole {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    const int failed = ::fcntl(descriptor, F_OFD_SETLK, &whole);
#else
    const int failed = ::flock(descriptor, LOCK_EX | LOCK_NB);
#endif
    if (failed && (errno == EAGAIN || errno == EACCES || errno == EWOULDBLOCK))
        throw Error(ErrorNumber::FileInUse, {name});
}

class PosixFile final : public File {
public:
    PosixFile(int descriptor, std::string name) : descriptor_(descriptor), name_(std::move(name)) {}
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

    void Sync() override
    {
        if (::fdatasync(descriptor_) != 0)
            ThrowIo(name_, errno);
    }

    [[nodiscard]] std::string Name() const override { return name_; }

private:
    int descriptor_;
    std::string name_;
};

} // namespace

std::unique_ptr<File> OpenFile(const std::filesystem::path& path, OpenMode mode)
{
    const int flags = O_RDWR | O_CLOEXEC | (mode == OpenMode::CreateNew ? O_CREAT | O_EXCL : 0);
    constexpr mode_t kPermissions = 0666; // the process's umask takes away what it does not allow
    const int descriptor = ::open(path.c_str(), flags, kPermissions);
    if (descriptor < 0)
        ThrowOpen(path.string(), mode, errno);
    auto file = std::make_unique<PosixFile>(descriptor, path.string());

    struct stat status {};
    if (::fstat(descriptor, &status) != 0)
        ThrowIo(path.string(), errno);
    if (!S_ISREG(status.st_mode))
        throw Error(ErrorNumber::InvalidPath, {path.string()});
    LockWhole(descriptor, path.string());
    return file;
}

} // namespace jet
