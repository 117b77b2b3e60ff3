#pragma once

#include "platform/temporary_file.h"

#include <cstddef>

namespace velmora {

// What PagedMemory asks the system for: blocks of whole pages, in memory or, with a `file`, what TemporaryFile::Map
// gives.

/// Blocks of this size and more had better be multiples of it: a system that knows pages of 2 MiB uses them then.
inline constexpr std::size_t kLargeBlockBytes = std::size_t{2} << 20;

/// `block` with room for `bytes` instead of `before`, its content kept and zeros behind it; it may have moved. nullptr
/// when that is not to be had: `block` is as it was then. A null `block` becomes a new one, in memory.
[[nodiscard]] void* GrownBlock(void* block, std::size_t before, std::size_t bytes, TemporaryFile* file);
/// Nothing is done about a null `block`.
void FreeBlock(void* block, std::size_t bytes, TemporaryFile* file) noexcept;
/// Gives the memory of `bytes` back that will not be read any more; the block itself stays.
void ForgetContent(void* bytes, std::size_t count) noexcept;
/// Takes the pages of a block that has its file out of the process's memory; what was written stays.
void PageOut(void* block, std::size_t bytes) noexcept;

} // namespace velmora
