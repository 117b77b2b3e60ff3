#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// What the file names of programs end in.
extern const std::string_view kProgramSuffix;

/// The path of the running executable.
[[nodiscard]] std::string ExecutablePath();
/// The folder in which the running executable stands, without a separator at its end.
[[nodiscard]] std::string ProgramFolder();
/// The running executable's file name, without ".exe".
[[nodiscard]] std::string ProgramName();

/// The words behind the program's name, given what main() was given. On Windows the system's own line is taken apart,
/// in which a backslash in front of a quote has no meaning: folders end so.
[[nodiscard]] std::vector<std::string> ProgramArguments(int argc, char* argv[]);

/// The value of an environment variable; empty when it is unset.
[[nodiscard]] std::string EnvironmentVariable(const char* name);

/// The folder for files of this program that belong to the user, without a separator at its end; it need not be there.
/// Follows XDG_DATA_HOME and HOME, or LOCALAPPDATA on Windows. Empty for a user without a home: a folder that all users
/// share would let others choose what is written over.
[[nodiscard]] std::string UserDataFolder();
/// Whether files can be made in `folder`.
[[nodiscard]] bool IsWritableFolder(const std::string& folder);

// Other programs.

/// What stands between the folders of PATH.
extern const char kBetweenFolders;

/// Whether `path` is a program that can be run.
[[nodiscard]] bool IsProgram(const std::string& path);
/// The full path of the program `name` (without a suffix) on PATH, whose relative entries are not looked at; empty when
/// there is none.
[[nodiscard]] std::string FindOnPath(std::string_view name);

/// The path of the program that the system opens `filePath` with, or a text that begins with "Error: ". Empty when the
/// system gives a reason that has no text. On systems with a common opener for all files that opener is the program.
[[nodiscard]] std::string FindAssociatedProgram(const std::string& filePath);

/// The full path of a program that was installed with this one: in its folder, or else on PATH. Empty when there is
/// none.
[[nodiscard]] std::string FindInstalled(std::string_view name);
/// Runs the program at that path in place of this process (on Windows: beside it), without a shell. Returns only when
/// it did not become this process: true when it was started beside it, false when it could not be started.
[[nodiscard]] bool BecomeProgram(const std::string& program, const std::vector<std::string>& arguments);

/// Whether windows can be shown here.
[[nodiscard]] bool HasDisplay();

} // namespace velmora
