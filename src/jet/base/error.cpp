#include "jet/base/error.h"

#include <algorithm>
#include <cassert>
#include <iterator>

namespace jet {

namespace {

// What a provider for these databases reports with the numbers. Some mean the same to it, and share one.
constexpr std::uint32_t kFail = 0x80004005;
constexpr std::uint32_t kCannotConvert = 0x80040E07;
constexpr std::uint32_t kPermissionDenied = 0x80040E09;
constexpr std::uint32_t kNoValueForParameter = 0x80040E10;
constexpr std::uint32_t kErrorsInCommand = 0x80040E14;
constexpr std::uint32_t kDuplicateDataSource = 0x80040E17;
constexpr std::uint32_t kDeletedRow = 0x80040E23;
constexpr std::uint32_t kIntegrityViolation = 0x80040E2F;
constexpr std::uint32_t kNoTable = 0x80040E37;
constexpr std::uint32_t kAuthenticationFailed = 0x80040E4D;
constexpr std::uint32_t kDataOverflow = 0x80040E57;
constexpr std::uint32_t kNoCurrentRecord = 0x800A0BCD;
constexpr std::uint32_t kItemNotFound = 0x800A0CC1;

struct Entry {
    ErrorNumber number;
    std::uint32_t hresult;
    std::string_view text; ///< each "|" stands for a name
};

/// The texts are those that people find when they look up a number; what only this engine can say is the detail.
constexpr Entry kEntries[] = {
    {ErrorNumber::TableExists, kErrorsInCommand, "Table '|' already exists."},
    {ErrorNumber::ObjectNotFound, kNoTable,
     "The engine could not find the object '|'. Make sure the object exists and that you spell its name and the path "
     "name correctly."},
    {ErrorNumber::NoCurrentRecord, kNoCurrentRecord, "No current record."},
    {ErrorNumber::DuplicateKey, kIntegrityViolation,
     "The changes you requested to the table were not successful because they would create duplicate values in the "
     "index, primary key, or relationship."},
    {ErrorNumber::FileNotFound, kFail, "Could not find file '|'."},
    {ErrorNumber::DiskFull, kFail, "Not enough space on disk."},
    {ErrorNumber::ReadOnly, kPermissionDenied, "Cannot update. Database or object is read-only."},
    {ErrorNumber::NotAValidPassword, kAuthenticationFailed, "Not a valid password."},
    {ErrorNumber::DatabaseFull, kFail, "Database has reached maximum size."},
    {ErrorNumber::TooManyIndexes, kErrorsInCommand, "Could not create index; too many indexes already defined."},
    {ErrorNumber::DiskError, kFail, "Disk or network error."},
    {ErrorNumber::InvalidPath, kFail,
     "'|' is not a valid path. Make sure that the path name is spelled correctly and that you are connected to the "
     "server on which the file resides."},
    {ErrorNumber::FileInUse, kFail, "Could not use '|'; file already in use."},
    {ErrorNumber::RecordTooLarge, kFail, "Record is too large."},
    {ErrorNumber::NotADatabase, kFail,
     "Cannot open database '|'. It may not be a database that your application recognizes, or the file may be "
     "corrupt."},
    {ErrorNumber::CannotOpen, kFail,
     "The database engine cannot open the file '|'. It is already opened exclusively by another user, or you need "
     "permission to view its data."},
    {ErrorNumber::NullInPrimaryKey, kIntegrityViolation, "Index or primary key cannot contain a Null value."},
    {ErrorNumber::UnknownParameter, kNoValueForParameter, "Too few parameters. Expected |."},
    {ErrorNumber::SyntaxErrorInQuery, kErrorsInCommand, "Syntax error (missing operator) in query expression '|'."},
    {ErrorNumber::TableNotFound, kNoTable,
     "The database engine cannot find the input table or query '|'. Make sure it exists and that its name is spelled "
     "correctly."},
    {ErrorNumber::TwoAutoNumbers, kErrorsInCommand,
     "Resultant table not allowed to have more than one AutoNumber field."},
    {ErrorNumber::InvalidName, kErrorsInCommand,
     "'|' is not a valid name. Make sure that it does not include invalid characters or punctuation and that it is "
     "not too long."},
    {ErrorNumber::SyntaxErrorInFrom, kErrorsInCommand, "Syntax error in FROM clause."},
    {ErrorNumber::SyntaxErrorInUpdate, kErrorsInCommand, "Syntax error in UPDATE statement."},
    {ErrorNumber::FieldTooSmall, kDataOverflow,
     "The field is too small to accept the amount of data you attempted to add. Try inserting or pasting less data."},
    {ErrorNumber::RecordDeleted, kDeletedRow, "Record is deleted."},
    {ErrorNumber::TooManyFields, kErrorsInCommand, "Too many fields defined."},
    {ErrorNumber::FieldDefinedTwice, kErrorsInCommand, "Cannot define field more than once."},
    {ErrorNumber::RelatedRecords, kIntegrityViolation,
     "The record cannot be deleted or changed because table '|' includes related records."},
    {ErrorNumber::RelatedRecordRequired, kIntegrityViolation,
     "You cannot add or change a record because a related record is required in table '|'."},
    {ErrorNumber::DatabaseExists, kDuplicateDataSource, "Database already exists."},
    {ErrorNumber::TableLocked, kErrorsInCommand,
     "The database engine could not lock table '|' because it is already in use by another person or process."},
    {ErrorNumber::ItemNotFound, kItemNotFound, "Item not found in this collection."},
    {ErrorNumber::TooManyIndexFields, kErrorsInCommand, "Cannot have more than 10 fields in an index."},
    {ErrorNumber::FieldInIndex, kErrorsInCommand,
     "Cannot delete a field that is part of an index or is needed by the system."},
    {ErrorNumber::TableInRelation, kErrorsInCommand,
     "Cannot delete this index or table. It is either the current index or is used in a relationship."},
    {ErrorNumber::PrimaryKeyExists, kErrorsInCommand, "Primary key already exists."},
    {ErrorNumber::IndexExists, kErrorsInCommand, "Index already exists."},
    {ErrorNumber::SyntaxErrorInConstraint, kErrorsInCommand, "Syntax error in CONSTRAINT clause."},
    {ErrorNumber::SyntaxErrorInCreateTable, kErrorsInCommand, "Syntax error in CREATE TABLE statement."},
    {ErrorNumber::SyntaxErrorInCreateIndex, kErrorsInCommand, "Syntax error in CREATE INDEX statement."},
    {ErrorNumber::SyntaxErrorInFieldDefinition, kErrorsInCommand, "Syntax error in field definition."},
    {ErrorNumber::SyntaxErrorInAlterTable, kErrorsInCommand, "Syntax error in ALTER TABLE statement."},
    {ErrorNumber::SyntaxErrorInDropIndex, kErrorsInCommand, "Syntax error in DROP INDEX statement."},
    {ErrorNumber::SyntaxErrorInDrop, kErrorsInCommand, "Syntax error in DROP TABLE or DROP INDEX."},
    {ErrorNumber::FieldInRelation, kErrorsInCommand,
     "Cannot delete this field. It is part of one or more relationships."},
    {ErrorNumber::FieldRequired, kIntegrityViolation,
     "The field '|' cannot contain a Null value because the Required property for this field is set to True. Enter a "
     "value in this field."},
    {ErrorNumber::EmptyTextRefused, kIntegrityViolation, "Field '|' cannot be a zero-length string."},
    {ErrorNumber::UnrecognizedFormat, kFail, "Unrecognized database format '|'."},
    {ErrorNumber::RelationTypesDiffer, kErrorsInCommand,
     "Relationship must be on the same number of fields with the same data types."},
    {ErrorNumber::NoSuchTableOrConstraint, kNoTable, "Cannot find table or constraint."},
    {ErrorNumber::NoSuchIndex, kErrorsInCommand, "No such index '|' on table '|'."},
    {ErrorNumber::NoPrimaryKey, kErrorsInCommand,
     "Cannot create relationship. Referenced table '|' does not have a primary key."},
    {ErrorNumber::NotUniquelyIndexed, kErrorsInCommand, "The specified fields are not uniquely indexed in table '|'."},
    {ErrorNumber::IndexNameTaken, kErrorsInCommand, "Table '|' already has an index named '|'."},
    {ErrorNumber::NoSuchTable, kNoTable, "Table '|' does not exist."},
    {ErrorNumber::NoSuchRelation, kErrorsInCommand, "No such relationship '|' on table '|'."},
    {ErrorNumber::RelationExists, kErrorsInCommand,
     "There is already a relationship named '|' in the current database."},
    {ErrorNumber::DataViolatesRelation, kErrorsInCommand,
     "Cannot create relationships to enforce referential integrity. Existing data in table '|' violates referential "
     "integrity rules in table '|'."},
    {ErrorNumber::FieldExists, kErrorsInCommand, "Field '|' already exists in table '|'."},
    {ErrorNumber::NoSuchField, kErrorsInCommand, "There is no field named '|' in table '|'."},
    {ErrorNumber::SizeTooLong, kErrorsInCommand, "Size of field '|' is too long."},
    {ErrorNumber::WrongType, kCannotConvert, "Data type conversion error."},
};

const Entry& EntryOf(ErrorNumber number)
{
    const auto* entry = std::ranges::find(kEntries, number, &Entry::number);
    // A number that can be thrown has its line here.
    assert(entry != std::end(kEntries));
    return *entry;
}

std::string TextOf(ErrorNumber number, std::initializer_list<std::string_view> names, std::string_view detail)
{
    std::string text;
    const auto* name = names.begin();
    for (const char c : EntryOf(number).text) {
        if (c != '|')
            text += c;
        else if (name != names.end())
            text += *name++;
    }
    if (!detail.empty())
        text.append(" ").append(detail);
    return text;
}

} // namespace

Error::Error(ErrorNumber number, std::initializer_list<std::string_view> names, std::string_view detail)
    : Error(number, Text{TextOf(number, names, detail)})
{
    names_.assign(names.begin(), names.end());
}

Error::Error(ErrorNumber number, const Text& text)
    : std::runtime_error(text.whole), number_(number), hresult_(EntryOf(number).hresult)
{
}

/// Not the engine's text of that number, which only says that the file may be damaged: whoever is to mend the file, or
/// to report what made it, needs to know where.
Error CorruptPage(PageNumber page, std::string_view what)
{
    return {ErrorNumber::NotADatabase,
            Error::Text{"Page " + std::to_string(page) + ": " + std::string(what) + "; the database is damaged."}};
}

Error CorruptValue(std::string_view what)
{
    return {ErrorNumber::NotADatabase, Error::Text{std::string(what) + "; the database is damaged."}};
}

} // namespace jet
