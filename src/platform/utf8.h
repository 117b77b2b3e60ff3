#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velmora {

/// The longest beginning of `text` that has at most `maxBytes` bytes and ends with a whole character.
[[nodiscard]] std::string_view CutUtf8(std::string_view text, std::size_t maxBytes) noexcept;

/// Number of characters (code points) in `text`.
[[nodiscard]] std::size_t CountCharacters(std::string_view text) noexcept;

inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF"; ///< in UTF-8

/// `text` without a UTF-8 byte order mark at its beginning.
[[nodiscard]] std::string_view WithoutByteOrderMark(std::string_view text) noexcept;

/// `text` (UTF-8) without the white space at both ends: blanks of every kind that Unicode knows, line ends and tabs
/// among them.
[[nodiscard]] std::string_view TrimWhiteSpace(std::string_view text) noexcept;

/// Converts a stream of bytes to UTF-8, piece by piece. Keeps what is incomplete at the end of a piece for the next
/// one.
class Utf8Converter {
public:
    /// `charset` is a name of iconv's. One that it does not know converts nothing.
    explicit Utf8Converter(const std::string& charset);
    ~Utf8Converter();
    Utf8Converter(const Utf8Converter&) = delete;
    Utf8Converter& operator=(const Utf8Converter&) = delete;

    [[nodiscard]] bool IsKnown() const noexcept;

    /// Appends the text of `bytes` to `text`. False when they are no text in this encoding: what comes before the bad
    /// bytes has been appended all the same.
    [[nodiscard]] bool Convert(std::string_view bytes, std::string& text);
    /// To be called behind the last bytes. False when they end in the middle of a character.
    [[nodiscard]] bool Finish(std::string& text);
    /// Bytes converted so far: after a failure the offset of the bad byte in the stream, from 0.
    [[nodiscard]] std::size_t ConvertedBytes() const noexcept { return convertedBytes_; }

private:
    void* descriptor_; ///< iconv_t
    std::string rest_; ///< first bytes of a character whose other bytes are still to come
    std::size_t convertedBytes_ = 0;
};

} // namespace velmora
