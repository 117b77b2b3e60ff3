#include "platform/utf8_converter.h"

namespace velmora {

Utf8Converter::Utf8Converter(const std::string& charset) : decoder_(Decoder::Open(charset)) {}

Utf8Converter::~Utf8Converter() = default;

bool Utf8Converter::IsKnown() const noexcept
{
    return decoder_ != nullptr;
}

bool Utf8Converter::Convert(std::string_view bytes, std::string& text)
{
    if (!IsKnown())
        return false;
    std::string joined;
    if (!rest_.empty()) {
        joined = rest_.append(bytes);
        bytes = joined;
        rest_.clear();
    }
    const std::size_t given = bytes.size();
    const bool good = decoder_->Decode(bytes, text) != Decoder::Outcome::Bad;
    convertedBytes_ += given - bytes.size();
    if (good)
        rest_ = bytes;
    return good;
}

bool Utf8Converter::Finish(std::string& text)
{
    if (!rest_.empty())
        return false;
    decoder_->Finish(text);
    return true;
}

} // namespace velmora
