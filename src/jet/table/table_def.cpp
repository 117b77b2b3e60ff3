#include "jet/table/table_def.h"

#include "jet/base/error.h"
#include "jet/base/text_codec.h"
#include "jet/base/value.h"

#include <algorithm>
#include <bitset>

/// A definition is one stream of bytes, cut into pages that each begin with eight bytes of their own. In this order:
///
///   header                 counts, type, maps of pages; what we do not know of it is kept as it is in `rawHeader`
///   statistics             one block for each real index
///   columns                one block each, in the order of the file, which need not be that of their numbers
///   names of columns       in the same order
///   real indexes           one block each: columns, map, root
///   logical indexes        one block each: which real one, and of a relation the other side
///   names of these         in the same order
///   maps of long values    column number and two map records each, until a number of 0xFFFF
///
/// Nothing says where a part begins: each is found by the lengths of those before it. So a count that is wrong makes
/// all that follows wrong, and every one is held against what the stream has before memory is taken for it. What is
/// left then, and contradicts itself (a column outside the row, a logical index without a real one), is refused here as
/// well: the layers above take a definition that was read for granted.
namespace jet {

namespace {

// Bounds of what is believed: far above what an engine writes, low enough that damaged counts cost nothing.
constexpr std::size_t kMaxChainPages = 256;
constexpr std::size_t kMaxIndexBlocks = 128;
constexpr std::uint16_t kUnusedSlot = 0xFFFF;
constexpr std::uint16_t kEndOfDefinition = 0xFFFF;
constexpr std::size_t kIndexSlotSize = 3;
constexpr std::size_t kPageHeadSize = 8;

Bytes ReadChain(Pager& pager, PageNumber first, std::vector<PageNumber>& chain)
{
    Bytes stream;
    for (PageNumber number = first; number != 0;) {
        // A chain that comes back to itself would fill the memory.
        if (chain.size() == kMaxChainPages || std::find(chain.begin(), chain.end(), number) != chain.end())
            throw CorruptPage(first, "the chain of the table definition has no end");
        const PageRef page = pager.Read(number, PageType::Definition);
        AppendBytes(stream, chain.empty() ? page.Bytes() : page.Bytes().subspan(kPageHeadSize));
        chain.push_back(number);
        number = LoadU32(page.Bytes(), kPageOwner);
    }
    return stream;
}

template <class IsWanted>
const LogicalIndex* FindIndexOn(const TableDef& def, std::uint16_t column, const IsWanted& isWanted) noexcept
{
    const auto found = std::ranges::find_if(def.logicalIndexes, [&](const LogicalIndex& index) {
        const std::vector<IndexColumn>& columns = def.realIndexes[index.realIndex].columns;
        return isWanted(index.type) && std::ranges::find(columns, column, &IndexColumn::column) != columns.end();
    });
    return found == def.logicalIndexes.end() ? nullptr : &*found;
}

/// Reads a definition from front to back; every step is checked against the end.
class StreamReader {
public:
    StreamReader(ByteSpan stream, PageNumber page) : stream_(stream), page_(page) {}

    [[nodiscard]] ByteSpan Take(std::size_t size)
    {
        if (size > stream_.size() - at_)
            throw CorruptPage(page_, "the table definition ends early");
        at_ += size;
        return stream_.subspan(at_ - size, size);
    }

    [[nodiscard]] std::string Name(const Format& format)
    {
        const std::size_t lengthSize = format.definition.nameLengthSize;
        const ByteSpan length = Take(lengthSize);
        return DecodeText(Take(lengthSize == 1 ? length[0] : LoadU16(length, 0)), format);
    }

