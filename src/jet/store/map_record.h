#pragma once

#include "jet/base/format.h"
#include "jet/store/bitmap.h"

#include <optional>
#include <span>
#include <string_view>

/// The record of a set of page numbers in its two forms, see usage_map.h; the map of free pages has the same.
namespace jet {

/// A record as it stands in its page. A view.
class MapRecord {
public:
    /// `page` and `name` are for messages. Throws CorruptPage.
    MapRecord(ByteSpan bytes, PageNumber page, const Format& format, std::string_view name);

    [[nodiscard]] bool IsInline() const noexcept;

    // The inline form.
    [[nodiscard]] PageNumber FirstPage() const { return LoadU32(bytes_, 1); }
    [[nodiscard]] ByteSpan Bits() const { return bytes_.subspan(kInlineMapBits); }
    [[nodiscard]] bool Covers(PageNumber page) const
    {
        return page >= FirstPage() && page - FirstPage() < 8 * Bits().size();
    }
    [[nodiscard]] bool IsEmpty() const { return !NextSetBit(Bits(), 0); }

    // The reference form.
    [[nodiscard]] std::size_t PartCount() const { return (bytes_.size() - kReferenceMapEntries) / 4; }
    /// 0 when the part has no bitmap page.
    [[nodiscard]] PageNumber BitmapPage(std::size_t part) const
    {
        return part < PartCount() ? LoadU32(bytes_, kReferenceMapEntries + 4 * part) : 0;
    }

private:
    ByteSpan bytes_;
};

/// Bytes of an inline record whose last bit is at least number `bits` - 1: it grows by four at a time.
[[nodiscard]] std::size_t InlineRecordSize(std::size_t bits) noexcept;
/// Bytes of a reference record that names `parts` pages.
[[nodiscard]] constexpr std::size_t ReferenceRecordSize(std::size_t parts) noexcept
{
    return kReferenceMapEntries + 4 * parts;
}
/// Makes `record` a reference to `pages`, by part; 0 = none.
void MakeReference(MutableBytes record, std::span<const PageNumber> pages);
/// Names the bitmap page of one part.
void StoreBitmapPage(MutableBytes record, std::size_t part, PageNumber page);
/// Makes of a zeroed page one of bits.
void MakeBitmapPage(MutableBytes page);

} // namespace jet
