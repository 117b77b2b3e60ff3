#pragma once

#include "jet/table/table.h"

#include <optional>

namespace jet {

/// A way through the rows of a table in the order of one index. It goes on where it is when rows are changed meanwhile.
class IndexWalk {
public:
    /// By the ascending index that stands on `column` (its position) alone; nullopt when there is none.
    [[nodiscard]] static std::optional<IndexWalk> By(const Table& table, std::size_t column);

    /// The first row whose value in the column is not less than `stored`, a value in stored form; nullopt at the end.
    std::optional<RowId> Seek(const Table& table, ByteSpan stored);
    std::optional<RowId> First(const Table& table);
    /// Goes on from `row`, which holds `record`: Next() gives the one behind it.
    void GoOnFrom(const Table& table, RowId row, const Record& record);
    std::optional<RowId> Next(const Table& table);

    /// Does every row lie behind the one before it in the file? Reads the whole index.
    [[nodiscard]] bool IsInStorageOrder(const Table& table) const;

private:
    explicit IndexWalk(std::uint16_t column) : column_(column) {}
    [[nodiscard]] std::size_t Index(const Table& table) const;
    std::optional<RowId> Take(const Table& table, IndexTree::Cursor cursor);

    std::uint16_t column_; ///< its permanent number
    IndexTree::Cursor cursor_;
    std::uint64_t changes_ = 0; ///< of the table's rows when the cursor was set
    Bytes key_;                 ///< of the row that was given last
    RowId row_;
};

} // namespace jet
