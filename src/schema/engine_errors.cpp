#include "schema/engine_errors.h"

#include "jet/error.h"

namespace velmora {

// The header writes the numbers out, because callers above this floor do not see the engine.
static_assert(engine_errors::kDiskFull == static_cast<int>(jet::ErrorNumber::DiskFull));
static_assert(engine_errors::kDiskError == static_cast<int>(jet::ErrorNumber::DiskError));
static_assert(engine_errors::kTooManyIndexes == static_cast<int>(jet::ErrorNumber::TooManyIndexes));
static_assert(engine_errors::kRecordTooLarge == static_cast<int>(jet::ErrorNumber::RecordTooLarge));
static_assert(engine_errors::kInvalidName == static_cast<int>(jet::ErrorNumber::InvalidName));
static_assert(engine_errors::kFieldTooSmall == static_cast<int>(jet::ErrorNumber::FieldTooSmall));
static_assert(engine_errors::kRecordDeleted == static_cast<int>(jet::ErrorNumber::RecordDeleted));
static_assert(engine_errors::kTooManyFields == static_cast<int>(jet::ErrorNumber::TooManyFields));
static_assert(engine_errors::kFieldDefinedTwice == static_cast<int>(jet::ErrorNumber::FieldDefinedTwice));
static_assert(engine_errors::kRelatedRecordRequired == static_cast<int>(jet::ErrorNumber::RelatedRecordRequired));
static_assert(engine_errors::kDataViolatesRelation == static_cast<int>(jet::ErrorNumber::DataViolatesRelation));
static_assert(engine_errors::kFieldExists == static_cast<int>(jet::ErrorNumber::FieldExists));
static_assert(engine_errors::kRelationTypesDiffer == static_cast<int>(jet::ErrorNumber::RelationTypesDiffer));
static_assert(engine_errors::kNoPrimaryKey == static_cast<int>(jet::ErrorNumber::NoPrimaryKey));
static_assert(engine_errors::kNotUniquelyIndexed == static_cast<int>(jet::ErrorNumber::NotUniquelyIndexed));
static_assert(engine_errors::kNoSuchField == static_cast<int>(jet::ErrorNumber::NoSuchField));
static_assert(engine_errors::kWrongType == static_cast<int>(jet::ErrorNumber::WrongType));

RuntimeError FromEngine(const jet::Error& error)
{
    return {static_cast<int>(error.Number()), error.what()};
}

bool IsLockConflict(const RuntimeError& error) noexcept
{
    return error.Number() == static_cast<int>(jet::ErrorNumber::TableLocked);
}

bool IsDiskFailure(const RuntimeError& error) noexcept
{
    return error.Number() == engine_errors::kDiskFull || error.Number() == engine_errors::kDiskError;
}

} // namespace velmora
