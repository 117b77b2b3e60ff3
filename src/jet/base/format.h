#pragma once

#include "jet/base/row_id.h"

#include <cstddef>
#include <cstdint>

namespace jet {

enum class JetVersion : std::uint8_t {
    Jet3, ///< Access 97: pages of 2048 bytes, text in code page 1252
    Jet4, ///< Access 2000 to 2003: pages of 4096 bytes, text in UTF-16
};

enum class PageType : Byte {
    Header = 0,     ///< page 0; a page that was never written is all zeros as well
    Data = 1,       ///< rows of a table, records of usage maps, parts of long values
    Definition = 2, ///< a table's, or a further part of it
    IndexNode = 3,
    IndexLeaf = 4,
    UsageBitmap = 5,     ///< one part of a usage map in the reference form
    FreedDefinition = 8, ///< left behind by a table that was dropped
    FreedData = 9,       ///< left behind when its last row went; not every engine marks it
};

inline constexpr PageNumber kHeaderPage = 0;
inline constexpr PageNumber kGlobalMapPage = 1;
inline constexpr PageNumber kObjectsPage = 2;       ///< definition of MSysObjects
inline constexpr PageNumber kAcesPage = 3;          ///< definition of MSysACEs
inline constexpr PageNumber kQueriesPage = 4;       ///< definition of MSysQueries
inline constexpr PageNumber kRelationshipsPage = 5; ///< definition of MSysRelationships

/// Where the fields of page 0 stand.
namespace header_offset {
inline constexpr std::size_t kName = 0x04;    ///< 16 bytes: the engine's name and a zero
inline constexpr std::size_t kVersion = 0x14; ///< 0: Jet 3, 1: Jet 4, greater: a later engine
inline constexpr std::size_t kMasked = 0x18;  ///< the masked area begins
// Within it.
inline constexpr std::size_t kFreePages = 0x18;     ///< row pointer of the map of free pages
inline constexpr std::size_t kReleasedPages = 0x1C; ///< of a second map, empty in every closed file
inline constexpr std::size_t kSystemTables = 0x20;  ///< four u32: definitions of the basic system tables
inline constexpr std::size_t kCountry = 0x38;       ///< Jet 3: 0 or 1, repeated in every column's descriptor
inline constexpr std::size_t kJet3SortOrder = 0x3A;
inline constexpr std::size_t kCodePage = 0x3C;
inline constexpr std::size_t kPageKey = 0x3E;  ///< u32, 0 unless the pages are encoded
inline constexpr std::size_t kPassword = 0x42; ///< all zero: none
inline constexpr std::size_t kJet3PasswordSize = 20;
inline constexpr std::size_t kJet4PasswordSize = 40; ///< masked once more, with the day of the creation date
inline constexpr std::size_t kJet3Build = 0x56;
inline constexpr std::size_t kJet4Build = 0x6A;
inline constexpr std::size_t kJet4SortOrder = 0x6E;
inline constexpr std::size_t kJet4SortVersion = 0x71; ///< 1: the order that came with Access 2010
inline constexpr std::size_t kCreationDate = 0x72;    ///< double; masks the password, and the catalog's owner ids
// Behind it, Jet 4 only.
inline constexpr std::size_t kConstant = 0x98; ///< 8 bytes, the same in every file
} // namespace header_offset

// In the head of every data, index and definition page.
inline constexpr std::size_t kPageFreeBytes = 2; ///< u16; Jet 3 has a mark there in definitions
inline constexpr std::size_t kPageOwner = 4;     ///< the definition page; of a definition's page the next of its chain

inline constexpr std::size_t kMaxColumns = 255; ///< columns that a table may ever have had
inline constexpr std::size_t kMaxIndexes = 32;  ///< logical indexes of a table
inline constexpr std::size_t kMaxIndexColumns = 10;
inline constexpr std::size_t kMaxNameUnits = 64;  ///< characters (UTF-16 code units) of a name
inline constexpr std::size_t kMaxTextUnits = 255; ///< characters of a text column
inline constexpr std::size_t kMaxRowsPerPage = 255;
inline constexpr std::size_t kMaxLongValue = (1u << 30) - 1; ///< bytes
inline constexpr std::size_t kRowPointerSize = 4;
inline constexpr std::size_t kLongValueHeaderSize = 12;
inline constexpr std::size_t kInlineMapBits = 5;        ///< where the bitmap begins in an inline usage map
inline constexpr std::size_t kReferenceMapEntries = 1;  ///< where the page numbers begin in a reference usage map
inline constexpr std::size_t kBitmapPageBits = 4;       ///< where the bitmap begins in a page of type UsageBitmap
inline constexpr std::uint32_t kDefinitionMagic = 1625; ///< Jet 4: in definitions, descriptors, logical indexes
inline constexpr std::uint32_t kRealIndexMagic = 1923;  ///< Jet 4: in real index blocks

/// Everything in which the two file formats differ, as data. Offsets and sizes are bytes; `kAbsent` marks a field that
/// a format does not have. Source: pages written by Access 97, 2000 and 2003.
struct Format {
    static constexpr std::size_t kAbsent = ~std::size_t{0};

