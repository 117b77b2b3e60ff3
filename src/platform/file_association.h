#pragma once

#include <string>

namespace velmora {

/// The path of the program that the system opens `filePath` with, or a text that begins with "Error: ". Empty when the
/// system gives a reason that has no text. On systems with a common opener for all files that opener is the program.
[[nodiscard]] std::string FindAssociatedProgram(const std::string& filePath);

} // namespace velmora
