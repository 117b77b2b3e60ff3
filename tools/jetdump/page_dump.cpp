#include "dump.h"
#include "key_text.h"
#include "page_file.h"
#include "text_forms.h"

#include "jet/base/value_codec.h"
#include "jet/error.h"
#include "jet/index/index_page.h"
#include "jet/store/data_page.h"
#include "jet/store/header_page.h"
#include "jet/table/row_codec.h"

#include <algorithm>
#include <iostream>
#include <optional>
#include <string>

using namespace jet;

namespace {

constexpr std::size_t kFreeBytesField = 2;
constexpr std::size_t kOwnerField = 4;
constexpr std::size_t kHexWidth = 16;
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

/// Shows one page, and remembers whether anything was wrong.
class PageDump {
public:
    PageDump(const PageFile& file, PageNumber page) : file_(file), page_(page), bytes_(file.Read(page)) {}

    [[nodiscard]] bool IsSound() const noexcept { return sound_; }

    void Show()
    {
        switch (static_cast<PageType>(bytes_[0])) {
        case PageType::Header:
            return page_ == kHeaderPage ? ShowHeader() : Line("never written");
        case PageType::Data:
            return ShowDataPage();
        case PageType::Definition:
            return ShowDefinitionPage();
        case PageType::IndexNode:
        case PageType::IndexLeaf:
            return ShowIndexPage();
        case PageType::UsageBitmap:
            return ShowBitmap();
        case PageType::FreedDefinition:
            return Line("a freed definition");
        case PageType::FreedData:
            return Line("a freed data page");
        }
        Wrong("type " + std::to_string(bytes_[0]) + " is none of this format");
    }

    void ShowHex() const
    {
        for (std::size_t at = 0; at < bytes_.size(); at += kHexWidth) {
            const ByteSpan line = ByteSpan(bytes_).subspan(at, kHexWidth);
            const auto isZero = [](ByteSpan part) { return std::ranges::all_of(part, [](Byte b) { return b == 0; }); };
            if (at != 0 && isZero(line) && isZero(ByteSpan(bytes_).subspan(at - kHexWidth, kHexWidth))) {
                if (at == kHexWidth || !isZero(ByteSpan(bytes_).subspan(at - 2 * kHexWidth, kHexWidth)))
                    std::cout << "  *\n";
                continue;
            }
            std::string shown;
            for (const Byte byte : line)
                shown += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
            std::cout << "  " << Offset(at) << "  " << Hex(line) << "  " << shown << '\n';
        }
    }

private:
    void Line(const std::string& text) const { std::cout << "  " << text << '\n'; }
    void Wrong(const std::string& text)
    {
        sound_ = false;
        std::cout << "  ! " << text << '\n';
    }
    /// Shows one thing; what is wrong with it is told in its place, and the page goes on.
    template <typename Part>
    void Try(const Part& part)
    {
        try {
            part();
        } catch (const Error& error) {
            Wrong(error.what());
        }
    }

    void ShowHeader();
    void ShowDataPage();
    void ShowRows(const DataPage& page);
    void ShowRow(const DataPage& page, std::size_t slot);
    void ShowField(const RowView& row, const Column& column);
    void ShowMapRecord(ByteSpan record);
    void ShowDefinitionPage();
    [[nodiscard]] std::optional<PageNumber> PageBeforeInChain() const;
    void ShowColumn(const Column& column);
    void ShowMapPointer(const char* name, RowId record);
    void ShowIndexPage();
    void ShowEntries(const IndexPage& page);
    [[nodiscard]] const RealIndex* IndexOfPage() const;
    void ShowBitmap();
    void LoadOwner();

