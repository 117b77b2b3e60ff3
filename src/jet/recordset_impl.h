#pragma once

#include "jet/catalog/catalog.h"
#include "jet/index_walk.h"
#include "jet/recordset.h"
#include "jet/relations/integrity.h"
#include "jet/table/table.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace jet {

/// See Recordset. Fields are the table's columns by their positions; what is kept by position is brought up to date
/// before anything is done after the columns have changed.
class Recordset::Impl final : public PendingRecord {
public:
    Impl(Catalog& catalog, ReferentialIntegrity& integrity, std::string_view table);
    ~Impl() override { Close(); }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    [[nodiscard]] const std::string& Source() const noexcept { return source_; }
    [[nodiscard]] bool IsOpen() const noexcept { return table_ != nullptr; }
    void Close() noexcept;

    [[nodiscard]] std::uint64_t Generation() const noexcept { return table_ ? table_->Generation() : generation_; }
    [[nodiscard]] const std::vector<Column>& Columns() const { return OpenTable().Definition().columns; }
    [[nodiscard]] const Column& ColumnAt(std::size_t field) const;
    [[nodiscard]] std::size_t MaxCharacters(std::size_t field) const;
    [[nodiscard]] std::size_t CountCharacters(std::string_view utf8) const;
    [[nodiscard]] Value Get(std::size_t field);

    void AddNew();
    [[nodiscard]] bool IsPending() const noexcept { return pending_; }
    void SetText(std::size_t field, std::string_view utf8);
    void SetLong(std::size_t field, std::int32_t value);
    void Set(std::size_t field, const Value& value);
    void Update();
    [[nodiscard]] std::optional<std::vector<std::size_t>> TextsToWiden();
    void CancelUpdate() noexcept;
    void Delete();
    [[nodiscard]] std::optional<std::int32_t> LastAutonumber() const noexcept { return lastAutonumber_; }
    [[nodiscard]] std::uint64_t Bookmark() const noexcept;
    void DeleteBookmark(std::uint64_t bookmark);
    [[nodiscard]] std::size_t ReplacedCharacters() const noexcept { return replaced_; }
    [[nodiscard]] std::size_t ZonesLeftOut() const noexcept { return zonesLeftOut_; }

    [[nodiscard]] bool Eof();
    void MoveFirst();
    void MoveNext();
    [[nodiscard]] bool WalkBy(std::size_t field);
    void Seek(const Value& value);
    [[nodiscard]] std::uint64_t Position();
    void MoveTo(std::uint64_t position);
    [[nodiscard]] bool IsInStorageOrder();

    [[nodiscard]] const Table& PendingTable() const override { return *table_; }
    [[nodiscard]] const Record& PendingValues() override;

private:
    [[nodiscard]] Table& OpenTable() const;
    /// The column for a field that is about to be set. Throws NoCurrentRecord unless a record is pending.
    const Column& ColumnToSet(std::size_t field);
    void Follow();
    void TakeLayout();
    void RequireUserTable() const;
    void Load();
    void StandOn(std::optional<RowId> row);
    void GoOnFromHere();
    [[nodiscard]] IndexWalk& Walk();
    void FollowWalk(std::string_view column);
    void BeginEdit();
    void SaveEdit();
    void SetDefault(std::size_t field);
    void SetRandom(MutableBytes bytes);
    void NoteOwnNumber(std::size_t field, std::int32_t value);
    void SetDateText(std::size_t field, std::string_view utf8);
    void EncodeTextInto(const Column& column, std::string_view utf8);

    Catalog& catalog_;
    std::shared_ptr<Table> table_; ///< none once closed
    ReferentialIntegrity& integrity_;
    std::string source_;

    // As of generation_.
    std::uint64_t generation_ = 0;
    std::vector<Column> columns_;
    std::optional<std::size_t> autonumber_; ///< the field that the table's counter fills
    std::vector<std::size_t> defaults_;     ///< fields with a default value
    std::uint32_t rowsEpoch_ = 0;           ///< see Table::RowsEpoch()

    bool pending_ = false;
    bool editing_ = false;                    ///< the current record has been given values and not been saved
    bool started_ = false;                    ///< row_ tells where we are
    bool loaded_ = false;                     ///< record_ holds the current row
    std::optional<RowId> row_;                ///< the current row; none behind the last
    std::optional<IndexWalk> walk_;           ///< none: in storage order
    std::size_t walkField_ = 0;               ///< by whose index walk_ goes
    bool walkIsHere_ = true;                  ///< walk_ stands on row_
    Record record_;                           ///< the pending or edited record, else see loaded_
    std::optional<std::int32_t> takenNumber_; ///< given to the pending record by the table
    std::optional<std::int32_t> lastAutonumber_;
    RowId lastSaved_;
    std::uint32_t lastSavedEpoch_ = 0;
    std::size_t replaced_ = 0;
    std::size_t zonesLeftOut_ = 0;
    Bytes encoded_; ///< kept from field to field
};

} // namespace jet
