#pragma once

#include "jet/base/bytes.h"

#include <cstddef>
#include <vector>

namespace jet {

/// Entries of an index page put back to full length, in order, all in one buffer.
class EntryList {
public:
    [[nodiscard]] std::size_t Count() const noexcept { return ends_.size(); }
    [[nodiscard]] ByteSpan operator[](std::size_t index) const noexcept
    {
        const std::size_t begin = index == 0 ? 0 : ends_[index - 1];
        return ByteSpan(bytes_).subspan(begin, ends_[index] - begin);
    }
    /// Bytes of `count` entries from `first`.
    [[nodiscard]] std::size_t Size(std::size_t first, std::size_t count) const noexcept
    {
        return count == 0 ? 0 : ends_[first + count - 1] - (first == 0 ? 0 : ends_[first - 1]);
    }
    /// Appends the entry made of `head` and `rest`.
    void Add(ByteSpan head, ByteSpan rest = {})
    {
        AppendBytes(bytes_, head);
        AppendBytes(bytes_, rest);
        ends_.push_back(bytes_.size());
    }
    void Reserve(std::size_t count, std::size_t bytes)
    {
        ends_.reserve(count);
        bytes_.reserve(bytes);
    }

private:
    Bytes bytes_;
    std::vector<std::size_t> ends_;
};

} // namespace jet
