#pragma once

#include "plan/origin.h"
#include "plan/value_forms.h"
#include "xml/document.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Why a value of the document stands in no record.
enum class LossReason : std::uint8_t {
    None,
    NoRecord,       ///< nothing is made of the place where it stands
    BesideChildren, ///< text of an element that has child elements
    AttributesOff,  ///< attributes are left out
    NoColumn,       ///< the record's table has no column for it, and it has no table of its own
    KeyColumn,      ///< its column is a key, which the program fills itself
    ColumnTaken,    ///< an element has taken the column of the attribute of the same name
    Overwritten,    ///< a later value of the same record took its column
    DoesNotFitType, ///< its column holds another type
};

/// The column that says, in a table shared by several elements, which table a record's parent stands in.
inline constexpr std::string_view kMasterTable = "MASTER_TABLE";

using TableNumber = std::uint32_t;  ///< of a table in the plan, from 1
using ColumnNumber = std::uint32_t; ///< of a column in the plan, over all tables, from 0

inline constexpr TableNumber kNoTable = 0;
inline constexpr ColumnNumber kNoColumn = ~ColumnNumber{0};

struct PlannedColumn {
    std::string name;
    PathId origin = 0; ///< of the values in it; where several paths share it, the first
    ColumnType type = ColumnType::Text;
    /// Where values go that do not fit the type of a column that was there before; empty: nowhere.
    std::string overflow{};
    std::optional<ColumnOrigin> told{}; ///< what the database is to know of it; none: nothing, or it knows
};

/// The columns that say what belongs together. A table may lack any of them; those that are made are made with it.
struct PlannedKeys {
    std::string primary, foreign, master; ///< their names
    bool makesPrimary = false;
    bool makesForeign = false;
    bool makesMaster = false;
    bool addsMaster = false;  ///< to a table that is there
    bool dropsMaster = false; ///< from a table that is there
    std::string primaryIndex, foreignIndex;
};

/// A table for the elements of one path. Those of several paths may share a table of the database: each has an entry,
/// and the entries have one name.
struct PlannedTable {
    std::string name;
    PathId path = 0;
    std::int32_t level = 0;        ///< nesting depth of the elements: parents are made before their children
    TableNumber parent = kNoTable; ///< its records belong to records of this one
    PlannedKeys keys;
    std::string relation;             ///< the name that the relation to it has, if it is free
    TableNumber continues = kNoTable; ///< a table for further columns of this one: its records have the same keys
    bool isShared = false;           ///< no relation: the parents stand in several tables, and MASTER_TABLE tells which
    bool isWrapper = false;          ///< without columns and left out: neither made, nor filled when it is there
    bool indexesParents = false;     ///< the foreign key has an index, be there a relation or not
    bool hasTextFile = false;        ///< in a run that exports text
    bool keepsTextOfRun = false;     ///< its text file is deleted only once in a run
    std::optional<TableOrigin> told; ///< what the database is to know of it; none: nothing, or it knows
    // The columns that it is made with come first; behind them those that are only filled, if the database has them.
    ColumnNumber firstColumn = 0;
    ColumnNumber endOfMade = 0;
    std::vector<ColumnNumber> asked; ///< what each of its paths has asked for, in their order: equal names, one column
};

/// Where values go, and why they are lost when the database has no such column.
struct ValuePlace {
    ColumnNumber column = kNoColumn;
    LossReason otherwise = LossReason::NoColumn;
    TableNumber part = kNoTable; ///< the table that continues the record's own and has the column; none: its own
};

struct AttributePlan {
    NameId name = 0;
    ValuePlace place; ///< in the table of its element
};

/// What the import does with the elements of one path.
struct PathPlan {
    TableNumber table = kNoTable; ///< for records of them; without one their children belong to the record around
    ValuePlace outerText;         ///< of a leaf, in the record of its parent
    ValuePlace ownText;           ///< of a leaf, in a record of its own
    std::uint32_t firstAttribute = 0;
    std::uint32_t attributeCount = 0;
    bool readsLeaves = false;      ///< the leaves among its children are looked at for values of its record
    bool hasOnlyLeaves = false;    ///< children without attributes: nothing is left of them when its record is made
    bool isRepeatedLeaf = false;   ///< a whole record each, text and attributes
    bool endsRunInWrapper = false; ///< there is no place for it where its parent has no record
    bool isEntered = false;     ///< each is a whole record, or passed through, whatever it holds; no value of another's
    bool keepsEmpty = false;    ///< a leaf without text has the empty text
    bool writesOwnText = false; ///< into a record of its own, beside attributes and leaves
};

/// What becomes of a document, decided once, after its analysis: the tables and columns, their names as the database
/// will have them, and for each path what is done with its elements. Those who make tables and records read it and do
/// not ask the document's structure again; nor do they know by which rules it was made.
struct MappingPlan {
    std::vector<PlannedTable> tables = std::vector<PlannedTable>(1); ///< by number: the first is none
    std::vector<PlannedColumn> columns;
    std::vector<PathPlan> paths; ///< by PathId
    std::vector<AttributePlan> attributes;
    bool importsAttributes = false;
    bool keepsEmptyAttributes = false;
    bool widensByTag = true; ///< a text too long widens the column that bears its tag before that in which it stands
    bool importsEverything = false;  ///< the protocol says so, in numbers
    std::int32_t recordEstimate = 0; ///< about how many records the import will write
    std::vector<std::string> notes;  ///< protocol lines about what was decided

    [[nodiscard]] TableNumber LastTable() const noexcept { return static_cast<TableNumber>(tables.size() - 1); }
    /// The columns that `table` is made with.
    [[nodiscard]] std::span<const PlannedColumn> MadeColumns(const PlannedTable& table) const
    {
        return std::span(columns).subspan(table.firstColumn, table.endOfMade - table.firstColumn);
    }
    /// Of elements of `path`, in the order in which they first appeared.
    [[nodiscard]] std::span<const AttributePlan> AttributesOf(const PathPlan& path) const
    {
        return std::span(attributes).subspan(path.firstAttribute, path.attributeCount);
    }
};

} // namespace velmora
