#pragma once

#include "jet/base/error.h"
#include "jet/base/format.h"
#include "jet/store/file_system.h"
#include "jet/store/journal.h"
#include "jet/store/page_memory.h"
#include "jet/store/undo_log.h"

#include <cassert>
#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <utility>
#include <vector>

namespace jet {

struct Frame;

/// The frames that were changed since the last commit, whether they have been written since or not.
struct ChangedFrames {
    Frame* first = nullptr;
};

/// One page in memory.
struct alignas(kCacheLine) Frame {
    Byte* data = nullptr;    ///< lent by the cache
    UndoLog* undo = nullptr; ///< told of what is about to be changed
    std::size_t size = 0;
    PageNumber number = 0;
    std::uint32_t pins = 0;
    bool dirty = false;    ///< differs from the file
    bool recent = false;   ///< used since the eviction's hand last passed
    bool isListed = false; ///< in `changed`, where `next` is the one behind it
    Frame* next = nullptr;
    ChangedFrames* changed = nullptr;

    void Change() noexcept
    {
        dirty = true;
        if (isListed)
            return;
        isListed = true;
        next = std::exchange(changed->first, this);
    }
    /// The page's first byte. What lies in `ranges` may be changed, and no more. Throws DiskFull, DiskError.
    template <typename... Ranges>
    [[nodiscard]] Byte* Data(const Ranges&... ranges)
    {
        assert(((ranges.offset + ranges.size <= size) && ...));
        undo->Note(number, data, dirty, ranges...); // invariant 5
        Change();
        return data;
    }
};

/// A page in memory, found once for a change that looks at several pages before it touches the first. Nobody holds it:
/// it is good until another page is read or made.
class PageAtHand {
public:
    PageAtHand() = default;
    [[nodiscard]] explicit operator bool() const noexcept { return frame_ != nullptr; }
    [[nodiscard]] PageNumber Number() const noexcept { return frame_->number; }
    [[nodiscard]] ByteSpan Bytes() const noexcept { return {frame_->data, frame_->size}; } ///< one whole page
    /// The page's first byte. What lies in `ranges` may be changed, and no more. Fails only while there is a savepoint.
    template <typename... Ranges>
    [[nodiscard]] Byte* Data(const Ranges&... ranges) const
    {
        return frame_->Data(ranges...);
    }

private:
    friend class PageCache;
    friend class MutablePageRef;
    explicit PageAtHand(Frame* frame) noexcept : frame_(frame) {}
    Frame* frame_ = nullptr;
};

/// A page that stays in memory as long as this object lives. Cheap to move; copies share the pin. Must not outlive its
/// cache.
class PageRef {
public:
    PageRef() = default;
    PageRef(const PageRef& other) noexcept : PageRef(other.frame_) {}
    PageRef(PageRef&& other) noexcept : frame_(std::exchange(other.frame_, nullptr)) {}
    PageRef& operator=(PageRef other) noexcept
    {
        std::swap(frame_, other.frame_);
        return *this;
    }
    ~PageRef()
    {
        if (frame_ != nullptr)
            --frame_->pins;
    }

    [[nodiscard]] explicit operator bool() const noexcept { return frame_ != nullptr; }
    [[nodiscard]] PageNumber Number() const noexcept { return frame_->number; }
    [[nodiscard]] ByteSpan Bytes() const noexcept { return {frame_->data, frame_->size}; } ///< one whole page
    [[nodiscard]] PageType Type() const noexcept { return static_cast<PageType>(frame_->data[0]); }

protected:
    friend class PageCache;
    explicit PageRef(Frame* frame) noexcept : frame_(frame)
    {
        if (frame_ != nullptr)
            ++frame_->pins;
    }
    Frame* frame_ = nullptr;
};

/// A page that may be changed: it is written at the next commit, or before when memory runs short. May be kept across
/// commits and savepoints; what Data() gave before one may not.
class MutablePageRef : public PageRef {
public:
    MutablePageRef() = default;
    /// `size` bytes at `offset`, which may be changed, and no others. Throws DiskFull, DiskError.
    [[nodiscard]] MutableBytes Data(std::size_t offset, std::size_t size) const
    {
        return {frame_->Data(UndoLog::Range{offset, size}) + offset, size};
    }
    /// The whole page.
    [[nodiscard]] MutableBytes Data() const { return Data(0, frame_->size); }
    /// For changes that are made with every record: several ranges at once.
    [[nodiscard]] PageAtHand AtHand() const noexcept { return PageAtHand(frame_); }

private:
    friend class PageCache;
    using PageRef::PageRef;
};

/// The pages of one file that are in memory. A cached page is found by one look into a table; when the budget is used
/// up, a clock hand takes pages that nobody holds and nobody used lately, and before that those of them that need not
/// be written: so of a file that only grows there is not more in memory than is used. Changed pages that are neighbours
/// are written together. A page that is pinned stays, budget or not. A commit looks at the pages changed since the last
/// one only, however large the file and the memory are.
///
/// Between two commits pages may have to be written, so two things are kept that differ in what they are for: the
/// journal, on the disk, holds what pages held at the last commit, for whoever comes after a crash; the undo log holds
/// what they held at the savepoint, for a statement that fails. Cache and journal rely on this:
///
///   1. A frame that is not dirty holds what the file holds, seen through file_, which may write it later. A write that
///      fails leaves its frames dirty, or what they held with file_, so it has lost nothing, whatever part of it has
///      reached the disk.
///   2. No page that the file had at the last commit is overwritten before the journal holds what it had then; and the
///      journal holds it only once that is safe on the disk. A batch that fails half way counts for nothing.
///   3. Pages that the file did not have at the last commit need no journal: going back cuts them off. So nothing at
///      all, not even such a page, is written before the journal has noted how many pages there were.
///   4. Page 0 is written last in a commit, and never before: until then the file says of itself, by the counter that
///      the journal has set in it, that it is in the midst of a write.
///   5. While a savepoint is set, no byte of a page that was there when it was set is changed before the undo log has
///      it. Pages behind the end of that time are new: they need no log, and going back to the savepoint drops them.
///   6. Going back to a savepoint needs no room on the disk: what was evicted meanwhile and cannot make another page
///      leave gets memory beyond the budget.
///   7. The file may for a while be longer than PageCount(), by pages that were written and then dropped; the next
///      commit cuts it.
///
/// As the file grows, those of its new pages that are no longer in use are written a little behind its end, and the
/// disk begins with them: a commit, and with it the end of a run that is cancelled, then has little left to wait for,
/// however much has been inserted.
class PageCache {
public:
    /// `journal` may be null: then what was not committed is lost, and so is what it has overwritten.
    PageCache(File& file, Journal* journal, const Format& format, PageNumber pageCount, std::size_t budgetBytes);
    PageCache(const PageCache&) = delete;
    PageCache& operator=(const PageCache&) = delete;

