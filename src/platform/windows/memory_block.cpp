#include "platform/memory_block.h"

#include "platform/windows/windows.h"

#include <cstring>

namespace velmora {

/// The system cannot lengthen a block. A file is mapped a second time, which costs nothing; memory is copied, but no
/// more of it than the budget allows.
void* GrownBlock(void* block, std::size_t before, std::size_t bytes, TemporaryFile* file)
{
    void* const grown = block != nullptr && file != nullptr
                            ? file->Map(bytes)
                            : VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (grown == nullptr || block == nullptr)
        return grown;
    if (file == nullptr)
        std::memcpy(grown, block, before);
    FreeBlock(block, before, file);
    return grown;
}

void FreeBlock(void* block, std::size_t, TemporaryFile* file) noexcept
{
    if (block == nullptr)
        return;
    if (file != nullptr)
        UnmapViewOfFile(block);
    else
        VirtualFree(block, 0, MEM_RELEASE);
}

void ForgetContent(void* bytes, std::size_t count) noexcept
{
    VirtualFree(bytes, count, MEM_DECOMMIT);
}

/// To unlock pages that are not locked is how they leave the working set. To discard them would lose what they hold.
void PageOut(void* block, std::size_t bytes) noexcept
{
    VirtualUnlock(block, bytes);
}

} // namespace velmora
