#pragma once

#include "page_file.h"

#include "jet/base/error.h"
#include "jet/index/index_page.h"
#include "jet/store/data_page.h"
#include "jet/table/row_codec.h"

#include <cstddef>
#include <optional>
#include <string>

namespace jet {

/// Where in most pages the number of free bytes stands, and the page that they belong to or, in a definition, its next
/// one.
inline constexpr std::size_t kFreeBytesField = 2;
inline constexpr std::size_t kOwnerField = 4;

/// Shows one page, and remembers whether anything was wrong.
class PageDump {
public:
    PageDump(const PageFile& file, PageNumber page) : file_(file), page_(page), bytes_(file.Read(page)) {}

    [[nodiscard]] bool IsSound() const noexcept { return sound_; }

    void Show();
    void ShowHex() const;

private:
    void Line(const std::string& text) const;
    void Wrong(const std::string& text);
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

} // namespace jet
