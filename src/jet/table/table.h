#pragma once

#include "jet/index/index_tree.h"
#include "jet/store/long_values.h"
#include "jet/table/record.h"
#include "jet/table/table_def.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace jet {

class Table;
struct TableGroup;

/// What relations ask to be told of. Called before anything is changed; throws to refuse. Cascades act from inside.
class RowHook {
public:
    virtual ~RowHook() = default;
    virtual void BeforeInsert(Table& table, const Record& record) = 0;
    virtual void BeforeUpdate(Table& table, RowId row, const Record& before, const Record& after) = 0;
    virtual void BeforeDelete(Table& table, RowId row, const Record& before) = 0;
};

/// Is the hook to be asked about a new record, or does whoever brings it know that what it refers to is there?
enum class References : std::uint8_t { Ask, Known };

/// Who can take back a change that fails half way.
class ChangeGuard {
public:
    /// From now on something is changed that may fail.
    virtual void Begin() = 0;

protected:
    ~ChangeGuard() = default;
};

/// A column as a statement asks for it.
struct ColumnSpec {
    std::string name;
    ColumnType type = ColumnType::Text;
    std::size_t characters = kMaxTextUnits; ///< text
    std::uint8_t precision = 18, scale = 0; ///< numeric: digits in all, and behind the point
    bool autonumber = false;
    bool required = false; ///< NOT NULL: a property of the table in the catalog, not part of the descriptor
};

/// An index as a statement asks for it.
struct IndexSpec {
    std::string name;
    std::vector<std::pair<std::string, SortOrder>> columns;
    bool unique = false;
    bool primary = false;
};

/// One open table: its definition, rows, long values and indexes. One object per table and connection; recordsets share
/// it.
///
/// What the object knows it has read from pages, and reads anew by Reread() when these go back to a savepoint: so a
/// function that throws may stop anywhere. Only the counters are ahead of the definition page: those of records that
/// were appended to what lies at hand, and the last autonumber, as numbers are given out for records that are not saved
/// yet, or never will be. They reach it by FlushCounters().
class alignas(kCacheLine) Table {
public:
    /// `group`: of the tables with which this one is to share what changes of rows need; none = its own.
    Table(Pager& pager, PageNumber definitionPage, std::string name, std::shared_ptr<TableGroup> group = nullptr);
    ~Table();
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    /// A new, empty table of the columns given: definition page, then map page. Throws TooManyFields,
    /// FieldDefinedTwice, TwoAutoNumbers.
    [[nodiscard]] static PageNumber Create(Pager& pager, const std::vector<ColumnSpec>& columns);

    [[nodiscard]] const std::string& Name() const noexcept { return name_; }
    [[nodiscard]] const TableDef& Definition() const noexcept { return def_; }
    [[nodiscard]] Pager& GetPager() const noexcept { return *pager_; }
    /// Counts the changes of the columns: whoever keeps column indexes looks them up anew when it has moved.
    [[nodiscard]] std::uint64_t Generation() const noexcept { return generation_; }
    /// Counts how often all rows have been written anew and got other ids (Renumber(), WidenColumns(), and the first
    /// variable column).
    [[nodiscard]] std::uint32_t RowsEpoch() const noexcept
    {
        return firstEpoch_ + static_cast<std::uint32_t>(moves_.size());
    }
    /// The id that a row has now whose id was `row` in `epoch`; nullopt when it was not there when the rows were
    /// written anew, or nobody was to ask any more.
    [[nodiscard]] std::optional<RowId> Relocated(RowId row, std::uint32_t epoch) const;
    /// What it shares with other tables, for one that is to join them.
    [[nodiscard]] const std::shared_ptr<TableGroup>& Group() const noexcept { return group_; }
    /// Counts the changes of rows and indexes, whose pages are then not what they were.
    [[nodiscard]] std::uint64_t RowChanges() const noexcept { return rowChanges_; }
    /// Nobody will ask for an id of an earlier epoch.
    void ForgetMoves() noexcept;
    void SetHook(RowHook* hook) noexcept { hook_ = hook; }
    /// `rules` are by column index.
    void SetRules(std::vector<ColumnRules> rules);
    /// From now on the values of this memo or OLE column never stay in the row, however short.
    void SetNeverInline(std::size_t column) { def_.columns[column].neverInline = true; }

    // Rows. A row is named by its home slot, which never changes.

    /// Throws DuplicateKey, NullInPrimaryKey, FieldRequired, RecordTooLarge, DatabaseFull, and what the hook throws.
    /// The hook is asked last, when the table itself has nothing against the record; until then nothing is changed.
    /// `guard`, when there is one, is told before it is, unless what is changed then cannot fail, as with most records.
    RowId Insert(const Record& record, ChangeGuard* guard = nullptr, References references = References::Ask);
    /// Replaces all values of `row`; throws as Insert(), and RecordDeleted. A long value that stays the same is not
    /// written again. `record` must not be changed by the hook.
    void Update(RowId row, const Record& record);
    /// Puts another value in the place of that of a fixed column on which no index stands. False, and nothing has
    /// changed, when `column` is another one, or `row` has none there. The hook is not asked.
    [[nodiscard]] bool Overwrite(RowId row, std::size_t column, ByteSpan stored);
    /// Throws RecordDeleted. When the hook has deleted the row itself (a cascade that goes round), that is all.
    void Delete(RowId row);
    /// All values; long values resolved. Throws RecordDeleted when there is no such row.
    void Read(RowId row, Record& record) const;
    [[nodiscard]] bool Exists(RowId row) const;
    [[nodiscard]] Value Get(const Record& record, std::size_t column) const;
    /// The next autonumber, which from now on counts as given.
    [[nodiscard]] std::int32_t TakeAutonumber();
    /// Gives `number` back when it is the last one given.
    void ReturnAutonumber(std::int32_t number) noexcept;

