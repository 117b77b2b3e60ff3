#pragma once

#include "jet/store/crash_file_system.h"
#include "jet/store/data_page.h"
#include "jet/store/pager.h"
#include "jet/support.h"

#include <memory>
#include <vector>

/// Pages of a file in memory, for the layers that stand on nothing else.
namespace jet::testing {

inline std::unique_ptr<Pager> NewPager(CrashFileSystem& disk, JetVersion version,
                                       std::size_t cacheBytes = Pager::kDefaultCacheBytes)
{
    return Pager::Create(disk.Open("a.mdb", OpenMode::CreateNew), {version, 42329.94479166667}, cacheBytes);
}

inline std::unique_ptr<Pager> OpenPager(CrashFileSystem& disk)
{
    return Pager::Open(disk.Open("a.mdb", OpenMode::ReadWrite));
}

/// A page for records of usage maps.
inline PageNumber NewMapPage(Pager& pager)
{
    const MutablePageRef page = pager.Allocate();
    DataPageEditor::MakeEmpty(page, pager.GetFormat(), kUsageMapOwner);
    return page.Number();
}

/// The pages that the global map says are free, ascending.
inline std::vector<PageNumber> FreePages(Pager& pager)
{
    std::vector<PageNumber> pages;
    for (PageNumber page = 0; page < pager.PageCount(); ++page)
        if (pager.IsFree(page))
            pages.push_back(page);
    return pages;
}

} // namespace jet::testing
