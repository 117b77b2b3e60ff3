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

/// What the system converts by. Another one for each system.
class Utf8Converter::Decoder {
public:
    enum class Outcome { All, Incomplete, Bad };

    virtual ~Decoder() = default;

    /// Appends the text of the characters that `bytes` begins with, and takes their bytes away: all of them, or all but
    /// the beginning of a character, or all before what is no text in this encoding.
    [[nodiscard]] virtual Outcome Decode(std::string_view& bytes, std::string& text) = 0;
    /// Appends what was held back.
    virtual void Finish(std::string& text) = 0;

    /// nullptr for an encoding that the system does not know.
    [[nodiscard]] static std::unique_ptr<Decoder> Open(const std::string& charset);
};

} // namespace velmora
