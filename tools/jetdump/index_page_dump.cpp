#include "key_text.h"
#include "page_dump.h"
#include "text_forms.h"

#include <algorithm>

using namespace jet;

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
