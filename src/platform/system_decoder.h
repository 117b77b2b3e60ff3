#pragma once

#include "platform/utf8_converter.h"

namespace velmora {

/// What the system converts by. Made by OpenDecoder.
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
