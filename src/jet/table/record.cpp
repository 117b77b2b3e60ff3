#include "jet/table/record.h"

#include <cassert>

namespace jet {

void Record::Reset(std::size_t columnCount)
{
    fields_.assign(columnCount, Field{});
    buffer_.clear();
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
    const bool ownBytes = !stored.empty() && stored.data() >= begin && stored.data() < begin + buffer_.size();
    const std::size_t from = ownBytes ? static_cast<std::size_t>(stored.data() - begin) : 0;
    const MutableBytes room = SetSized(column, stored.size());
    if (!stored.empty())
        std::memcpy(room.data(), ownBytes ? buffer_.data() + from : stored.data(), stored.size());
}

MutableBytes Record::SetSized(std::size_t column, std::size_t size)
{
    assert(column < fields_.size());
    // A value always gets fresh room, even when its old one would do: two fields never share bytes, and what a field
    // held before is only waste until the next Reset().
    const std::size_t begin = buffer_.size();
    buffer_.resize(begin + size);
    fields_[column] = {begin, size};
    return MutableBytes(buffer_).subspan(begin, size);
}

std::optional<ByteSpan> Record::Stored(std::size_t column) const noexcept
{
    const Field& field = fields_[column];
    if (field.size == kNull)
        return std::nullopt;
    return ByteSpan(buffer_).subspan(field.begin, field.size);
}

} // namespace jet
