#include "page_file.h"

#include "jet/base/error.h"
#include "jet/store/bitmap.h"
#include "jet/store/data_page.h"
#include "jet/store/header_page.h"
#include "jet/store/map_record.h"

#include <algorithm>

namespace jet {

namespace {

constexpr std::size_t kDefinitionPageHead = 8;

} // namespace

PageFile::PageFile(const char* path) : file_(OpenFile(path, OpenMode::ReadOnly))
{
    if (file_->Size() < kHeaderSize)
        throw Error(ErrorNumber::NotADatabase, {file_->Name()});
    Bytes start(kHeaderSize);
    file_->ReadAt(0, start);
    format_ = &FormatOf(start[header_offset::kVersion] == 0 ? JetVersion::Jet3 : JetVersion::Jet4);
    const std::uint64_t pages = (file_->Size() + format_->pageSize - 1) / format_->pageSize;
    pageCount_ = static_cast<PageNumber>(std::min<std::uint64_t>(pages, format_->maxPages));
}

Bytes PageFile::Read(PageNumber page) const
{
    if (page >= pageCount_)
        throw CorruptPage(page, "the file has only " + std::to_string(pageCount_) + " pages");
    Bytes bytes(format_->pageSize);
    const std::uint64_t at = std::uint64_t{page} * format_->pageSize;
    file_->ReadAt(at, MutableBytes(bytes).first(std::min<std::uint64_t>(bytes.size(), file_->Size() - at)));
    return bytes;
}

TableDef PageFile::Definition(PageNumber page) const
{
    Bytes stream;
    std::vector<PageNumber> chain;
    for (PageNumber next = page; next != 0; next = LoadU32(Read(next), kPageOwner)) {
        const Bytes bytes = Read(next);
        if (std::ranges::find(chain, next) != chain.end())
            throw CorruptPage(page, "the chain of the table definition goes round in a circle");
        if (bytes[0] != static_cast<Byte>(PageType::Definition))
            throw CorruptPage(next,
                              "it is referred to as a table definition, but its type is " + std::to_string(bytes[0]));
        AppendBytes(stream, chain.empty() ? ByteSpan(bytes) : ByteSpan(bytes).subspan(kDefinitionPageHead));
        chain.push_back(next);
    }
    TableDef def = ParseTableDef(*format_, stream, page);
    def.pages = std::move(chain);
    return def;
}

MapContent PageFile::Map(ByteSpan record, PageNumber page) const
{
    const MapRecord read(record, page, *format_, "a usage map");
    MapContent map;
    map.isInline = read.IsInline();
    if (read.IsInline()) {
        map.firstPage = read.FirstPage();
        AddBits(read.Bits(), map.firstPage, map.pages);
    }
    for (PageNumber part = 0; !read.IsInline() && part < read.PartCount(); ++part) {
        map.bitmapPages.push_back(read.BitmapPage(part));
        if (map.bitmapPages.back() == 0)
            continue;
        const Bytes bitmap = Read(map.bitmapPages.back());
        if (bitmap[0] != static_cast<Byte>(PageType::UsageBitmap))
            throw CorruptPage(map.bitmapPages.back(), "a usage map refers to it, but it is no bitmap");
        AddBits(ByteSpan(bitmap).subspan(kBitmapPageBits),
                part * static_cast<PageNumber>(format_->usageMap.bitsPerPage), map.pages);
    }
    return map;
}

MapContent PageFile::Map(RowId record) const
{
    const Bytes page = Read(record.page);
    return Map(DataPage(page, record.page, *format_).LiveRow(record.slot), record.page);
}

void PageFile::AddBits(ByteSpan bits, PageNumber first, std::vector<PageNumber>& pages)
{
    for (auto bit = NextSetBit(bits, 0); bit; bit = NextSetBit(bits, *bit + 1))
        pages.push_back(first + static_cast<PageNumber>(*bit));
}

} // namespace jet
