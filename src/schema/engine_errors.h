#pragma once

#include "jet/base/error.h"
#include "log/runtime_error.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmora {

/// Numbers of the database engine's errors that the converter decides by.
namespace engine_errors {
inline constexpr int kTableExists = 3010;
inline constexpr int kDuplicateKey = 3022;
inline constexpr int kDiskFull = 3026;
inline constexpr int kTooManyIndexes = 3039;
inline constexpr int kDiskError = 3043;
inline constexpr int kFileInUse = 3045;
inline constexpr int kRecordTooLarge = 3047;
inline constexpr int kNullInPrimaryKey = 3058;
inline constexpr int kInvalidName = 3125;
inline constexpr int kFieldTooSmall = 3163;
inline constexpr int kRecordDeleted = 3167;
inline constexpr int kTooManyFields = 3190;
inline constexpr int kFieldDefinedTwice = 3191;
inline constexpr int kRelatedRecordRequired = 3201;
inline constexpr int kFieldInIndex = 3280;
inline constexpr int kFieldInRelation = 3303;
inline constexpr int kFieldRequired = 3314;
inline constexpr int kEmptyTextRefused = 3315;
inline constexpr int kRelationTypesDiffer = 3368;
inline constexpr int kNoPrimaryKey = 3373;
inline constexpr int kNotUniquelyIndexed = 3374;
inline constexpr int kDataViolatesRelation = 3379;
inline constexpr int kFieldExists = 3380;
inline constexpr int kNoSuchField = 3381;
inline constexpr int kWrongType = 3421;
} // namespace engine_errors

/// The engine's failure as one of the run: number and text kept, and what it is about.
class EngineError : public RuntimeError {
public:
    explicit EngineError(const jet::Error& error, std::optional<Place> metAt = std::nullopt)
        : RuntimeError(static_cast<int>(error.Number()), error.what(), std::move(metAt)), subject_(error.Subject()),
          names_(error.Names())
    {
    }

    [[nodiscard]] const jet::ErrorSubject& Subject() const noexcept { return subject_; }
    /// The names that stand in the text.
    [[nodiscard]] const std::vector<std::string>& Names() const noexcept { return names_; }

private:
    jet::ErrorSubject subject_;
    std::vector<std::string> names_;
};

[[noreturn]] void ThrowEngineError(const jet::Error& error);

/// Runs `operation` of the engine: its failures as EngineError.
template <class Operation>
decltype(auto) Translated(Operation&& operation)
{
    try {
        return operation();
    } catch (const jet::Error& error) {
        ThrowEngineError(error);
    }
}

/// Is this the failure of a moment, because someone else holds a lock?
[[nodiscard]] bool IsLockConflict(const RuntimeError& error) noexcept;
/// Has someone else the whole database open?
[[nodiscard]] bool IsFileInUse(const RuntimeError& error) noexcept;

/// Is the disk full, or does it fail?
[[nodiscard]] bool IsDiskFailure(const RuntimeError& error) noexcept;

/// Does an error of this number concern the whole database, or its disk, so that no other document would fare better?
[[nodiscard]] bool ConcernsWholeDatabase(int number) noexcept;

} // namespace velmora
