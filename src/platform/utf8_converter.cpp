#include "platform/utf8_converter.h"

#include <array>
#include <cerrno>

#include <iconv.h>

namespace velmora {

namespace {

// iconv_open answers a failure by this value.
const iconv_t kNoConverter = reinterpret_cast<iconv_t>(-1); // NOLINT: the type is a pointer, its failure a number

} // namespace

Utf8Converter::Utf8Converter(const std::string& charset) : descriptor_(iconv_open("UTF-8", charset.c_str())) {}

Utf8Converter::~Utf8Converter()
{
    if (IsKnown())
        iconv_close(descriptor_);
}

bool Utf8Converter::IsKnown() const noexcept
{
    return descriptor_ != kNoConverter;
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
    char* from = const_cast<char*>(bytes.data()); // iconv reads it only
    std::size_t fromLeft = bytes.size();
    bool good = true;
    while (fromLeft != 0 && good) {
        const std::size_t filled = text.size();
        text.resize(filled + fromLeft + fromLeft / 2 + 16);
        char* to = text.data() + filled;
        std::size_t toLeft = text.size() - filled;
        const bool failed = iconv(descriptor_, &from, &fromLeft, &to, &toLeft) == static_cast<std::size_t>(-1);
        const int error = errno;
        text.resize(text.size() - toLeft);
        if (failed && error == EINVAL)
            break; // an incomplete character at the end
        good = !failed || error == E2BIG;
    }
    convertedBytes_ += bytes.size() - fromLeft;
    if (good)
        rest_.assign(from, fromLeft);
    return good;
}

bool Utf8Converter::Finish(std::string& text)
{
    if (!rest_.empty())
        return false;
    std::array<char, 64> flushed{}; // what a stateful encoding may still hold back is one or two characters
    char* to = flushed.data();
    std::size_t toLeft = flushed.size();
    iconv(descriptor_, nullptr, nullptr, &to, &toLeft);
    text.append(flushed.data(), flushed.size() - toLeft);
    return true;
}

} // namespace velmora
