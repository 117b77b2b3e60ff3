#include "jet/store/free_map.h"

#include "jet/base/error.h"
#include "jet/store/bitmap.h"
#include "jet/store/data_page.h"
#include "jet/store/map_record.h"

#include <algorithm>
#include <cassert>
#include <string>

/// What holds between the calls, once the map has been read; asserts name the rule that they hold:
///
///  F1  A set bit means free. The bits of page 0 and of page 1 are clear, and those of the bitmap pages that the map
///      itself takes.
///  F2  All pages behind the end of the file are free: bits that are added are set, also in memory alone. So to take a
///      page is always to clear the lowest set bit, and a file without a free one grows by the page next to its end.
///  F3  The bits in memory cover every page of the file. The file's map may cover less; before a bit is changed there,
///      the map is made to cover it.
///  F4  Each bit that the file's map covers is the same there as in memory, but for bits behind the end that another
///      writer has left clear.
///  F5  No page below `hint_` is free.
///  F6  What the map itself takes comes from it like any other page. So to cover a page may take that very page: who
///      wants one looks again afterwards.
///  F7  In the reference form a page that becomes the bitmap page of a part lies in a part that has one already, or in
///      the one that it will describe.
namespace jet {

namespace {

constexpr std::string_view kName = "the map of free pages";
constexpr Byte kAllFree = 0xFF;
constexpr std::size_t kGrowthBits = 32; ///< by which the bits in memory grow

} // namespace

FreeMap::FreeMap(PageCache& cache, const Format& format, RowId record)
    : cache_(&cache), format_(&format), record_(record)
{
}

void FreeMap::MakePage(const MutablePageRef& page, const Format& format)
{
    DataPageEditor::MakeEmpty(page, format, kGlobalMapOwner);
    DataPageEditor editor(page, format);
    const std::size_t size = format.usageMap.recordSize;
    const MutableBytes freePages = editor.Append(size).bytes;
    std::ranges::fill(freePages.subspan(kInlineMapBits), kAllFree);
    ClearBit(freePages.subspan(kInlineMapBits), kHeaderPage);
    ClearBit(freePages.subspan(kInlineMapBits), kGlobalMapPage);
    // The second map that page 0 names. It is empty in every file at rest; what the engine of Access puts into it while
    // it runs, we have no need for.
    editor.Append(size);
}

PageNumber FreeMap::Take()
{
    Load();
    for (;;) {
        const PageNumber page = LowestFree();
        Cover(page);
        // Covering a page may take it for the map itself.
        if (!TestBit(bits_, page))
            continue;
        Mark(page, false);
        assert(hint_ <= page); // F5
        hint_ = std::size_t{page} + 1;
        return page;
    }
}

void FreeMap::Give(PageNumber page)
{
    Load();
    if (page >= cache_->PageCount() || page <= kGlobalMapPage || TestBit(bits_, page))
        throw CorruptPage(page, "it is to be given back, but is not in use");
    Cover(page);
    Mark(page, true);
    hint_ = std::min<std::size_t>(hint_, page);
}

bool FreeMap::Contains(PageNumber page)
{
    Load();
    return page < cache_->PageCount() && TestBit(bits_, page);
}

void FreeMap::Load()
{
    if (loaded_)
        return;
    const PageRef page = cache_->Read(record_.page);
    const MapRecord record(DataPage(page.Bytes(), record_.page, *format_).LiveRow(record_.slot), record_.page, *format_,
                           kName);
    inline_ = record.IsInline();
    inline_ ? LoadInline(record) : LoadReference(record);

    // Some files hold zeros behind their end, from pages that were reserved and never used; and no file's first pages
    // are free.
    bits_.resize(std::max<std::size_t>(bits_.size(), cache_->PageCount() / 8 + 1));
    for (std::size_t bit = cache_->PageCount(); bit < Covered(); ++bit)
        SetBit(bits_, bit);
    ClearBit(bits_, kHeaderPage);
    ClearBit(bits_, kGlobalMapPage);
    hint_ = 0;
    loaded_ = true;
}

void FreeMap::LoadInline(const MapRecord& record)
{
    firstPage_ = record.FirstPage();
    recordBits_ = record.Bits().size() * 8;
    // What lies before the record's first bit is in use, whoever moved it there.
    bits_.assign(firstPage_ / 8, 0);
    AppendBytes(bits_, record.Bits());
}

void FreeMap::LoadReference(const MapRecord& record)
{
    bitmapPages_.resize(record.PartCount());
    const std::size_t partBytes = format_->usageMap.bitsPerPage / 8;
    bits_.clear();
    for (std::size_t part = 0; part < bitmapPages_.size(); ++part) {
        bitmapPages_[part] = record.BitmapPage(part);
        if (bitmapPages_[part] == 0)
            continue;
        const PageRef page = cache_->Read(bitmapPages_[part]);
        if (page.Type() != PageType::UsageBitmap)
            throw CorruptPage(page.Number(), "the map of free pages refers to it, but it is no bitmap");
        // A part without a bitmap page, before this one, has no free page.
        bits_.resize(part * partBytes);
        AppendBytes(bits_, page.Bytes().subspan(kBitmapPageBits));
    }
}

/// The lowest page that can be taken. Throws DatabaseFull.
PageNumber FreeMap::LowestFree()
{
    std::optional<std::size_t> page = NextSetBit(bits_, hint_);
    if (!page) {
        page = Covered();
        ExtendTo(Covered() + kGrowthBits);
    }
    hint_ = *page;
    if (*page >= format_->maxPages)
        throw Error(ErrorNumber::DatabaseFull, {},
                    std::string(format_->version == JetVersion::Jet3 ? "(1 GB in Access 97" : "(2 GB")
                        .append("; what was committed before is intact. Convert the rest into another database.)"));
    return static_cast<PageNumber>(*page);
}

/// Pages behind the end of the file join the bits in memory; they are free.
void FreeMap::ExtendTo(std::size_t bits)
{
    if (bits > Covered())
        bits_.resize((bits + 7) / 8, kAllFree);
}

/// Makes room in the file's map for the bit of `page`.
void FreeMap::Cover(PageNumber page)
{
    if (inline_) {
        // An inline record grows upwards only.
        if (page < firstPage_)
            ConvertToReference(page);
        else if (page - firstPage_ >= recordBits_)
            GrowInline(page);
    } else if (!IsCovered(page)) {
        AddBitmapPage(PartOf(page));
    }
}

void FreeMap::GrowInline(PageNumber page)
{
    const std::size_t size = InlineRecordSize(std::size_t{page} - firstPage_ + 1);
    const std::size_t bytes = size - kInlineMapBits;
    DataPageEditor editor(cache_->Write(record_.page), *format_);
    if (!editor.Resize(record_.slot, size)) {
        ConvertToReference(page);
        return;
    }
    ExtendTo(firstPage_ + 8 * bytes);
    const std::size_t known = recordBits_ / 8;
    const ByteSpan added = ByteSpan(bits_).subspan(firstPage_ / 8 + known, bytes - known);
    std::ranges::copy(added, editor.RowBytes(record_.slot).subspan(kInlineMapBits + known).begin());
    recordBits_ = 8 * bytes;
}

/// One more part of a reference map: its bitmap page may well lie in the part that it describes.
void FreeMap::AddBitmapPage(std::size_t part)
{
    if (part >= bitmapPages_.size()) {
        DataPageEditor editor(cache_->Write(record_.page), *format_);
        if (!editor.Resize(record_.slot, ReferenceRecordSize(part + 1)))
            throw CorruptPage(record_.page, "the record of the map of free pages cannot grow");
        bitmapPages_.resize(part + 1);
    }
    ExtendTo((part + 1) * format_->usageMap.bitsPerPage);
    // The page that is taken may lie in another part, which then needs its bitmap page first: one that lies in itself.
    while (!IsCovered(LowestFree()) && PartOf(LowestFree()) != part)
        AddBitmapPage(PartOf(LowestFree()));
    const PageNumber page = TakeForMap();
    bitmapPages_[part] = page;
    FillBitmapPage(page, part);
    Store(page);
    DataPageEditor editor(cache_->Write(record_.page), *format_);
    StoreBitmapPage(RecordBytes(editor, ReferenceRecordSize(part + 1)), part, page);
}

/// Gives the record the reference form, with bitmap pages for every part up to that of `page`.
void FreeMap::ConvertToReference(PageNumber page)
{
    const std::size_t pages = std::max<std::size_t>(std::size_t{page} + 1, cache_->PageCount());
    const std::size_t parts = (pages + format_->usageMap.bitsPerPage - 1) / format_->usageMap.bitsPerPage;
    ExtendTo(parts * format_->usageMap.bitsPerPage);

    std::vector<PageNumber> taken;
    while (taken.size() < parts)
        taken.push_back(TakeForMap());

    DataPageEditor editor(cache_->Write(record_.page), *format_);
    const std::size_t size = std::max(format_->usageMap.recordSize, ReferenceRecordSize(parts));
    if (!editor.Resize(record_.slot, size))
        throw CorruptPage(record_.page, "there is no room for the map of free pages");
    MakeReference(editor.RowBytes(record_.slot), taken);
    for (std::size_t part = 0; part < parts; ++part)
        FillBitmapPage(taken[part], part);
    inline_ = false;
    bitmapPages_ = std::move(taken);
    bitmapPages_.resize((size - kReferenceMapEntries) / 4);
}

/// The lowest free page, taken in memory only.
PageNumber FreeMap::TakeForMap()
{
    const PageNumber page = LowestFree();
    ClearBit(bits_, page);
    return page;
}

void FreeMap::FillBitmapPage(PageNumber page, std::size_t part)
{
    const std::size_t partBytes = format_->usageMap.bitsPerPage / 8;
    const MutableBytes data = cache_->Fresh(page).Data();
    MakeBitmapPage(data);
    std::ranges::copy(ByteSpan(bits_).subspan(part * partBytes, partBytes), data.begin() + kBitmapPageBits);
}

void FreeMap::Mark(PageNumber page, bool free)
{
    assert(page > kGlobalMapPage);        // F1
    assert(page < Covered());             // F3
    assert(TestBit(bits_, page) != free); // taken once, given back once
    if (free)
        SetBit(bits_, page);
    else
        ClearBit(bits_, page);
    Store(page);
}

/// The record, of at least `size` bytes: in a damaged file something else may claim page 1, and change it.
MutableBytes FreeMap::RecordBytes(DataPageEditor& editor, std::size_t size) const
{
    const MutableBytes record = editor.RowBytes(record_.slot);
    if (record.size() < size)
        throw CorruptPage(record_.page, "the map of free pages has become shorter");
    return record;
}

/// Copies the bit of `page` (and its neighbours in the byte) to where the file's map has it.
void FreeMap::Store(PageNumber page)
{
    const Byte byte = bits_[page / 8];
    if (inline_) {
        assert(page >= firstPage_ && page - firstPage_ < recordBits_); // F3
        DataPageEditor editor(cache_->Write(record_.page), *format_);
        const std::size_t at = kInlineMapBits + (page - firstPage_) / 8;
        RecordBytes(editor, at + 1)[at] = byte;
        return;
    }
    assert(IsCovered(page)); // F3, F7
    const std::size_t bit = page % format_->usageMap.bitsPerPage;
    cache_->Write(bitmapPages_[PartOf(page)]).Data(kBitmapPageBits + bit / 8, 1)[0] = byte;
}

} // namespace jet
