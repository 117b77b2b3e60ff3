#include "jet/table/record.h"

#include <cassert>

namespace jet {

namespace {

/// What is kept from record to record.
constexpr std::size_t kMaxKept = std::size_t{1} << 20;

} // namespace

void Record::Reset(std::size_t columnCount)
{
    fields_.assign(columnCount, Field{});
    used_ = 0;
    if (buffer_.size() > kMaxKept)
        buffer_ = Bytes();
}

void Record::SetNull(std::size_t column)
{
    assert(column < fields_.size());
    fields_[column] = Field{};
}

void Record::SetStored(std::size_t column, ByteSpan stored)
{
    const Byte* begin = buffer_.data();
    // The buffer may move when it grows, and what is to be copied with it.
    const bool ownBytes = !stored.empty() && stored.data() >= begin && stored.data() < begin + used_;
    const std::size_t from = ownBytes ? static_cast<std::size_t>(stored.data() - begin) : 0;
    const MutableBytes room = SetSized(column, stored.size());
    CopyBytes(room.data(), ownBytes ? buffer_.data() + from : stored.data(), stored.size());
}

void Record::Grow(std::size_t size)
{
    constexpr std::size_t kSpare = 256;
    buffer_.resize(used_ + size + kSpare);
}

} // namespace jet
