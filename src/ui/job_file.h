#pragma once

#include "settings/controls.h"

#include <string>
#include <system_error>

namespace velmora {

/// A job as a file: the words of one command line, without the program and without passwords.
[[nodiscard]] std::error_code SaveJob(const Controls& controls, const std::string& path);
/// Its first line. Throws std::runtime_error when the file cannot be read.
[[nodiscard]] std::string ReadJob(const std::string& path);

inline constexpr const char* kJobSuffix = ".velmora";

} // namespace velmora
