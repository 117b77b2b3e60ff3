#include "jet/store/map_record.h"

#include "jet/base/error.h"

#include <algorithm>
#include <string>

namespace jet {

namespace {

constexpr Byte kInlineForm = 0;
constexpr Byte kReferenceForm = 1;
// Records in real files have grown by whole groups of 32 pages.
constexpr std::size_t kGrowthStep = 4;

} // namespace

MapRecord::MapRecord(ByteSpan bytes, PageNumber page, const Format& format, std::string_view name) : bytes_(bytes)
{
    const bool known = (bytes.size() > kInlineMapBits && bytes[0] == kInlineForm) ||
                       (bytes.size() > kReferenceMapEntries && bytes[0] == kReferenceForm);
    if (!known)
        throw CorruptPage(page, std::string(name) + " has neither of the known forms");
    // With any other first page the bits would not lie in bytes as those of the whole file do, and could not be copied.
    if (IsInline() && (FirstPage() % 8 != 0 || FirstPage() >= format.maxPages))
        throw CorruptPage(page, std::string(name) + " begins at page " + std::to_string(FirstPage()));
}

bool MapRecord::IsInline() const noexcept
{
    return bytes_[0] == kInlineForm;
}

std::size_t InlineRecordSize(std::size_t bits) noexcept
{
    return kInlineMapBits + (bits + 8 * kGrowthStep - 1) / (8 * kGrowthStep) * kGrowthStep;
}

void MakeReference(MutableBytes record, std::span<const PageNumber> pages)
{
    std::ranges::fill(record, Byte{0});
    record[0] = kReferenceForm;
    for (std::size_t part = 0; part < pages.size(); ++part)
        StoreBitmapPage(record, part, pages[part]);
}

void StoreBitmapPage(MutableBytes record, std::size_t part, PageNumber page)
{
    StoreU32(record, kReferenceMapEntries + 4 * part, page);
}

void MakeBitmapPage(MutableBytes page)
{
    page[0] = static_cast<Byte>(PageType::UsageBitmap);
    page[1] = 1;
}

} // namespace jet
