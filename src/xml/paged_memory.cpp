#include "xml/paged_memory.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace velmora {

namespace {

constexpr std::size_t kGranuleBytes = std::size_t{64} * 1024; // a multiple of every page size in use

std::size_t RoundUp(std::size_t bytes)
{
    return (bytes + kGranuleBytes - 1) / kGranuleBytes * kGranuleBytes;
}

int OpenUnlinked(const std::string& folder)
{
    const int file = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (file >= 0)
        return file;
    // Not every file system knows files without a name.
    std::string name = folder + "/velmora-XXXXXX";
    const int named = mkostemp(name.data(), O_CLOEXEC);
    if (named >= 0)
        unlink(name.c_str());
    return named;
}

/// -1 when no folder takes it. /var/tmp comes before /tmp, which often is memory itself.
int OpenTemporaryFile()
{
    const char* chosen = std::getenv("TMPDIR");
    for (const char* folder : {chosen, "/var/tmp", "/tmp"}) {
        if (folder == nullptr || *folder == '\0')
            continue;
        if (const int file = OpenUnlinked(folder); file >= 0)
            return file;
    }
    return -1;
}

/// Allocated, not only sized: writing to a hole in a mapped file on a full disk would kill the process.
bool Extend(int file, std::size_t from, std::size_t to)
{
    return posix_fallocate(file, static_cast<off_t>(from), static_cast<off_t>(to - from)) == 0;
}

/// Gives every written piece back to the system at once, so that the move does not need the memory twice.
bool WriteAndRelease(int file, std::byte* data, std::size_t bytes)
{
    constexpr std::size_t kPieceBytes = std::size_t{8} * 1024 * 1024;
    for (std::size_t begin = 0; begin < bytes;) {
        const std::size_t piece = std::min(kPieceBytes, bytes - begin);
        for (std::size_t done = 0; done < piece;) {
            const ssize_t written = pwrite(file, data + begin + done, piece - done, static_cast<off_t>(begin + done));
            if (written <= 0)
                return false;
            done += static_cast<std::size_t>(written);
        }
        madvise(data + begin, piece, MADV_DONTNEED);
        begin += piece;
    }
    return true;
}

} // namespace

PagedMemory::~PagedMemory()
{
    if (data_ != nullptr)
        munmap(data_, capacity_);
    if (IsInFile())
        close(file_);
    else
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
        if (!Extend(file_, capacity_, capacity))
            throw std::bad_alloc();
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
    void* const block = data_ == nullptr
                            ? mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)
                            : mremap(data_, capacity_, capacity, MREMAP_MAYMOVE);
    if (block == MAP_FAILED)
        throw std::bad_alloc();
    data_ = static_cast<std::byte*>(block);
    capacity_ = capacity;
}

/// False when there is no temporary file of that size to be had: the block is as it was then.
bool PagedMemory::MoveToFile(std::size_t capacity)
{
    const int file = OpenTemporaryFile();
    if (file < 0)
        return false;
    void* const block =
        Extend(file, 0, capacity) ? mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0) : MAP_FAILED;
    if (block == MAP_FAILED) {
        close(file);
        return false;
    }
    const bool written = WriteAndRelease(file, data_, capacity_);
    if (data_ != nullptr)
        munmap(data_, capacity_);
    budget_.usedBytes -= capacity_;
    data_ = static_cast<std::byte*>(block);
    capacity_ = capacity;
    file_ = file;
    if (!written) // a disk that fails under a file already allocated: part of the document is lost
        throw std::bad_alloc();
    return true;
}

} // namespace velmora
