#include "jet/table/memo_form.h"

#include "jet/base/compressed_text.h"
#include "jet/base/text_codec.h"

namespace jet {

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
    buffer.clear();
    AppendCompressed(buffer, plain);
    return {plain, buffer};
}

} // namespace jet
