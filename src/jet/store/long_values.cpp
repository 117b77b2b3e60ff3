#include "jet/store/long_values.h"

#include "jet/base/error.h"
#include "jet/store/data_page.h"

#include <algorithm>
#include <string>

namespace jet {

namespace {

// The form stands in the two top bits of the length, which has 30.
constexpr std::uint32_t kInline = 0x80000000;
constexpr std::uint32_t kSingle = 0x40000000;
constexpr std::uint32_t kChain = 0;
constexpr std::uint32_t kFormMask = 0xC0000000;
constexpr std::size_t kPointer = 4;
constexpr std::size_t kTag = 8;

/// A page without a free slot is of no use, however much of it is free.
constexpr PagesWithRoom::Kind kLongValuePages{.owner = kLongValueOwner, .usedUpShare = 1};

/// A head that was read.
struct FieldHeader {
    std::uint32_t form = kInline;
    std::size_t length = 0;
    RowId first;
};

LongValues::Head MakeHead(std::uint32_t form, std::size_t length, RowId first, std::uint32_t tag)
{
    LongValues::Head head{};
    StoreU32(head, 0, form | static_cast<std::uint32_t>(length));
    StoreU32(head, kPointer, first.Pointer());
    StoreU32(head, kTag, tag);
    return head;
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

/// The length in the field rules: a chain that ends before it or goes on behind it is damage, and one that goes round
/// in a circle ends there too, since each part brings at least a byte.
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
    : pager_(&pager), pages_(pager, kLongValuePages, ownedPages, freeSpacePages)
{
}

LongValues::Head LongValues::InlineHead(std::size_t size) noexcept
{
    return MakeHead(kInline, size, RowId{}, 0);
}

void LongValues::Write(ByteSpan value, Bytes& field)
{
    const bool isInline = value.size() <= pager_->GetFormat().maxInlineLong;
    AppendBytes(field, isInline ? InlineHead(value.size()) : WriteOutside(value));
    if (isInline)
        AppendBytes(field, value);
}

LongValues::Head LongValues::WriteOutside(ByteSpan value)
{
    if (value.size() > kMaxLongValue)
        throw Error(ErrorNumber::RecordTooLarge);
    return value.size() <= pager_->GetFormat().maxSingleLong ? WriteSingle(value) : WriteChain(value);
}

LongValues::Head LongValues::WriteSingle(ByteSpan value)
{
    const MutablePageRef page = PageWithRoom(value.size());
    const auto [slot, record] = DataPageEditor(page, pager_->GetFormat()).Append(value.size());
    std::ranges::copy(value, record.begin());
    return MakeHead(kSingle, value.size(), RowId{page.Number(), slot}, 0);
}

/// A page of the column that takes one more record of `size` bytes: the last one used; else one with room that has not
/// been looked at since room was last made; else a new one.
MutablePageRef LongValues::PageWithRoom(std::size_t size)
{
    // Somebody else who works on the column may have given the last page back.
    const PageNumber last = pages_.Last();
    if (last != 0 && pages_.Owned().Contains(last))
        if (MutablePageRef page = pages_.UseIfRoom(last, size))
            return page;
    while (pages_.HasMapOfRoom() && search_) {
        search_ = pages_.WithRoom().Next(*search_);
        if (!search_)
            break;
        const PageNumber candidate = (*search_)++;
        if (MutablePageRef page = pages_.UseIfRoom(candidate, size))
            return page;
    }
    return pages_.Begin();
}

/// Writes `value` as a chain, each part on a page of its own; these pages never enter the map of pages with room.
LongValues::Head LongValues::WriteChain(ByteSpan value)
{
    const Format& format = pager_->GetFormat();
    MutablePageRef page = pages_.BeginAlone();
    const PageNumber first = page.Number();
    // Jet 4 wants a number that is not 0 and the same in field and first page; that page's own is at hand.
    const std::uint32_t tag = format.version == JetVersion::Jet4 ? first : 0;
    if (tag != 0)
        StoreU32(page.Data(kLongValueTag, 4), 0, tag);
    for (std::size_t at = 0; at < value.size();) {
        const ByteSpan part = value.subspan(at, std::min(format.longPartSize, value.size() - at));
        at += part.size();
        // Taken before the part is written, since each part begins with the address of the next.
        const MutablePageRef next = at < value.size() ? pages_.BeginAlone() : MutablePageRef();
        DataPageEditor editor(page, format);
        const MutableBytes record = editor.Append(kRowPointerSize + part.size()).bytes;
        StoreU32(record, 0, next ? RowId{next.Number(), 0}.Pointer() : 0);
        std::ranges::copy(part, record.begin() + kRowPointerSize);
        page = next;
    }
    return MakeHead(kChain, value.size(), RowId{first, 0}, tag);
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
    const FieldHeader header = ParseField(field, pages_.Owned().Record().page);
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
    if (!pages_.Owned().Contains(id.page))
        throw CorruptPage(id.page, "a long value refers to it, but it belongs to something else");
    PageRef ref = pager_->Read(id.page, PageType::Data);
    const DataPage view(ref.Bytes(), id.page, pager_->GetFormat());
    static_cast<void>(view.LiveRow(id.slot));
    if (HoldsOnly(view, id.slot)) {
        ref = PageRef();
        pages_.GiveBack(id.page);
        return;
    }
    DataPageEditor(pager_->Write(id.page), pager_->GetFormat()).Delete(id.slot);
    if (pages_.HasMapOfRoom()) {
        pages_.NoteRoom(id.page);
        // The search goes on from here at the latest: pages before it were looked at, and nothing has changed there.
        search_ = search_ ? std::min(*search_, id.page) : id.page;
    }
}

void LongValues::DeleteAll()
{
    for (const PageNumber page : pages_.Owned().Pages())
        pages_.GiveBack(page);
    search_ = 0;
}

} // namespace jet
