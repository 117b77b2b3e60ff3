#pragma once

#include "jet/base/value.h"
#include "jet/index_walk.h"
#include "jet/relations/integrity.h"
#include "jet/table/record.h"
#include "jet/table/record_pool.h"
#include "jet/table/table.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace jet {

class Catalog;

/// An updatable view of one table: rows one after another, and one record at a time that is being added or changed. It
/// must not outlive its connection.
///
/// The rules that the columns' properties make are kept: Required, AllowZeroLength and a DefaultValue that is a literal
/// or a simple function. ValidationRule is not looked at, nor is a default value that is any other expression.
///
/// Fields are addressed by position, 0-based in the order of the table's columns; Generation() tells when positions and
/// field count have changed (a column was added or dropped through any path on the connection).
class alignas(kCacheLine) Recordset final : private PendingRecord {
public:
    enum class State { Closed = 0, Open = 1 };

    ~Recordset() override { Close(); }
    Recordset(const Recordset&) = delete;
    Recordset& operator=(const Recordset&) = delete;

    [[nodiscard]] const std::string& Source() const noexcept { return source_; } ///< the table's name
    [[nodiscard]] State GetState() const noexcept { return table_ ? State::Open : State::Closed; }
    void Close() noexcept; ///< drops a pending record

    // Fields.

    [[nodiscard]] std::uint64_t Generation() const noexcept { return table_ ? table_->Generation() : generation_; }
    [[nodiscard]] std::size_t FieldCount() const { return Columns().size(); }
    [[nodiscard]] const std::string& FieldName(std::size_t field) const { return ColumnAt(field).name; }
    /// Position of the field of exactly this name, letter case included; nullopt when there is none.
    [[nodiscard]] std::optional<std::size_t> FieldIndex(std::string_view name) const;
    [[nodiscard]] ColumnType Type(std::size_t field) const { return ColumnAt(field).type; }
    [[nodiscard]] bool IsMemo(std::size_t field) const { return ColumnAt(field).type == ColumnType::Memo; }
    /// Is it a whole number of 32 bits? An autonumber is one too.
    [[nodiscard]] bool IsLong(std::size_t field) const { return ColumnAt(field).type == ColumnType::Long; }
    [[nodiscard]] bool IsAutonumber(std::size_t field) const { return ColumnAt(field).IsAutonumber(); }
    /// Does it refuse the text of no characters?
    [[nodiscard]] bool RefusesEmptyText(std::size_t field) const { return ColumnAt(field).rules.refusesEmpty; }
    /// Characters that the text field may hold; 0 for a memo, and for every other type.
    [[nodiscard]] std::size_t MaxCharacters(std::size_t field) const;
    /// Characters that `utf8` has in this file: UTF-16 code units, in Access 97 bytes of its code page.
    [[nodiscard]] std::size_t CountCharacters(std::string_view utf8) const;
    /// Of the pending record, else of the current one. Reading the autonumber of a pending record gives it its number.
    [[nodiscard]] Value Get(std::size_t field);

    /// The autonumber of the pending record, which is given to it; nullopt when the field is none, or no record
    /// pending.
    [[nodiscard]] std::optional<std::int32_t> PendingNumber(std::size_t field);
    /// The same as text, as a rowset has it; nullopt for Null.
    [[nodiscard]] std::optional<std::string> GetText(std::size_t field);
    /// Records of the table, as its definition counts them.
    [[nodiscard]] std::uint64_t RecordCount() const;

    // A record being added or changed.

