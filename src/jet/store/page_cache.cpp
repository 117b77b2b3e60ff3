#include "jet/store/page_cache.h"

#include <algorithm>

namespace jet {

namespace {

/// Enough for every page that one operation holds at a time, however small the budget.
constexpr std::size_t kMinFrames = 32;
/// Pages written in one go: enough that the system's cost for each call and block no longer shows.
constexpr PageNumber kMaxRun = 32;

} // namespace

PageCache::PageCache(File& file, Journal* journal, const Format& format, PageNumber pageCount, std::size_t budgetBytes)
    : file_(&file), journal_(journal), format_(&format), pageSize_(format.pageSize), committedPages_(pageCount),
      pageCount_(pageCount), maxFrames_(std::max(budgetBytes / format.pageSize, kMinFrames)), table_(pageCount)
{
}

MutablePageRef PageCache::Fresh(PageNumber page)
{
    if (page >= table_.size())
        table_.resize(std::max<std::size_t>(std::size_t{page} + 1, table_.size() * 2));
    Frame* frame = table_[page];
    if (frame == nullptr) {
        frame = &FreeFrame();
        Enter(*frame, page);
    }
    std::fill_n(frame->data.get(), pageSize_, Byte{0});
    frame->Change();
    pageCount_ = std::max(pageCount_, page + 1);
    return MutablePageRef(frame);
}

Frame* PageCache::Load(PageNumber page)
{
    if (page >= pageCount_)
        throw CorruptPage(page, "it is referred to, but the file has only " + std::to_string(pageCount_) + " pages");
    Frame& frame = FreeFrame();
    try {
        OnFile([&] { file_->ReadAt(std::uint64_t{page} * pageSize_, {frame.data.get(), pageSize_}); });
    } catch (...) {
        unused_.push_back(&frame);
        throw;
    }
    Enter(frame, page);
    return &frame;
}

/// A frame that belongs to no page.
Frame& PageCache::FreeFrame()
{
    if (!unused_.empty()) {
        Frame* frame = unused_.back();
        unused_.pop_back();
        return *frame;
    }
    if (frames_.size() >= maxFrames_)
        if (Frame* victim = Victim()) {
            if (victim->dirty)
                WriteRun(victim->number, false);
            table_[victim->number] = nullptr;
            return *victim;
        }
    if (unused_.capacity() <= frames_.size()) // so that giving a frame back cannot fail
        unused_.reserve(2 * frames_.size() + kMinFrames);
    Frame& frame = frames_.emplace_back();
    frame.data = std::make_unique_for_overwrite<Byte[]>(pageSize_);
    frame.size = pageSize_;
    frame.changed = &changed_;
    return frame;
}

/// The next frame that can be taken, nullptr when every page is held.
Frame* PageCache::Victim()
{
    // Two rounds: the first may do no more than take everybody's mark away.
    for (std::size_t step = 0; step < 2 * frames_.size(); ++step) {
        Frame& frame = frames_[hand_];
        hand_ = hand_ + 1 == frames_.size() ? 0 : hand_ + 1;
        if (frame.pins != 0)
            continue;
        if (!frame.recent)
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

/// Writes the changed pages from `page` on, which is one, up to the first that is not, in one go; of those that
/// somebody holds only when `heldToo`. Gives the page behind them.
PageNumber PageCache::WriteRun(PageNumber page, bool heldToo)
{
    const auto belongs = [&](PageNumber number) {
        const Frame* frame = number < pageCount_ ? table_[number] : nullptr;
        return frame != nullptr && frame->dirty && (heldToo || frame->pins == 0);
    };
    writeBuffer_.clear();
    PageNumber end = page;
    while (belongs(end) && end - page < kMaxRun)
        AppendBytes(writeBuffer_, {table_[end++]->data.get(), pageSize_});
    WriteToFile(page, writeBuffer_);
    for (PageNumber written = page; written < end; ++written)
        table_[written]->dirty = false;
    return end;
}

/// The one place where pages of the file are written.
void PageCache::WriteToFile(PageNumber page, ByteSpan pages)
{
    ThrowIfFailed();
    OnFile([&] {
        KeepOld(page, page + static_cast<PageNumber>(pages.size() / pageSize_));
        file_->WriteAt(std::uint64_t{page} * pageSize_, pages);
    });
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

void PageCache::CollectChanged()
{
    changedPages_.clear();
    for (const Frame* frame = changed_.first; frame != nullptr; frame = frame->next)
        if (frame->dirty)
            changedPages_.push_back(frame->number);
    std::ranges::sort(changedPages_);
}

/// Runs `operation`; when it throws, the file is not touched any more.
template <typename Operation>
void PageCache::OnFile(const Operation& operation)
{
    try {
        operation();
    } catch (const Error& error) {
        Fail(error);
        throw;
    }
}

void PageCache::Fail(const Error& reason)
{
    if (!failure_)
        failure_.emplace(reason);
}

void PageCache::ThrowIfFailed() const
{
    if (failure_)
        throw Error(*failure_);
}

void PageCache::WriteBack()
{
    ThrowIfFailed();
    CollectChanged();
    const std::vector<PageNumber> pages = std::exchange(changedPages_, {}); // writing collects anew, for the journal
    PageNumber written = kHeaderPage + 1;
    for (const PageNumber page : pages)
        if (page >= written)
            written = WriteRun(page, true);
    OnFile([this] { file_->Sync(); });
}

void PageCache::WriteBackHeader()
{
    Frame& header = *table_[kHeaderPage];
    WriteToFile(kHeaderPage, {header.data.get(), pageSize_});
    header.dirty = false;
    OnFile([this] { file_->Sync(); });
}

void PageCache::EndCommit()
{
    if (journal_ != nullptr && journal_->IsActive())
        OnFile([this] { journal_->Finish(); });
    committedPages_ = pageCount_;
    while (changed_.first != nullptr) {
        changed_.first->isListed = false;
        changed_.first = changed_.first->next;
    }
}

} // namespace jet
