#pragma once

#include "jet/store/file_system.h"
#include "jet/table/table_def.h"

#include <memory>
#include <string>
#include <vector>

namespace jet {

/// The set of pages that a record of a usage map names, and how it stands there.
struct MapContent {
    bool isInline = true;
    PageNumber firstPage = 0;            ///< inline form
    std::vector<PageNumber> bitmapPages; ///< reference form: by part; 0 = none
    std::vector<PageNumber> pages;       ///< ascending
};

/// A database file as pages and nothing more: it is read without asking whether it is whole, so a damaged one can be
/// looked at. Only the byte that tells the two formats apart is believed.
class PageFile {
public:
    explicit PageFile(const char* path);

    [[nodiscard]] const Format& GetFormat() const noexcept { return *format_; }
    [[nodiscard]] PageNumber PageCount() const noexcept { return pageCount_; }
    /// One whole page; what a file that was cut off lacks of it is zero. Throws CorruptPage behind the end.
    [[nodiscard]] Bytes Read(PageNumber page) const;
    /// The definition that begins on `page`. Throws CorruptPage.
    [[nodiscard]] TableDef Definition(PageNumber page) const;
    /// The record of a usage map. Throws CorruptPage.
    [[nodiscard]] MapContent Map(ByteSpan record, PageNumber page) const;
    [[nodiscard]] MapContent Map(RowId record) const;
    /// The set bits of a bitmap page, as pages from `first` on.
    static void AddBits(ByteSpan bits, PageNumber first, std::vector<PageNumber>& pages);

private:
    std::unique_ptr<File> file_;
    const Format* format_ = nullptr;
    PageNumber pageCount_ = 0;
};

} // namespace jet
