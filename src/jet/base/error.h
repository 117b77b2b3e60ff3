#pragma once

#include "jet/base/row_id.h"

#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace jet {

/// The engine's own error numbers, as every Access programmer knows them.
enum class ErrorNumber : int {
    TableExists = 3010,        ///< Table '|' already exists.
    ObjectNotFound = 3011,     ///< The engine could not find the object '|'.
    NoCurrentRecord = 3021,    ///< No current record.
    DuplicateKey = 3022,       ///< ... would create duplicate values in the index, primary key, or relationship.
    FileNotFound = 3024,       ///< Could not find file '|'.
    DiskFull = 3026,           ///< Not enough space on disk.
    ReadOnly = 3027,           ///< Cannot update. Database or object is read-only.
    NotAValidPassword = 3031,  ///< Not a valid password.
    DatabaseFull = 3036,       ///< Database has reached maximum size.
    TooManyIndexes = 3039,     ///< Could not create index; too many indexes already defined.
    DiskError = 3043,          ///< Disk or network error.
    InvalidPath = 3044,        ///< '|' is not a valid path.
    FileInUse = 3045,          ///< Could not use '|'; file already in use.
    RecordTooLarge = 3047,     ///< Record is too large.
    NotADatabase = 3049,       ///< Cannot open database '|'. It may not be a database ..., or may be corrupt.
    CannotOpen = 3051,         ///< ... cannot open the file '|'. It is already opened exclusively ...
    NullInPrimaryKey = 3058,   ///< Index or primary key cannot contain a Null value.
    UnknownParameter = 3061,   ///< Too few parameters. Expected |.
    SyntaxErrorInQuery = 3075, ///< Syntax error (missing operator) in query expression '|'.
    TableNotFound = 3078,      ///< ... cannot find the input table or query '|'.
    TwoAutoNumbers = 3090,     ///< Resultant table not allowed to have more than one AutoNumber field.
    SyntaxErrorInFrom = 3131,
    SyntaxErrorInUpdate = 3144,
    FieldTooSmall = 3163, ///< The field is too small to accept the amount of data you attempted to add.
    RecordDeleted = 3167,
    TooManyFields = 3190,     ///< Too many fields defined.
    FieldDefinedTwice = 3191, ///< Cannot define field more than once.
    RelatedRecords = 3200,    ///< The record cannot be deleted or changed because table '|' includes related records.
    RelatedRecordRequired = 3201, ///< ... because a related record is required in table '|'.
    DatabaseExists = 3204,        ///< Database already exists.
    TableLocked = 3211,           ///< ... could not lock table '|' because it is already in use ...
    ItemNotFound = 3265,          ///< Item not found in this collection.
    TooManyIndexFields = 3277,    ///< Cannot have more than 10 fields in an index.
    FieldInIndex = 3280,          ///< Cannot delete a field that is part of an index or is needed by the system.
    TableInRelation = 3281,       ///< Cannot delete this index or table. ...
    PrimaryKeyExists = 3283,      ///< Primary key already exists.
    IndexExists = 3284,           ///< Index already exists.
    SyntaxErrorInConstraint = 3289,
    SyntaxErrorInCreateTable = 3290,
    SyntaxErrorInCreateIndex = 3291,
    SyntaxErrorInFieldDefinition = 3292,
    SyntaxErrorInAlterTable = 3293,
    SyntaxErrorInDropIndex = 3294,
    SyntaxErrorInDrop = 3295,
    FieldInRelation = 3303,    ///< Cannot delete this field. It is part of one or more relationships.
    FieldRequired = 3314,      ///< The field '|' cannot contain a Null value because Required is True.
    EmptyTextRefused = 3315,   ///< Field '|' cannot be a zero-length string.
    UnrecognizedFormat = 3343, ///< Unrecognized database format '|'.
    RelationTypesDiffer = 3368,
    NoSuchTableOrConstraint = 3371, ///< Cannot find table or constraint.
    NoSuchIndex = 3372,             ///< No such index '|' on table '|'.
    NoPrimaryKey = 3373,            ///< Cannot create relationship. Referenced table '|' does not have a primary key.
    NotUniquelyIndexed = 3374,
    IndexNameTaken = 3375,       ///< Table '|' already has an index named '|'.
    NoSuchTable = 3376,          ///< Table '|' does not exist.
    NoSuchRelation = 3377,       ///< No such relationship '|' on table '|'.
    RelationExists = 3378,       ///< There is already a relationship named '|' in the current database.
    DataViolatesRelation = 3379, ///< ... Existing data in table '|' violates ... rules in table '|'.
    FieldExists = 3380,          ///< Field '|' already exists in table '|'.
    NoSuchField = 3381,          ///< There is no field named '|' in table '|'.
    SizeTooLong = 3382,          ///< Size of field '|' is too long.
    InvalidName = 3125,          ///< '|' is not a valid name. ...
    WrongType = 3421,            ///< Data type conversion error.
};

/// What a failure is about, as far as that is known where it happens; names as the database has them.
struct ErrorSubject {
    std::string table{};
    std::string index{};
    std::string relation{};
    std::vector<std::string> columns{};
};

/// A failure of the engine: number, text and the HRESULT under which a provider would report it.
class Error : public std::runtime_error {
public:
    /// The engine's text for `number`, each "|" in it replaced by the next of `names`; `detail`, a sentence of its own,
    /// follows when it is not empty.
    explicit Error(ErrorNumber number, std::initializer_list<std::string_view> names = {},
                   std::string_view detail = {});

    /// The same error, which says now what it is about.
    Error&& About(ErrorSubject subject) &&
    {
        subject_ = std::move(subject);
        return std::move(*this);
    }

    [[nodiscard]] const ErrorSubject& Subject() const noexcept { return subject_; }
    /// The names that stand in the text.
    [[nodiscard]] const std::vector<std::string>& Names() const noexcept { return names_; }
    [[nodiscard]] ErrorNumber Number() const noexcept { return number_; }
    [[nodiscard]] std::uint32_t HResult() const noexcept { return hresult_; }

private:
    friend Error CorruptPage(PageNumber page, std::string_view what);
    friend Error CorruptValue(std::string_view what);
    struct Text {
        std::string whole;
    };
    Error(ErrorNumber number, const Text& text);

    ErrorSubject subject_;
    std::vector<std::string> names_;
    ErrorNumber number_;
    std::uint32_t hresult_;
};

/// Bytes that contradict the format: NotADatabase (3049) with a text that names the page. For whatever is read from a
/// file; never for a mistake of our own.
[[nodiscard]] Error CorruptPage(PageNumber page, std::string_view what);
/// The same for bytes whose page is not known where they are read.
[[nodiscard]] Error CorruptValue(std::string_view what);

} // namespace jet
