#include "platform/paged_memory.h"

#include "platform/memory_block.h"

#include <algorithm>
#include <new>

namespace velmora {

namespace {

constexpr std::size_t kGranuleBytes = std::size_t{64} * 1024; // a multiple of every page size in use

std::size_t RoundUp(std::size_t bytes)
{
    const std::size_t granule = bytes < kLargeBlockBytes ? kGranuleBytes : kLargeBlockBytes;
    return (bytes + granule - 1) / granule * granule;
}

/// Gives every written piece back to the system at once, so that the move does not need the memory twice.
bool WriteAndRelease(TemporaryFile& file, std::byte* data, std::size_t bytes)
{
    constexpr std::size_t kPieceBytes = std::size_t{8} * 1024 * 1024;
    for (std::size_t begin = 0; begin < bytes; begin += kPieceBytes) {
        const std::size_t piece = std::min(kPieceBytes, bytes - begin);
        if (!file.Write(begin, {data + begin, piece}))
            return false;
        ForgetContent(data + begin, piece);
    }
    return true;
}

} // namespace

PagedMemory::~PagedMemory()
{
    FreeBlock(data_, capacity_, file_.get());
    if (!IsInFile())
        budget_.usedBytes -= capacity_;
}

bool PagedMemory::FitsBudget(std::size_t capacity) const noexcept
{
    return budget_.usedBytes - capacity_ + capacity <= budget_.limitBytes;
}

void PagedMemory::Reserve(std::size_t bytes)
{
    if (bytes <= capacity_)
        return;
    const std::size_t capacity = RoundUp(std::max(bytes, capacity_ + capacity_ / 2));
    if (IsInFile()) {
        if (!file_->Extend(capacity))
            throw TemporaryFileFull();
        Remap(capacity);
        return;
    }
    // Without a place for a temporary file there is still the memory.
    if (!FitsBudget(capacity) && MoveToFile(capacity))
        return;
    const std::size_t before = capacity_;
    Remap(capacity);
    budget_.usedBytes += capacity_ - before;
}

void PagedMemory::Remap(std::size_t capacity)
{
    void* const block = GrownBlock(data_, capacity_, capacity, file_.get());
    if (block == nullptr)
        throw std::bad_alloc();
    data_ = static_cast<std::byte*>(block);
    capacity_ = capacity;
}

void PagedMemory::GiveBack() const noexcept
{
    if (IsInFile())
        PageOut(data_, capacity_);
}

/// False when there is no temporary file of that size to be had: the block is as it was then.
bool PagedMemory::MoveToFile(std::size_t capacity)
{
    std::unique_ptr<TemporaryFile> file = budget_.makeFile();
    void* const block = file != nullptr && file->Extend(capacity) ? file->Map(capacity) : nullptr;
    if (block == nullptr)
        return false;
    const bool written = WriteAndRelease(*file, data_, capacity_);
    FreeBlock(data_, capacity_, nullptr);
    budget_.usedBytes -= capacity_;
    data_ = static_cast<std::byte*>(block);
    capacity_ = capacity;
    file_ = std::move(file);
    budget_.isExceeded = true;
    if (!written) // a disk that fails under a file already allocated: part of the document is lost
        throw TemporaryFileFull();
    return true;
}

} // namespace velmora
