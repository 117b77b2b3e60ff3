#include "jet/store/long_values.h"

#include "jet/error.h"
#include "jet/store/data_page.h"

#include <algorithm>
#include <string>

namespace jet {

namespace {

constexpr std::uint32_t kInline = 0x80000000;
constexpr std::uint32_t kSingle = 0x40000000;
constexpr std::uint32_t kChain = 0;
constexpr std::uint32_t kFormMask = 0xC0000000;
constexpr std::size_t kPointer = 4;
constexpr std::size_t kTag = 8;

/// A page with less of its room free takes part in the search no longer.
constexpr std::size_t kWorthwhileShare = 10;

/// The 12 bytes with which every field begins.
struct FieldHeader {
    std::uint32_t form = kInline;
    std::size_t length = 0;
    RowId first;
};

void AppendHeader(Bytes& field, std::uint32_t form, std::size_t length, RowId first, std::uint32_t tag)
{
    const std::size_t at = field.size();
    field.resize(at + kLongValueHeaderSize);
    StoreU32(field, at, form | static_cast<std::uint32_t>(length));
    StoreU32(field, at + kPointer, first.Pointer());
    StoreU32(field, at + kTag, tag);
}

void AppendInline(Bytes& field, ByteSpan value)
{
    AppendHeader(field, kInline, value.size(), RowId{}, 0);
    AppendBytes(field, value);
}

/// A field of no bytes is an empty value. Throws CorruptPage.
FieldHeader ParseField(ByteSpan field, PageNumber page)
{
    if (field.empty())
        return {};
    if (field.size() < kLongValueHeaderSize)
        throw CorruptPage(page, "a long value's field has only " + std::to_string(field.size()) + " bytes");
    const std::uint32_t word = LoadU32(field, 0);
    FieldHeader header{word & kFormMask, word & ~kFormMask, RowId::FromPointer(LoadU32(field, kPointer))};
    if (header.form == kFormMask)
        throw CorruptPage(page, "a long value has none of the known forms");
    if (header.form == kInline && header.length > field.size() - kLongValueHeaderSize)
        throw CorruptPage(page, "a long value of " + std::to_string(header.length) + " bytes overruns its field");
    return header;
}

/// The record of one part, without the pointer to the next.
struct ChainPart {
    PageRef page;
    RowId next;
    ByteSpan value;

