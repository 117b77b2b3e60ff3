#pragma once

#include "jet/table/key_plan.h"
#include "jet/table/long_fields.h"
#include "jet/table/row_codec.h"
#include "jet/table/row_store.h"
#include "jet/table/table.h"

#include <memory>
#include <vector>

/// What the files of Table share, and nobody else sees; how all rows are written anew: rewrite.h.
namespace jet {

/// What one change of a row needs beside the record; kept from row to row so that no change allocates.
struct RowScratch {
    struct Key {
        Bytes bytes; ///< the key as the index has it
        KeyFacts facts;
        bool inIndex = false;         ///< the index does not leave the record out
        IndexTree::Standing standing; ///< in the index, of a new record
        PageAtHand leaf;              ///< the one to which a new record's entry can be appended
    };

    Bytes oldRow;                 ///< the row as it was
    Record before;                ///< the same, read
    std::vector<RowField> fields; ///< by column index, of a table with long values
    LongFields longFields;
    std::vector<Key> keys; ///< by real index; there may be more than the table has
    std::vector<Key> oldKeys;
};

/// What the tables of a connection share.
struct TableGroup {
    /// Shared, so that they stay in the processor's cache when every record is one of another table. One for each
    /// change under way: a hook may change further rows before a change goes on.
    std::vector<std::unique_ptr<RowScratch>> scratches;
    std::size_t usedScratches = 0;
    std::vector<Table*> ahead; ///< those whose definition pages may lack what they have counted

    [[nodiscard]] RowScratch& AcquireScratch()
    {
        if (usedScratches == scratches.size())
            scratches.push_back(std::make_unique<RowScratch>());
        return *scratches[usedScratches++];
    }
};

/// Everything that follows from one state of the definition.
struct alignas(kCacheLine) Table::Parts {
    Parts(Pager& pager, const TableDef& def);
    /// To be called when the rules of the columns of `def` have changed.
    void TakeRules(const TableDef& def);

    /// The keys of one real index, and where they are.
    struct alignas(kCacheLine) Index {
        KeyPlan plan;
        IndexTree tree;
    };
    std::vector<Index> indexes;            ///< by real index; they never move
    std::vector<std::size_t> required;     ///< column indexes of those that refuse Null
    std::optional<std::size_t> autonumber; ///< column index
    RowLayout layout;                      ///< of rows as they are written now; older ones may have fewer fields
    RowStore rows;
    std::vector<std::unique_ptr<LongValues>> longValues; ///< by column index; empty for other columns
    std::vector<std::size_t> allColumns;                 ///< 0, 1, 2 ...
};

/// One insert, update or delete under way. First everything that can be refused is looked at, then things are changed;
/// what fails then is taken back by the savepoint around it.
class Table::RowChange {
public:
    explicit RowChange(Table& table);
    ~RowChange() { --table_.group_->usedScratches; }
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

    /// After CheckInsert(): looks for all that the record takes, and whether it lies at hand. Then Append() puts it
    /// there, and cannot fail.
    [[nodiscard]] bool FindAtHand();
    RowId Append(const Record& record);
    RowId Insert(const Record& record);
    void Update(RowId row, const Record& record);
    void Delete(RowId row);

private:
    using Key = RowScratch::Key;

    void MeasureRow(const Record& record, bool isUpdate);
    void PrepareFields(const Record& record, bool isUpdate);
    void Encode(const Record& record, MutableBytes row) const;
    void CheckMayBeNull(std::size_t column, bool isUpdate) const;
    void PrepareLongValue(std::size_t column, const Record& record, ByteSpan stored, bool isUpdate);
    [[nodiscard]] Key* Keys(std::vector<Key>& keys) const;
    void MakeKeys(const Record& record, std::vector<Key>& keys) const;
    static void MakeKey(const Parts::Index& index, const Record& record, Key& key);
    void CheckKey(const Parts::Index& index, Key& key) const;
    [[noreturn]] void Refuse(const Parts::Index& refusing, ErrorNumber number) const;
    [[nodiscard]] bool KeyChanges(std::size_t index) const;

    void WriteLongValues();
    void InsertKey(std::size_t index, RowId row);
    void CountRow(const Record& record);
    void DeleteOldLongValues(bool keepUnchanged);
    void RaiseAutonumber(const Record& record);

    Table& table_;
    Parts& parts_;
    RowScratch& scratch_;
    std::size_t size_ = 0;                       ///< of the new row
    std::optional<RowStore::PlaceAtHand> place_; ///< what FindAtHand() has found, beside the leaves
};

} // namespace jet
