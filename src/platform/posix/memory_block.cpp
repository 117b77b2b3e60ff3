#include "platform/memory_block.h"

#include <sys/mman.h>

namespace velmora {

namespace {

/// The system brings memory in large pages then, which costs a fraction of what as many small ones do.
void AskForLargePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t bytes) noexcept
{
#ifdef MADV_HUGEPAGE
    if (bytes >= kLargeBlockBytes)
        madvise(block, bytes, MADV_HUGEPAGE);
#endif
}

} // namespace

void* GrownBlock(void* block, std::size_t before, std::size_t bytes, TemporaryFile* file)
{
    void* const grown = block == nullptr
                            ? mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)
                            : mremap(block, before, bytes, MREMAP_MAYMOVE);
    if (grown == MAP_FAILED)
        return nullptr;
    if (file == nullptr)
        AskForLargePages(grown, bytes);
    return grown;
}

void FreeBlock(void* block, std::size_t bytes, TemporaryFile*) noexcept
{
    if (block != nullptr)
        munmap(block, bytes);
}

void ForgetContent(void* bytes, std::size_t count) noexcept
{
    madvise(bytes, count, MADV_DONTNEED);
}

void PageOut(void* block, std::size_t bytes) noexcept
{
    madvise(block, bytes, MADV_DONTNEED); // of a file that is shared: its pages are the file's
}

} // namespace velmora
