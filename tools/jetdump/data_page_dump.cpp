#include "page_dump.h"
#include "text_forms.h"

#include "jet/base/value_codec.h"
#include "jet/base/value_text.h"

#include <algorithm>

using namespace jet;

namespace {

constexpr std::size_t kShownBytes = 48; ///< of a row or long value whose form is not known

std::string Shortened(ByteSpan bytes)
{
    return Hex(bytes.first(std::min(bytes.size(), kShownBytes))) + (bytes.size() > kShownBytes ? " ..." : "");
}

const char* StateName(SlotState state)
{
    switch (state) {
    case SlotState::Row:
        return "row";
    case SlotState::Moved:
        return "moved";
    case SlotState::MovedHere:
        return "moved here";
    case SlotState::Deleted:
        return "deleted";
    }
    return "";
}

/// The field of a long value: where it is, and what of it stands in the row.
std::string LongValueText(ByteSpan field, const Column& column, const Format& format)
{
    if (field.size() < kLongValueHeaderSize)
        return Shortened(field);
    const std::uint32_t word = LoadU32(field, 0);
    const std::string length = std::to_string(word & 0x3FFFFFFF) + " bytes ";
    switch (word >> 30) {
    case 2: {
        const ByteSpan value = field.subspan(kLongValueHeaderSize);
        return length + "here: " +
               (column.type == ColumnType::Memo ? Escaped(ToText(DecodeValue(value, format, column.GetValueType())))
                                                : Shortened(value));
    }
    case 1:
        return length + "at " + Pointer(RowId::FromPointer(LoadU32(field, 4)));
    case 0:
        return length + "in a chain from " + Pointer(RowId::FromPointer(LoadU32(field, 4))) + ", tag " +
               std::to_string(LoadU32(field, 8));
    default:
        return "of no known form: " + Shortened(field);
    }
}

} // namespace

void PageDump::ShowDataPage()
{
    const std::uint32_t owner = LoadU32(bytes_, kOwnerField);
    if (owner == kUsageMapOwner || page_ == kGlobalMapPage) {
        Line("usage maps");
    } else if (owner == kLongValueOwner) {
        Line("long values, tag " + std::to_string(LoadU32(bytes_, kLongValueTag)));
    } else {
        Line("rows of the table on page " + std::to_string(owner));
        LoadOwner();
    }
    Try([&] {
        const DataPage page(bytes_, page_, file_.GetFormat());
        Line(std::to_string(page.SlotCount()) + " slots, " + std::to_string(LoadU16(bytes_, kFreeBytesField)) +
             " bytes free");
        ShowRows(page);
        if (page.FreeBytes() != LoadU16(bytes_, kFreeBytesField))
            Wrong("between slots and rows are " + std::to_string(page.FreeBytes()) + " bytes");
    });
}

void PageDump::ShowRows(const DataPage& page)
{
    for (std::size_t slot = 0; slot < page.SlotCount(); ++slot)
        Try([&] { ShowRow(page, slot); });
}

void PageDump::ShowRow(const DataPage& page, std::size_t slot)
{
    const ByteSpan row = page.Row(slot);
    const SlotState state = page.State(slot);
    Line("slot " + std::to_string(slot) + " at " + Offset(static_cast<std::size_t>(row.data() - bytes_.data())) + ", " +
         std::to_string(row.size()) + " bytes, " + StateName(state));
    if (state == SlotState::Deleted || row.empty())
        return;
    if (state == SlotState::Moved && row.size() >= kRowPointerSize)
        return Line("  to " + Pointer(RowId::FromPointer(LoadU32(row, 0))));
    if (page.Owner() == kUsageMapOwner || page_ == kGlobalMapPage)
        return ShowMapRecord(row);
    if (!owner_)
        return Line("  " + Shortened(row));
    const RowView view(row, *owner_, page_);
    for (const Column& column : owner_->columns)
        Try([&] { ShowField(view, column); });
}

void PageDump::ShowField(const RowView& row, const Column& column)
{
    const Format& format = file_.GetFormat();
    if (column.type == ColumnType::Boolean)
        return Line("  " + column.name + " = " + (row.IsSet(column) ? "True" : "False"));
    const std::optional<ByteSpan> field = row.Field(column);
    if (!field)
        return Line("  " + column.name + " is Null");
    Line("  " + column.name + " = " +
         (IsLongValue(column.type) ? LongValueText(*field, column, format)
                                   : Escaped(ToText(DecodeValue(*field, format, column.GetValueType())))));
}

void PageDump::ShowMapRecord(ByteSpan record)
{
    const MapContent map = file_.Map(record, page_);
    if (map.isInline) {
        Line("  inline, from page " + std::to_string(map.firstPage));
    } else {
        for (std::size_t part = 0; part < map.bitmapPages.size(); ++part)
            if (map.bitmapPages[part] != 0)
                Line("  part " + std::to_string(part) + ": bitmap on page " + std::to_string(map.bitmapPages[part]));
    }
    Line("  pages: " + PageList(map.pages));
    if (page_ != kGlobalMapPage && !map.pages.empty() && map.pages.back() >= file_.PageCount())
        Wrong("it names pages behind the end of the file");
}
