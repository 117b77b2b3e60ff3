#pragma once

#include "jet/table/table_parts.h"

namespace jet {

/// One insert, update or delete under way. First everything that can be refused is looked at, then things are changed;
/// what fails then is taken back by the savepoint around it.
class Table::RowChange {
public:
    explicit RowChange(Table& table);
    ~RowChange() { --parts_.changesUnderWay; }
    RowChange(const RowChange&) = delete;
    RowChange& operator=(const RowChange&) = delete;

    /// The row as it is now, with its keys; false when there is none.
    [[nodiscard]] bool ReadBefore(RowId row);
    /// Is the row still as ReadBefore() found it?
    [[nodiscard]] bool IsUnchanged(RowId row) const;
    [[nodiscard]] const Record& Before() const noexcept { return scratch_.before; }

    /// Looks for everything that the table has against a new record. Changes nothing.
    void CheckInsert(const Record& record);
    void CheckUpdate(const Record& record);

    RowId Insert(const Record& record);
    void Update(RowId row, const Record& record);
    void Delete(RowId row);

private:
    using Key = RowScratch::Key;

    void PrepareFields(const Record& record, bool isUpdate);
    void PrepareLongValue(std::size_t column, const Record& record, ByteSpan stored, bool isUpdate);
    void MakeKeys(const Record& record, std::vector<Key>& keys) const;
    void CheckKey(std::size_t index, const Key& key) const;
    [[nodiscard]] ErrorSubject IndexAsSubject(std::size_t index) const;
    [[nodiscard]] bool KeyChanges(std::size_t index) const;

    void InsertKey(std::size_t index, RowId row);
    void DeleteOldLongValues(bool keepUnchanged);
    void RaiseAutonumber(const Record& record);

    Table& table_;
    Parts& parts_;
    RowScratch& scratch_;
    std::size_t size_ = 0; ///< of the new row
};

} // namespace jet
