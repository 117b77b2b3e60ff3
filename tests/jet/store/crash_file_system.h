#pragma once

#include "jet/base/error.h"
#include "jet/store/file_system.h"

#include <array>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace jet::testing {

/// What a crash takes away of that which was not yet synced.
enum class Loss {
    Nothing, ///< the process was killed: the system still writes everything
    Some,    ///< the power failed: of each write, cut into sectors of 512 bytes, a random part arrives, in any order
    All,
};

/// A file system in memory that loses what was not synced, stops or fails on demand. Reproducible from its seed.
///
///     CrashFileSystem fs(seed);
///     auto connection = Connection::Create("a.mdb", JetVersion::Jet4, Existing::Refuse, fs);
///     connection->Commit();
///     fs.StopAt(fs.Operations() + 7);             // the machine stops before the seventh operation from here
///     try { ...connection->Commit(); } catch (const Error&) {}
///     fs.Crash(connection);                       // the machine starts again; `connection` is gone
///     connection = Connection::Open("a.mdb", fs);
///     fs.CopyOut("a.mdb", folder / "copy.mdb");   // for the checker
///
/// Content that is all zero takes no memory. Folders need not be made. Files may be used by several threads at a time.
class CrashFileSystem : public FileSystem {
public:
    explicit CrashFileSystem(unsigned seed = 0) : random_(seed) {}

    // What may go wrong. An operation is whatever changes the disk: a write, truncation, sync, creation, removal,
    // renaming. They are counted from 1.

    [[nodiscard]] std::uint64_t Operations() const
    {
        const Guarded guarded(mutex_);
        return operations_;
    }
    /// Operation `number` and all that come later, reads too, throw DiskError and do nothing, until Crash().
    void StopAt(std::uint64_t number)
    {
        const Guarded guarded(mutex_);
        stopAt_ = number;
    }
    void PowerOff() { StopAt(Operations()); }
    [[nodiscard]] bool IsOff() const
    {
        const Guarded guarded(mutex_);
        return operations_ >= stopAt_;
    }
    /// The operations from `number` on throw `error` and do nothing: so many, or all until this is called again.
    void FailAt(std::uint64_t number, ErrorNumber error, std::uint64_t count = 1)
    {
        const Guarded guarded(mutex_);
        failAt_ = number;
        failures_ = count;
        failure_ = error;
    }
    /// No more than so many bytes fit, all files together; what is more throws DiskFull.
    void SetCapacity(std::uint64_t bytes)
    {
        const Guarded guarded(mutex_);
        capacity_ = bytes;
    }
    /// From now on files are opened in such a way that a thread writes what need not be written at once.
    void SetWritesBehind() { writesBehind_ = true; }

    /// The power goes off, `user` with its files is destroyed, and the machine starts again.
    template <typename User>
    void Crash(std::unique_ptr<User>& user, Loss loss = Loss::Some)
    {
        PowerOff();
        user.reset();
        Crash(loss);
    }
    /// The same when all files have been closed, while the power was off if they were not to be closed in good order.
    void Crash(Loss loss = Loss::Some);

    // Looking at the disk as programs see it.

    [[nodiscard]] std::vector<std::filesystem::path> Files() const;
    [[nodiscard]] Bytes Content(const std::filesystem::path& path) const;
    void Put(const std::filesystem::path& path, ByteSpan content); ///< synced
    void CopyOut(const std::filesystem::path& path, const std::filesystem::path& realPath) const;

    // FileSystem.

    [[nodiscard]] std::unique_ptr<File> Open(const std::filesystem::path& path, OpenMode mode) override;
    [[nodiscard]] std::unique_ptr<File> OpenTemporary() override;
    [[nodiscard]] bool Exists(const std::filesystem::path& path) override
    {
        const Guarded guarded(mutex_);
        return entries_.contains(path);
    }
    void Remove(const std::filesystem::path& path) override;
    void Rename(const std::filesystem::path& from, const std::filesystem::path& to) override;
    void SyncFolder(const std::filesystem::path& file) override;
    void CopyRights(const std::filesystem::path& /*from*/, const std::filesystem::path& /*to*/) override {}
    [[nodiscard]] std::filesystem::path Resolve(const std::filesystem::path& path) override { return path; }
    [[nodiscard]] bool MayReplace(const std::filesystem::path& /*file*/) override { return true; }

private:
    class Handle;
    using Guarded = std::lock_guard<std::recursive_mutex>;
    /// Bytes in chunks; those that are not there are zero.
    struct Extent {
        static constexpr std::uint64_t kChunk = 4096;
        std::map<std::uint64_t, std::array<Byte, kChunk>> chunks;
        std::uint64_t size = 0;

        void Read(std::uint64_t offset, MutableBytes out) const;
        void Write(std::uint64_t offset, ByteSpan bytes);
        void Resize(std::uint64_t newSize);
    };
    /// A write, or with `isResize` a new size.
    struct Change {
        bool isResize;
        std::uint64_t offset; ///< or the size
        Bytes bytes;
    };
    struct Lock {
        const Handle* owner;
        std::uint64_t begin, end;
        bool shared;
    };
    struct Node {
        Extent now;
        Extent synced;
        std::vector<Change> unsynced;
        std::vector<Lock> locks;
    };
    using Entries = std::map<std::filesystem::path, std::shared_ptr<Node>>;
    /// What one step does to the folder: names with their new files, nullptr = none any more.
    using EntryChange = std::vector<std::pair<std::filesystem::path, std::shared_ptr<Node>>>;

    void Count();
    void CheckPower() const;
    void CheckRoom(const Node& node, std::uint64_t newSize) const;
    void ChangeEntries(const EntryChange& change);
    static void Apply(Entries& entries, const EntryChange& change);
    void LoseSome(Node& node);
    [[nodiscard]] const std::shared_ptr<Node>& Find(const std::filesystem::path& path) const;

    mutable std::recursive_mutex mutex_; ///< of all that follows
    std::mt19937 random_;
    Entries entries_;
    Entries syncedEntries_;
    std::vector<EntryChange> unsyncedEntries_;
    std::size_t openFiles_ = 0;
    std::uint64_t operations_ = 0;
    std::uint64_t stopAt_ = ~std::uint64_t{0};
    std::uint64_t failAt_ = 0;
    std::uint64_t failures_ = 0;
    std::uint64_t capacity_ = ~std::uint64_t{0};
    ErrorNumber failure_ = ErrorNumber::DiskError;
    bool writesBehind_ = false;
};

} // namespace jet::testing
