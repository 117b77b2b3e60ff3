#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace velmora {

/// A run-time failure: a number and a description. Numbers are those of the language (9 "Subscript out of range", 53
/// "File not found") or of the database engine (3163 and the like). On its way up the innermost procedure notes in it
/// where it was met, for the error report.
class RuntimeError : public std::runtime_error {
public:
    struct Place {
        std::string procedure, statement;
    };

    RuntimeError(int number, const std::string& description, std::optional<Place> metAt = std::nullopt)
        : std::runtime_error(description), number_(number), metAt_(std::move(metAt))
    {
    }

    [[nodiscard]] int Number() const noexcept { return number_; }
    /// None as long as no procedure has let it pass.
    [[nodiscard]] const std::optional<Place>& MetAt() const noexcept { return metAt_; }
    void NotePlace(Place place) { metAt_ = std::move(place); }
    /// What was worth another try, and has failed for good, is the failure of the procedure that has tried.
    void ForgetPlace() noexcept { metAt_.reset(); }

private:
    int number_;
    std::optional<Place> metAt_;
};

/// Thrown where a run that is to end comes by: the user has cancelled it, or an error was reported already. It is no
/// failure, and nobody but the run's guard catches it.
struct Aborted {};

/// The flags that every procedure looks at. ConversionSettings inherits from it.
struct RunFlags {
    bool blAbort = false; ///< the run is to end, by an error report or the user's cancel: see ThrowIfAborted()
    bool blQuiet = false; ///< nobody is asked and nothing is shown
    bool blDebug = false; ///< trace lines are written
};

/// The one question for it: asked at the entry of each procedure, and where events are processed.
inline void ThrowIfAborted(const RunFlags& flags)
{
    if (flags.blAbort)
        throw Aborted();
}

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

/// What a failing file operation is to the run: `what` ("The protocol file"), the path in brackets, `cannot` ("cannot
/// be written"), and the system's reason for `systemError`, an errno value.
[[nodiscard]] RuntimeError FileError(std::string_view what, const std::string& path, std::string_view cannot,
                                     int systemError);

} // namespace velmora
