#include "jet/table/table_parts.h"

#include "jet/base/error.h"
#include "jet/table/long_fields.h"
#include "jet/table/row_codec.h"

#include <algorithm>
#include <cassert>

/// A row, its long values and its entries in the indexes, kept as one. What holds before and after each change; asserts
/// name the rule that they hold:
///
///  R1  A row has exactly one entry in each index of its table, or none where the index leaves Nulls out. The entry is
///      made of the row's values and names the row's home slot, wherever its bytes are.
///  R2  Each record of a long value is referred to by one field of one row. A value that an update leaves as it was
///      keeps its record, and the field's bytes with it; no two rows share one.
///  R3  The definition's row count is the number of rows. Its autonumber is not less than any value in that column. On
///      its page it may lack what came by R7 without a savepoint around it; but that is written there before a
///      savepoint is set under which the table may change, and before a commit.
///
/// How they are kept while things change:
///
///  R4  What can be refused is refused first: the Check functions look and change nothing. After them a change can only
///      be stopped by a damaged page or for want of room.
///  R5  What is referred to is there before what refers to it, and goes after it: long values, row, entries on the way
///      in; entries, row, long values on the way out. An update does the first for what is new, puts the row in its
///      place, and does the second for what is old.
///  R6  The row's size is known before anything is written: a long value with a record of its own takes twelve bytes of
///      the row, whatever they will say.
///  R7  A record that takes only what lies at hand, the end of a page with room and of the last leaf of each index, is
///      put in without a step that can fail: so no savepoint is needed around it. What was found at hand is used before
///      any other page is read.
///  R8  A hook may change further rows of the same table before a change goes on: each change under way has its own
///      scratch, and the row is compared with what was read before it is touched.
namespace jet {

Table::RowChange::RowChange(Table& table)
    : table_(table), parts_(*table.parts_), scratch_(table.group_->AcquireScratch())
{
}

bool Table::RowChange::ReadBefore(RowId row)
{
    const RowStore::Found found = parts_.rows.Find(row);
    if (!found)
        return false;
    scratch_.oldRow.assign(found.bytes.begin(), found.bytes.end());
    ReadRecord(*table_.pager_, table_.def_, found, parts_.allColumns, scratch_.before);
    MakeKeys(scratch_.before, scratch_.oldKeys);
    return true;
}

bool Table::RowChange::IsUnchanged(RowId row) const
{
    const RowStore::Found found = parts_.rows.Find(row);
    return found && SameBytes(found.bytes, scratch_.oldRow);
}

void Table::RowChange::CheckInsert(const Record& record)
{
    MeasureRow(record, false);
    Key* key = Keys(scratch_.keys);
    for (const Parts::Index& index : parts_.indexes) {
        MakeKey(index, record, *key);
        CheckKey(index, *key);
        ++key;
    }
}

void Table::RowChange::CheckUpdate(const Record& record)
{
    MeasureRow(record, true);
    MakeKeys(record, scratch_.keys);
    for (std::size_t i = 0; i < parts_.indexes.size(); ++i) {
        if (KeyChanges(i))
            CheckKey(parts_.indexes[i], scratch_.keys[i]);
    }
}

/// Looks whether the record makes a row, and how long that is.
void Table::RowChange::MeasureRow(const Record& record, bool isUpdate)
{
    for (const std::size_t column : parts_.required)
        if (record.IsNull(column))
            CheckMayBeNull(column, isUpdate);
    if (parts_.layout.HasLongValues())
        return PrepareFields(record, isUpdate);
    size_ = parts_.layout.Measure(record);
    if (size_ > table_.def_.format->maxRecordSize)
        throw Error(ErrorNumber::RecordTooLarge);
}

void Table::RowChange::Encode(const Record& record, MutableBytes row) const
{
    assert(row.size() == size_); // R6
    if (parts_.layout.HasLongValues())
        parts_.layout.Encode(scratch_.fields, row);
    else
        parts_.layout.Encode(record, row);
}

/// Brings all fields into the form that the row holds, except that long values which need pages only keep their place;
/// so the row's size is known before anything is changed.
void Table::RowChange::PrepareFields(const Record& record, bool isUpdate)
{
    const std::span<const FieldKind> kinds = parts_.layout.Kinds();
    scratch_.fields.assign(kinds.size(), RowField{});
    scratch_.longFields.Begin(kinds.size());
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        const std::optional<ByteSpan> stored = record.Stored(i);
        RowField& field = scratch_.fields[i];
        field.isSet = stored && (kinds[i] != FieldKind::Boolean || IsTrue(*stored));
        if (stored && kinds[i] == FieldKind::LongValue)
            PrepareLongValue(i, record, *stored, isUpdate);
        else if (stored && kinds[i] != FieldKind::Boolean)
            field.bytes = *stored;
    }
    size_ = parts_.layout.Measure(scratch_.fields);
    if (size_ <= table_.def_.format->maxRecordSize)
        return;
    for (const std::size_t column : LongValuesToMoveOut(parts_.layout, table_.def_, scratch_.fields))
        scratch_.longFields.MoveOut(column, table_.def_.columns[column], *table_.def_.format,
                                    record.Stored(column).value(), scratch_.fields[column]);
    size_ = parts_.layout.Measure(scratch_.fields);
}