    struct DataPageLayout {
        std::size_t rowCount;
        std::size_t slots; ///< the header's size: the first slot begins here
    };
    struct UsageMapLayout {
        std::size_t recordSize;  ///< of a new record, inline or reference form
        std::size_t bitsPerPage; ///< pages that one bitmap page (type 5) covers
    };
    struct DefinitionLayout {
        std::size_t length;              ///< where it ends, in the joined content
        std::size_t magic;               ///< kDefinitionMagic
        std::size_t rowCount;            ///< exact: a recordset's count is taken from it
        std::size_t lastAutonumber;      ///< given out last; the next is one more
        std::size_t autonumberStep;      ///< always 1
        std::size_t tableType;           ///< 'N', or 'S' of the basic system tables
        std::size_t columnsEver;         ///< greatest column number + 1: never goes down
        std::size_t variableColumnsEver; ///< the same for variable indexes
        std::size_t columnCount;
        std::size_t logicalIndexCount; ///< names and purposes
        std::size_t realIndexCount;    ///< trees, fewer where relations share one
        std::size_t ownedPages;        ///< row pointer of the map of data pages
        std::size_t freeSpacePages;    ///< ... of those of them with room
        std::size_t sections;          ///< where the statistics of the first index begin
        std::size_t statisticsSize;    ///< of the counts of one real index
        std::size_t columnSize;
        std::size_t realIndexSize;
        std::size_t logicalIndexSize;
        std::size_t nameLengthSize; ///< bytes of the length before a name
    };
    struct ColumnLayout {
        std::size_t magic;
        std::size_t number;        ///< permanent; its bit in a row's null mask
        std::size_t variableIndex; ///< place in a row's variable offsets
        std::size_t position;      ///< order of display
        std::size_t country;       ///< Jet 3: a copy of page 0
        std::size_t sortOrder;     ///< locale id; in numeric columns precision and scale
        std::size_t codePage;
        std::size_t sortVersion; ///< as in page 0
        std::size_t flags;
        std::size_t moreFlags;   ///< Jet 4: compressed text
        std::size_t fixedOffset; ///< from the start of the fixed area
        std::size_t size;        ///< in bytes; 0 of long values
    };
    struct RealIndexLayout {
        std::size_t columns;  ///< ten slots: column number u16, order u8
        std::size_t usageMap; ///< row pointer of the map of its pages
        std::size_t root;     ///< page, the same for life
        std::size_t flags;
        Byte alwaysSet; ///< flag bits that every index of the format carries
    };
    struct LogicalIndexLayout {
        std::size_t number;        ///< unique in the table; a dropped one leaves a gap
        std::size_t realIndex;     ///< place among the real indexes
        std::size_t side;          ///< of a relation: 1 referenced, 2 referencing
        std::size_t partnerIndex;  ///< number of the entry on the other side
        std::size_t partnerTable;  ///< definition page of the other side
        std::size_t cascadeUpdate; ///< 4 where there is no relation
        std::size_t cascadeDelete; ///< the same
        std::size_t type;          ///< plain, primary key, relation
    };
    struct IndexPageLayout {
        std::size_t previous;
        std::size_t next;
        std::size_t tail;         ///< last child, for which a node has no entry
        std::size_t prefixLength; ///< bytes that all entries have in common
        std::size_t prefixLengthSize;
        std::size_t level; ///< 0 in leaves
        std::size_t mask;  ///< a bit where each entry ends
        std::size_t maskSize;
        std::size_t entries;
        std::size_t room; ///< bytes for entries
    };

    JetVersion version;
    std::size_t pageSize;
    std::uint32_t engineBuild;  ///< of the engine of Access that makes such files; ours says the same of itself
    PageNumber maxPages;        ///< 1 GB or 2 GB
    std::size_t textUnitSize;   ///< bytes of a character
    std::size_t rowNumberSize;  ///< bytes of the counts and offsets in a row
    std::size_t maxRecordSize;  ///< bytes of a row without its long values
    std::size_t maxInlineLong;  ///< long values up to this size stay in the row
    std::size_t maxSingleLong;  ///< ... up to this size in one record of a shared page
    std::size_t longPartSize;   ///< value bytes of each full record of a chain (without its 4-byte pointer)
    std::size_t commitCounters; ///< in page 0: 256 u16 at the page's end
    DataPageLayout dataPage;
    UsageMapLayout usageMap;
    DefinitionLayout definition;
    ColumnLayout column;
    RealIndexLayout realIndex;
    LogicalIndexLayout logicalIndex;
    IndexPageLayout indexPage;
};

[[nodiscard]] const Format& FormatOf(JetVersion version) noexcept;

} // namespace jet
