#pragma once

#include "jet/recordset.h"
#include "schema/engine_errors.h"
#include "schema/lock_retry.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {

/// How a date with a time is written.
enum class DateForm {
    Blank, ///< "2024-03-05 14:07:09"
    Iso,   ///< "2024-03-05T14:07:09", "2024-03-05" for a midnight and "14:07:09" for a time without a date
};

/// An open table to which records are added: the engine's recordset with the engine's failures as RuntimeError.
///
/// Fields are addressed by position, 0-based; Layout() tells when positions have changed.
class Recordset {
public:
    Recordset(std::unique_ptr<jet::Recordset> records, const LockSeam& locks)
        : records_(std::move(records)), locks_(&locks)
    {
    }

    [[nodiscard]] const std::string& Source() const noexcept { return records_->Source(); } ///< the table's name
    [[nodiscard]] bool IsOpen() const noexcept { return records_->GetState() == jet::Recordset::State::Open; }
    void Close() { records_->Close(); }

    /// Changes whenever a column of the table was added, dropped or widened, through whatever recordset or statement.
    /// Never 0.
    [[nodiscard]] std::uint64_t Layout() const noexcept { return 1 + records_->Generation(); }
    [[nodiscard]] std::size_t FieldCount() const { return records_->FieldCount(); }
    [[nodiscard]] const std::string& FieldName(std::size_t field) const { return records_->FieldName(field); }
    /// Position of the field of exactly this name, letter case included.
    [[nodiscard]] std::optional<std::size_t> FieldIndex(std::string_view name) const
    {
        return records_->FieldIndex(name);
    }
    [[nodiscard]] bool IsLong(std::size_t field) const { return records_->IsLong(field); }
    [[nodiscard]] jet::ColumnType Type(std::size_t field) const { return records_->Type(field); }
    [[nodiscard]] bool IsAutonumber(std::size_t field) const { return records_->IsAutonumber(field); }
    /// Does it refuse the text of no characters?
    [[nodiscard]] bool RefusesEmptyText(std::size_t field) const { return records_->RefusesEmptyText(field); }
    /// Characters that the text field may hold; 0 for a memo, and for every other type.
    [[nodiscard]] std::size_t MaxCharacters(std::size_t field) const { return records_->MaxCharacters(field); }
    /// Characters that a text has in this file: UTF-16 code units, in Access 97 bytes of its code page.
    [[nodiscard]] std::size_t CountCharacters(std::string_view utf8) const { return records_->CountCharacters(utf8); }

    /// Is there no row at, or behind, the current one? A recordset just opened stands on its first row.
    [[nodiscard]] bool Eof();
    /// Appends the field's value to `out` as text; see below for the forms. Of the pending record, else of the one last
    /// saved.
    ///
    /// False for Null, which is empty; text is itself; numbers are in the shortest form that reads back the same, with
    /// a point; booleans "True" and "False"; dates as `dates` says; bytes hexadecimal; GUIDs in braces.
    bool AppendText(std::size_t field, std::string& out, DateForm dates = DateForm::Blank);
    /// The same as documents write it: booleans "true" and "false", dates "2024-03-05" or "2024-03-05T14:07:09", of a
    /// column of times of day "14:07:09", numbers without an exponent.
    bool AppendIsoText(std::size_t field, bool isTimeOfDay, std::string& out);

    // Walking through records that are there, see jet::Recordset.

    [[nodiscard]] std::uint64_t RecordCount() const { return records_->RecordCount(); }
    void MoveFirst();
    void MoveNext();
    [[nodiscard]] bool WalkBy(std::size_t field);
    void Seek(std::int32_t key);
    [[nodiscard]] std::uint64_t Position();
    void MoveTo(std::uint64_t position);
    [[nodiscard]] bool IsInStorageOrder();

    void AddNew()
    {
        Translated([&] { records_->AddNew(); });
    }
    [[nodiscard]] bool IsPending() const noexcept { return records_->IsPending(); }
    /// Throws 3163 (the field is too small) and 3421 (no conversion to the column's type); the field keeps its value
    /// then.
    void SetText(std::size_t field, std::string_view utf8)
    {
        Translated([&] { records_->SetText(field, utf8); });
        if (records_->ZonesLeftOut() != zonesNoted_ || records_->ReplacedCharacters() != replacedNoted_)
            NoteLoss(field);
    }
    void SetLong(std::size_t field, std::int32_t value)
    {
        Translated([&] { records_->SetLong(field, value); });
    }
    /// The same with the autonumber of a record that was saved through `parent` and not deleted since, or is pending
    /// there: nobody looks for it again.
    void SetReference(std::size_t field, std::int32_t number, const Recordset& parent)
    {
        Translated([&] { records_->SetReference(field, number, *parent.records_); });
    }
    /// Takes the field's value away, also one that it has by default.
    void SetNull(std::size_t field);
    /// Saves the pending record. When the engine refuses it, it stays pending.
    void Update()
    {
        Translated([&] {
            if (locks_->onWrite)
                locks_->onWrite();
            records_->Update();
        });
    }
    void CancelUpdate();
    /// Whole number in a field of the pending record, else of the record last saved; 0 when there is none. An
    /// autonumber that is asked for here is given to the pending record.
    [[nodiscard]] std::int32_t GetLong(std::size_t field)
    {
        const auto number = Translated([&] { return records_->PendingNumber(field); });
        return number ? *number : ReadLong(field);
    }
    /// After 3047: the text fields that have to become memos so that the pending record fits, those with the most
    /// stored bytes first and no more than needed. Empty when it is not the record that is too large; nullopt when
    /// nothing makes it fit. Fields with an index or in a relation are not among them.
    [[nodiscard]] std::optional<std::vector<std::size_t>> TextsToWiden();

    /// By this token the record last saved can be deleted later.
    [[nodiscard]] std::uint64_t Bookmark() const noexcept { return records_->Bookmark(); }
    void DeleteBookmark(std::uint64_t bookmark);
    /// Deletes every row with `key` in `field`; reads the whole table.
    void DeleteRows(std::size_t field, std::int32_t key);

    /// Characters that the file's code page does not know and that became "?" on their way into fields (Access 97).
    [[nodiscard]] std::size_t ReplacedCharacters() const { return records_->ReplacedCharacters(); }
    /// The column of the first of them; empty when there are none.
    [[nodiscard]] const std::string& FirstReplacedColumn() const noexcept { return firstReplacedColumn_; }
    /// Date columns that were given times with a time zone, which they cannot hold.
    [[nodiscard]] const std::vector<std::string>& ColumnsWithoutZone() const noexcept { return columnsWithoutZone_; }

private:
    void NoteLoss(std::size_t field);
    [[nodiscard]] std::int32_t ReadLong(std::size_t field);

    std::unique_ptr<jet::Recordset> records_;
    const LockSeam* locks_;
    std::size_t zonesNoted_ = 0;
    std::size_t replacedNoted_ = 0;
    std::string firstReplacedColumn_;
    std::vector<std::string> columnsWithoutZone_;
};

} // namespace velmora