    [[nodiscard]] std::uint16_t U16() { return LoadU16(Take(2), 0); }
    [[nodiscard]] RowId Pointer() { return RowId::FromPointer(LoadU32(Take(kRowPointerSize), 0)); }

private:
    ByteSpan stream_;
    PageNumber page_;
    std::size_t at_ = 0;
};

Column ParseColumn(const Format& format, ByteSpan block)
{
    const Format::ColumnLayout& layout = format.column;
    Column column;
    std::copy(block.begin(), block.end(), column.raw.begin());
    column.type = static_cast<ColumnType>(block[0]);
    column.number = LoadU16(block, layout.number);
    column.variableIndex = LoadU16(block, layout.variableIndex);
    column.position = LoadU16(block, layout.position);
    column.flags = block[layout.flags];
    column.fixedOffset = LoadU16(block, layout.fixedOffset);
    column.size = LoadU16(block, layout.size);
    if (column.type == ColumnType::Numeric) {
        column.precision = block[layout.sortOrder];
        column.scale = block[layout.sortOrder + 1];
    } else {
        column.collation.locale = LoadU16(block, layout.sortOrder);
    }
    if (layout.moreFlags != Format::kAbsent)
        column.moreFlags = block[layout.moreFlags];
    if (layout.sortVersion != Format::kAbsent)
        column.collation.version = block[layout.sortVersion];
    return column;
}

RealIndex ParseRealIndex(const Format& format, ByteSpan block, ByteSpan statistics)
{
    const Format::RealIndexLayout& layout = format.realIndex;
    RealIndex index;
    std::copy(block.begin(), block.end(), index.raw.begin());
    std::copy(statistics.begin(), statistics.end(), index.rawStatistics.begin());
    index.entriesAtBuild = LoadU32(statistics, 0);
    index.distinctKeys = LoadU32(statistics, 4);
    for (std::size_t i = 0; i < kMaxIndexColumns; ++i) {
        const std::size_t slot = layout.columns + i * kIndexSlotSize;
        const std::uint16_t number = LoadU16(block, slot);
        if (number != kUnusedSlot)
            index.columns.push_back({number, block[slot + 2] & 1 ? SortOrder::Ascending : SortOrder::Descending});
    }
    index.usageMap = RowId::FromPointer(LoadU32(block, layout.usageMap));
    index.root = LoadU32(block, layout.root);
    index.flags = block[layout.flags];
    return index;
}

LogicalIndex ParseLogicalIndex(const Format& format, ByteSpan block)
{
    const Format::LogicalIndexLayout& layout = format.logicalIndex;
    LogicalIndex index;
    std::copy(block.begin(), block.end(), index.raw.begin());
    index.number = LoadU32(block, layout.number);
    index.realIndex = LoadU32(block, layout.realIndex);
    index.type = static_cast<IndexType>(block[layout.type]);
    index.side = static_cast<RelationSide>(block[layout.side]);
    index.partnerIndex = LoadU32(block, layout.partnerIndex);
    index.partnerTable = LoadU32(block, layout.partnerTable);
    // In other entries the two bytes hold 4, which means nothing.
    if (index.type == IndexType::Relation) {
        index.cascadeUpdates = block[layout.cascadeUpdate] == 1;
        index.onDelete = static_cast<DeleteRule>(block[layout.cascadeDelete]);
    }
    return index;
}

void CheckColumn(const TableDef& def, const Column& column, PageNumber page)
{
    const auto refuse = [&](const char* what) { throw CorruptPage(page, "column '" + column.name + "' " + what); };
    if (!FactsOf(column.type).isKnown)
        refuse("has a type that this format does not know");
    if (column.number >= def.columnsEver)
        refuse("has a number that was never given out");
    if (IsLongValue(column.type) && column.IsFixed())
        refuse("is a long value in the fixed area");
    if (column.type == ColumnType::Boolean ? !column.IsFixed() : false)
        refuse("is a boolean outside the null mask");
    if (!column.IsFixed() && column.variableIndex >= def.variableColumnsEver)
        refuse("has a variable index that was never given out");
    if (column.IsFixed() && std::size_t{column.fixedOffset} + column.FixedSize() > def.format->pageSize)
        refuse("lies behind the end of any row");
}

void CheckColumns(const TableDef& def, PageNumber page)
{
    if (def.columnsEver > kMaxColumns || def.variableColumnsEver > kMaxColumns)
        throw CorruptPage(page, "the table has had more than 255 columns");
    std::bitset<kMaxColumns> numbers;
    std::bitset<kMaxColumns> variable;
    for (const Column& column : def.columns) {
        CheckColumn(def, column, page);
        if (numbers.test(column.number) || (!column.IsFixed() && variable.test(column.variableIndex)))
            throw CorruptPage(page, "two columns of the table have the same place");
        numbers.set(column.number);
        if (!column.IsFixed())
            variable.set(column.variableIndex);
    }
}

void CheckIndexes(const TableDef& def, PageNumber page)
{
    for (const RealIndex& index : def.realIndexes) {
        if (index.columns.empty())
            throw CorruptPage(page, "an index has no columns");
        for (const IndexColumn& column : index.columns) {
            if (!def.ColumnByNumber(column.column))
                throw CorruptPage(page, "an index names a column that the table does not have");
        }
    }
    for (const LogicalIndex& index : def.logicalIndexes) {
        if (index.realIndex >= def.realIndexes.size())
            throw CorruptPage(page, "index '" + index.name + "' has no tree");
    }
}

void ParseLongValueMaps(StreamReader& reader, TableDef& def, PageNumber page)
{
    for (std::uint16_t number = reader.U16(); number != kEndOfDefinition; number = reader.U16()) {
        const RowId owned = reader.Pointer();
        const RowId freeSpace = reader.Pointer();
        const std::optional<std::size_t> index = def.ColumnByNumber(number);
        if (!index || !IsLongValue(def.columns[*index].type))
            throw CorruptPage(page, "long-value maps belong to a column that the table does not have");
        def.columns[*index].longValueOwned = owned;
        def.columns[*index].longValueFree = freeSpace;
        def.longValueOrder.push_back(number);
    }
    for (const Column& column : def.columns) {
        if (IsLongValue(column.type) && column.longValueOwned.IsNone())
            throw CorruptPage(page, "column '" + column.name + "' has no map of its long values");
    }
}

} // namespace

std::size_t Column::FixedSize() const noexcept
{
    const std::size_t size = FactsOf(type).size;
    return size != 0 || type == ColumnType::Boolean ? size : this->size;
}

ValueType Column::GetValueType() const noexcept
{
    return {.type = type,
            .sizeBytes = size,
            .compressed = type == ColumnType::Text && !IsFixed() && (moreFlags & kMoreFlagsCompressed),
            .filled = IsFixed() && (type == ColumnType::Text || type == ColumnType::Binary),
            .precision = precision,
            .scale = scale};
}

std::optional<std::size_t> TableDef::ColumnIndex(std::string_view name) const
{
    for (std::size_t i = 0; i < columns.size(); ++i) {
        // Nearly always the name is the very one, and no key need be made.
        if (columns[i].name == name)
            return i;
    }
    const Bytes key = TextKey(*format, name);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (TextKey(*format, columns[i].name) == key)
            return i;
    }
    return std::nullopt;
}