    /// First live row behind `after` in storage order (nullopt: from the start); nullopt at the end. Rows may be
    /// changed and deleted while walking.
    [[nodiscard]] std::optional<RowId> NextRow(std::optional<RowId> after) const;

    // Keys.

    /// The key of `record` in real index `index` (0-based); nullopt when the index leaves such a record out.
    [[nodiscard]] std::optional<Bytes> KeyOf(std::size_t index, const Record& record) const;
    /// The same into a buffer that is used again and again: `key` is replaced. False when the index leaves the record
    /// out.
    [[nodiscard]] bool MakeKey(std::size_t index, const Record& record, Bytes& key) const;
    [[nodiscard]] IndexTree& Tree(std::size_t index) const;

    // Structure.

    // Each function writes the definition, counters included. Whether a name is a good one the catalog has asked.

    /// Throws FieldExists, TooManyFields (255 columns stand in the table; numbers used up by dropped ones are won back
    /// by Renumber()), TwoAutoNumbers, SizeTooLong. An autonumber column numbers the rows that are there
    /// from 1.
    void AddColumn(const ColumnSpec& column);
    /// Throws NoSuchField, FieldInIndex (also for the last column), FieldInRelation.
    void DropColumn(std::string_view name);
    /// Makes text columns longer texts, in their places, or memos, which stand last, and numbers, dates and booleans
    /// texts, in their places; everything else about them stays. Column numbers may change. No index stands on one that
    /// becomes a memo: the caller has looked. Throws NoSuchField, SizeTooLong, SyntaxErrorInFieldDefinition (any other
    /// change), FieldTooSmall (for a value's text), RecordTooLarge.
    void WidenColumns(const std::vector<ColumnSpec>& columns);
    /// Which text columns have to become memos before `record` fits a page: those of the longest stored form first, no
    /// more than needed. Empty when it fits as it is; nullopt when it does not even so. Columns with an index stay.
    [[nodiscard]] std::optional<std::vector<std::size_t>> TextsToWiden(const Record& record) const;
    /// Fills the index from the rows. Throws IndexExists, PrimaryKeyExists, TooManyIndexes, NoSuchField, DuplicateKey,
    /// NullInPrimaryKey.
    void CreateIndex(const IndexSpec& index);
    /// Removes a logical index (of any type), and its real one when no other uses it. Throws NoSuchIndex.
    void DropIndex(std::string_view name);
    /// Adds one side of a relation; its number becomes what Definition().NextIndexNumber() is now. Of `entry` name,
    /// side, partner and rules count. `columns` are permanent column numbers. On the referencing side the real index on
    /// exactly these columns is shared, or made when there is none; the referenced side needs a unique one. Throws
    /// IndexNameTaken, TooManyIndexes, NotUniquelyIndexed.
    void AddRelationIndex(LogicalIndex entry, const std::vector<std::uint16_t>& columns);
    /// Writes the table anew with column numbers from 0, as compacting does. Row ids change.
    void Renumber();
    /// Frees everything that belongs to the table; nothing but the destructor may be called afterwards.
    void Destroy();
    /// Writes the counters of all tables of its group to their definition pages. Before every commit, and before every
    /// savepoint but that of an insert's guard.
    void FlushCounters();
    /// To be called after pages have gone back to a savepoint: reads the definition anew. The columns have no rules
    /// then. Numbers once given stay given, and what was counted before the savepoint stays counted.
    void Reread();

private:
    struct Parts;
    class RowChange;
    class Rewrite;
    void AddIndex(LogicalIndex entry, const RealIndex* wanted);
    void ChangeTo(TableDef def, bool rewrites);
    void Adopt(TableDef def);
    void TakeKeyCounts(TableDef& def) const;
    void StoreCounters();
    void NoteAhead();
    void NumberRows(std::size_t column);

    // What comes with every record that is added, the definition's counters included.
    Pager* pager_;
    std::unique_ptr<Parts> parts_; ///< trees, long-value stores, insert position
    std::shared_ptr<TableGroup> group_;
    std::uint64_t generation_ = 0;
    std::uint64_t rowChanges_ = 0;
    RowHook* hook_ = nullptr;
    bool isNumberAhead_ = false;  ///< lastAutonumber differs from the page's
    bool areCountsAhead_ = false; ///< rows were appended that the page does not count
    bool isNoted_ = false;        ///< in the group, as one of which either may be so
    TableDef def_;

    std::string name_;
    std::uint32_t firstEpoch_ = 0; ///< the epoch of moves_[0]
    /// All rows written anew.
    struct Move {
        RowId ownedPages;                         ///< what the definition named until then
        std::vector<std::pair<RowId, RowId>> ids; ///< before and after, in the order of those before
    };
    std::vector<Move> moves_; ///< by epoch
};

} // namespace jet
