#include "jet/table/table_def.h"

#include "jet/store/data_page.h"
#include "jet/store/usage_map.h"

#include <algorithm>
#include <vector>

namespace jet {

namespace {

bool HoldsLiveRecord(Pager& pager, PageNumber number)
{
    const PageRef page = pager.Read(number, PageType::Data);
    const DataPage view(page.Bytes(), number, pager.GetFormat());
    for (std::size_t slot = 0; slot < view.SlotCount(); ++slot) {
        if (view.State(slot) != SlotState::Deleted)
            return true;
    }
    return false;
}

/// Every page that holds a usage-map record of the table, each once, its own first.
std::vector<PageNumber> MapPages(const TableDef& def)
{
    std::vector<PageNumber> pages;
    const auto add = [&pages](RowId record) {
        if (!record.IsNone() && std::find(pages.begin(), pages.end(), record.page) == pages.end())
            pages.push_back(record.page);
    };
    add(def.ownedPages);
    add(def.freeSpacePages);
    for (const Column& column : def.columns) {
        add(column.longValueOwned);
        add(column.longValueFree);
    }
    for (const RealIndex& index : def.realIndexes)
        add(index.usageMap);
    return pages;
}

PageNumber AllocateMapPage(Pager& pager)
{
    const MutablePageRef page = pager.Allocate();
    DataPageEditor::MakeEmpty(page, pager.GetFormat(), kUsageMapOwner);
    return page.Number();
}

} // namespace

/// Maps of one table share pages, and no page has maps of two, but for the basic system tables: so a table's maps lie
/// together, and go with it.
RowId PlaceMapRecord(Pager& pager, const TableDef& def)
{
    for (const PageNumber page : MapPages(def)) {
        if (const std::optional<RowId> record = UsageMap::CreateRecord(pager, page))
            return *record;
    }
    return UsageMap::CreateRecord(pager, AllocateMapPage(pager)).value();
}

void RemoveMapRecord(Pager& pager, RowId record)
{
    if (record.IsNone())
        return;
    UsageMap(pager, record).Destroy();
    // Slots of deleted records are not used again, so a page that is full of them would only be in the way.
    if (!HoldsLiveRecord(pager, record.page))
        pager.Free(record.page);
}

} // namespace jet
