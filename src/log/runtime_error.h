#pragma once

#include <stdexcept>
#include <string>

namespace velmora {

/// A run-time failure: a number and a description. Numbers are those of the language (9 "Subscript out of range", 53
/// "File not found") or of the database engine (3163 and the like).
class RuntimeError : public std::runtime_error {
public:
    RuntimeError(int number, const std::string& description) : std::runtime_error(description), number_(number) {}

    [[nodiscard]] int Number() const noexcept { return number_; }

private:
    int number_;
};

namespace runtime_errors {
inline constexpr int kInvalidProcedureCall = 5;
inline constexpr int kOutOfMemory = 7;
inline constexpr int kSubscriptOutOfRange = 9;
inline constexpr int kBadFileName = 52;
inline constexpr int kFileNotFound = 53;
inline constexpr int kFileAlreadyOpen = 55;
inline constexpr int kDeviceError = 57;
inline constexpr int kFileExists = 58;
inline constexpr int kDiskFull = 61;
inline constexpr int kPermissionDenied = 70;
inline constexpr int kPathFileAccess = 75;
inline constexpr int kPathNotFound = 76;
inline constexpr int kApplicationDefined = 513; ///< a failure that only this program knows
} // namespace runtime_errors

} // namespace velmora
