#pragma once

#include "xml/paged_memory.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace velmora {

/// A growing array of small records in PagedMemory. Growing may move it: references do not survive Add or Append.
template <class T>
class PagedArray {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);

public:
    explicit PagedArray(MemoryBudget& budget) noexcept : memory_(budget) {}

    [[nodiscard]] std::size_t Size() const noexcept { return size_; }
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
    /// Cuts the array, or lengthens it by items of unspecified value.
    void SetSize(std::size_t size)
    {
        if (size > size_)
            MakeRoom(size - size_);
        size_ = size;
    }
    [[nodiscard]] bool IsInFile() const noexcept { return memory_.IsInFile(); }

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
