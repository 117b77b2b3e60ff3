#include "schema/engine_errors.h"

#include <algorithm>

namespace velmora {

// The header writes the numbers out, because callers above this floor do not see the engine.
static_assert(engine_errors::kTableExists == static_cast<int>(jet::ErrorNumber::TableExists));
static_assert(engine_errors::kDuplicateKey == static_cast<int>(jet::ErrorNumber::DuplicateKey));
static_assert(engine_errors::kDiskFull == static_cast<int>(jet::ErrorNumber::DiskFull));
static_assert(engine_errors::kDiskError == static_cast<int>(jet::ErrorNumber::DiskError));
static_assert(engine_errors::kTooManyIndexes == static_cast<int>(jet::ErrorNumber::TooManyIndexes));
static_assert(engine_errors::kFileInUse == static_cast<int>(jet::ErrorNumber::FileInUse));
static_assert(engine_errors::kRecordTooLarge == static_cast<int>(jet::ErrorNumber::RecordTooLarge));
static_assert(engine_errors::kNullInPrimaryKey == static_cast<int>(jet::ErrorNumber::NullInPrimaryKey));
static_assert(engine_errors::kInvalidName == static_cast<int>(jet::ErrorNumber::InvalidName));
static_assert(engine_errors::kFieldTooSmall == static_cast<int>(jet::ErrorNumber::FieldTooSmall));
static_assert(engine_errors::kRecordDeleted == static_cast<int>(jet::ErrorNumber::RecordDeleted));
static_assert(engine_errors::kTooManyFields == static_cast<int>(jet::ErrorNumber::TooManyFields));
static_assert(engine_errors::kFieldDefinedTwice == static_cast<int>(jet::ErrorNumber::FieldDefinedTwice));
static_assert(engine_errors::kRelatedRecordRequired == static_cast<int>(jet::ErrorNumber::RelatedRecordRequired));
static_assert(engine_errors::kFieldInIndex == static_cast<int>(jet::ErrorNumber::FieldInIndex));
static_assert(engine_errors::kFieldInRelation == static_cast<int>(jet::ErrorNumber::FieldInRelation));
static_assert(engine_errors::kFieldRequired == static_cast<int>(jet::ErrorNumber::FieldRequired));
static_assert(engine_errors::kEmptyTextRefused == static_cast<int>(jet::ErrorNumber::EmptyTextRefused));
static_assert(engine_errors::kDataViolatesRelation == static_cast<int>(jet::ErrorNumber::DataViolatesRelation));
static_assert(engine_errors::kFieldExists == static_cast<int>(jet::ErrorNumber::FieldExists));
static_assert(engine_errors::kRelationTypesDiffer == static_cast<int>(jet::ErrorNumber::RelationTypesDiffer));
static_assert(engine_errors::kNoPrimaryKey == static_cast<int>(jet::ErrorNumber::NoPrimaryKey));
static_assert(engine_errors::kNotUniquelyIndexed == static_cast<int>(jet::ErrorNumber::NotUniquelyIndexed));
static_assert(engine_errors::kNoSuchField == static_cast<int>(jet::ErrorNumber::NoSuchField));
static_assert(engine_errors::kWrongType == static_cast<int>(jet::ErrorNumber::WrongType));

void ThrowEngineError(const jet::Error& error)
{
    throw EngineError(error);
}

bool IsLockConflict(const RuntimeError& error) noexcept
{
    return error.Number() == static_cast<int>(jet::ErrorNumber::TableLocked);
}

bool IsFileInUse(const RuntimeError& error) noexcept
{
    return error.Number() == engine_errors::kFileInUse;
}

bool ConcernsWholeDatabase(int number) noexcept
{
    using enum jet::ErrorNumber;
    constexpr jet::ErrorNumber kOfTheEngine[] = {DiskFull,     DiskError,    ReadOnly,          DatabaseFull,
                                                 FileInUse,    NotADatabase, CannotOpen,        TableLocked,
                                                 FileNotFound, InvalidPath,  UnrecognizedFormat};
    return number == runtime_errors::kDiskFull ||
           std::ranges::any_of(kOfTheEngine, [number](jet::ErrorNumber e) { return static_cast<int>(e) == number; });
}

bool IsDiskFailure(const RuntimeError& error) noexcept
{
    return error.Number() == engine_errors::kDiskFull || error.Number() == engine_errors::kDiskError;
}

} // namespace velmora