    /// Begins a record, with the default values of its fields.
    void AddNew();
    [[nodiscard]] bool IsPending() const noexcept { return holds_ == Holds::Pending; }
    /// Text, converted to the column's type. Of the pending record; without one, of the current record, which is
    /// changed when Update() saves it. Throws FieldTooSmall (3163), EmptyTextRefused (3315), WrongType (3421); the
    /// field keeps its value then.
    void SetText(std::size_t field, std::string_view utf8);
    void SetLong(std::size_t field, std::int32_t value);
    /// The same with the autonumber of a record that was saved through `parent` and not deleted since, or is pending
    /// there. When this is what the field refers to by a relation, nobody looks for that record again.
    void SetReference(std::size_t field, std::int32_t number, const Recordset& parent);
    /// Null takes the field's value away, a default value too; a pending autonumber stays.
    void Set(std::size_t field, const Value& value);
    /// Saves the pending record, which becomes the current one, or the changes of the current one, a changed key with
    /// all that cascades from it. Throws and stays pending when the engine refuses it (DuplicateKey,
    /// RelatedRecordRequired, RecordTooLarge, FieldRequired ...).
    void Update();
    /// After RecordTooLarge: the text fields that have to become memos so that the pending record fits, those of the
    /// longest stored form first and no more than needed. Empty when the record itself fits; nullopt when it does not
    /// even so. Fields with an index or in a relation are not among them.
    [[nodiscard]] std::optional<std::vector<std::size_t>> TextsToWiden();
    /// Drops the pending record, its autonumber given back when it was the last, or the changes of the current one.
    void CancelUpdate() noexcept;
    /// Deletes the current record; of a pending one the same as CancelUpdate().
    void Delete();
    /// The primary key's or any autonumber of the record last saved; nullopt when the table has none.
    [[nodiscard]] std::optional<std::int32_t> LastAutonumber() const noexcept { return lastAutonumber_; }
    /// A token for the record last saved, by which it can be deleted later: until a commit that finds no recordset open
    /// on the table.
    [[nodiscard]] std::uint64_t Bookmark() const noexcept;
    void DeleteBookmark(std::uint64_t bookmark);
    /// Characters that did not exist in the file's code page and became "?" since the recordset was opened (Access 97).
    [[nodiscard]] std::size_t ReplacedCharacters() const noexcept { return replaced_; }
    /// Texts that became dates without the time zone that they named, since the recordset was opened.
    [[nodiscard]] std::size_t ZonesLeftOut() const noexcept { return zonesLeftOut_; }

    // Walking. What has not been saved is dropped.

    [[nodiscard]] bool Eof();
    void MoveFirst();
    void MoveNext();
    /// From now on the records come in the order of the ascending index that stands on `field` alone; those that it
    /// leaves out do not come. False, and nothing has changed, when there is no such index.
    [[nodiscard]] bool WalkBy(std::size_t field);
    /// To the first record, in the order of such a walk, whose `field` is not less than `value`.
    void Seek(const Value& value);
    /// A token for the current record, by which MoveTo() comes back to it: as long as all columns stay.
    [[nodiscard]] std::uint64_t Position();
    void MoveTo(std::uint64_t position);
    /// Do the records lie in the file in the order of such a walk? Then records with the same value in another index
    /// come in this order there. Reads the whole index.
    [[nodiscard]] bool IsInStorageOrder();

private:
    friend class Connection;
    /// What record_ is.
    enum class Holds : std::uint8_t {
        Nothing,
        Current, ///< the current row, as it is stored
        Edited,  ///< the current row with values that have not been saved
        Pending, ///< a record that is being added
    };

    /// What a column's values are to be, as far as nearly every value is set without looking at anything else.
    struct FieldForm {
        ColumnType type;
        bool isText = false; ///< the column holds texts
        bool refusesEmpty = false;
        bool isFilled = false; ///< with blanks
        std::uint8_t markSize = 0;
        /// A text of so many ASCII characters is stored as it is, behind a mark; else, in Jet 4, as UTF-16.
        std::uint32_t minCopied = 1, maxCopied = 0;
        std::uint32_t maxCompressed = kNoLimit;                         ///< bytes of UTF-8; longer ones stay plain
        std::size_t maxUnits = std::numeric_limits<std::size_t>::max(); ///< UTF-16 code units, or bytes
    };
    static constexpr std::uint32_t kNoLimit = std::numeric_limits<std::uint32_t>::max();
    [[nodiscard]] static FieldForm FormOf(const Column& column, const Format& format);

    Recordset(Catalog& catalog, ReferentialIntegrity& integrity, RecordPool& records, std::string_view table);

