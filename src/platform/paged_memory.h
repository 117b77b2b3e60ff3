#pragma once

#include "platform/temporary_file.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>

namespace velmora {

/// How much memory the arrays of one document may take before they go to a file. Shared by all of them.
struct MemoryBudget {
    explicit MemoryBudget(std::size_t bytes, TemporaryFileMaker maker = MakeTemporaryFile)
        : limitBytes(bytes), makeFile(std::move(maker))
    {
    }

    std::size_t limitBytes;
    TemporaryFileMaker makeFile;
    std::size_t usedBytes = 0;
    bool isExceeded = false; ///< a block has gone to a file
};

/// One growing block of memory. While the budget lasts it is ordinary memory; a block that grows past it lives in a
/// temporary file mapped into memory, so that the system can page it out. Growing never copies what is there, except
/// once, when the block moves into its file. Bytes not written yet are zero.
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
    /// Throws std::bad_alloc, or TemporaryFileFull; the block is as it was then. Where no file is to be had from the
    /// beginning, the block stays in memory. A disk that fails while the block moves into its file takes what was in it
    /// along.
    void Reserve(std::size_t bytes);
    [[nodiscard]] bool IsInFile() const noexcept { return file_ != nullptr; }
    /// Takes the pages of a block that has its file out of the process's memory. They come back when they are touched,
    /// so that only what is being worked on stays.
    void GiveBack() const noexcept;

private:
    [[nodiscard]] bool FitsBudget(std::size_t capacity) const noexcept;
    [[nodiscard]] bool MoveToFile(std::size_t capacity);
    void Remap(std::size_t capacity);

    MemoryBudget& budget_;
    std::byte* data_ = nullptr;
    std::size_t capacity_ = 0;
    std::unique_ptr<TemporaryFile> file_;
};

/// A growing array of small records in PagedMemory. Growing may move it: references do not survive Add or Append.
template <class T>
class PagedArray {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);

public:
    explicit PagedArray(MemoryBudget& budget) noexcept : memory_(budget) {}

    [[nodiscard]] std::size_t Size() const noexcept { return size_; }
    [[nodiscard]] const T* Data() const noexcept { return Items(); }
    [[nodiscard]] T& operator[](std::size_t index) noexcept { return Items()[index]; }
    [[nodiscard]] const T& operator[](std::size_t index) const noexcept { return Items()[index]; }

    void Add(const T& item)
    {
        MakeRoom(1);
        std::memcpy(Items() + size_++, &item, sizeof(T));
    }
    /// `items` must not point into this array.
    void Append(const T* items, std::size_t count)
    {
        MakeRoom(count);
        if (count != 0)
            std::memcpy(Items() + size_, items, count * sizeof(T));
        size_ += count;
    }
    /// Lengthens the array by `count` items of unspecified value; the first of them.
    [[nodiscard]] T* Extend(std::size_t count)
    {
        MakeRoom(count);
        size_ += count;
        return Items() + (size_ - count);
    }
    /// Cuts the array, or lengthens it by items of unspecified value.
    void SetSize(std::size_t size)
    {
        if (size > size_)
            MakeRoom(size - size_);
        size_ = size;
    }
    [[nodiscard]] bool IsInFile() const noexcept { return memory_.IsInFile(); }
    void GiveBack() const noexcept { memory_.GiveBack(); }

private:
    [[nodiscard]] T* Items() const noexcept { return reinterpret_cast<T*>(memory_.Data()); }
    void MakeRoom(std::size_t more)
    {
        if ((size_ + more) * sizeof(T) > memory_.CapacityBytes())
            memory_.Reserve((size_ + more) * sizeof(T));
    }

    PagedMemory memory_;
    std::size_t size_ = 0;
};

} // namespace velmora
