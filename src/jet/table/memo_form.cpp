#include "jet/table/memo_form.h"

#include "jet/base/text_codec.h"

namespace jet {

namespace {

constexpr Byte kCompressedMark[] = {0xFF, 0xFE};
constexpr std::size_t kMinCompressed = 3; ///< characters

bool IsCompressed(ByteSpan text)
{
    return text.size() >= 2 && text[0] == kCompressedMark[0] && text[1] == kCompressedMark[1];
}

bool CanCompress(ByteSpan plain)
{
    if (plain.size() < 2 * kMinCompressed || plain.size() % 2 != 0)
        return false;
    for (std::size_t i = 0; i < plain.size(); i += 2) {
        if (plain[i] == 0 || plain[i + 1] != 0)
            return false;
    }
    return true;
}

} // namespace

MemoForm FormOfMemo(ByteSpan stored, const Format& format, Bytes& buffer)
{
    if (format.version == JetVersion::Jet3)
        return {stored, stored};
    ByteSpan plain = stored;
    if (IsCompressed(stored)) {
        buffer = ExpandUtf16(stored);
        // Plain, a text that begins with U+FEFF would look compressed: it has no other form.
        if (IsCompressed(buffer))
            return {stored, stored};
        plain = buffer;
    }
    if (plain.size() > format.maxInlineLong || !CanCompress(plain))
        return {plain, plain};
    if (plain.data() != stored.data())
        return {plain, stored};
    buffer.assign(kCompressedMark, kCompressedMark + 2);
    for (std::size_t i = 0; i < plain.size(); i += 2)
        buffer.push_back(plain[i]);
    return {plain, buffer};
}

} // namespace jet
