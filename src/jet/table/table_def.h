#pragma once

#include "jet/base/default_value.h"
#include "jet/base/format.h"
#include "jet/base/value.h"
#include "jet/base/value_codec.h"
#include "jet/index/index_key.h"
#include "jet/store/pager.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace jet {

namespace column_flags {
inline constexpr Byte kFixed = 0x01;     ///< the value lies in the fixed area
inline constexpr Byte kUpdatable = 0x02; ///< set in every column
inline constexpr Byte kAutonumber = 0x04;
inline constexpr Byte kSystem = 0x10;  ///< column of one of the four basic system tables
inline constexpr Byte kOwnerId = 0x20; ///< holds owner ids
inline constexpr Byte kHyperlink = 0x80;
} // namespace column_flags

inline constexpr Byte kMoreFlagsCompressed = 0x01; ///< Jet 4 text: stored compressed where that is possible

/// What the table's properties say of a column, beside its descriptor. Validation rules are not among it: they are
/// expressions that Access evaluates, and this engine stores values without looking at them.
struct ColumnRules {
    bool required = false;     ///< Null is refused
    bool refusesEmpty = false; ///< the text of no characters is refused
    bool showsTimes = false;   ///< Access shows its dates as times of day
    std::optional<DefaultValue> defaultValue;
};

/// One column, as its descriptor says. `raw` keeps the descriptor's bytes, so that what we do not know survives.
struct Column {
    std::string name; ///< UTF-8
    ColumnType type = ColumnType::Long;
    std::uint16_t number = 0;        ///< permanent; its bit in the null mask
    std::uint16_t variableIndex = 0; ///< place in a row's variable offset table
    std::uint16_t position = 0;      ///< display order
    Byte flags = 0;
    Byte moreFlags = 0;
    std::uint16_t fixedOffset = 0; ///< from the first byte of the fixed area
    std::uint16_t size = 0;        ///< bytes
    Collation collation;
    std::uint8_t precision = 0, scale = 0; ///< numeric
    RowId longValueOwned, longValueFree;   ///< usage maps of a memo or OLE column
    ColumnRules rules;                     ///< from the table's properties
    bool neverInline = false;              ///< long values always get a record of their own; ours, not the file's
    std::array<Byte, 25> raw{};

    [[nodiscard]] bool IsFixed() const noexcept { return flags & column_flags::kFixed; }
    /// Counted by the table; a column of another type with the flag is none.
    [[nodiscard]] bool IsAutonumber() const noexcept
    {
        return type == ColumnType::Long && flags & column_flags::kAutonumber;
    }
    /// Bytes of a value in the fixed area of a row; 0 for a boolean, which is a bit of the null mask.
    [[nodiscard]] std::size_t FixedSize() const noexcept;
    /// What the value codec asks for.
    [[nodiscard]] ValueType GetValueType() const noexcept;
};

namespace index_flags {
inline constexpr Byte kUnique = 0x01;
inline constexpr Byte kIgnoreNulls = 0x02;
inline constexpr Byte kRequired = 0x08;
} // namespace index_flags

struct IndexColumn {
    std::uint16_t column = 0; ///< the column's permanent number
    SortOrder order = SortOrder::Ascending;
};

/// A tree. `raw` and `rawStatistics` keep the bytes of its two blocks.
struct RealIndex {
    std::uint32_t entriesAtBuild = 0;
    std::uint32_t distinctKeys = 0;
    std::vector<IndexColumn> columns;
    RowId usageMap;
    PageNumber root = 0;
    Byte flags = 0;
    std::array<Byte, 52> raw{};
    std::array<Byte, 12> rawStatistics{};

    [[nodiscard]] bool IsUnique() const noexcept { return flags & index_flags::kUnique; }
};

enum class IndexType : Byte { Plain = 0, Primary = 1, Relation = 2 };
enum class RelationSide : Byte { None = 0, Referenced = 1, Referencing = 2 };
enum class DeleteRule : Byte { NoAction = 0, Cascade = 1, SetNull = 2 };

