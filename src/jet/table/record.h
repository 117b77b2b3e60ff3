#pragma once

#include "jet/table/table_def.h"

#include <optional>
#include <utility>
#include <vector>

namespace jet {

/// The values of one record, in stored form, by column index (position in TableDef::columns, 0-based). All bytes lie in
/// one buffer that is kept from record to record. A memo or OLE value is held as its resolved bytes; a boolean as one
/// byte, 0 or 1, and Null is False.
class Record {
    static constexpr std::size_t kNull = ~std::size_t{0};
    struct Field {
        std::size_t begin = 0;
        std::size_t size = kNull;
    };

public:
    Record() = default;
    Record(const Record& other)
        : fields_(other.fields_), buffer_(other.buffer_.begin(), other.buffer_.begin() + other.Used()),
          used_(other.used_)
    {
    }
    Record(Record&& other) noexcept { Swap(other); }
    Record& operator=(Record other) noexcept
    {
        Swap(other);
        return *this;
    }
    ~Record() = default;

    /// All fields Null (booleans False), for `columnCount` columns.
    void Reset(std::size_t columnCount);
    [[nodiscard]] std::size_t ColumnCount() const noexcept { return fields_.size(); }

    void SetNull(std::size_t column);
    /// `stored` may be part of this record.
    void SetStored(std::size_t column, ByteSpan stored);
    /// `size` bytes that become the field's value; to be filled at once.
    [[nodiscard]] MutableBytes SetSized(std::size_t column, std::size_t size)
    {
        // A value always gets fresh room, even when its old one would do: two fields never share bytes, and what a
        // field held before is only waste until the next Reset().
        const MutableBytes room = Room(size);
        Take(column, size);
        return room;
    }
    /// `size` bytes, which become a value by Take() or are left to the next one.
    [[nodiscard]] MutableBytes Room(std::size_t size)
    {
        if (buffer_.size() - used_ < size)
            Grow(size);
        return {buffer_.data() + used_, size};
    }
    /// The first `size` bytes of the Room() last given become the field's value.
    void Take(std::size_t column, std::size_t size)
    {
        fields_[column] = {used_, size};
        used_ += size;
    }
    /// What `append`, called with a buffer, puts behind its end becomes the field's value. The field keeps the one it
    /// has when that throws.
    template <typename Append>
    void Encode(std::size_t column, const Append& append)
    {
        buffer_.resize(used_);
        append(buffer_);
        fields_[column] = {used_, buffer_.size() - used_};
        used_ = buffer_.size();
    }
    [[nodiscard]] bool IsNull(std::size_t column) const noexcept { return fields_[column].size == kNull; }
    /// Is there a value of exactly `size` bytes?
    [[nodiscard]] bool HoldsBytes(std::size_t column, std::size_t size) const noexcept
    {
        return fields_[column].size == size;
    }
    [[nodiscard]] std::optional<ByteSpan> Stored(std::size_t column) const noexcept
    {
        const Field& field = fields_[column];
        if (field.size == kNull)
            return std::nullopt;
        return ByteSpan(buffer_.data() + field.begin, field.size);
    }

    /// The values as they are, for whoever goes through all of them: valid until the record changes.
    class View {
    public:
        [[nodiscard]] bool IsNull(std::size_t column) const noexcept { return fields_[column].size == kNull; }
        /// Of a field that is not Null.
        [[nodiscard]] ByteSpan Value(std::size_t column) const noexcept
        {
            return {bytes_ + fields_[column].begin, fields_[column].size};
        }

    private:
        friend class Record;
        View(const Field* fields, const Byte* bytes) noexcept : fields_(fields), bytes_(bytes) {}
        const Field* fields_;
        const Byte* bytes_;
    };
    [[nodiscard]] View Values() const noexcept { return {fields_.data(), buffer_.data()}; }

private:
    void Grow(std::size_t size);
    void Swap(Record& other) noexcept
    {
        std::swap(fields_, other.fields_);
        std::swap(buffer_, other.buffer_);
        std::swap(used_, other.used_);
    }
    [[nodiscard]] std::ptrdiff_t Used() const noexcept { return static_cast<std::ptrdiff_t>(used_); }

    std::vector<Field> fields_;
    Bytes buffer_; ///< of which the values take `used_` bytes
    std::size_t used_ = 0;
};

} // namespace jet
