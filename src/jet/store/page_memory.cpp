#include "jet/store/page_memory.h"

#include <utility>

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif
#ifdef VELMORA_GUARDED_PAGES
#include <sanitizer/asan_interface.h>
#endif

namespace jet {

namespace {

/// What a small database takes, and then what systems call a large page.
constexpr std::size_t kSmallPiece = std::size_t{1} << 18;
constexpr std::size_t kLargePiece = std::size_t{2} << 20;
constexpr std::size_t kSmallPieces = 8;
constexpr std::size_t kSmallestPage = 2048;

// Between two pages a checking build has bytes that nobody may touch.
#ifdef VELMORA_GUARDED_PAGES
constexpr std::size_t kGap = 64;
void Guard(const Byte* gap) noexcept
{
    ASAN_POISON_MEMORY_REGION(gap, kGap);
}
#else
constexpr std::size_t kGap = 0;
void Guard(const Byte*) noexcept {}
#endif

void AskForLargePages([[maybe_unused]] Byte* piece, [[maybe_unused]] std::size_t size) noexcept
{
#ifdef MADV_HUGEPAGE
    madvise(piece, size, MADV_HUGEPAGE);
#endif
}

} // namespace

Byte* PageMemory::Take()
{
    if (left_ < pageSize_ + kGap)
        AddPiece();
    Byte* const page = next_;
    next_ += pageSize_ + kGap;
    left_ -= pageSize_ + kGap;
    Guard(page + pageSize_);
    return page;
}

void PageMemory::AddPiece()
{
    const bool isLarge = pieces_.size() >= kSmallPieces;
    const std::size_t size = isLarge ? kLargePiece : kSmallPiece;
    const std::align_val_t alignment{isLarge ? kLargePiece : kSmallestPage};
    std::unique_ptr<Byte, Release> piece(static_cast<Byte*>(::operator new(size, alignment)), Release{alignment});
    pieces_.push_back(std::move(piece));
    next_ = pieces_.back().get();
    left_ = size;
    if (isLarge)
        AskForLargePages(next_, size);
}

} // namespace jet
