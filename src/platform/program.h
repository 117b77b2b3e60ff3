#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// The folder in which the running executable stands, without a separator at its end.
[[nodiscard]] std::string ProgramFolder();
/// The running executable's file name, without ".exe".
[[nodiscard]] std::string ProgramName();

/// The value of an environment variable; empty when it is unset.
[[nodiscard]] std::string EnvironmentVariable(const char* name);

/// Whether windows can be shown here.
[[nodiscard]] bool HasDisplay();

/// Whether `name` stands in the program's folder and can be run.
[[nodiscard]] bool HasSiblingProgram(std::string_view name);
/// Runs `name` from the program's folder in place of this process (on Windows: beside it), without a shell. Returns
/// only when it did not become this process: true when it was started beside it, false when it could not be started.
[[nodiscard]] bool BecomeSiblingProgram(std::string_view name, const std::vector<std::string>& arguments);

} // namespace velmora
