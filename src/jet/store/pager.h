#pragma once

#include "jet/base/format.h"
#include "jet/store/file.h"

#include <cstddef>
#include <memory>

namespace jet {

class Pager;
struct Frame; ///< one page in memory; what it holds is the pager's business

/// A page that stays in memory as long as this object lives. Cheap to move; copies share the pin.
class PageRef {
public:
    PageRef() = default;
    PageRef(const PageRef& other) noexcept;
    PageRef(PageRef&& other) noexcept;
    PageRef& operator=(PageRef other) noexcept;
    ~PageRef();

    [[nodiscard]] explicit operator bool() const noexcept { return frame_ != nullptr; }
    [[nodiscard]] PageNumber Number() const noexcept;
    [[nodiscard]] ByteSpan Bytes() const noexcept;   ///< one whole page
    [[nodiscard]] PageType Type() const noexcept { return static_cast<PageType>(Bytes()[0]); }

protected:
    friend class Pager;
    explicit PageRef(Frame* frame) noexcept;
    Frame* frame_ = nullptr;
};

/// A page that may be changed: it is written at the next commit, or before when memory runs short.
class MutablePageRef : public PageRef {
public:
    MutablePageRef() = default;
    [[nodiscard]] MutableBytes Data() const noexcept;

private:
    friend class Pager;
    using PageRef::PageRef;
};

/// The file as pages: a cache of fixed size, allocation through the global map of free pages, commit.
///
/// What happens between two commits is one unit: the file never stays with half of it (how: see pager.cpp). Not for more
/// than one thread.
class Pager {
public:
    static constexpr std::size_t kDefaultCacheBytes = std::size_t{64} << 20;

    /// A new database file of two pages: the header (creation date and build as given) and the global map.
    struct NewFile {
        JetVersion version;
        double creationDate;     ///< days since 1899-12-30
        std::uint32_t build;     ///< of the creating engine
    };
    [[nodiscard]] static std::unique_ptr<Pager> Create(std::unique_ptr<File> file, const NewFile& what,
                                                       std::size_t cacheBytes = kDefaultCacheBytes);
    /// Opens an existing file; the format is read from page 0. Throws Error: not a database, encoded, with a password, a
    /// later format, not whole pages.
    [[nodiscard]] static std::unique_ptr<Pager> Open(std::unique_ptr<File> file,
                                                     std::size_t cacheBytes = kDefaultCacheBytes);
    ~Pager();
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    [[nodiscard]] const Format& GetFormat() const noexcept;
    [[nodiscard]] PageNumber PageCount() const noexcept;

    /// Throws CorruptPage when `page` lies outside the file.
    [[nodiscard]] PageRef Read(PageNumber page);
    /// The same, of the given type: throws CorruptPage when it is another.
    [[nodiscard]] PageRef Read(PageNumber page, PageType type);
    [[nodiscard]] MutablePageRef Write(PageNumber page);
    /// A page that was free, now all zero. The file grows when none is. Throws DatabaseFull at 1 GB or 2 GB.
    [[nodiscard]] MutablePageRef Allocate();
    /// Gives a page back. Its content stays; nobody may hold it.
    void Free(PageNumber page);

    /// Everything changed so far reaches the disk, as one unit.
    void Commit();

private:
    friend class PageRef;
    class Impl;
    explicit Pager(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

} // namespace jet