std::optional<std::size_t> TableDef::ColumnByNumber(std::uint16_t number) const noexcept
{
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].number == number)
            return i;
    }
    return std::nullopt;
}

const LogicalIndex* TableDef::PrimaryKey() const noexcept
{
    for (const LogicalIndex& index : logicalIndexes) {
        if (index.type == IndexType::Primary)
            return &index;
    }
    return nullptr;
}

const LogicalIndex* TableDef::IndexByName(std::string_view name) const
{
    const Bytes key = TextKey(*format, name);
    for (const LogicalIndex& index : logicalIndexes) {
        if (TextKey(*format, index.name) == key)
            return &index;
    }
    return nullptr;
}

const LogicalIndex* TableDef::IndexOn(std::uint16_t column) const noexcept
{
    return FindIndexOn(*this, column, [](IndexType type) { return type != IndexType::Relation; });
}

const LogicalIndex* TableDef::RelationOn(std::uint16_t column) const noexcept
{
    return FindIndexOn(*this, column, [](IndexType type) { return type == IndexType::Relation; });
}

bool TableDef::IsInIndex(std::uint16_t column) const noexcept
{
    return std::ranges::any_of(realIndexes, [&](const RealIndex& index) {
        return std::ranges::find(index.columns, column, &IndexColumn::column) != index.columns.end();
    });
}

const LogicalIndex* TableDef::IndexByNumber(std::uint32_t number) const noexcept
{
    for (const LogicalIndex& index : logicalIndexes) {
        if (index.number == number)
            return &index;
    }
    return nullptr;
}

std::uint32_t TableDef::NextIndexNumber() const noexcept
{
    std::uint32_t next = 0;
    for (const LogicalIndex& index : logicalIndexes)
        next = std::max(next, index.number + 1);
    return next;
}

TableDef ParseTableDef(const Format& format, ByteSpan stream, PageNumber page)
{
    const Format::DefinitionLayout& layout = format.definition;
    StreamReader reader(stream, page);
    const ByteSpan header = reader.Take(layout.sections);
    TableDef def;
    def.format = &format;
    std::copy(header.begin(), header.end(), def.rawHeader.begin());
    def.rowCount = LoadU32(header, layout.rowCount);
    def.lastAutonumber = LoadU32(header, layout.lastAutonumber);
    def.tableType = header[layout.tableType];
    def.columnsEver = LoadU16(header, layout.columnsEver);
    def.variableColumnsEver = LoadU16(header, layout.variableColumnsEver);
    def.ownedPages = RowId::FromPointer(LoadU32(header, layout.ownedPages));
    def.freeSpacePages = RowId::FromPointer(LoadU32(header, layout.freeSpacePages));
    const std::size_t columnCount = LoadU16(header, layout.columnCount);
    const std::size_t logicalCount = LoadU32(header, layout.logicalIndexCount);
    const std::size_t realCount = LoadU32(header, layout.realIndexCount);
    if (columnCount > kMaxColumns || logicalCount > kMaxIndexBlocks || realCount > kMaxIndexBlocks)
        throw CorruptPage(page, "the table definition counts more columns or indexes than a table can have");

    const ByteSpan statistics = reader.Take(realCount * layout.statisticsSize);
    for (std::size_t i = 0; i < columnCount; ++i)
        def.columns.push_back(ParseColumn(format, reader.Take(layout.columnSize)));
    for (Column& column : def.columns)
        column.name = reader.Name(format);
    for (std::size_t i = 0; i < realCount; ++i) {
        const ByteSpan counts = statistics.subspan(i * layout.statisticsSize, layout.statisticsSize);
        def.realIndexes.push_back(ParseRealIndex(format, reader.Take(layout.realIndexSize), counts));
    }
    for (std::size_t i = 0; i < logicalCount; ++i)
        def.logicalIndexes.push_back(ParseLogicalIndex(format, reader.Take(layout.logicalIndexSize)));
    for (LogicalIndex& index : def.logicalIndexes)
        index.name = reader.Name(format);
    ParseLongValueMaps(reader, def, page);
    CheckColumns(def, page);
    CheckIndexes(def, page);
    return def;
}

TableDef ReadTableDef(Pager& pager, PageNumber page)
{
    std::vector<PageNumber> chain;
    const Bytes stream = ReadChain(pager, page, chain);
    TableDef def = ParseTableDef(pager.GetFormat(), stream, page);
    def.pages = std::move(chain);
    return def;
}

} // namespace jet
