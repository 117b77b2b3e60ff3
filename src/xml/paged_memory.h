#pragma once

#include <cstddef>

namespace velmora {

/// How much memory the arrays of one document may take before they go to a file. Shared by all of them.
struct MemoryBudget {
    std::size_t limitBytes = 0;
    std::size_t usedBytes = 0;
};

/// One growing block of memory. While the budget lasts it is ordinary memory; a block that grows past it lives in an
/// unlinked temporary file mapped into memory, so that the system can page it out. Growing never copies what is there,
/// except once, when the block moves into its file. Bytes not written yet are zero.
class PagedMemory {
public:
    /// `budget` must outlive the block.
    explicit PagedMemory(MemoryBudget& budget) noexcept : budget_(budget) {}
    ~PagedMemory();
    PagedMemory(const PagedMemory&) = delete;
    PagedMemory& operator=(const PagedMemory&) = delete;

    [[nodiscard]] std::byte* Data() const noexcept { return data_; }
    [[nodiscard]] std::size_t CapacityBytes() const noexcept { return capacity_; }
    /// Makes room for at least `bytes`, with some to spare. The block may move: pointers into it become invalid.
    /// Throws std::bad_alloc, also when the disk of the temporary file is full; the block is as it was then.
    void Reserve(std::size_t bytes);
    [[nodiscard]] bool IsInFile() const noexcept { return file_ != kNoFile; }

private:
    static constexpr int kNoFile = -1;
    [[nodiscard]] bool FitsBudget(std::size_t capacity) const noexcept;
    [[nodiscard]] bool MoveToFile(std::size_t capacity);
    void Remap(std::size_t capacity);

    MemoryBudget& budget_;
    std::byte* data_ = nullptr;
    std::size_t capacity_ = 0;
    int file_ = kNoFile;
};

} // namespace velmora
