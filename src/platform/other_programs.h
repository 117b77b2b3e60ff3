#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Whether `path` is a program that can be run.
[[nodiscard]] bool IsProgram(const std::string& path);
/// The full path of the program `name` (without a suffix) on PATH, whose relative entries are not looked at; empty when
/// there is none.
[[nodiscard]] std::string FindOnPath(std::string_view name);

/// The path of the program that the system opens `filePath` with, or a text that begins with "Error: ". Empty when the
/// system gives a reason that has no text. On systems with a common opener for all files that opener is the program.
[[nodiscard]] std::string FindAssociatedProgram(const std::string& filePath);

/// Whether `name` stands in the program's folder and can be run.
[[nodiscard]] bool HasSiblingProgram(std::string_view name);
/// Runs `name` from the program's folder in place of this process (on Windows: beside it), without a shell. Returns
/// only when it did not become this process: true when it was started beside it, false when it could not be started.
[[nodiscard]] bool BecomeSiblingProgram(std::string_view name, const std::vector<std::string>& arguments);

} // namespace velmora
