#pragma once

#include "jet/base/format.h"
#include "jet/error.h"
#include "jet/store/file.h"
#include "jet/store/journal.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace jet {

struct Frame;

/// The frames that were changed since the last commit, whether they have been written since or not.
struct ChangedFrames {
    Frame* first = nullptr;
};

/// One page in memory.
struct Frame {
    std::unique_ptr<Byte[]> data;
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
    [[nodiscard]] ByteSpan Bytes() const noexcept { return {frame_->data.get(), frame_->size}; } ///< one whole page
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
/// commits; what Data() gave before one may not.
class MutablePageRef : public PageRef {
public:
    MutablePageRef() = default;
    [[nodiscard]] MutableBytes Data() const noexcept
    {
        frame_->Change();
        return {frame_->data.get(), frame_->size};
    }

private:
    friend class PageCache;
    using PageRef::PageRef;
};

/// The pages of one file that are in memory. A cached page is found by one look into a table; when the budget is used
/// up, a clock hand takes pages that nobody holds and nobody used lately. Changed pages that are neighbours are written
/// together. A page that is pinned stays, budget or not. A commit looks at the pages changed since the last one only,
/// however large the file and the memory are.
///
/// Pages may have to be written between two commits. What they held at the last one is then in the journal before. Once
/// the file has failed, nobody knows what is in it: nothing more is written, and everything that tries throws what was
/// thrown then.
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
    [[nodiscard]] MutablePageRef Write(PageNumber page)
    {
        Frame* frame = Fetch(page);
        frame->Change();
        return MutablePageRef(frame);
    }
    /// `page`, all zero whatever the file holds there; the file grows when the page lies behind its end.
    [[nodiscard]] MutablePageRef Fresh(PageNumber page);

    /// Has a page been changed since the last commit?
    [[nodiscard]] bool HasChanges() const noexcept { return changed_.first != nullptr; }
    /// Writes every changed page except page 0 (kHeaderPage), in ascending order, and waits for the disk.
    void WriteBack();
    /// The same for page 0.
    void WriteBackHeader();
    /// What has been written is the new last commit.
    void EndCommit();

    /// Nothing is written any more, and everything that tries throws `reason`.
    void Fail(const Error& reason);
    [[nodiscard]] const std::optional<Error>& Failure() const noexcept { return failure_; }

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
    void Enter(Frame& frame, PageNumber page) noexcept;
    void CollectChanged();
    PageNumber WriteRun(PageNumber page, bool heldToo);
    void WriteToFile(PageNumber page, ByteSpan pages);
    void KeepOld(PageNumber begin, PageNumber end);
    void ThrowIfFailed() const;
    template <typename Operation>
    void OnFile(const Operation& operation);

    File* file_;
    Journal* journal_;
    const Format* format_;
    std::size_t pageSize_;
    PageNumber committedPages_; ///< those of the file at the last commit
    PageNumber pageCount_;
    std::size_t maxFrames_;
    std::vector<Frame*> table_;  ///< by page number; nullptr = not in memory
    std::deque<Frame> frames_;   ///< a deque, so that frames never move
    std::vector<Frame*> unused_; ///< frames without a page, left by a read that failed
    std::size_t hand_ = 0;
    ChangedFrames changed_;
    std::vector<PageNumber> changedPages_; ///< those that are to be written, ascending
    Bytes writeBuffer_;                    ///< adjacent pages on their way to the file
    std::optional<Error> failure_;
};

} // namespace jet
