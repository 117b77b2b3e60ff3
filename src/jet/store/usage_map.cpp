#include "jet/store/usage_map.h"

#include "jet/base/error.h"
#include "jet/store/bitmap.h"
#include "jet/store/data_page.h"
#include "jet/store/map_record.h"

#include <algorithm>
#include <string>

namespace jet {

// A map begins in the inline form, a run of bits from some page on, and takes the reference form when a page lies too
// far from the others or the record finds no room to grow: then each bit has its place by the page's number, and bitmap
// pages are made as they are needed. It never goes back.
namespace {

constexpr std::string_view kName = "a usage map";

/// A record together with the pin on its page.
struct PinnedRecord {
    PageRef page;
    MapRecord record;

    PinnedRecord(Pager& pager, RowId id)
        : page(pager.Read(id.page)), record(RowOf(page, id, pager.GetFormat()), id.page, pager.GetFormat(), kName)
    {
    }

    static ByteSpan RowOf(const PageRef& page, RowId id, const Format& format)
    {
        // A pointer to anything else, were it followed, would let bits be set in rows of a table or the global map.
        const DataPage view(page.Bytes(), id.page, format);
        if (view.Owner() != kUsageMapOwner)
            throw CorruptPage(id.page, "it is referred to as a page of usage maps, but belongs to " +
                                           std::to_string(view.Owner()));
        return view.LiveRow(id.slot);
    }
};

ByteSpan BitsOf(const PageRef& bitmapPage)
{
    return bitmapPage.Bytes().subspan(kBitmapPageBits);
}

/// The byte with the bit `bit`.
MutableBytes ByteOf(const MutablePageRef& bitmapPage, std::size_t bit)
{
    return bitmapPage.Data(kBitmapPageBits + bit / 8, 1);
}

MutablePageRef NewBitmapPage(Pager& pager)
{
    MutablePageRef page = pager.Allocate();
    MakeBitmapPage(page.Data());
    return page;
}

std::optional<PageNumber> NextInReference(Pager& pager, const MapRecord& record, PageNumber from)
{
    const std::size_t bitsPerPage = pager.GetFormat().usageMap.bitsPerPage;
    std::size_t bit = from % bitsPerPage;
    for (std::size_t part = from / bitsPerPage; part < record.PartCount(); ++part, bit = 0) {
        if (record.BitmapPage(part) == 0)
            continue;
        const PageRef page = pager.Read(record.BitmapPage(part), PageType::UsageBitmap);
        if (const auto found = NextSetBit(BitsOf(page), bit))
            return static_cast<PageNumber>(part * bitsPerPage + *found);
    }
    return std::nullopt;
}

/// One change to one map: the page with its record, to be written.
class MapEditor {
public:
    MapEditor(Pager& pager, RowId id) : pager_(pager), id_(id), editor_(pager.Write(id.page), pager.GetFormat()) {}

    void Add(PageNumber page)
    {
        const MapRecord record = Record(); // a view, true until the record gets another size
        if (!record.IsInline()) {
            AddToReference(page);
            return;
        }
        // An empty map has its range nowhere yet: it goes to where it is needed.
        if (!record.Covers(page) && record.IsEmpty())
            StoreU32(Bytes(), 1, page & ~PageNumber{7});
        const PageNumber first = record.FirstPage();
        if (record.Covers(page) || GrowTo(page))
            SetBit(Bytes().subspan(kInlineMapBits), page - first);
        else
            ConvertToReference(page);
    }

private:
    [[nodiscard]] MutableBytes Bytes() { return editor_.RowBytes(id_.slot); }
    [[nodiscard]] MapRecord Record() const
    {
        return {editor_.View().Row(id_.slot), id_.page, pager_.GetFormat(), kName};
    }

    bool GrowTo(PageNumber page)
    {
        if (page < Record().FirstPage())
            return false;
        return editor_.Resize(id_.slot, InlineRecordSize(std::size_t{page} - Record().FirstPage() + 1));
    }

    void AddToReference(PageNumber page)
    {
        const std::size_t bitsPerPage = pager_.GetFormat().usageMap.bitsPerPage;
        const std::size_t part = page / bitsPerPage;
        MutablePageRef bitmap;
        if (const PageNumber number = Record().BitmapPage(part); number != 0) {
            // Write() would give a page of any type, and set a bit in it.
            static_cast<void>(pager_.Read(number, PageType::UsageBitmap));
            bitmap = pager_.Write(number);
        } else {
            if (part >= Record().PartCount() && !editor_.Resize(id_.slot, ReferenceRecordSize(part + 1)))
                throw CorruptPage(id_.page, "the record of a usage map cannot grow");
            bitmap = NewBitmapPage(pager_);
            StoreBitmapPage(Bytes(), part, bitmap.Number());
        }
        SetBit(ByteOf(bitmap, page % bitsPerPage), page % 8);
    }

