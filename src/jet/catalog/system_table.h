#pragma once

#include "jet/table/table.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The four basic system tables: numbers of their columns, fixed values in them.
/// Source: the tables of every file of Access 97, 2000 and 2003.
namespace jet {

namespace objects_column {                    // MSysObjects
inline constexpr std::uint16_t kId = 0;       ///< of a table the page of its definition
inline constexpr std::uint16_t kParentId = 1; ///< a container's id
inline constexpr std::uint16_t kName = 2;
inline constexpr std::uint16_t kType = 3; ///< ObjectType
inline constexpr std::uint16_t kDateCreate = 4;
inline constexpr std::uint16_t kDateUpdate = 5;
inline constexpr std::uint16_t kOwner = 6; ///< an owner id, see OwnerIds
inline constexpr std::uint16_t kFlags = 7;
inline constexpr std::uint16_t kLvProp = 14; ///< a PropertyBlob
} // namespace objects_column

namespace aces_column { // MSysACEs
inline constexpr std::uint16_t kObjectId = 0;
inline constexpr std::uint16_t kSid = 1;         ///< an owner id
inline constexpr std::uint16_t kAcm = 2;         ///< rights, as bits
inline constexpr std::uint16_t kInheritable = 3; ///< for what is made in the container
} // namespace aces_column

namespace relationships_column { // MSysRelationships
inline constexpr std::uint16_t kName = 0;
inline constexpr std::uint16_t kFlags = 1;
inline constexpr std::uint16_t kPairCount = 2; ///< pairs of columns in all
inline constexpr std::uint16_t kPair = 3;      ///< 0-based number of this one
inline constexpr std::uint16_t kTable = 4;     ///< the referencing one
inline constexpr std::uint16_t kColumn = 5;
inline constexpr std::uint16_t kReferencedTable = 6;
inline constexpr std::uint16_t kReferencedColumn = 7;
} // namespace relationships_column

inline constexpr std::int32_t kRootContainer = 0x0F000000;
inline constexpr std::int32_t kTablesContainer = 0x0F000001; ///< parent of tables and queries
inline constexpr std::int32_t kDatabasesContainer = 0x0F000002;
inline constexpr std::int32_t kRelationshipsContainer = 0x0F000003;
inline constexpr std::int32_t kDatabaseObject = 0x10000000;
inline constexpr std::uint32_t kFirstSyntheticId = 0x80000000; ///< ids of objects that have no page of their own

inline constexpr std::uint32_t kSystemObjectFlag = 0x80000000;  ///< the engine's own
inline constexpr std::uint32_t kAccessObjectFlags = 0x0000000A; ///< tables of Access's own, hidden tables
inline constexpr std::uint32_t kUnlistedObjectFlags = 0x00030000;

namespace relationship_flags {
inline constexpr std::uint32_t kOneToOne = 0x00000001;
inline constexpr std::uint32_t kNotEnforced = 0x00000002;
inline constexpr std::uint32_t kCascadeUpdates = 0x00000100;
inline constexpr std::uint32_t kCascadeDeletes = 0x00001000;
inline constexpr std::uint32_t kSetNullOnDelete = 0x00002000;
} // namespace relationship_flags

/// One of the basic system tables, its columns addressed by their permanent numbers.
class SystemTable {
public:
    /// Throws CorruptPage when the definition lacks one of the columns 0 to `columnCount` - 1.
    SystemTable(Pager& pager, PageNumber definitionPage, std::string name, std::size_t columnCount);

    [[nodiscard]] Table& Rows() noexcept { return table_; }

    /// Where the column stands in the table's definition and records.
    [[nodiscard]] std::size_t Position(std::uint16_t column) const noexcept { return positions_[column]; }

    /// A record without values.
    [[nodiscard]] Record Blank() const;
    [[nodiscard]] std::int32_t Long(const Record& record, std::uint16_t column) const; ///< 0 when Null
    [[nodiscard]] std::string Text(const Record& record, std::uint16_t column) const;
    [[nodiscard]] DateTime Date(const Record& record, std::uint16_t column) const;
    [[nodiscard]] Bytes Binary(const Record& record, std::uint16_t column) const;
    [[nodiscard]] bool Boolean(const Record& record, std::uint16_t column) const;
    void Set(Record& record, std::uint16_t column, const Value& value) const;

    /// Sets it in the row itself, see Table::Overwrite().
    [[nodiscard]] bool Overwrite(RowId row, std::uint16_t column, const Value& value);

    /// The rows whose `column`, on which one index alone stands, holds `value`; in the index's order.
    [[nodiscard]] std::vector<RowId> RowsWith(std::uint16_t column, const Value& value);

private:
    static constexpr std::size_t kMaxSystemColumns = 17;

    [[nodiscard]] const Column& ColumnOf(std::uint16_t number) const
    {
        return table_.Definition().columns[positions_[number]];
    }

    Table table_;
    std::array<std::size_t, kMaxSystemColumns> positions_{}; ///< of the column with this number
};

} // namespace jet