/// Throws FieldRequired, unless a Null has been there from before the rule: then it stays.
void Table::RowChange::CheckMayBeNull(std::size_t column, bool isUpdate) const
{
    if (isUpdate && scratch_.before.IsNull(column))
        return;
    const Column& described = table_.def_.columns[column];
    throw Error(ErrorNumber::FieldRequired, {described.name})
        .About({.table = table_.name_, .columns = {described.name}});
}

void Table::RowChange::PrepareLongValue(std::size_t column, const Record& record, ByteSpan stored, bool isUpdate)
{
    const Column& kind = table_.def_.columns[column];
    const std::optional<ByteSpan> old = isUpdate ? scratch_.before.Stored(column) : std::nullopt;
    // Compared by content: whoever saves a record sets all of its fields, changed or not.
    if (&record != &scratch_.before && old && SameBytes(*old, stored)) {
        const RowView view(scratch_.oldRow, table_.def_, table_.def_.pages.front());
        scratch_.longFields.Keep(column, view.Field(kind).value(), scratch_.fields[column]);
    } else {
        scratch_.longFields.Set(column, kind, *table_.def_.format, stored, scratch_.fields[column]);
    }
}

void Table::RowChange::MakeKeys(const Record& record, std::vector<Key>& keys) const
{
    Key* key = Keys(keys);
    for (const Parts::Index& index : parts_.indexes)
        MakeKey(index, record, *key++);
}

/// The first of them, one for each of the table's indexes.
inline Table::RowChange::Key* Table::RowChange::Keys(std::vector<Key>& keys) const
{
    if (keys.size() < parts_.indexes.size())
        keys.resize(parts_.indexes.size());
    return keys.data();
}

inline void Table::RowChange::MakeKey(const Parts::Index& index, const Record& record, Key& key)
{
    key.facts = index.plan.Make(key.bytes, record);
    key.inIndex = !index.plan.LeavesOut(key.facts);
}

inline void Table::RowChange::CheckKey(const Parts::Index& index, Key& key) const
{
    const auto& [plan, tree] = index;
    if (plan.IsRequired() && key.facts.anyNull)
        Refuse(index, ErrorNumber::NullInPrimaryKey);
    key.standing = tree.StandingOf(key.bytes);
    // Of an update only changed keys come here, so the row's own entry is never in the way.
    if (!key.standing.isBehind && plan.MustBeUnique(key.facts) && tree.Contains(key.bytes))
        Refuse(index, ErrorNumber::DuplicateKey);
}

/// Throws an error about the index.
void Table::RowChange::Refuse(const Parts::Index& refusing, ErrorNumber number) const
{
    const auto index = static_cast<std::size_t>(&refusing - parts_.indexes.data());
    ErrorSubject subject{.table = table_.name_};
    for (const LogicalIndex& entry : table_.def_.logicalIndexes) {
        if (entry.realIndex == index && (subject.index.empty() || entry.type == IndexType::Primary))
            subject.index = entry.name;
    }
    for (const IndexColumn& part : table_.def_.realIndexes[index].columns) {
        const auto column = std::ranges::find(table_.def_.columns, part.column, &Column::number);
        subject.columns.push_back(column->name);
    }
    throw Error(number).About(std::move(subject));
}

bool Table::RowChange::KeyChanges(std::size_t index) const
{
    const Key& old = scratch_.oldKeys[index];
    const Key& now = scratch_.keys[index];
    return old.inIndex != now.inIndex || old.bytes != now.bytes;
}

bool Table::RowChange::FindAtHand()
{
    if (parts_.layout.HasLongValues() && scratch_.longFields.AnyOutside())
        return false;
    place_ = parts_.rows.FindAtHand(size_);
    if (!place_)
        return false;
    const RowId row = place_->At();
    Key* key = scratch_.keys.data();
    for (const Parts::Index& index : parts_.indexes) {
        if (key->inIndex) {
            key->leaf = index.tree.LeafToAppend(key->bytes, key->standing, row);
            if (!key->leaf)
                return false;
        }
        ++key;
    }
    return true;
}

RowId Table::RowChange::Append(const Record& record)
{
    const RowId row = place_->At();
    Encode(record, parts_.rows.InsertAt(*place_));
    const Key* key = scratch_.keys.data();
    for (Parts::Index& index : parts_.indexes) {
        if (key->inIndex)
            index.tree.Append(key->leaf, key->bytes, key->standing, row);
        ++key;
    }
    CountRow(record);
    table_.areCountsAhead_ = true;
    return row;
}

