#include "jet/store/undo_log.h"

#include <algorithm>
#include <cassert>

namespace jet {

namespace {

/// As long as the log holds less, the bytes of each change are noted by themselves.
constexpr std::size_t kPiecesUpTo = std::size_t{1} << 16;
constexpr std::size_t kFirstSize = std::size_t{1} << 12;
/// What is kept from savepoint to savepoint.
constexpr std::size_t kMaxKept = std::size_t{1} << 20;

} // namespace

void UndoLog::MakeBits(PageNumber pageCount)
{
    whole_.resize(std::max<std::size_t>(pageCount / 8 + 1, 2 * whole_.size()));
}

void UndoLog::Clear() noexcept
{
    for (const PageNumber page : wholePages_)
        ClearBit(whole_, page);
    wholePages_.clear();
    segments_.clear();
    spilled_ = 0;
    file_.reset();
    // Memory that one large statement took goes back; what most take stays, as savepoints come with every record.
    if (log_.size() > kMaxKept)
        log_ = Bytes();
    SetEnd(0);
}

/// Notes that log_ holds `used` bytes.
void UndoLog::SetEnd(std::size_t used) noexcept
{
    constexpr std::size_t kLargest = kFew + sizeof(Trailer);
    at_ = log_.data() + used;
    const std::size_t end = segments_.empty() ? std::min(log_.size(), kPiecesUpTo) : 0;
    smallEnd_ = log_.data() + (end > kLargest ? end - kLargest : 0);
}

void UndoLog::Append(PageNumber page, const Byte* content, bool isDirty, Range range)
{
    if (TestBit(whole_, page))
        return;
    // So many small changes come to more than the pages that they are made in: from here on each page is noted whole,
    // at its first change.
    if (Used() >= kPiecesUpTo || !segments_.empty())
        range = {0, pageSize_};
    const auto [offset, size] = range;
    assert(offset + size <= pageSize_);
    const bool isWhole = size == pageSize_;
    if (isWhole)
        wholePages_.push_back(page);
    const Trailer trailer{page, static_cast<std::uint16_t>(offset), static_cast<std::uint16_t>(size), isDirty};
    if (log_.size() - Used() < size + sizeof trailer)
        MakeRoom(size + sizeof trailer);
    std::memcpy(at_, content + offset, size);
    EndPiece(at_ + size, trailer);
    if (isWhole)
        SetBit(whole_, page);
}

void UndoLog::MakeRoom(std::size_t size)
{
    if (makeFile_ && Used() != 0 && Used() + size > budget_)
        Spill();
    const std::size_t used = Used();
    if (log_.size() - used < size)
        log_.resize(std::max({kFirstSize, 2 * log_.size(), used + size}));
    SetEnd(used);
}

void UndoLog::Spill()
{
    // Before the write, so that nothing can fail between it and the note of it.
    segments_.reserve(segments_.size() + 1);
    if (!file_)
        file_ = makeFile_();
    file_->WriteAt(spilled_, ByteSpan(log_).first(Used()));
    segments_.push_back(Used());
    spilled_ += Used();
    SetEnd(0);
}

} // namespace jet
