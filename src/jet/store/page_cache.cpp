#include "jet/store/page_cache.h"

#include <algorithm>

namespace jet {

namespace {

/// Enough for every page that one operation holds at a time, however small the budget.
constexpr std::size_t kMinFrames = 32;
/// With so much in memory a page that is not to be written and was not used lately makes room for the next before more
/// memory is taken: what a growing file has left behind is rarely asked for again, and memory never touched before
/// costs more than a page. So many frames are looked at for that.
constexpr std::size_t kColdBytes = std::size_t{16} << 20;
constexpr std::size_t kColdSteps = 8;
/// Pages written in one go: enough that the system's cost for each call and block no longer shows.
constexpr PageNumber kMaxRun = 32;
/// New pages are written so many bytes at a time, and the last so many not at all, as most of them still change.
constexpr std::size_t kBehindBytes = std::size_t{2} << 20;
/// The undo log's share of the cache's budget.
constexpr std::size_t kUndoShare = 8;

UndoLog::MakeFile TemporaryFiles(const Journal* journal)
{
    return journal == nullptr ? UndoLog::MakeFile() : [journal] { return journal->System().OpenTemporary(); };
}

} // namespace

PageCache::PageCache(File& file, Journal* journal, const Format& format, PageNumber pageCount, std::size_t budgetBytes)
    : file_(&file), journal_(journal), format_(&format), pageSize_(format.pageSize), committedPages_(pageCount),
      pageCount_(pageCount), fileEnd_(pageCount), writtenBehind_(pageCount),
      maxFrames_(std::max(budgetBytes / format.pageSize, kMinFrames)), table_(pageCount), memory_(format.pageSize),
      undo_(format.pageSize, maxFrames_ * format.pageSize / kUndoShare, TemporaryFiles(journal))
{
}

/// How many pages are written behind at a time.
inline PageNumber PageCache::StretchPages() const noexcept
{
    return static_cast<PageNumber>(kBehindBytes / pageSize_);
}

MutablePageRef PageCache::Fresh(PageNumber page)
{
    if (page >= writtenBehind_ + 2 * StretchPages())
        WriteBehind();
    if (page >= table_.size())
        // By doubling, so that a file that grows page by page does not copy the table each time.
        table_.resize(std::max<std::size_t>(std::size_t{page} + 1, table_.size() * 2));
    Frame* frame = table_[page];
    if (frame == nullptr && undo_.IsOpen() && page < undo_.PageCount()) {
        frame = Load(page); // a free page, but what it holds belongs to the savepoint
    } else if (frame == nullptr) {
        frame = &FreeFrame();
        Enter(*frame, page);
    }
    MutablePageRef ref(frame);
    std::ranges::fill(ref.Data(), Byte{0});
    pageCount_ = std::max(pageCount_, page + 1);
    return ref;
}

Frame* PageCache::Load(PageNumber page)
{
    if (page >= pageCount_)
        throw CorruptPage(page, "it is referred to, but the file has only " + std::to_string(pageCount_) + " pages");
    Frame& frame = FreeFrame();
    unused_.push_back(&frame); // where it stays when the page cannot be read
    file_->ReadAt(std::uint64_t{page} * pageSize_, {frame.data, pageSize_});
    unused_.pop_back();
    Enter(frame, page);
    return &frame;
}

/// A frame that belongs to no page.
Frame& PageCache::FreeFrame()
{
    if (!unused_.empty()) {
        Frame* frame = unused_.back();
        if (frame->data == nullptr) // it did not get it when it was made
            frame->data = memory_.Take();
        unused_.pop_back();
        return *frame;
    }
    if (Frame* victim = Victim(); victim != nullptr) {
        table_[victim->number] = nullptr;
        return *victim;
    }
    if (unused_.capacity() <= frames_.size()) // so that giving a frame back cannot fail
        unused_.reserve(2 * frames_.size() + kMinFrames);
    Frame& frame = frames_.emplace_back();
    unused_.push_back(&frame); // no memory for the page itself would leave it behind
    frame.undo = &undo_;
    frame.size = pageSize_;
    frame.changed = &changed_;
    frame.data = memory_.Take();
    unused_.pop_back();
    return frame;
}

/// Writes a page whose frame is wanted. Going back to a savepoint goes on when it cannot be written (invariant 6).
bool PageCache::IsWrittenForRoom(const Frame& victim)
{
    if (!isRollingBack_) {
        WriteRun(victim.number, Changed::NotHeld);
        return true;
    }
    try {
        WriteRun(victim.number, Changed::NotHeld);
        return true;
    } catch (const Error&) {
        return false;
    }
}

/// A frame whose page is to leave memory, and is written; nullptr when there shall be one frame more.
Frame* PageCache::Victim()
{
    Frame* cold = frames_.size() * pageSize_ >= kColdBytes ? Unused(kColdSteps, true) : nullptr;
    if (cold != nullptr || frames_.size() < maxFrames_)
        return cold;
    // Two rounds: the first may do no more than take everybody's mark away.
    Frame* victim = Unused(2 * frames_.size(), false);
    return victim != nullptr && (!victim->dirty || IsWrittenForRoom(*victim)) ? victim : nullptr;
}

/// Among the next frames the first that nobody holds or has used lately, nullptr when there is none.
Frame* PageCache::Unused(std::size_t steps, bool isWritten)
{
    for (; steps != 0; --steps) {
        Frame& frame = frames_[hand_];
        hand_ = hand_ + 1 == frames_.size() ? 0 : hand_ + 1;
        if (frame.pins != 0)
            continue;
        if (!frame.recent && !(isWritten && frame.dirty))
            return &frame;
        frame.recent = false;
    }
    return nullptr;
}

void PageCache::Enter(Frame& frame, PageNumber page) noexcept
{
    frame.number = page;
    frame.dirty = false;
    frame.recent = true;
    table_[page] = &frame;
}

bool PageCache::IsAmong(Changed which, PageNumber page) const noexcept
{
    const Frame* frame = page < pageCount_ ? table_[page] : nullptr;
    if (frame == nullptr || !frame->dirty)
        return false;
    // Who holds a page may be in the midst of a change. A commit finds nobody so.
    const bool isFree = which == Changed::All || frame->pins == 0;
    return isFree && !(which == Changed::AtRest && frame->recent);
}

/// Writes the changed pages from `page` on, which is one of `which`, up to the first that is not, in one go. Gives the
/// page behind them.
PageNumber PageCache::WriteRun(PageNumber page, Changed which)
{
    writeBuffer_.clear();
    writeBuffer_.reserve(kMaxRun * pageSize_);
    PageNumber end = page;
    while (IsAmong(which, end) && end - page < kMaxRun)
        AppendBytes(writeBuffer_, {table_[end++]->data, pageSize_});
    BeginToOverwrite(page, end);
    file_->WriteLater(std::uint64_t{page} * pageSize_, writeBuffer_);
    for (PageNumber written = page; written < end; ++written)
        table_[written]->dirty = false;
    return end;
}

/// Held pages and those in use are written later on, by the commit at the latest: of many tables that are filled by
/// turns every page would be written twice.
void PageCache::WriteBehind()
{
    const PageNumber begin = writtenBehind_;
    const PageNumber end = std::min(begin + StretchPages(), pageCount_);
    writtenBehind_ = end;
    for (PageNumber page = begin; page < end;)
        page = IsAmong(Changed::AtRest, page) ? WriteRun(page, Changed::AtRest) : page + 1;
    file_->BeginToWrite(std::uint64_t{begin} * pageSize_, std::uint64_t{end - begin} * pageSize_);
    // Those of the next pages that are used until it is their turn are in use.
    for (PageNumber page = end; page < std::min(end + StretchPages(), pageCount_); ++page)
        if (Frame* frame = table_[page]; frame != nullptr)
            frame->recent = false;
}

/// Comes before every write of pages, those from `begin` to `end`, which lies behind.
void PageCache::BeginToOverwrite(PageNumber begin, PageNumber end)
{
    ThrowIfFailed();
    KeepOld(begin, end);
    hasWritten_ = hasWrittenSince_ = true;
    fileEnd_ = std::max(fileEnd_, end);
}

/// Before the pages from `begin` to `end`, which lies behind, are overwritten, the journal must hold them. As that
/// takes a wait for the disk, all others that have been changed so far go with them.
void PageCache::KeepOld(PageNumber begin, PageNumber end)
{
    if (journal_ == nullptr || committedPages_ == 0)
        return;
    const bool isNew = !journal_->IsActive();
    if (isNew) {
        journal_->Begin(*file_, *format_, committedPages_);
    } else {
        while (begin < end && journal_->Holds(begin))
            ++begin;
        if (begin == end)
            return;
    }
    CollectChanged();
    std::erase_if(changedPages_, [this](PageNumber page) { return journal_->Holds(page); });
    journal_->Keep(changedPages_);
}

/// The list has more than what is dirty: a frame stays in it until the commit, though it was written, or even given to
/// another page, since.
void PageCache::CollectChanged()
{
    changedPages_.clear();
    for (const Frame* frame = changed_.first; frame != nullptr; frame = frame->next)
        if (frame->dirty)
            changedPages_.push_back(frame->number);
    std::ranges::sort(changedPages_);
}

void PageCache::Fail(std::exception_ptr reason) noexcept
{
    if (!failure_)
        failure_ = std::move(reason);
}

void PageCache::ThrowIfFailed() const
{
    if (failure_)
        std::rethrow_exception(failure_);
}

// ---- The savepoint --------------------------------------------------------------------------------------------------

void PageCache::SetSavepoint()
{
    ThrowIfFailed();
    undo_.Begin(pageCount_);
    hasWrittenSince_ = false;
}

bool PageCache::RollBack() noexcept
{
    const bool hasChanged = !undo_.IsEmpty() || pageCount_ != undo_.PageCount();
    isRollingBack_ = true;
    try {
        PutBack();
    } catch (...) {
        Fail(std::current_exception());
    }
    isRollingBack_ = false;
    undo_.End();
    return hasChanged;
}

void PageCache::PutBack()
{
    for (PageNumber page = undo_.PageCount(); page < pageCount_; ++page)
        Drop(page);
    pageCount_ = undo_.PageCount();
    file_->Forget(std::uint64_t{pageCount_} * pageSize_);
    writtenBehind_ = std::min(writtenBehind_, pageCount_);
    undo_.VisitBackwards([this](const UndoLog::Piece& piece) {
        Frame* frame = Fetch(piece.page);
        std::ranges::copy(piece.bytes, frame->data + piece.offset);
        // Of a page that was not dirty the file still holds what it holds again, unless pages have been written.
        frame->dirty = false;
        if (piece.wasDirty || hasWrittenSince_)
            frame->Change();
    });
}

/// Forgets a page that is no more.
void PageCache::Drop(PageNumber page) noexcept
{
    Frame* frame = table_[page];
    if (frame == nullptr)
        return;
    assert(frame->pins == 0);
    frame->dirty = false;
    table_[page] = nullptr;
    unused_.push_back(frame);
}

// ---- Commit ---------------------------------------------------------------------------------------------------------

bool PageCache::HasChanges() const noexcept
{
    // Pages that had to be written to make room are not dirty any more, and are part of the next commit all the same.
    if (hasWritten_)
        return true;
    for (const Frame* frame = changed_.first; frame != nullptr; frame = frame->next)
        if (frame->dirty)
            return true;
    return false;
}

void PageCache::WriteBack()
{
    assert(!undo_.IsOpen());
    ThrowIfFailed();
    CollectChanged();
    const std::vector<PageNumber> pages = std::exchange(changedPages_, {}); // writing collects anew, for the journal
    PageNumber written = kHeaderPage + 1;
    for (const PageNumber page : pages)
        if (page >= written)
            written = WriteRun(page, Changed::All);
    if (fileEnd_ > pageCount_) { // invariant 7
        file_->Truncate(std::uint64_t{pageCount_} * pageSize_);
        fileEnd_ = pageCount_;
    }
    if (committedPages_ != 0)
        file_->Sync();
}

void PageCache::WriteBackHeader()
{
    Frame& header = *table_[kHeaderPage];
    BeginToOverwrite(kHeaderPage, kHeaderPage + 1);
    file_->WriteAt(0, {header.data, pageSize_});
    header.dirty = false;
    file_->Sync();
}

void PageCache::EndCommit()
{
    if (journal_ != nullptr && journal_->IsActive())
        journal_->Finish();
    committedPages_ = writtenBehind_ = pageCount_;
    hasWritten_ = false;
    while (changed_.first != nullptr) {
        changed_.first->isListed = false;
        changed_.first = changed_.first->next;
    }
}

} // namespace jet
