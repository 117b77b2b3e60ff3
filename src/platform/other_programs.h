#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

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

} // namespace velmora
