#include "jet/table/memo_form.h"

#include "jet/base/compressed_text.h"
#include "jet/base/text_codec.h"

#include <cstring>

namespace jet {

ByteSpan PlainMemo(ByteSpan stored, const Format& format, Bytes& buffer)
{
    if (format.version == JetVersion::Jet3 || !IsCompressed(stored))
        return stored;
    buffer = ExpandUtf16(stored);
    // Plain, a text that begins with U+FEFF would look compressed: it has no other form.
    return IsCompressed(buffer) ? stored : ByteSpan(buffer);
}

std::optional<ByteSpan> MemoInRow(ByteSpan stored, const Format& format, Bytes& buffer)
{
    if (IsCompressed(stored) && format.version == JetVersion::Jet4) {
        // As nearly every short memo comes: one byte for each character, none of them the switch to two.
        const ByteSpan characters = stored.subspan(kCompressedMark.size());
        if (characters.size() >= kMinCompressed && 2 * characters.size() <= format.maxInlineLong &&
            std::memchr(characters.data(), 0, characters.size()) == nullptr)
            return stored;
    }
    const ByteSpan plain = PlainMemo(stored, format, buffer);
    if (plain.size() > format.maxInlineLong)
        return std::nullopt;
    if (format.version == JetVersion::Jet3 || !CanCompress(plain))
        return plain;
    if (plain.data() != stored.data())
        return stored;
    buffer.clear();
    AppendCompressed(buffer, plain);
    return buffer;
}

} // namespace jet
