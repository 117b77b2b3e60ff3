#pragma once

// The system's own header, without what this program has other uses for the names of.
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <string>
#include <string_view>

namespace velmora {

/// The system's texts, UTF-16, from and to this program's. What is damaged becomes U+FFFD.
[[nodiscard]] std::wstring WideFromUtf8(std::string_view text);
[[nodiscard]] std::string Utf8FromWide(std::wstring_view text);

} // namespace velmora
