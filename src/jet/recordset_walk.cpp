#include "jet/base/error.h"
#include "jet/base/value_codec.h"
#include "jet/recordset.h"

#include <algorithm>

// Walking through a table, as it is stored or in the order of an index.
namespace jet {

bool Recordset::Eof()
{
    Follow();
    if (!isPlaced_)
        MoveFirst();
    return !row_;
}

void Recordset::StandOn(std::optional<RowId> row)
{
    row_ = row;
    isPlaced_ = walkIsHere_ = true;
    holds_ = Holds::Nothing;
}

void Recordset::MoveFirst()
{
    Follow();
    CancelUpdate();
    StandOn(walk_ ? walk_->First(*table_) : table_->NextRow(std::nullopt));
}

void Recordset::MoveNext()
{
    if (Eof())
        throw Error(ErrorNumber::NoCurrentRecord);
    CancelUpdate();
    if (!walk_)
        return StandOn(table_->NextRow(row_));
    if (!walkIsHere_)
        GoOnFromHere();
    StandOn(walk_->Next(*table_));
}

void Recordset::GoOnFromHere()
{
    Load();
    if (walk_)
        walk_->GoOnFrom(*table_, *row_, *record_);
    walkIsHere_ = true;
}

bool Recordset::WalkBy(std::size_t field)
{
    Follow();
    [[maybe_unused]] const Column& exists = ColumnAt(field);
    std::optional<IndexWalk> walk = IndexWalk::By(*table_, field);
    if (!walk)
        return false;
    CancelUpdate();
    walk_ = std::move(walk);
    walkField_ = field;
    // The next question that needs a record goes to the first in the new order.
    isPlaced_ = false;
    return true;
}

/// The column of that name, by which the walk goes, may have another number and place.
void Recordset::FollowWalk(std::string_view column)
{
    const auto at = std::ranges::find(columns_, column, &Column::name);
    walkField_ = static_cast<std::size_t>(at - columns_.begin());
    walk_ = at == columns_.end() ? std::nullopt : IndexWalk::By(*table_, walkField_);
    walkIsHere_ = false;
}

/// The walk in an index's order. Throws NoSuchIndex when none was chosen.
IndexWalk& Recordset::Walk()
{
    Follow();
    if (!walk_)
        throw Error(ErrorNumber::NoSuchIndex, {"", source_});
    return *walk_;
}

void Recordset::Seek(const Value& value)
{
    IndexWalk& walk = Walk();
    CancelUpdate();
    Bytes wanted;
    EncodeValue(wanted, *table_->Definition().format, ColumnAt(walkField_).GetValueType(), value);
    StandOn(walk.Seek(*table_, wanted));
}

std::uint64_t Recordset::Position()
{
    if (Eof())
        throw Error(ErrorNumber::NoCurrentRecord);
    return row_->Pointer();
}

void Recordset::MoveTo(std::uint64_t position)
{
    Follow();
    CancelUpdate();
    // Where a walk goes on from is found by the record's key, so the record is read at once.
    StandOn(RowId::FromPointer(static_cast<std::uint32_t>(position)));
    GoOnFromHere();
}

bool Recordset::IsInStorageOrder()
{
    return Walk().IsInStorageOrder(*table_);
}

} // namespace jet
