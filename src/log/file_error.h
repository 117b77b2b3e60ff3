#pragma once

#include "log/runtime_error.h"

#include <string>
#include <string_view>

namespace velmora {

/// What a failing file operation is to the run: `what` ("The protocol file"), the path in brackets, `cannot` ("cannot
/// be written"), and the system's reason for `systemError`, an errno value.
[[nodiscard]] RuntimeError FileError(std::string_view what, const std::string& path, std::string_view cannot,
                                     int systemError);

} // namespace velmora
