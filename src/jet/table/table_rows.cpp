#include "jet/error.h"
#include "jet/table/row_change.h"

namespace jet {

namespace {

/// A damaged page may stop a change anywhere; what has been done until then must not be committed.
template <class Change>
auto EndedByDamage(Pager& pager, Change&& change)
{
    try {
        return change();
    } catch (const Error& error) {
        if (error.Number() == ErrorNumber::NotADatabase)
            pager.Fail(error);
        throw;
    }
}

} // namespace

RowId Table::Insert(const Record& record)
{
    return EndedByDamage(*pager_, [&] { return InsertRow(record); });
}

void Table::Update(RowId row, const Record& record)
{
    EndedByDamage(*pager_, [&] { UpdateRow(row, record); });
}

void Table::Delete(RowId row)
{
    EndedByDamage(*pager_, [&] { DeleteRow(row); });
}

RowId Table::InsertRow(const Record& record)
{
    RowChange change(*this);
    change.CheckInsert(record);
    if (hook_ != nullptr)
        hook_->BeforeInsert(*this, record);
    return change.Insert(record);
}

void Table::UpdateRow(RowId row, const Record& record)
{
    RowChange change(*this);
    if (!change.ReadBefore(row))
        throw Error(ErrorNumber::RecordDeleted);
    change.CheckUpdate(record);
    if (hook_ != nullptr) {
        hook_->BeforeUpdate(*this, row, change.Before(), record);
        // A cascade that comes back to this table may have changed the row.
        if (!change.IsUnchanged(row)) {
            if (!change.ReadBefore(row))
                throw Error(ErrorNumber::RecordDeleted);
            change.CheckUpdate(record);
        }
    }
    change.Update(row, record);
}

void Table::DeleteRow(RowId row)
{
    RowChange change(*this);
    if (!change.ReadBefore(row))
        throw Error(ErrorNumber::RecordDeleted);
    if (hook_ != nullptr) {
        hook_->BeforeDelete(*this, row, change.Before());
        if (!change.IsUnchanged(row) && !change.ReadBefore(row))
            return;
    }
    change.Delete(row);
}

} // namespace jet
