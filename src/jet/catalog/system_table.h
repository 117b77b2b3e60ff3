#pragma once

#include "jet/table/table.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace jet {

/// One of the basic system tables, its columns addressed by their permanent numbers.
class SystemTable {
public:
    /// Throws CorruptPage when the definition lacks one of the columns 0 to `columnCount` - 1.
    SystemTable(Pager& pager, PageNumber definitionPage, std::string name, std::size_t columnCount);

    [[nodiscard]] Table& Rows() noexcept { return table_; }

    /// Where the column stands in the table's definition and records.
    [[nodiscard]] std::size_t Position(std::uint16_t column) const noexcept { return positions_[column]; }

    /// A record without values.
    [[nodiscard]] Record Blank() const;
    [[nodiscard]] std::int32_t Long(const Record& record, std::uint16_t column) const; ///< 0 when Null
    [[nodiscard]] std::string Text(const Record& record, std::uint16_t column) const;
    [[nodiscard]] DateTime Date(const Record& record, std::uint16_t column) const;
    [[nodiscard]] Bytes Binary(const Record& record, std::uint16_t column) const;
    [[nodiscard]] bool Boolean(const Record& record, std::uint16_t column) const;
    void Set(Record& record, std::uint16_t column, const Value& value) const;

    /// The rows whose `column`, on which one index alone stands, holds `value`; in the index's order.
    [[nodiscard]] std::vector<RowId> RowsWith(std::uint16_t column, const Value& value);

private:
    static constexpr std::size_t kMaxSystemColumns = 17;

    [[nodiscard]] const Column& ColumnOf(std::uint16_t number) const
    {
        return table_.Definition().columns[positions_[number]];
    }

    Table table_;
    std::array<std::size_t, kMaxSystemColumns> positions_{}; ///< of the column with this number
};

} // namespace jet
