#pragma once

#include "schema/recordset.h"
#include "xml_export/export_plan.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmora {

/// Finds the records of one key after another by the index on it. Keys that come in ascending order, as they do where
/// nobody has put records in between, cost no search: the walk stands on the next one already.
class KeyWalk {
public:
    /// `records` walks by `field`, a whole number.
    KeyWalk(Recordset records, std::size_t field) : records_(std::move(records)), field_(field) {}

    /// Stands on the first record whose key is `key`, or on one of them where it stood before; false when there is
    /// none.
    [[nodiscard]] bool Find(std::int32_t key);
    /// To the next record with the same key.
    [[nodiscard]] bool Next();
    /// Back to a record of `key`, where Rows().Position() gave `position`.
    void Return(std::int32_t key, std::uint64_t position);

    [[nodiscard]] Recordset& Rows() noexcept { return records_; }

private:
    void NoteCurrent();

    Recordset records_;
    std::size_t field_;
    // No key stands between the one found last and the current record's.
    std::optional<std::int32_t> wanted_;
    std::optional<std::int32_t> current_; ///< none at the end
};

/// Where a reader is among the records of one key, so that it can come back after it was used elsewhere: elements may
/// stand in elements of their own name.
struct ReaderPlace {
    std::int32_t around = 0; ///< key of the record around
    std::int32_t key = 0;    ///< of the record itself
    std::uint64_t position = 0;
    std::vector<std::int32_t> keys{}; ///< of all records of the group, where they do not lie in their order
    std::size_t next = 0;             ///< in `keys`
};

/// The records of one table that stand in records of another, those of one record around after those of another, each
/// in the order of their keys; or the records of document elements.
class RecordReader {
public:
    /// Of `plan.edges[edge]`.
    RecordReader(DatabaseSession& session, const ExportPlan& plan, const ExportEdge& edge);
    /// Of the document elements in `table`, each given by its own key.
    RecordReader(DatabaseSession& session, const ExportPlan& plan, std::size_t table);

    [[nodiscard]] std::size_t Table() const noexcept { return table_; }
    /// To the first record that stands in the one with the key `around`; false when there is none.
    [[nodiscard]] bool First(std::int32_t around, ReaderPlace& place);
    /// To the one behind `place`, in the same record.
    [[nodiscard]] bool Next(ReaderPlace& place);
    /// Stands on `place` again, whatever it was used for since.
    void Return(const ReaderPlace& place);
    /// A value of the current record, as documents write it, appended to `out`; false for Null.
    bool AppendText(const ValueColumn& column, std::string& out)
    {
        return Rows().AppendIsoText(column.field, column.hasTimes, out);
    }

private:
    [[nodiscard]] KeyWalk& Records() noexcept { return byKey_ ? *byKey_ : walk_; }
    [[nodiscard]] Recordset& Rows() noexcept { return Records().Rows(); }
    [[nodiscard]] bool IsOurs(Recordset& rows);
    [[nodiscard]] bool TakeOrdered(bool found, ReaderPlace& place);
    [[nodiscard]] bool TakeListed(ReaderPlace& place);

    std::size_t table_;
    std::size_t keyField_;
    std::optional<std::size_t> masterField_;
    std::string master_; ///< the table of the records around
    KeyWalk walk_;       ///< by the key of the record around
    /// By the records' own key, where they do not lie in its order.
    std::optional<KeyWalk> byKey_;
    std::string text_; ///< kept from record to record
};

} // namespace velmora
