#pragma once

#include "jet/base/row_id.h"
#include "jet/store/pager.h"

#include <optional>
#include <vector>

namespace jet {

/// A set of page numbers, kept in one record of a data page.
///
///   form       byte 0  content
///   inline          0  u32 first page (multiple of 8), then a bitmap
///   reference       1  u32 numbers of bitmap pages (type 5), 0 = none; entry i covers the i-th bitsPerPage pages
///
/// Bits count from the least significant. A record grows in place as long as its page has room and becomes a reference
/// map otherwise. Reads the record anew on every call; owns nothing. Source: files written by Access 97, 2000 and 2003.
class UsageMap {
public:
    UsageMap(Pager& pager, RowId record) : pager_(&pager), record_(record) {}

    /// Appends an empty record to `mapPage` (a data page with owner 0); nullopt when that page has no room.
    [[nodiscard]] static std::optional<RowId> CreateRecord(Pager& pager, PageNumber mapPage);

    [[nodiscard]] RowId Record() const noexcept { return record_; }
    [[nodiscard]] bool Contains(PageNumber page) const;
    void Add(PageNumber page);
    void Remove(PageNumber page);
    /// The smallest member >= `from`; nullopt when there is none.
    [[nodiscard]] std::optional<PageNumber> Next(PageNumber from) const;
    /// All members, ascending.
    [[nodiscard]] std::vector<PageNumber> Pages() const;
    /// Gives back every bitmap page and deletes the record. The pages named in the map are not touched.
    void Destroy();

private:
    Pager* pager_;
    RowId record_;
};

} // namespace jet
