#pragma once

#include "jet/base/format.h"
#include "jet/store/file_system.h"
#include "jet/store/free_map.h"
#include "jet/store/header_page.h"
#include "jet/store/page_cache.h"

#include <cstddef>
#include <exception>
#include <memory>
#include <utility>

namespace jet {

/// The file as pages: a cache of fixed size, allocation through the global map of free pages, commit.
///
/// What happens between two commits is one unit. With a journal, what came after the last one is undone when the pager
/// goes; without one (a file that is being made, a test) it stays half written. Not for more than one thread.
/// References to pages must not outlive it.
class Pager {
public:
    static constexpr std::size_t kDefaultCacheBytes = std::size_t{64} << 20;

    /// A new database file of two pages: the header (creation date as given) and the global map.
    struct NewFile {
        JetVersion version;
        double creationDate; ///< days since 1899-12-30
    };
    [[nodiscard]] static std::unique_ptr<Pager> Create(std::unique_ptr<File> file, const NewFile& what,
                                                       std::size_t cacheBytes = kDefaultCacheBytes,
                                                       std::unique_ptr<Journal> journal = nullptr);
    /// Opens an existing file; the format is read from page 0. Throws Error: not a database, encoded, with a password,
    /// a later format, not whole pages.
    [[nodiscard]] static std::unique_ptr<Pager> Open(std::unique_ptr<File> file,
                                                     std::size_t cacheBytes = kDefaultCacheBytes,
                                                     std::unique_ptr<Journal> journal = nullptr);
    ~Pager();
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    [[nodiscard]] const Format& GetFormat() const noexcept { return *format_; }
    /// Where temporary files, time and chance come from.
    [[nodiscard]] FileSystem& System() const noexcept { return journal_ ? journal_->System() : RealFileSystem(); }
    [[nodiscard]] const DatabaseHeader& Header() const noexcept { return header_; }
    [[nodiscard]] PageNumber PageCount() const noexcept { return cache_.PageCount(); }

    /// Throws CorruptPage when `page` lies outside the file.
    [[nodiscard]] PageRef Read(PageNumber page) { return cache_.Read(page); }
    /// The same, of the given type: throws CorruptPage when it is another.
    [[nodiscard]] PageRef Read(PageNumber page, PageType type)
    {
        PageRef ref = cache_.Read(page);
        if (ref.Type() != type)
            ThrowWrongType(ref, type);
        return ref;
    }
    [[nodiscard]] MutablePageRef Write(PageNumber page) { return cache_.Write(page); }
    /// The page, when it can be changed at once, without the disk; else none.
    [[nodiscard]] PageAtHand AtHand(PageNumber page) const noexcept { return cache_.AtHand(page); }
    /// A page that was free, now all zero. The file grows when none is. Throws DatabaseFull at 1 GB or 2 GB; nothing
    /// has changed then.
    [[nodiscard]] MutablePageRef Allocate();
    /// Gives a page back, to be used again at once. Its content stays; nobody may hold it. Throws CorruptPage when it
    /// is no page that can be given back (outside the file, free already).
    void Free(PageNumber page);
    /// Is the page in the global map of free pages?
    [[nodiscard]] bool IsFree(PageNumber page) { return freeMap_.Contains(page); }

    // A savepoint, one at a time, on the way from one commit to the next; see PageCache.

    void SetSavepoint() { cache_.SetSavepoint(); }
    void ReleaseSavepoint() noexcept { cache_.ReleaseSavepoint(); }
    /// Makes everything in the file what it was at the savepoint, which is gone then. False when nothing was changed;
    /// else whoever has kept something of what pages hold reads it anew. When the disk prevents it, that counts as
    /// Fail().
    bool RollBack() noexcept;

    /// Everything changed so far reaches the disk, as one unit. Throws what Fail() was given. When it throws anything
    /// else, Fail() is to be called: all that is left is to go back to the last commit.
    void Commit();
    /// What has changed since the last commit is not whole: it can no longer be committed.
    void Fail(std::exception_ptr reason) noexcept { cache_.Fail(std::move(reason)); }
    /// Throws what Fail() was first given.
    void ThrowIfFailed() const { cache_.ThrowIfFailed(); }

private:
    Pager(std::unique_ptr<File> file, const DatabaseHeader& header, PageNumber pageCount, std::size_t cacheBytes,
          std::unique_ptr<Journal> journal);
    [[noreturn]] static void ThrowWrongType(const PageRef& page, PageType wanted);

    std::unique_ptr<File> file_;
    std::unique_ptr<Journal> journal_;
    DatabaseHeader header_;
    const Format* format_;
    PageCache cache_;
    FreeMap freeMap_;
    PageRef headerPin_; ///< page 0 stays in memory: it is written last in a commit, and never before
};

} // namespace jet