    const PageFile& file_;
    PageNumber page_;
    Bytes bytes_;
    std::optional<TableDef> owner_;
    bool sound_ = true;
};

void PageDump::ShowHeader()
{
    const Format& format = file_.GetFormat();
    Line(format.version == JetVersion::Jet3 ? "header, Jet 3" : "header, Jet 4");
    if (!BearsSignature(bytes_))
        Wrong("it does not begin as the header of a database does");
    const Bytes plain = UnmaskedHeader(bytes_);
    Line("0018 to 0097 without their mask: " + Hex(ByteSpan(plain).subspan(0x18, 16)) + " ...");
    Line("map of free pages: " + Pointer(RowId::FromPointer(LoadU32(plain, 0x18))));
    const std::uint16_t counter = LoadU16(bytes_, format.commitCounters);
    Line("counter of commits: " + std::to_string(counter));
    if (counter == kWriteUnderWay)
        Wrong("a write was under way: a journal beside the file puts it back when it is opened");
    Try([&] { static_cast<void>(ReadHeader(bytes_, "the file")); });
}

void PageDump::LoadOwner()
{
    Try([&] { owner_ = file_.Definition(LoadU32(bytes_, kOwnerField)); });
}

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

void PageDump::ShowColumn(const Column& column)
{
    Line("column " + column.name + ": " + TypeName(column.type) + ", " + std::to_string(column.size) +
         " bytes, number " + std::to_string(column.number) +
         (column.IsFixed() ? ", fixed at " + std::to_string(column.fixedOffset)
                           : ", variable " + std::to_string(column.variableIndex)) +
         (column.IsAutonumber() ? ", counter" : ""));
    if (IsLongValue(column.type)) {
        ShowMapPointer("  pages", column.longValueOwned);
        ShowMapPointer("  pages with room", column.longValueFree);
    }
}

void PageDump::ShowMapPointer(const char* name, RowId record)
{
    if (record.IsNone())
        return Line(name + std::string(": no map"));
    const std::string start = name + std::string(", map at ") + Pointer(record) + ": ";
    try {
        Line(start + PageList(file_.Map(record).pages));
    } catch (const Error& error) {
        Wrong(start + error.what());
    }
}

/// The definition page that names this one as the next of its chain.
std::optional<PageNumber> PageDump::PageBeforeInChain() const
{
    for (PageNumber page = 0; page < file_.PageCount(); ++page) {
        const Bytes bytes = file_.Read(page);
        if (page != page_ && bytes[0] == static_cast<Byte>(PageType::Definition) &&
            LoadU32(bytes, kOwnerField) == page_)
            return page;
    }
    return std::nullopt;
}

void PageDump::ShowDefinitionPage()
{
    const PageNumber next = LoadU32(bytes_, kOwnerField);
    Line("table definition, " + (next == 0 ? "last page of its chain" : "goes on on page " + std::to_string(next)));
    const std::optional<PageNumber> before = PageBeforeInChain();
    if (before)
        Line("page " + std::to_string(*before) + " goes on here");
    TableDef def;
    try {
        def = file_.Definition(page_);
    } catch (const Error& error) {
        if (!before)
            Wrong(std::string("not the beginning of a definition: ") + error.what());
        return;
    }
    Line(std::to_string(def.rowCount) + " rows, last autonumber " + std::to_string(def.lastAutonumber) +
         ", columns ever " + std::to_string(def.columnsEver) + ", variable ones " +
         std::to_string(def.variableColumnsEver));
    ShowMapPointer("pages", def.ownedPages);
    ShowMapPointer("pages with room", def.freeSpacePages);
    for (const Column& column : def.columns)
        ShowColumn(column);
    for (std::size_t i = 0; i < def.realIndexes.size(); ++i) {
        const RealIndex& index = def.realIndexes[i];
        std::string columns;
        for (const IndexColumn& part : index.columns)
            columns += ' ' + def.columns[def.ColumnByNumber(part.column).value()].name +
                       (part.order == SortOrder::Descending ? " desc" : "");
        Line("tree " + std::to_string(i) + ", root on page " + std::to_string(index.root) + ":" + columns +
             (index.IsUnique() ? ", unique" : ""));
        ShowMapPointer("  pages", index.usageMap);
    }
    for (const LogicalIndex& index : def.logicalIndexes)
        Line("index " + index.name + ": number " + std::to_string(index.number) + ", tree " +
             std::to_string(index.realIndex) + (index.type == IndexType::Primary ? ", primary key" : "") +
             (index.type == IndexType::Relation
                  ? ", relation with the table on page " + std::to_string(index.partnerTable)
                  : ""));
}

/// The index of the owner in whose map the page is; of an owner with one index that one.
const RealIndex* PageDump::IndexOfPage() const
{
    if (!owner_)
        return nullptr;
    for (const RealIndex& index : owner_->realIndexes) {
        try {
            if (std::ranges::binary_search(file_.Map(index.usageMap).pages, page_))
                return &index;
        } catch (const Error&) {
            continue; // shown with the definition
        }
    }
    return owner_->realIndexes.size() == 1 ? &owner_->realIndexes.front() : nullptr;
}

void PageDump::ShowIndexPage()
{
    Try([&] {
        const IndexPage page(bytes_, page_, file_.GetFormat());
        Line(std::string(page.IsLeaf() ? "leaf" : "node") + " of an index of the table on page " +
             std::to_string(LoadU32(bytes_, kOwnerField)) + ", level " + std::to_string(page.Level()));
        Line("page before " + std::to_string(page.Previous()) + ", behind " + std::to_string(page.Next()) +
             (page.IsLeaf() ? "" : ", tail " + std::to_string(page.Tail())));
        Line(std::to_string(page.Count()) + " entries in " + std::to_string(page.UsedBytes()) + " bytes, " +
             std::to_string(LoadU16(bytes_, kFreeBytesField)) +
             " free; in common: " + (page.Prefix().empty() ? "nothing" : Hex(page.Prefix())));
        LoadOwner();
        ShowEntries(page);
        if (page.FreeBytes() != LoadU16(bytes_, kFreeBytesField))
            Wrong("by its mask " + std::to_string(page.FreeBytes()) + " bytes are free");
    });
}

void PageDump::ShowEntries(const IndexPage& page)
{
    const RealIndex* const index = IndexOfPage();
    const std::size_t behindKey = kRowPointerSize + (page.IsLeaf() ? 0 : kChildPointerSize);
    Bytes entry, before;
    for (std::size_t place = page.Begin(); place != page.End(); place = page.After(place)) {
        Try([&] {
            page.CopyEntry(place, entry);
            const ByteSpan key = ByteSpan(entry).first(entry.size() - behindKey);
            const RowId row = RowId::FromPointer(LoadBigU32(entry, key.size()));
            Line(Hex(entry));
            Line("  " + (index ? KeyText(key, *owner_, *index) : "?") + " -> " + Pointer(row) +
                 (page.IsLeaf() ? "" : ", child " + std::to_string(page.Child(place))));
            if (!before.empty() && CompareBytes(before, entry) >= 0)
                Wrong("it does not follow on the entry before");
            before = entry;
        });
    }
}

void PageDump::ShowBitmap()
{
    std::vector<PageNumber> bits;
    PageFile::AddBits(ByteSpan(bytes_).subspan(kBitmapPageBits), 0, bits);
    Line("bitmap of a usage map; set bits, counted from the part's first page: " + PageList(bits));
}

/// What a line of the list says of a page.
std::string Kind(ByteSpan page, PageNumber number)
{
    const auto owner = [&] { return std::to_string(LoadU32(page, kOwnerField)); };
    switch (static_cast<PageType>(page[0])) {
    case PageType::Header:
        return number == kHeaderPage ? "header" : "never written";
    case PageType::Data:
        if (number == kGlobalMapPage)
            return "maps of the file";
        if (LoadU32(page, kOwnerField) == kUsageMapOwner)
            return "usage maps";
        return LoadU32(page, kOwnerField) == kLongValueOwner ? "long values" : "rows of table " + owner();
    case PageType::Definition:
        return "definition" + (LoadU32(page, kOwnerField) == 0 ? "" : ", next page " + owner());
    case PageType::IndexNode:
        return "index node of table " + owner();
    case PageType::IndexLeaf:
        return "index leaf of table " + owner();
    case PageType::UsageBitmap:
        return "bitmap";
    case PageType::FreedDefinition:
    case PageType::FreedData:
        return "freed";
    }
    return "type " + std::to_string(page[0]) + ", none of this format";
}

} // namespace

void ListPages(const char* path)
{
    const PageFile file(path);
    std::vector<PageNumber> free;
    try {
        free = file.Map(RowId{kGlobalMapPage, 0}).pages;
    } catch (const Error& error) {
        std::cout << "! the map of free pages: " << error.what() << '\n';
    }
    for (PageNumber page = 0; page < file.PageCount(); ++page)
        std::cout << page << ": " << (std::ranges::binary_search(free, page) ? "free, was " : "")
                  << Kind(file.Read(page), page) << '\n';
}

bool DumpPage(const char* path, PageNumber number, bool withHex)
{
    const PageFile file(path);
    PageDump page(file, number);
    std::cout << "page " << number << " of " << file.PageCount() << '\n';
    page.Show();
    if (withHex)
        page.ShowHex();
    return page.IsSound();
}
