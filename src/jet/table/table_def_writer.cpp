#include "jet/base/text_codec.h"
#include "jet/table/table_def.h"

#include <algorithm>
#include <cassert>

/// The reverse of reading one, see table_def.cpp for the order of the parts. A definition is always written whole: its
/// parts have no fixed places, so one more column moves all that follows. Blocks are filled from the bytes that were
/// read, where there were any, and only what we know is set in them: what other versions keep there survives.
namespace jet {

namespace {

constexpr std::size_t kPageHeadSize = 8;
constexpr std::size_t kIndexSlotSize = 3;
constexpr std::uint16_t kUnusedSlot = 0xFFFF;
constexpr std::uint16_t kEndOfDefinition = 0xFFFF;
/// In plain and primary entries the two cascade bytes hold this.
constexpr Byte kNoCascadeField = 4;
/// Jet 3 marks definition pages with "VC" where Jet 4 keeps the free bytes.
constexpr std::uint16_t kJet3DefinitionMark = 0x4356;

void AppendU16(Bytes& out, std::uint16_t value)
{
    out.resize(out.size() + 2);
    StoreU16(out, out.size() - 2, value);
}

void AppendU32(Bytes& out, std::uint32_t value)
{
    out.resize(out.size() + 4);
    StoreU32(out, out.size() - 4, value);
}

void AppendName(Bytes& out, const Format& format, std::string_view name)
{
    const std::size_t at = out.size();
    const std::size_t lengthSize = format.definition.nameLengthSize;
    out.resize(at + lengthSize);
    AppendText(out, format, name, false);
    const std::size_t length = out.size() - at - lengthSize;
    if (lengthSize == 1)
        out[at] = static_cast<Byte>(length);
    else
        StoreU16(out, at, static_cast<std::uint16_t>(length));
}

void AppendHeader(Bytes& out, const Format& format, const TableDef& def)
{
    const Format::DefinitionLayout& layout = format.definition;
    out.assign(def.rawHeader.begin(), def.rawHeader.begin() + layout.sections);
    // The head belongs to the page, and is written with it.
    std::fill_n(out.begin(), kPageHeadSize, Byte{0});
    if (layout.magic != Format::kAbsent)
        StoreU32(out, layout.magic, kDefinitionMagic);
    StoreU32(out, layout.rowCount, def.rowCount);
    StoreU32(out, layout.lastAutonumber, def.lastAutonumber);
    out[layout.tableType] = def.tableType;
    StoreU16(out, layout.columnsEver, def.columnsEver);
    StoreU16(out, layout.variableColumnsEver, def.variableColumnsEver);
    StoreU16(out, layout.columnCount, static_cast<std::uint16_t>(def.columns.size()));
    StoreU32(out, layout.logicalIndexCount, static_cast<std::uint32_t>(def.logicalIndexes.size()));
    StoreU32(out, layout.realIndexCount, static_cast<std::uint32_t>(def.realIndexes.size()));
    StoreU32(out, layout.ownedPages, def.ownedPages.Pointer());
    StoreU32(out, layout.freeSpacePages, def.freeSpacePages.Pointer());
}

constexpr std::size_t kDistinctKeys = 4; ///< in the counts of an index

void StoreStatistics(MutableBytes block, const RealIndex& index)
{
    StoreU32(block, 0, index.entriesAtBuild);
    StoreU32(block, kDistinctKeys, index.distinctKeys);
}

void AppendColumn(Bytes& out, const Format& format, const Column& column)
{
    const Format::ColumnLayout& layout = format.column;
    std::array<Byte, std::tuple_size_v<decltype(column.raw)>> block = column.raw;
    block[0] = static_cast<Byte>(column.type);
    if (layout.magic != Format::kAbsent)
        StoreU32(block, layout.magic, kDefinitionMagic);
    StoreU16(block, layout.number, column.number);
    StoreU16(block, layout.variableIndex, column.variableIndex);
    StoreU16(block, layout.position, column.position);
    if (column.type == ColumnType::Numeric) {
        block[layout.sortOrder] = column.precision;
        block[layout.sortOrder + 1] = column.scale;
    } else {
        StoreU16(block, layout.sortOrder, column.collation.locale);
    }
    if (layout.sortVersion != Format::kAbsent)
        block[layout.sortVersion] = column.collation.version;
    block[layout.flags] = column.flags;
    if (layout.moreFlags != Format::kAbsent)
        block[layout.moreFlags] = column.moreFlags;
    StoreU16(block, layout.fixedOffset, column.fixedOffset);
    StoreU16(block, layout.size, column.size);
    AppendBytes(out, ByteSpan(block).first(format.definition.columnSize));
}

void AppendRealIndex(Bytes& out, const Format& format, const RealIndex& index)
{
    const Format::RealIndexLayout& layout = format.realIndex;
    std::array<Byte, std::tuple_size_v<decltype(index.raw)>> block = index.raw;
    if (format.version == JetVersion::Jet4)
        StoreU32(block, 0, kRealIndexMagic);
    for (std::size_t i = 0; i < kMaxIndexColumns; ++i) {
        const std::size_t slot = layout.columns + i * kIndexSlotSize;
        const bool used = i < index.columns.size();
        // The order byte of an unused slot means nothing and stays what it was.
        if (used)
            block[slot + 2] = index.columns[i].order == SortOrder::Ascending ? 1 : 0;
        StoreU16(block, slot, used ? index.columns[i].column : kUnusedSlot);
    }
    StoreU32(block, layout.usageMap, index.usageMap.Pointer());
    StoreU32(block, layout.root, index.root);
    block[layout.flags] = index.flags | layout.alwaysSet;
    AppendBytes(out, ByteSpan(block).first(format.definition.realIndexSize));
}

void AppendLogicalIndex(Bytes& out, const Format& format, const LogicalIndex& index)
{
    const Format::LogicalIndexLayout& layout = format.logicalIndex;
    const bool relation = index.type == IndexType::Relation;
    std::array<Byte, std::tuple_size_v<decltype(index.raw)>> block = index.raw;
    if (format.version == JetVersion::Jet4)
        StoreU32(block, 0, kDefinitionMagic);
    StoreU32(block, layout.number, index.number);
    StoreU32(block, layout.realIndex, index.realIndex);
    block[layout.side] = static_cast<Byte>(index.side);
    StoreU32(block, layout.partnerIndex, index.partnerIndex);
    StoreU32(block, layout.partnerTable, index.partnerTable);
    block[layout.cascadeUpdate] = relation ? Byte{index.cascadeUpdates} : kNoCascadeField;
    block[layout.cascadeDelete] = relation ? static_cast<Byte>(index.onDelete) : kNoCascadeField;
    block[layout.type] = static_cast<Byte>(index.type);
    AppendBytes(out, ByteSpan(block).first(format.definition.logicalIndexSize));
}

void AppendLongValueMaps(Bytes& out, const TableDef& def)
{
    const auto append = [&](const Column& column) {
        AppendU16(out, column.number);
        AppendU32(out, column.longValueOwned.Pointer());
        AppendU32(out, column.longValueFree.Pointer());
    };
    // In the order in which they stood: Access writes them by column in Jet 4, and Jet 3 in any.
    for (const std::uint16_t number : def.longValueOrder)
        append(def.columns[def.ColumnByNumber(number).value()]);
    AppendU16(out, kEndOfDefinition);
}

void WritePage(const MutablePageRef& page, const Format& format, PageNumber next, ByteSpan content)
{
    const MutableBytes data = page.Data();
    std::fill(data.begin(), data.end(), Byte{0});
    std::copy(content.begin(), content.end(), data.begin() + kPageHeadSize);
    data[0] = static_cast<Byte>(PageType::Definition);
    data[1] = 1;
    // The engine keeps the 8 bytes behind the end of a definition free.
    const std::size_t used = 2 * kPageHeadSize + content.size();
    const std::size_t freeBytes = used < format.pageSize ? format.pageSize - used : 0;
    StoreU16(data, kPageFreeBytes,
             format.version == JetVersion::Jet3 ? kJet3DefinitionMark : static_cast<std::uint16_t>(freeBytes));
    StoreU32(data, kPageOwner, next);
}

} // namespace

Bytes SerializeTableDef(const Format& format, const TableDef& def)
{
    Bytes out;
    AppendHeader(out, format, def);
    for (const RealIndex& index : def.realIndexes) {
        const std::size_t at = out.size();
        out.insert(out.end(), index.rawStatistics.begin(),
                   index.rawStatistics.begin() + format.definition.statisticsSize);
        StoreStatistics(MutableBytes(out).subspan(at), index);
    }
    for (const Column& column : def.columns)
        AppendColumn(out, format, column);
    for (const Column& column : def.columns)
        AppendName(out, format, column.name);
    for (const RealIndex& index : def.realIndexes)
        AppendRealIndex(out, format, index);
    for (const LogicalIndex& index : def.logicalIndexes)
        AppendLogicalIndex(out, format, index);
    for (const LogicalIndex& index : def.logicalIndexes)
        AppendName(out, format, index.name);
    AppendLongValueMaps(out, def);
    StoreU32(out, format.definition.length, static_cast<std::uint32_t>(out.size()));
    return out;
}

/// The first page never changes: its number is the table's id. Pages are added and freed at the end of the chain.
void WriteTableDef(Pager& pager, TableDef& def)
{
    assert(!def.pages.empty());
    const Format& format = pager.GetFormat();
    const Bytes stream = SerializeTableDef(format, def);
    const ByteSpan content = ByteSpan(stream).subspan(kPageHeadSize);
    const std::size_t perPage = format.pageSize - kPageHeadSize;
    const std::size_t pageCount = (content.size() + perPage - 1) / perPage;
    while (def.pages.size() < pageCount)
        def.pages.push_back(pager.Allocate().Number());
    for (std::size_t i = 0; i < pageCount; ++i) {
        const std::size_t begin = i * perPage;
        const PageNumber next = i + 1 < pageCount ? def.pages[i + 1] : 0;
        WritePage(pager.Write(def.pages[i]), format, next,
                  content.subspan(begin, std::min(perPage, content.size() - begin)));
    }
    for (; def.pages.size() > pageCount; def.pages.pop_back())
        pager.Free(def.pages.back());
}

void WriteTableCounters(const PageAtHand& first, const TableDef& def)
{
    const Format::DefinitionLayout& layout = def.format->definition;
    // At most 128 blocks of statistics are accepted when a definition is read, so all of them lie on its first page.
    const UndoLog::Range counts{layout.rowCount, layout.lastAutonumber + 4 - layout.rowCount};
    const UndoLog::Range statistics{layout.sections, layout.statisticsSize * def.realIndexes.size()};
    const MutableBytes page(first.Data(counts, statistics), statistics.offset + statistics.size);
    StoreU32(page, layout.rowCount, def.rowCount);
    StoreU32(page, layout.lastAutonumber, def.lastAutonumber);
    std::size_t block = statistics.offset;
    for (const RealIndex& index : def.realIndexes) {
        StoreU32(page, block + kDistinctKeys, index.distinctKeys); // the other count is of the index's making
        block += layout.statisticsSize;
    }
}

void SortIndexesByName(TableDef& def)
{
    // Each key is made once, not with every comparison.
    std::vector<std::pair<Bytes, LogicalIndex>> keyed;
    for (LogicalIndex& index : def.logicalIndexes) {
        Bytes key = TextKey(*def.format, index.name);
        keyed.emplace_back(std::move(key), std::move(index));
    }
    std::stable_sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) {
        return std::ranges::lexicographical_compare(a.first, b.first);
    });
    for (std::size_t i = 0; i < keyed.size(); ++i)
        def.logicalIndexes[i] = std::move(keyed[i].second);
}

} // namespace jet