/// A name and a purpose, tied to a real index.
struct LogicalIndex {
    std::string name;
    std::uint32_t number = 0;    ///< unique in the table
    std::uint32_t realIndex = 0; ///< 0-based position
    IndexType type = IndexType::Plain;
    RelationSide side = RelationSide::None;
    std::uint32_t partnerIndex = 0xFFFFFFFF; ///< index number in the other table
    PageNumber partnerTable = 0;             ///< definition page of the other table
    bool cascadeUpdates = false;
    DeleteRule onDelete = DeleteRule::NoAction;
    std::array<Byte, 28> raw{};
};

/// A table definition: a chain of pages of type 2, read as one stream.
///
/// What the engine does not know of it (`rawHeader`, the `raw` of its parts) is written back as it was read. Reading
/// checks that columns and indexes refer to things that exist, so the rest of the engine need not.
struct TableDef {
    const Format* format = nullptr;
    std::vector<PageNumber> pages; ///< the chain; the first is the table's id
    std::uint32_t rowCount = 0;
    std::uint32_t lastAutonumber = 0;
    Byte tableType = 0x4E; ///< 'N' user table, 'S' basic system table
    std::uint16_t columnsEver = 0;
    std::uint16_t variableColumnsEver = 0;
    RowId ownedPages, freeSpacePages;
    std::vector<Column> columns; ///< in the file's order
    std::vector<RealIndex> realIndexes;
    std::vector<LogicalIndex> logicalIndexes;  ///< in name order, as keys of the default sort order
    std::vector<std::uint16_t> longValueOrder; ///< column numbers in the order of the list of long-value maps
    std::array<Byte, 64> rawHeader{};          ///< what stands before the first section

    [[nodiscard]] std::optional<std::size_t> ColumnIndex(std::string_view name) const; ///< as the sort order compares
    [[nodiscard]] std::optional<std::size_t> ColumnByNumber(std::uint16_t number) const noexcept;
    [[nodiscard]] const LogicalIndex* PrimaryKey() const noexcept;
    /// The logical index of that name, as the sort order compares; nullptr when there is none.
    [[nodiscard]] const LogicalIndex* IndexByName(std::string_view name) const;
    /// An index on the column (its number) that is none of a relation, or one that is; nullptr when there is none.
    [[nodiscard]] const LogicalIndex* IndexOn(std::uint16_t column) const noexcept;
    [[nodiscard]] const LogicalIndex* RelationOn(std::uint16_t column) const noexcept;
    /// Does any real index stand on the column? In a damaged file that may be one to which no logical one belongs.
    [[nodiscard]] bool IsInIndex(std::uint16_t column) const noexcept;
    [[nodiscard]] const LogicalIndex* IndexByNumber(std::uint32_t number) const noexcept;
    /// The number that the next logical index gets: greatest + 1.
    [[nodiscard]] std::uint32_t NextIndexNumber() const noexcept;
};

/// The definition that begins on `page`. Throws CorruptPage.
[[nodiscard]] TableDef ReadTableDef(Pager& pager, PageNumber page);
/// The same from the joined content of the chain (the first page whole, the others without their first 8 bytes).
[[nodiscard]] TableDef ParseTableDef(const Format& format, ByteSpan stream, PageNumber page);

/// Writes `def` over its chain, which grows or shrinks as needed (`def.pages` follows). Logical indexes are written in
/// the order in which they stand.
void WriteTableDef(Pager& pager, TableDef& def);
/// The joined content; its first 8 bytes, the head of the first page, are zero.
[[nodiscard]] Bytes SerializeTableDef(const Format& format, const TableDef& def);
/// Writes only row count, autonumber and index statistics; `first` is the definition's first page.
void WriteTableCounters(const PageAtHand& first, const TableDef& def);
/// Puts the logical indexes in the order that the file wants.
void SortIndexesByName(TableDef& def);

/// Gives a new, empty usage-map record on the map pages of `def`, or on a further page when they are full.
[[nodiscard]] RowId PlaceMapRecord(Pager& pager, const TableDef& def);
/// Deletes the record, with its bitmap pages; the page that held it is freed when no other record is left on it. The
/// pages named in the map are not touched.
void RemoveMapRecord(Pager& pager, RowId record);

} // namespace jet
