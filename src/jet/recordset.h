#pragma once

#include "jet/base/value.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace jet {

/// An updatable view of one table: rows one after another, and one record at a time that is being added or changed. It
/// must not outlive its connection.
///
/// The rules that the columns' properties make are kept: Required, AllowZeroLength and a DefaultValue that is a literal
/// or a simple function. ValidationRule is not looked at, nor is a default value that is any other expression.
///
/// Fields are addressed by position, 0-based in the order of the table's columns; Generation() tells when positions and
/// field count have changed (a column was added or dropped through any path on the connection).
class Recordset {
public:
    enum class State { Closed = 0, Open = 1 };

    ~Recordset();
    Recordset(Recordset&&) noexcept;
    Recordset& operator=(Recordset&&) noexcept;

    [[nodiscard]] const std::string& Source() const noexcept; ///< the table's name
    [[nodiscard]] State GetState() const noexcept;
    void Close(); ///< drops a pending record

    // Fields.

    [[nodiscard]] std::uint64_t Generation() const noexcept;
    [[nodiscard]] std::size_t FieldCount() const;
    [[nodiscard]] const std::string& FieldName(std::size_t field) const;
    /// Position of the field of exactly this name, letter case included; nullopt when there is none.
    [[nodiscard]] std::optional<std::size_t> FieldIndex(std::string_view name) const;
    [[nodiscard]] bool IsMemo(std::size_t field) const;
    [[nodiscard]] bool IsLong(std::size_t field) const; ///< a whole number of 32 bits, an autonumber's too
    [[nodiscard]] bool IsAutonumber(std::size_t field) const;
    /// Characters that the text field may hold; 0 for a memo, and for every other type.
    [[nodiscard]] std::size_t MaxCharacters(std::size_t field) const;
    /// Characters that `utf8` has in this file: UTF-16 code units, in Access 97 bytes of its code page.
    [[nodiscard]] std::size_t CountCharacters(std::string_view utf8) const;
    /// Of the pending record, else of the current one. Reading the autonumber of a pending record gives it its number.
    [[nodiscard]] Value Get(std::size_t field);

    // A record being added or changed.

    /// Begins a record, with the default values of its fields.
    void AddNew();
    [[nodiscard]] bool IsPending() const noexcept;
    /// Text, converted to the column's type. Of the pending record; without one, of the current record, which is
    /// changed when Update() saves it. Throws FieldTooSmall (3163), EmptyTextRefused (3315), WrongType (3421); the
    /// field keeps its value then.
    void SetText(std::size_t field, std::string_view utf8);
    void SetLong(std::size_t field, std::int32_t value);
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
    void CancelUpdate();
    /// Deletes the current record; of a pending one the same as CancelUpdate().
    void Delete();
    /// The primary key's or any autonumber of the record last saved; nullopt when the table has none.
    [[nodiscard]] std::optional<std::int32_t> LastAutonumber() const noexcept;
    /// A token for the record last saved, by which it can be deleted later: until a commit that finds no recordset open
    /// on the table.
    [[nodiscard]] std::uint64_t Bookmark() const noexcept;
    void DeleteBookmark(std::uint64_t bookmark);
    /// Characters that did not exist in the file's code page and became "?" since the recordset was opened (Access 97).
    [[nodiscard]] std::size_t ReplacedCharacters() const noexcept;
    /// Texts that became dates without the time zone that they named, since the recordset was opened.
    [[nodiscard]] std::size_t ZonesLeftOut() const noexcept;

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
    class Impl;
    explicit Recordset(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

} // namespace jet
