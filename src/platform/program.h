#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// What the file names of programs end in.
#ifdef _WIN32
inline constexpr std::string_view kProgramSuffix = ".exe";
#else
inline constexpr std::string_view kProgramSuffix = "";
#endif

/// The folder in which the running executable stands, without a separator at its end.
[[nodiscard]] std::string ProgramFolder();
/// The running executable's file name, without ".exe".
[[nodiscard]] std::string ProgramName();

/// The value of an environment variable; empty when it is unset.
[[nodiscard]] std::string EnvironmentVariable(const char* name);

/// The folder for files of this program that belong to the user, without a separator at its end; it need not be there.
/// Follows XDG_DATA_HOME and HOME, or LOCALAPPDATA on Windows. Empty for a user without a home: a folder that all users
/// share would let others choose what is written over.
[[nodiscard]] std::string UserDataFolder();
/// Whether files can be made in `folder`.
[[nodiscard]] bool IsWritableFolder(const std::string& folder);

/// Whether `path` is a program that can be run.
[[nodiscard]] bool IsProgram(const std::string& path);
/// The full path of the program `name` (without a suffix) on PATH, whose relative entries are not looked at; empty when
/// there is none.
[[nodiscard]] std::string FindOnPath(std::string_view name);

/// Whether windows can be shown here.
[[nodiscard]] bool HasDisplay();

/// Whether `name` stands in the program's folder and can be run.
[[nodiscard]] bool HasSiblingProgram(std::string_view name);
/// Runs `name` from the program's folder in place of this process (on Windows: beside it), without a shell. Returns
/// only when it did not become this process: true when it was started beside it, false when it could not be started.
[[nodiscard]] bool BecomeSiblingProgram(std::string_view name, const std::vector<std::string>& arguments);

} // namespace velmora