    /// Gives the record the other form, with `page` in it.
    void ConvertToReference(PageNumber page)
    {
        std::vector<PageNumber> members{page};
        for (auto bit = NextSetBit(Record().Bits(), 0); bit; bit = NextSetBit(Record().Bits(), *bit + 1))
            members.push_back(static_cast<PageNumber>(Record().FirstPage() + *bit));
        std::ranges::sort(members);

        const std::size_t bitsPerPage = pager_.GetFormat().usageMap.bitsPerPage;
        const std::size_t parts = members.back() / bitsPerPage + 1;
        std::vector<PageNumber> bitmaps(parts);
        for (const PageNumber member : members) {
            PageNumber& bitmap = bitmaps[member / bitsPerPage];
            if (bitmap == 0)
                bitmap = NewBitmapPage(pager_).Number();
            SetBit(ByteOf(pager_.Write(bitmap), member % bitsPerPage), member % 8);
        }
        const std::size_t size = std::max(pager_.GetFormat().usageMap.recordSize, ReferenceRecordSize(parts));
        if (!editor_.Resize(id_.slot, size))
            throw CorruptPage(id_.page, "there is no room for a usage map");
        MakeReference(Bytes(), bitmaps);
    }

    Pager& pager_;
    RowId id_;
    DataPageEditor editor_;
};

} // namespace

std::optional<RowId> UsageMap::CreateRecord(Pager& pager, PageNumber mapPage)
{
    const std::size_t size = pager.GetFormat().usageMap.recordSize;
    DataPageEditor editor(pager.Write(mapPage), pager.GetFormat());
    if (!editor.Fits(size))
        return std::nullopt;
    const auto [slot, record] = editor.Append(size);
    std::ranges::fill(record, Byte{0});
    return RowId{mapPage, slot};
}

bool UsageMap::Contains(PageNumber page) const
{
    const PinnedRecord pinned(*pager_, record_);
    const MapRecord& record = pinned.record;
    if (record.IsInline())
        return record.Covers(page) && TestBit(record.Bits(), page - record.FirstPage());
    const std::size_t bitsPerPage = pager_->GetFormat().usageMap.bitsPerPage;
    const PageNumber bitmap = record.BitmapPage(page / bitsPerPage);
    return bitmap != 0 && TestBit(BitsOf(pager_->Read(bitmap, PageType::UsageBitmap)), page % bitsPerPage);
}

/// Asked first, as most pages are there: one that is not changed need not be noted, journalled and written.
void UsageMap::Add(PageNumber page)
{
    if (!Contains(page))
        MapEditor(*pager_, record_).Add(page);
}

void UsageMap::Remove(PageNumber page)
{
    if (!Contains(page))
        return;
    const PinnedRecord pinned(*pager_, record_);
    if (pinned.record.IsInline()) {
        DataPageEditor editor(pager_->Write(record_.page), pager_->GetFormat());
        ClearBit(editor.RowBytes(record_.slot).subspan(kInlineMapBits), page - pinned.record.FirstPage());
    } else {
        const std::size_t bitsPerPage = pager_->GetFormat().usageMap.bitsPerPage;
        const MutablePageRef bitmap = pager_->Write(pinned.record.BitmapPage(page / bitsPerPage));
        ClearBit(ByteOf(bitmap, page % bitsPerPage), page % 8);
    }
}

std::optional<PageNumber> UsageMap::Next(PageNumber from) const
{
    const PinnedRecord pinned(*pager_, record_);
    const MapRecord& record = pinned.record;
    if (!record.IsInline())
        return NextInReference(*pager_, record, from);
    const PageNumber first = record.FirstPage();
    const auto bit = NextSetBit(record.Bits(), from > first ? from - first : 0);
    return bit ? std::optional(static_cast<PageNumber>(first + *bit)) : std::nullopt;
}

std::vector<PageNumber> UsageMap::Pages() const
{
    std::vector<PageNumber> pages;
    for (auto page = Next(0); page; page = Next(*page + 1))
        pages.push_back(*page);
    return pages;
}

void UsageMap::Destroy()
{
    std::vector<PageNumber> bitmaps;
    {
        const PinnedRecord pinned(*pager_, record_);
        if (!pinned.record.IsInline())
            for (std::size_t part = 0; part < pinned.record.PartCount(); ++part)
                if (const PageNumber bitmap = pinned.record.BitmapPage(part); bitmap != 0)
                    bitmaps.push_back(bitmap);
    }
    for (const PageNumber bitmap : bitmaps)
        pager_->Free(bitmap);
    DataPageEditor(pager_->Write(record_.page), pager_->GetFormat()).Delete(record_.slot);
}

} // namespace jet
