#include "platform/memory_block.h"

#include <sys/mman.h>

namespace velmora {

void* GrownBlock(void* block, std::size_t before, std::size_t bytes, TemporaryFile*)
{
    void* const grown = block == nullptr
                            ? mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)
                            : mremap(block, before, bytes, MREMAP_MAYMOVE);
    return grown == MAP_FAILED ? nullptr : grown;
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
