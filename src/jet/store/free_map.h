#pragma once

#include "jet/store/page_cache.h"

namespace jet {

class DataPageEditor;
class MapRecord;

/// The global map: which pages of the file are free. A usage map (see usage_map.h) in a record of page 1 in which a set
/// bit means free; it covers every page of the file, and all bits behind the file's end are set. Its record grows in
/// place by four bytes at a time and becomes a reference map when page 1 is full; the bitmap pages are then allocated
/// pages themselves. The bits are kept in memory too, and each change is written through. Source: files of Access 97
/// and 2000; for the reference form published descriptions.
class FreeMap {
public:
    /// The map is read at its first use, so that a file whose map is damaged can still be read.
    FreeMap(PageCache& cache, const Format& format, RowId record);

    /// Makes page 1 of a new file out of a zeroed page: the map, and a second one that stays empty.
    static void MakePage(const MutablePageRef& page, const Format& format);

    /// The lowest free page, taken; behind the file's end when there is none in it. Throws DatabaseFull.
    [[nodiscard]] PageNumber Take();
    /// Throws CorruptPage when the page is outside the file, free, or one that always stands.
    void Give(PageNumber page);
    [[nodiscard]] bool Contains(PageNumber page);
    /// The pages have become what they were before: the map is read anew at its next use.
    void Forget() noexcept { loaded_ = false; }

private:
    [[nodiscard]] std::size_t Covered() const noexcept { return bits_.size() * 8; }
    [[nodiscard]] std::size_t PartOf(PageNumber page) const noexcept { return page / format_->usageMap.bitsPerPage; }
    /// Reference form: has the part of `page` a bitmap page?
    [[nodiscard]] bool IsCovered(PageNumber page) const noexcept
    {
        return PartOf(page) < bitmapPages_.size() && bitmapPages_[PartOf(page)] != 0;
    }
    void Load();
    void LoadInline(const MapRecord& record);
    void LoadReference(const MapRecord& record);
    [[nodiscard]] PageNumber LowestFree();
    void ExtendTo(std::size_t bits);
    void Cover(PageNumber page);
    void GrowInline(PageNumber page);
    void AddBitmapPage(std::size_t part);
    void ConvertToReference(PageNumber page);
    [[nodiscard]] PageNumber TakeForMap();
    void FillBitmapPage(PageNumber page, std::size_t part);
    void Mark(PageNumber page, bool free);
    [[nodiscard]] MutableBytes RecordBytes(DataPageEditor& editor, std::size_t size) const;
    void Store(PageNumber page);

    PageCache* cache_;
    const Format* format_;
    RowId record_;
    bool loaded_ = false;
    bool inline_ = true;
    PageNumber firstPage_ = 0;            ///< inline form: the page of the record's first bit
    std::size_t recordBits_ = 0;          ///< inline form: bits in the record
    std::vector<PageNumber> bitmapPages_; ///< reference form: by part; 0 = none
    Bytes bits_;                          ///< bit p = page p is free; those behind the file's end are set
    std::size_t hint_ = 0;                ///< no page below is free
};

} // namespace jet
