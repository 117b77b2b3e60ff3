#include "platform/utf8_converter.h"

#include <array>
#include <cerrno>
#include <iconv.h>

namespace velmora {

namespace {

class IconvDecoder final : public Utf8Converter::Decoder {
public:
    explicit IconvDecoder(iconv_t descriptor) noexcept : descriptor_(descriptor) {}
    ~IconvDecoder() override { iconv_close(descriptor_); }
    IconvDecoder(const IconvDecoder&) = delete;
    IconvDecoder& operator=(const IconvDecoder&) = delete;

    [[nodiscard]] Outcome Decode(std::string_view& bytes, std::string& text) override
    {
        char* from = const_cast<char*>(bytes.data()); // iconv reads it only
        std::size_t fromLeft = bytes.size();
        Outcome outcome = Outcome::All;
        while (fromLeft != 0 && outcome == Outcome::All) {
            const std::size_t filled = text.size();
            text.resize(filled + fromLeft + fromLeft / 2 + 16);
            char* to = text.data() + filled;
            std::size_t toLeft = text.size() - filled;
            const bool failed = iconv(descriptor_, &from, &fromLeft, &to, &toLeft) == static_cast<std::size_t>(-1);
            const int error = errno;
            text.resize(text.size() - toLeft);
            if (failed && error != E2BIG)
                outcome = error == EINVAL ? Outcome::Incomplete : Outcome::Bad;
        }
        bytes.remove_prefix(bytes.size() - fromLeft);
        return outcome;
    }

    void Finish(std::string& text) override
    {
        std::array<char, 64> flushed{}; // what a stateful encoding may still hold back is one or two characters
        char* to = flushed.data();
        std::size_t toLeft = flushed.size();
        iconv(descriptor_, nullptr, nullptr, &to, &toLeft);
        text.append(flushed.data(), flushed.size() - toLeft);
    }

private:
    iconv_t descriptor_;
};

// iconv_open answers a failure by this value.
const iconv_t kNoConverter = reinterpret_cast<iconv_t>(-1); // NOLINT: the type is a pointer, its failure a number

} // namespace

std::unique_ptr<Utf8Converter::Decoder> Utf8Converter::Decoder::Open(const std::string& charset)
{
    const iconv_t descriptor = iconv_open("UTF-8", charset.c_str());
    return descriptor == kNoConverter ? nullptr : std::make_unique<IconvDecoder>(descriptor);
}

} // namespace velmora
