#pragma once

#include "jet/relations/link.h"
#include "jet/table/table.h"

#include <cstdint>
#include <vector>

namespace jet {

/// A record that has been begun and not yet saved. A key that it has been given already counts as present, so that rows
/// which refer to it may be saved before it.
class PendingRecord {
public:
    virtual ~PendingRecord() = default;
    [[nodiscard]] virtual const Table& PendingTable() const = 0;
    /// Its values, by the table's columns as they are now.
    [[nodiscard]] virtual const Record& PendingValues() = 0;
};

/// What the records of a table refer to.
struct ReferenceFacts {
    enum class Kind : std::uint8_t {
        None,     ///< to nothing
        ToNumber, ///< one field refers to the autonumber of another table
        Other,
    };
    Kind kind = Kind::Other;
    std::uint32_t field = 0; ///< of ToNumber, by column index
    const Table* parent = nullptr;
};

/// Keeps every reference of one table to another whole: refuses what would break one, or carries a change on to the
/// rows that refer to the changed one, through any number of tables, cycles included. A Null in the referencing columns
/// refers to nothing.
class ReferentialIntegrity final : public RowHook {
public:
    /// Takes its place as the catalog's hook; tables must not have been opened yet.
    explicit ReferentialIntegrity(Catalog& catalog);

    /// Does the record refer to nothing that is not there?
    [[nodiscard]] bool HasParents(Table& table, const Record& record);
    /// Holds as long as the catalog's StructureVersion() stays. Throws CorruptPage.
    [[nodiscard]] ReferenceFacts FactsOf(Table& table);

    void AddPending(PendingRecord& record) { pending_.push_back(&record); }
    void RemovePending(const PendingRecord& record) noexcept;

    /// Replaces the values of `row` and cascades a changed key. Throws RelatedRecords, RelatedRecordRequired, and what
    /// Table::Update throws.
    void UpdateRow(Table& table, RowId row, const Record& after);
    /// Deletes all rows, and what cascades from them. Throws RelatedRecords.
    void DeleteAll(Table& table);

    /// Throws RelatedRecordRequired.
    void BeforeInsert(Table& table, const Record& record) override;
    /// For an update that does not come through UpdateRow: throws RelatedRecordRequired, and RelatedRecords when rows
    /// refer to a key that changes.
    void BeforeUpdate(Table& table, RowId row, const Record& before, const Record& after) override;
    /// Cascades, or throws RelatedRecords.
    void BeforeDelete(Table& table, RowId row, const Record& before) override;

private:
    class DeletePlan;
    class UpdatePlan;
    class Suspension;

    [[nodiscard]] bool HasParent(Link& link, const Table& table, const Record& record);
    [[nodiscard]] bool IsPendingKey(const Link& link);
    [[nodiscard]] bool MayRefuseDelete(Table& table);

    LinkCache links_;
    std::vector<PendingRecord*> pending_;
    bool suspended_ = false; ///< a plan that has been checked is being carried out
    Bytes key_;              ///< kept from row to row
    Bytes otherKey_;
};

} // namespace jet