    [[nodiscard]] PageNumber PageCount() const noexcept { return pageCount_; }

    /// Throws CorruptPage when `page` lies outside the file.
    [[nodiscard]] PageRef Read(PageNumber page) { return PageRef(Fetch(page)); }
    /// The same, to be changed.
    [[nodiscard]] MutablePageRef Write(PageNumber page) { return MutablePageRef(Fetch(page)); }
    /// The page, when it is in memory and may be changed at all.
    [[nodiscard]] PageAtHand AtHand(PageNumber page) const noexcept
    {
        Frame* const frame = page < table_.size() && !failure_ ? table_[page] : nullptr;
        if (frame != nullptr)
            frame->recent = true;
        return PageAtHand(frame);
    }
    /// `page`, all zero whatever the file holds there; the file grows when the page lies behind its end.
    [[nodiscard]] MutablePageRef Fresh(PageNumber page);

    // The savepoint: there is one at a time. Nobody holds a page when it is set, released or gone back to, except
    // pages that are never changed while there is one.

    /// Throws what Fail() was given.
    void SetSavepoint();
    void ReleaseSavepoint() noexcept { undo_.End(); }
    /// Makes all pages what they were at the savepoint, which is gone then. False when none had been changed. When the
    /// disk prevents it, that counts as Fail().
    bool RollBack() noexcept;

    /// Has a page been changed since the last commit?
    [[nodiscard]] bool HasChanges() const noexcept;
    /// Writes every changed page except page 0 (kHeaderPage), in ascending order, and waits for the disk. Of a new file
    /// that wait comes with page 0: whoever makes one gives it its name only then.
    void WriteBack();
    /// The same for page 0.
    void WriteBackHeader();
    /// What has been written is the new last commit.
    void EndCommit();

    /// What was changed since the last commit is not whole: nothing is written any more, and everything that tries
    /// throws `reason`.
    void Fail(std::exception_ptr reason) noexcept;
    /// Throws what Fail() was first given.
    void ThrowIfFailed() const;
    [[nodiscard]] bool HasFailed() const noexcept { return static_cast<bool>(failure_); }

private:
    Frame* Fetch(PageNumber page)
    {
        Frame* frame = page < table_.size() ? table_[page] : nullptr;
        if (frame == nullptr)
            return Load(page);
        frame->recent = true;
        return frame;
    }
    Frame* Load(PageNumber page);
    Frame& FreeFrame();
    Frame* Victim();
    Frame* Unused(std::size_t steps, bool isWritten);
    [[nodiscard]] bool IsWrittenForRoom(const Frame& victim);
    void Enter(Frame& frame, PageNumber page) noexcept;
    void CollectChanged();
    void Drop(PageNumber page) noexcept;
    void PutBack();
    /// Pages that have changed: all of them, those that nobody holds, or those of them that nobody has used lately.
    enum class Changed : std::uint8_t { All, NotHeld, AtRest };
    [[nodiscard]] bool IsAmong(Changed which, PageNumber page) const noexcept;
    PageNumber WriteRun(PageNumber page, Changed which);
    void BeginToOverwrite(PageNumber begin, PageNumber end);
    void KeepOld(PageNumber begin, PageNumber end);
    [[nodiscard]] PageNumber StretchPages() const noexcept;
    void WriteBehind();

    File* file_;
    Journal* journal_;
    const Format* format_;
    std::size_t pageSize_;
    PageNumber committedPages_; ///< those of the file at the last commit
    PageNumber pageCount_;
    PageNumber fileEnd_;       ///< no page behind has ever been written
    PageNumber writtenBehind_; ///< pages before had their turn since they were new, or are older than the last commit
    std::size_t maxFrames_;
    std::vector<Frame*> table_; ///< by page number; nullptr = not in memory
    PageMemory memory_;
    std::deque<Frame> frames_;   ///< a deque, so that frames never move
    std::vector<Frame*> unused_; ///< frames without a page
    std::size_t hand_ = 0;
    ChangedFrames changed_;
    std::vector<PageNumber> changedPages_; ///< those that are to be written, ascending
    Bytes writeBuffer_;                    ///< adjacent pages on their way to the file
    bool hasWritten_ = false;              ///< since the last commit
    UndoLog undo_;
    bool hasWrittenSince_ = false; ///< the savepoint
    bool isRollingBack_ = false;
    std::exception_ptr failure_;
};

} // namespace jet