RowId Table::RowChange::Insert(const Record& record)
{
    WriteLongValues();
    RowId row;
    {
        const RowStore::Room room = parts_.rows.Insert(size_);
        row = room.at;
        Encode(record, room.bytes);
    }
    for (std::size_t i = 0; i < parts_.indexes.size(); ++i)
        InsertKey(i, row);
    CountRow(record);
    table_.StoreCounters();
    return row;
}

/// In a table without them the scratch may still hold those of another one.
void Table::RowChange::WriteLongValues()
{
    if (parts_.layout.HasLongValues())
        scratch_.longFields.Write(parts_.longValues);
}

/// Counts a row that is new (R3).
void Table::RowChange::CountRow(const Record& record)
{
    ++table_.def_.rowCount;
    RaiseAutonumber(record);
}

void Table::RowChange::Update(RowId row, const Record& record)
{
    WriteLongValues();
    for (std::size_t i = 0; i < parts_.indexes.size(); ++i) {
        if (KeyChanges(i))
            InsertKey(i, row);
    }
    {
        const RowStore::Room room = parts_.rows.Replace(row, size_);
        Encode(record, room.bytes);
    }
    RaiseAutonumber(record);
    table_.StoreCounters();
    for (std::size_t i = 0; i < parts_.indexes.size(); ++i) {
        if (scratch_.oldKeys[i].inIndex && KeyChanges(i))
            parts_.indexes[i].tree.Remove(scratch_.oldKeys[i].bytes, row);
    }
    DeleteOldLongValues(true);
}

void Table::RowChange::Delete(RowId row)
{
    for (std::size_t i = 0; i < parts_.indexes.size(); ++i) {
        if (scratch_.oldKeys[i].inIndex)
            parts_.indexes[i].tree.Remove(scratch_.oldKeys[i].bytes, row);
    }
    parts_.rows.Delete(row);
    DeleteOldLongValues(false);
    // Some files count too few; a count below zero would be four thousand million.
    if (table_.def_.rowCount != 0)
        --table_.def_.rowCount;
    table_.StoreCounters();
}

void Table::RowChange::InsertKey(std::size_t index, RowId row)
{
    const Key& key = scratch_.keys[index];
    if (key.inIndex)
        parts_.indexes[index].tree.Insert(key.bytes, row);
}

void Table::RowChange::DeleteOldLongValues(bool keepUnchanged)
{
    const RowView view(scratch_.oldRow, table_.def_, table_.def_.pages.front());
    for (std::size_t i = 0; i < table_.def_.columns.size(); ++i) {
        if (!parts_.longValues[i] || (keepUnchanged && scratch_.longFields.IsKept(i)))
            continue;
        if (const std::optional<ByteSpan> field = view.Field(table_.def_.columns[i]))
            parts_.longValues[i]->Delete(*field);
    }
}

/// The file's number is never less than one in use, also when the number came from outside.
void Table::RowChange::RaiseAutonumber(const Record& record)
{
    if (!parts_.autonumber)
        return;
    const std::optional<ByteSpan> stored = record.Stored(*parts_.autonumber);
    if (!stored || stored->size() != sizeof(std::int32_t))
        return;
    if (LoadI32(*stored, 0) > static_cast<std::int32_t>(table_.def_.lastAutonumber))
        table_.def_.lastAutonumber = LoadU32(*stored, 0);
}

RowId Table::Insert(const Record& record, ChangeGuard* guard, References references)
{
    const std::uint64_t changes = ++rowChanges_;
    RowChange change(*this);
    change.CheckInsert(record);
    if (hook_ != nullptr && references == References::Ask)
        hook_->BeforeInsert(*this, record);
    if (guard != nullptr)
        NoteAhead();
    // What was looked at before the hook counts only if that has changed nothing here.
    if (changes == rowChanges_ && change.FindAtHand()) {
        const RowId row = change.Append(record);
        if (guard == nullptr) // there may be a savepoint around it
            StoreCounters();
        return row;
    }
    if (guard != nullptr) {
        StoreCounters();
        guard->Begin();
    }
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

bool Table::Overwrite(RowId row, std::size_t column, ByteSpan stored)
{
    const Column& kind = def_.columns[column];
    if (!kind.IsFixed() || def_.IsInIndex(kind.number)) // R1
        return false;
    const RowStore::Found found = parts_->rows.Find(row);
    if (!found)
        return false;
    const std::optional<ByteSpan> old = RowView(found.bytes, def_, found.at.page).Field(kind);
    if (!old || old->size() != stored.size())
        return false;
    ++rowChanges_;
    const auto offset = static_cast<std::size_t>(old->data() - found.page.Bytes().data());
    std::ranges::copy(stored, pager_->Write(found.at.page).Data(offset, stored.size()).begin());
    return true;
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