    [[nodiscard]] const Table& PendingTable() const override { return *table_; }
    [[nodiscard]] const Record& PendingValues() override;

    [[nodiscard]] Table& OpenTable() const
    {
        if (!table_)
            ThrowClosed();
        return *table_;
    }
    [[noreturn]] void ThrowClosed() const;
    [[nodiscard]] const std::vector<Column>& Columns() const { return OpenTable().Definition().columns; }
    [[nodiscard]] const Column& ColumnAt(std::size_t field) const;
    /// The column for a field that is about to be set. Throws NoCurrentRecord when there is no record.
    const Column& ColumnToSet(std::size_t field)
    {
        Follow();
        if (field >= forms_.size())
            ThrowNoField(field);
        if (holds_ == Holds::Nothing || holds_ == Holds::Current)
            BeginEdit();
        return columns_[field];
    }
    [[noreturn]] void ThrowNoField(std::size_t field) const;
    [[noreturn]] void ThrowNoneBegun() const;
    void Follow()
    {
        if (OpenTable().Generation() != generation_)
            FollowChange();
    }
    void FollowChange();
    void TakeLayout();
    std::int32_t TakeNumber(std::size_t field);
    void RequireUserTable() const;
    /// Of this recordset alone, with what holds_ says or anything in it.
    [[nodiscard]] Record& Values()
    {
        records_.Keep(record_);
        if (!record_)
            record_ = records_.Take();
        return *record_;
    }
    void Load();
    void StandOn(std::optional<RowId> row);
    void GoOnFromHere();
    [[nodiscard]] IndexWalk& Walk();
    void FollowWalk(std::string_view column);
    void BeginEdit();
    [[nodiscard]] References KnownReferences();
    void SaveNew();
    void SaveEdit();
    void DeleteRow(RowId row);
    void SetDefault(std::size_t field);
    void SetRandom(MutableBytes bytes);
    void NoteOwnNumber(std::size_t field, std::int32_t value);
    void SetDateText(std::size_t field, std::string_view utf8);
    [[nodiscard]] bool SetAscii(const FieldForm& form, std::size_t field, std::string_view utf8);
    void AppendEncoded(Bytes& out, std::size_t field, std::string_view utf8);

    /// What SetReference() was told of the pending record.
    struct Told {
        std::uint32_t field = 0;
        std::int32_t number = 0;
        const Table* parent = nullptr; ///< none: nothing
    };

    // What comes with every record that is added.
    std::shared_ptr<Table> table_;   ///< none once closed
    std::uint64_t generation_ = 0;   ///< of the table when all that follows from its columns was last looked up
    std::unique_ptr<Record> record_; ///< always there when holds_ is Edited or Pending
    std::vector<FieldForm> forms_;   ///< by field
    Holds holds_ = Holds::Nothing;
    bool isPlaced_ = false;                   ///< row_ tells where we are
    bool walkIsHere_ = true;                  ///< walk_ stands on row_
    bool isUserTable_ = false;                ///< not one of the engine's own
    std::optional<RowId> row_;                ///< the current row; none behind the last
    std::optional<std::uint32_t> autonumber_; ///< the field that the table's counter fills
    std::optional<std::int32_t> takenNumber_; ///< given to the pending record by the table
    std::optional<std::int32_t> lastAutonumber_;
    RowId lastSaved_;
    std::uint32_t lastSavedEpoch_ = 0;
    std::uint32_t rowsEpoch_ = 0; ///< see Table::RowsEpoch()
    Told told_;
    ReferenceFacts references_;                                ///< of the table
    std::uint64_t structure_ = ~static_cast<std::uint64_t>(0); ///< the version for which they hold
    Catalog& catalog_;
    ReferentialIntegrity& integrity_;
    RecordPool& records_;
    std::vector<std::size_t> defaults_; ///< fields with a default value
    std::size_t replaced_ = 0;
    std::size_t zonesLeftOut_ = 0;

    std::string source_;
    std::vector<Column> columns_;
    std::optional<IndexWalk> walk_; ///< none: in storage order
    std::size_t walkField_ = 0;     ///< by whose index walk_ goes
};

} // namespace jet