    ChainPart(Pager& pager, RowId id) : page(pager.Read(id.page, PageType::Data))
    {
        const ByteSpan record = DataPage(page.Bytes(), id.page, pager.GetFormat()).LiveRow(id.slot);
        // A part that brought nothing would let a chain go round for ever.
        if (record.size() <= kRowPointerSize)
            throw CorruptPage(id.page, "a part of a long value has only " + std::to_string(record.size()) + " bytes");
        next = RowId::FromPointer(LoadU32(record, 0));
        value = record.subspan(kRowPointerSize);
    }
};

Bytes ReadSingle(Pager& pager, const FieldHeader& header)
{
    const PageRef page = pager.Read(header.first.page, PageType::Data);
    const ByteSpan record = DataPage(page.Bytes(), page.Number(), pager.GetFormat()).LiveRow(header.first.slot);
    if (record.size() < header.length)
        throw CorruptPage(page.Number(),
                          "a long value of " + std::to_string(header.length) + " bytes overruns its record");
    return {record.begin(), record.begin() + static_cast<std::ptrdiff_t>(header.length)};
}

Bytes ReadChain(Pager& pager, const FieldHeader& header, PageNumber rowPage)
{
    // A length that is nonsense must not take memory.
    if (header.length > std::size_t{pager.PageCount()} * pager.GetFormat().pageSize)
        throw CorruptPage(rowPage,
                          "a long value of " + std::to_string(header.length) + " bytes is larger than the file");
    Bytes value;
    value.reserve(header.length);
    RowId id = header.first;
    while (value.size() < header.length) {
        if (id.IsNone())
            throw CorruptPage(rowPage, "the chain of a long value ends after " + std::to_string(value.size()) + " of " +
                                           std::to_string(header.length) + " bytes");
        const ChainPart part(pager, id);
        AppendBytes(value, part.value.first(std::min(part.value.size(), header.length - value.size())));
        id = part.next;
    }
    if (!id.IsNone())
        throw CorruptPage(rowPage,
                          "the chain of a long value goes on behind its " + std::to_string(header.length) + " bytes");
    return value;
}

bool HoldsOnly(const DataPage& page, std::size_t slot)
{
    for (std::size_t other = 0; other < page.SlotCount(); ++other)
        if (other != slot && page.State(other) != SlotState::Deleted)
            return false;
    return true;
}

} // namespace

LongValues::LongValues(Pager& pager, RowId ownedPages, RowId freeSpacePages)
    : pager_(&pager), owned_(pager, ownedPages), freeSpace_(pager, freeSpacePages)
{
}

void LongValues::Write(ByteSpan value, Bytes& field, bool mayStayInline)
{
    if (mayStayInline && value.size() <= pager_->GetFormat().maxInlineLong)
        AppendInline(field, value);
    else
        WriteOutside(value, field);
}

void LongValues::Write(ByteSpan value, ByteSpan inlineForm, Bytes& field)
{
    if (value.size() <= pager_->GetFormat().maxInlineLong)
        AppendInline(field, inlineForm);
    else
        WriteOutside(value, field);
}

void LongValues::WriteOutside(ByteSpan value, Bytes& field)
{
    if (value.size() > kMaxLongValue)
        throw Error(ErrorNumber::RecordTooLarge);
    if (value.size() <= pager_->GetFormat().maxSingleLong)
        WriteSingle(value, field);
    else
        WriteChain(value, field);
}

void LongValues::WriteSingle(ByteSpan value, Bytes& field)
{
    const MutablePageRef page = PageWithRoom(value.size());
    DataPageEditor editor(page, pager_->GetFormat());
    const std::uint8_t slot = editor.Append(value.size());
    std::ranges::copy(value, editor.RowBytes(slot).begin());
    AppendHeader(field, kSingle, value.size(), RowId{page.Number(), slot}, 0);
}

/// A page of the column that takes one more record of `size` bytes: the last one used; else one with room that has not
/// been looked at since room was last made; else a new one.
MutablePageRef LongValues::PageWithRoom(std::size_t size)
{
    // Somebody else who works on the column may have given the last page back.
    if (lastPage_ != 0 && owned_.Contains(lastPage_) && HasRoom(lastPage_, size))
        return pager_->Write(lastPage_);
    while (HasFreeSpaceMap() && search_) {
        search_ = freeSpace_.Next(*search_);
        if (!search_)
            break;
        const PageNumber candidate = (*search_)++;
        if (HasRoom(candidate, size)) {
            lastPage_ = candidate;
            return pager_->Write(candidate);
        }
    }

    MutablePageRef page = pager_->Allocate();
    DataPageEditor::MakeEmpty(page, pager_->GetFormat(), kLongValueOwner);
    owned_.Add(page.Number());
    if (HasFreeSpaceMap())
        freeSpace_.Add(page.Number());
    lastPage_ = page.Number();
    return page;
}

/// Does `page` take a record of `size` bytes? When it is as good as full, it leaves the search.
bool LongValues::HasRoom(PageNumber page, std::size_t size)
{
    const PageRef ref = pager_->Read(page, PageType::Data);
    const DataPage view(ref.Bytes(), page, pager_->GetFormat());
    if (view.Fits(size))
        return true;
    const bool full = view.SlotCount() >= kMaxRowsPerPage;
    if (HasFreeSpaceMap() && (full || view.FreeBytes() < pager_->GetFormat().pageSize / kWorthwhileShare))
        freeSpace_.Remove(page);
    return false;
}

/// Writes `value` as a chain, each part on a page of its own; these pages never enter the map of pages with room.
void LongValues::WriteChain(ByteSpan value, Bytes& field)
{
    const Format& format = pager_->GetFormat();
    MutablePageRef page = NewChainPage();
    const PageNumber first = page.Number();
    // Jet 4 wants a number that is not 0 and the same in field and first page; that page's own is at hand.
    const std::uint32_t tag = format.version == JetVersion::Jet4 ? first : 0;
    if (tag != 0)
        StoreU32(page.Data(kLongValueTag, 4), 0, tag);
    for (std::size_t at = 0; at < value.size();) {
        const ByteSpan part = value.subspan(at, std::min(format.longPartSize, value.size() - at));
        at += part.size();
        const MutablePageRef next = at < value.size() ? NewChainPage() : MutablePageRef();
        DataPageEditor editor(page, format);
        const MutableBytes record = editor.RowBytes(editor.Append(kRowPointerSize + part.size()));
        StoreU32(record, 0, next ? RowId{next.Number(), 0}.Pointer() : 0);
        std::ranges::copy(part, record.begin() + kRowPointerSize);
        page = next;
    }
    AppendHeader(field, kChain, value.size(), RowId{first, 0}, tag);
}

MutablePageRef LongValues::NewChainPage()
{
    MutablePageRef page = pager_->Allocate();
    DataPageEditor::MakeEmpty(page, pager_->GetFormat(), kLongValueOwner);
    owned_.Add(page.Number());
    return page;
}

Bytes LongValues::Read(Pager& pager, ByteSpan field, PageNumber rowPage)
{
    const FieldHeader header = ParseField(field, rowPage);
    switch (header.form) {
    case kSingle:
        return ReadSingle(pager, header);
    case kChain:
        return ReadChain(pager, header, rowPage);
    default:
        break;
    }
    if (header.length == 0)
        return {};
    const ByteSpan value = field.subspan(kLongValueHeaderSize, header.length);
    return {value.begin(), value.end()};
}

void LongValues::Delete(ByteSpan field)
{
    const FieldHeader header = ParseField(field, owned_.Record().page);
    if (header.form == kSingle)
        DeleteRecord(header.first);
    if (header.form != kChain)
        return;
    for (RowId id = header.first; !id.IsNone();) {
        const RowId next = ChainPart(*pager_, id).next;
        DeleteRecord(id);
        id = next;
    }
}

void LongValues::DeleteRecord(RowId id)
{
    if (!owned_.Contains(id.page))
        throw CorruptPage(id.page, "a long value refers to it, but it belongs to something else");
    PageRef ref = pager_->Read(id.page, PageType::Data);
    const DataPage view(ref.Bytes(), id.page, pager_->GetFormat());
    static_cast<void>(view.LiveRow(id.slot));
    if (HoldsOnly(view, id.slot)) {
        ref = PageRef();
        GiveBack(id.page);
        return;
    }
    DataPageEditor(pager_->Write(id.page), pager_->GetFormat()).Delete(id.slot);
    if (HasFreeSpaceMap()) {
        freeSpace_.Add(id.page);
        search_ = search_ ? std::min(*search_, id.page) : id.page;
    }
}

void LongValues::GiveBack(PageNumber page)
{
    owned_.Remove(page);
    if (HasFreeSpaceMap())
        freeSpace_.Remove(page);
    if (lastPage_ == page)
        lastPage_ = 0;
    pager_->Free(page);
}

void LongValues::DeleteAll()
{
    for (const PageNumber page : owned_.Pages())
        GiveBack(page);
    search_ = 0;
}

} // namespace jet
