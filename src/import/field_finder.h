#pragma once

#include "import/table_sinks.h"
#include "plan/mapping_plan.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace velmora {

/// Where a value belongs.
struct FieldPlace {
    std::optional<std::size_t> field;          ///< position in the record
    LossReason refusal = LossReason::NoColumn; ///< why there is none
};

/// Where the plan's columns stand in the tables of the database: positions, looked up by name once, and again only when
/// the table's columns have changed. Key columns take no values of the document: they say what belongs together.
class FieldFinder {
public:
    explicit FieldFinder(const MappingPlan& plan) : plan_(plan), slots_(plan.columns.size()) {}

    /// `sink` is that of the column's table.
    [[nodiscard]] FieldPlace Find(const TableSink& sink, const ValuePlace& place)
    {
        Slot& slot = slots_[place.column];
        if (slot.layout != sink.records->Layout())
            slot = LookUp(sink, place.column);
        if (slot.refusal == LossReason::None)
            return {slot.field, LossReason::None};
        return {std::nullopt, slot.refusal == LossReason::NoColumn ? place.otherwise : slot.refusal};
    }

private:
    struct Slot {
        std::uint64_t layout = 0; ///< of the recordset when the position was found; 0: never
        std::uint32_t field = 0;
        LossReason refusal = LossReason::NoColumn;
    };

    [[nodiscard]] Slot LookUp(const TableSink& sink, ColumnNumber column) const;
    [[nodiscard]] static bool IsKey(const TableSink& sink, std::size_t field);

    const MappingPlan& plan_;
    std::vector<Slot> slots_; ///< by column
};

} // namespace velmora
