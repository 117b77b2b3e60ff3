#include "jet/base/error.h"
#include "jet/table/row_change.h"

namespace jet {

RowId Table::Insert(const Record& record)
{
    ++rowChanges_;
    RowChange change(*this);
    change.CheckInsert(record);
    if (hook_ != nullptr)
        hook_->BeforeInsert(*this, record);
    return change.Insert(record);
}

void Table::Update(RowId row, const Record& record)
{
    ++rowChanges_;
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

void Table::Delete(RowId row)
{
    ++rowChanges_;
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
