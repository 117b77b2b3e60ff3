#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace velmora {

/// Converts a stream of bytes to UTF-8, piece by piece. Keeps what is incomplete at the end of a piece for the next
/// one.
class Utf8Converter {
public:
    /// `charset` is a name of iconv's, in upper case. One that the system does not know converts nothing.
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

    class Decoder; ///< the system's

private:
    std::unique_ptr<Decoder> decoder_; ///< null when it does not know the encoding
    std::string rest_;                 ///< first bytes of a character whose other bytes are still to come
    std::size_t convertedBytes_ = 0;
};

} // namespace velmora
