#pragma once

#include "jet/table/table_def.h"

#include <optional>
#include <vector>

namespace jet {

/// The values of one record, in stored form, by column index (position in TableDef::columns, 0-based). All bytes lie in
/// one buffer that is kept from record to record. A memo or OLE value is held as its resolved bytes; a boolean as one
/// byte, 0 or 1, and Null is False.
class Record {
public:
    /// All fields Null (booleans False), for `columnCount` columns.
    void Reset(std::size_t columnCount);
    [[nodiscard]] std::size_t ColumnCount() const noexcept { return fields_.size(); }

    void SetNull(std::size_t column);
    /// `stored` may be part of this record.
    void SetStored(std::size_t column, ByteSpan stored);
    /// Room for `size` bytes in the buffer that become the field's value; to be filled at once.
    [[nodiscard]] MutableBytes SetSized(std::size_t column, std::size_t size);
    /// What `append`, called with the buffer, puts behind its end becomes the field's value. The field keeps the one it
    /// has when that throws.
    template <typename Append>
    void Encode(std::size_t column, const Append& append)
    {
        const std::size_t begin = buffer_.size();
        append(buffer_);
        fields_[column] = {begin, buffer_.size() - begin};
    }
    [[nodiscard]] bool IsNull(std::size_t column) const noexcept { return fields_[column].size == kNull; }
    [[nodiscard]] std::optional<ByteSpan> Stored(std::size_t column) const noexcept;

private:
    static constexpr std::size_t kNull = ~std::size_t{0};
    struct Field {
        std::size_t begin = 0;
        std::size_t size = kNull;
    };
    std::vector<Field> fields_;
    Bytes buffer_;
};

} // namespace jet
