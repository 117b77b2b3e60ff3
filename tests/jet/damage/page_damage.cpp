#include "jet/damage/page_damage.h"

#include "jet/base/format.h"

#include <algorithm>
#include <vector>

namespace jet::testing {

namespace {

constexpr std::size_t kVersionByte = 20;

struct Field {
    std::size_t at;
    std::size_t size; ///< 1, 2 or 4 bytes
};

class Damager {
public:
    Damager(MutableBytes file, const Format& format, std::mt19937& random)
        : file_(file), format_(format), random_(random), pageCount_(file.size() / format.pageSize)
    {
    }

    void Run()
    {
        const std::size_t number = Below(64) ? 1 + Below(pageCount_ - 1) : 0;
        const MutableBytes page = file_.subspan(number * format_.pageSize, format_.pageSize);
        const std::vector<Field> fields = FieldsOf(page);
        if (Below(40) == 0)
            return ReplacePage(page);
        if (Below(3) != 0 && !fields.empty())
            return Change(page, fields[Below(fields.size())]);
        const std::size_t size = std::size_t{1} << Below(3);
        Change(page, {Below(UsedBytes(page) - size), size});
    }

private:
    [[nodiscard]] std::size_t Below(std::size_t end) { return random_() % end; }

    /// What tells how the rest of the page is to be read.
    [[nodiscard]] std::vector<Field> FieldsOf(ByteSpan page) const
    {
        switch (static_cast<PageType>(page[0])) {
        case PageType::Data:
            return DataFields(page);
        case PageType::Definition:
            return DefinitionFields(page);
        case PageType::IndexNode:
        case PageType::IndexLeaf:
            return IndexFields();
        default:
            return {};
        }
    }

    [[nodiscard]] std::vector<Field> DataFields(ByteSpan page) const
    {
        std::vector<Field> fields = {{0, 1}, {2, 2}, {4, 4}, {format_.dataPage.rowCount, 2}};
        const std::size_t rows = LoadU16(page, format_.dataPage.rowCount);
        for (std::size_t row = 0; row < std::min(rows, kMaxRowsPerPage); ++row) {
            const std::size_t slot = format_.dataPage.slots + 2 * row;
            fields.push_back({slot, 2});
            // Where the row begins: its column count, or the form and first page number of a usage map.
            const std::size_t begin = LoadU16(page, slot) & 0x1FFFu;
            if (begin + 8 <= page.size())
                fields.insert(fields.end(), {{begin, 1}, {begin + 1, 4}});
        }
        return fields;
    }

    [[nodiscard]] std::vector<Field> DefinitionFields(ByteSpan page) const
    {
        const Format::DefinitionLayout& layout = format_.definition;
        std::vector<Field> fields = {{0, 1},
                                     {4, 4}, // the next page of the definition
                                     {layout.length, 4},
                                     {layout.columnsEver, 2},
                                     {layout.variableColumnsEver, 2},
                                     {layout.columnCount, 2},
                                     {layout.logicalIndexCount, 4},
                                     {layout.realIndexCount, 4},
                                     {layout.ownedPages, 4},
                                     {layout.freeSpacePages, 4}};
        const std::size_t columns = LoadU16(page, layout.columnCount);
        std::size_t column = layout.sections + layout.statisticsSize * (LoadU32(page, layout.realIndexCount) & 0xFFu);
        for (std::size_t i = 0; i < columns && column + layout.columnSize <= page.size(); ++i) {
            const Format::ColumnLayout& parts = format_.column;
            for (const Field part : {Field{0, 1}, Field{parts.number, 2}, Field{parts.variableIndex, 2},
                                     Field{parts.flags, 1}, Field{parts.fixedOffset, 2}, Field{parts.size, 2}})
                fields.push_back({column + part.at, part.size});
            column += layout.columnSize;
        }
        return fields;
    }

    [[nodiscard]] std::vector<Field> IndexFields() const
    {
        const Format::IndexPageLayout& layout = format_.indexPage;
        std::vector<Field> fields = {{0, 1}, {2, 2}, {4, 4}, {layout.previous, 4}, {layout.next, 4}, {layout.tail, 4}};
        fields.push_back({layout.prefixLength, layout.prefixLengthSize});
        for (std::size_t i = 0; i < 8; ++i) {
            fields.push_back({layout.mask + i, 1});
            fields.push_back({layout.entries + 4 * i, 4});
        }
        return fields;
    }

    /// Up to the last byte that is not zero.
    [[nodiscard]] static std::size_t UsedBytes(ByteSpan page)
    {
        std::size_t end = page.size();
        while (end > 64 && page[end - 1] == 0)
            --end;
        return end;
    }

    void ReplacePage(MutableBytes page)
    {
        const std::size_t other = Below(pageCount_);
        std::ranges::copy(file_.subspan(other * format_.pageSize, format_.pageSize), page.begin());
    }

    void Change(MutableBytes page, Field field)
    {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < field.size; ++i)
            value |= static_cast<std::uint32_t>(page[field.at + i]) << 8 * i;
        value = Another(value);
        for (std::size_t i = 0; i < field.size; ++i)
            page[field.at + i] = static_cast<Byte>(value >> 8 * i);
    }

    [[nodiscard]] std::uint32_t Another(std::uint32_t value)
    {
        switch (Below(10)) {
        case 0:
            return 0;
        case 1:
            return ~0u;
        case 2:
            return value + 1;
        case 3:
            return value - 1;
        case 4:
            return static_cast<std::uint32_t>(Below(pageCount_ + 2));
        case 5: // a row's address
            return static_cast<std::uint32_t>(Below(pageCount_ + 2) << 8 | Below(8));
        case 6: // near a page's end
            return static_cast<std::uint32_t>(format_.pageSize - Below(8));
        case 7:
            return static_cast<std::uint32_t>(Below(32));
        case 8:
            return random_();
        default:
            return value ^ 1u << Below(32);
        }
    }

    MutableBytes file_;
    const Format& format_;
    std::mt19937& random_;
    std::size_t pageCount_;
};

} // namespace

void Damage(MutableBytes file, std::mt19937& random)
{
    const JetVersion version =
        file.size() > kVersionByte && file[kVersionByte] == 0 ? JetVersion::Jet3 : JetVersion::Jet4;
    const Format& format = FormatOf(version);
    if (file.size() >= 2 * format.pageSize)
        Damager(file, format, random).Run();
}

} // namespace jet::testing
