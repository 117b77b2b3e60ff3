#include "page_dump.h"

#include "dump.h"
#include "text_forms.h"

#include "jet/store/header_page.h"

#include <algorithm>
#include <iostream>

using namespace jet;

namespace {

constexpr std::size_t kHexWidth = 16;

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

void PageDump::Show()
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

void PageDump::ShowHex() const
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

void PageDump::Line(const std::string& text) const
{
    std::cout << "  " << text << '\n';
}

void PageDump::Wrong(const std::string& text)
{
    sound_ = false;
    std::cout << "  ! " << text << '\n';
}

void PageDump::LoadOwner()
{
    Try([&] { owner_ = file_.Definition(LoadU32(bytes_, kOwnerField)); });
}

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

void PageDump::ShowBitmap()
{
    std::vector<PageNumber> bits;
    PageFile::AddBits(ByteSpan(bytes_).subspan(kBitmapPageBits), 0, bits);
    Line("bitmap of a usage map; set bits, counted from the part's first page: " + PageList(bits));
}

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
