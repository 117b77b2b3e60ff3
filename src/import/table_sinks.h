#pragma once

#include "import/files_of_run.h"
#include "import/text_file.h"
#include "plan/mapping_plan.h"
#include "schema/database_session.h"
#include "settings/job.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// How a sink writes its records into a text file.
struct TextOutput {
    TextFile* file = nullptr;                       ///< none: no text file
    std::vector<std::string> columns;               ///< names, in the order in which a line has them
    std::uint64_t layout = 0;                       ///< of the recordset, for which `fields` holds
    std::vector<std::optional<std::size_t>> fields; ///< the columns' positions
    std::string line;                               ///< kept from record to record
};

inline constexpr std::size_t kCacheLineBytes = 64;

/// One table's output during the import of one document. Where there are many, nearly each record finds its sink
/// outside of the processor's caches: what every record needs stands first, and in few of their lines.
struct alignas(kCacheLineBytes) TableSink {
    const PlannedTable* plan = nullptr; ///< none in number 0
    // Positions of the key columns, and the types of the others, found anew when the layout is another one.
    std::uint64_t keyLayout = 0;
    std::optional<std::uint32_t> primaryKey, foreignKey, masterTable;
    std::int64_t savedRecords = 0;
    std::int32_t provisionalKey = 0; ///< of the owner's record, see below
    bool hasYesNo = false;           ///< some type is ColumnType::YesNo
    bool isNumbered = false;         ///< its primary key is an autonumber

    std::optional<Recordset> records; ///< none: the database has no such table
    /// By position: what the program has made of columns, see DatabaseSession::ChosenTypes(). Empty when they
    /// are texts all of them.
    std::vector<ColumnType> types;
    TextOutput text;
    /// Rows saved for a record of the owner that is itself not yet saved.
    std::vector<std::uint64_t> provisionalRows;
    std::map<std::string, std::size_t> longest; ///< characters of the longest value, by column; in a preview

    [[nodiscard]] bool HasTable() const noexcept { return records.has_value(); }
    [[nodiscard]] ColumnType TypeOf(std::size_t field) const { return types.empty() ? ColumnType::Text : types[field]; }
    void DropPending();
    /// With their lines in the text file.
    void RemoveProvisionalRows();
};

/// The sinks of one document, by the numbers that their tables have in the plan. Number 0 is never a table: it stands
/// for "no owner".
class TableSinks {
public:
    TableSinks() : sinks_(1) {}

    [[nodiscard]] TableNumber Last() const noexcept { return static_cast<TableNumber>(sinks_.size() - 1); }
    [[nodiscard]] TableSink& operator[](TableNumber table) { return sinks_[table]; }
    TableSink& Append(const PlannedTable& table);
    /// Of all sinks together.
    [[nodiscard]] std::int64_t SavedRecords() const noexcept;
    [[nodiscard]] TextFiles& Texts() noexcept { return texts_; }

private:
    std::vector<TableSink> sinks_;
    TextFiles texts_;
};

/// Opens one sink per table of `plan`, in its order, with its text file in a run that exports. A table that is missing
/// in the database keeps its place, without a recordset.
void velOpenTables(Job& job, DatabaseSession& session, const MappingPlan& plan, FilesOfRun& filesOfRun,
                   TableSinks& sinks);

/// Closes every recordset, dropping records that an interrupted import left pending and the rows that were saved for
/// them, and every text file, and adds what was saved to the session's reports. Tells what did not come through whole:
/// characters that Access 97 does not know, records without a text file; gives the number of the latter. Goes on after
/// a cancel or an error.
std::int64_t velCloseTables(Job& job, DatabaseSession& session, TableSinks& sinks);

/// Where a value belongs.
struct FieldPlace {
    std::uint32_t field = 0;                   ///< position in the record
    LossReason refusal = LossReason::NoColumn; ///< why there is none; None: there is
};

/// Where the plan's columns stand in the tables of the database: positions, looked up by name once, and again only when
/// the table's columns have changed. Key columns take no values of the document: they say what belongs together.
class FieldFinder {
public:
    explicit FieldFinder(const MappingPlan& plan) : plan_(plan), slots_(plan.columns.size()) {}

    /// `sink` is that of the column's table.
    [[nodiscard]] FieldPlace Find(const TableSink& sink, const ValuePlace& place)
    {
        const Slot& slot = slots_[place.column];
        if (slot.layout != sink.records->Layout())
            LookUp(sink, place.column);
        return {slot.field, slot.refusal == LossReason::NoColumn ? place.otherwise : slot.refusal};
    }

private:
    struct Slot {
        std::uint64_t layout = 0; ///< of the recordset when the position was found; 0: never
        std::uint32_t field = 0;
        LossReason refusal = LossReason::NoColumn;
    };

    void LookUp(const TableSink& sink, ColumnNumber column);
    [[nodiscard]] static bool IsKey(const TableSink& sink, std::size_t field);

    const MappingPlan& plan_;
    std::vector<Slot> slots_; ///< by column
};

} // namespace velmora
