#include "jet/recordset.h"

#include "jet/base/error.h"
#include "jet/base/text_codec.h"
#include "jet/base/value_text.h"
#include "jet/catalog/catalog.h"

#include <algorithm>
#include <cassert>

/// What record_ holds decides what a call means, and changes like this:
///
///   Nothing   --Get-->          Current    the current row was read
///   Current   --Set-->          Edited     its values differ from what is stored
///   Nothing, Current --AddNew--> Pending   a record that has no row yet
///   Edited    --Update-->       Nothing    cascades may have changed the row once more: it is read anew
///   Pending   --Update-->       Current    the record is a row now, the current one
///   Edited, Pending --CancelUpdate, Move--> Nothing
///
/// What an Update has saved may be taken by another recordset that begins a record; then the row is read again.
///
/// An Update that fails changes none of this: the record can be mended and saved once more.
namespace jet {

namespace {

constexpr Byte kSystemTableType = 0x53;

} // namespace

Recordset::Recordset(Catalog& catalog, ReferentialIntegrity& integrity, RecordPool& records, std::string_view table)
    : table_(catalog.Open(table)), catalog_(catalog), integrity_(integrity), records_(records), source_(table_->Name())
{
    TakeLayout();
}

void Recordset::Close() noexcept
{
    if (!table_)
        return;
    CancelUpdate();
    records_.Keep(record_);
    generation_ = table_->Generation();
    table_.reset();
}

void Recordset::ThrowClosed() const
{
    throw Error(ErrorNumber::NoCurrentRecord, {}, "(The recordset on " + source_ + " is closed.)");
}

// ---- Fields ---------------------------------------------------------------------------------------------------------

void Recordset::TakeLayout()
{
    const TableDef& def = table_->Definition();
    generation_ = table_->Generation();
    columns_ = def.columns;
    rowsEpoch_ = table_->RowsEpoch();
    isUserTable_ = def.tableType != kSystemTableType;
    autonumber_.reset();
    defaults_.clear();
    forms_.clear();
    for (const Column& column : columns_)
        forms_.push_back(FormOf(column, *def.format));
    for (std::size_t field = 0; field < columns_.size(); ++field) {
        const std::optional<DefaultValue>& value = columns_[field].rules.defaultValue;
        // A random autonumber is a default value and nothing else: the table's counter has no part in it.
        if (value)
            defaults_.push_back(field);
        else if (columns_[field].IsAutonumber())
            autonumber_ = static_cast<std::uint32_t>(field);
    }
}

/// Follows a change of the columns: the values of a pending record move to the places that columns of the same name
/// have now.
void Recordset::FollowChange()
{
    if (row_)
        row_ = table_->Relocated(*row_, rowsEpoch_);
    // It is stored, so it can be read again as it is now; what was only set must be carried over.
    if (holds_ == Holds::Current)
        holds_ = Holds::Nothing;
    const std::vector<Column> old = std::move(columns_);
    TakeLayout();
    if (walk_)
        FollowWalk(old[walkField_].name);
    if (holds_ == Holds::Nothing)
        return;
    const Record values = std::move(*record_);
    record_->Reset(columns_.size());
    const auto type = [](const Column& column) { return column.type; };
    for (std::size_t from = 0; from < old.size(); ++from) {
        const auto to = std::ranges::find(columns_, old[from].name, &Column::name);
        if (to == columns_.end() || values.IsNull(from))
            continue;
        // A text fits a memo as it is stored; between other types a column of the same name is another column.
        if (type(*to) == type(old[from]) || (IsText(type(*to)) && IsText(type(old[from]))))
            record_->SetStored(static_cast<std::size_t>(to - columns_.begin()), *values.Stored(from));
    }
}

const Column& Recordset::ColumnAt(std::size_t field) const
{
    const std::vector<Column>& columns = Columns();
    if (field >= columns.size())
        ThrowNoField(field);
    return columns[field];
}

void Recordset::ThrowNoField(std::size_t field) const
{
    throw Error(ErrorNumber::ItemNotFound, {}, "(field " + std::to_string(field) + " of " + source_ + ")");
}

std::optional<std::size_t> Recordset::FieldIndex(std::string_view name) const
{
    const std::vector<Column>& columns = Columns();
    const auto found = std::ranges::find(columns, name, &Column::name);
    if (found == columns.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - columns.begin());
}

std::size_t Recordset::MaxCharacters(std::size_t field) const
{
    const Column& column = ColumnAt(field);
    return column.type == ColumnType::Text ? column.size / OpenTable().Definition().format->textUnitSize : 0;
}

std::size_t Recordset::CountCharacters(std::string_view utf8) const
{
    if (OpenTable().Definition().format->version == JetVersion::Jet4)
        return Utf16Length(utf8);
    Bytes encoded;
    AppendCp1252(encoded, utf8);
    return encoded.size();
}

void Recordset::ThrowNoneBegun() const
{
    throw Error(ErrorNumber::NoCurrentRecord, {}, "(No record of " + source_ + " has been begun.)");
}

/// Opens the current record for change.
void Recordset::BeginEdit()
{
    RequireUserTable();
    if (!isPlaced_ || !row_)
        ThrowNoneBegun();
    Load();
    records_.Keep(record_);
    holds_ = Holds::Edited;
}

/// Brings the current row into record_, unless that holds a record.
void Recordset::Load()
{
    if (holds_ != Holds::Nothing && record_)
        return;
    table_->Read(*row_, Values());
    holds_ = Holds::Current;
}

void Recordset::RequireUserTable() const
{
    if (!isUserTable_)
        throw Error(ErrorNumber::ReadOnly, {}, "(" + source_ + " is a table of the engine's own.)");
}

Value Recordset::Get(std::size_t field)
{
    Follow();
    [[maybe_unused]] const Column& exists = ColumnAt(field);
    if (IsPending()) {
        if (field == autonumber_)
            TakeNumber(field);
    } else if (Eof()) {
        throw Error(ErrorNumber::NoCurrentRecord);
    } else {
        Load();
    }
    return table_->Get(*record_, field);
}

std::optional<std::int32_t> Recordset::PendingNumber(std::size_t field)
{
    Follow();
    return IsPending() && field == autonumber_ ? std::optional(TakeNumber(field)) : std::nullopt;
}

/// Gives the pending record its number, unless it has one.
std::int32_t Recordset::TakeNumber(std::size_t field)
{
    if (const std::optional<ByteSpan> stored = record_->Stored(field))
        return LoadI32(*stored, 0);
    takenNumber_ = table_->TakeAutonumber();
    StoreI32(record_->SetSized(field, sizeof(std::int32_t)), 0, *takenNumber_);
    return *takenNumber_;
}

std::optional<std::string> Recordset::GetText(std::size_t field)
{
    const Value value = Get(field);
    return IsNull(value) ? std::nullopt : std::optional(ToText(value));
}

std::uint64_t Recordset::RecordCount() const
{
    return OpenTable().Definition().rowCount;
}

const Record& Recordset::PendingValues()
{
    Follow();
    return *record_;
}

// ---- A record being added -------------------------------------------------------------------------------------------

void Recordset::AddNew()
{
    Follow();
    RequireUserTable();
    // As programs that use such recordsets rely on: who begins a record without saving the one before means to keep it.
    if (IsPending() || holds_ == Holds::Edited)
        Update();
    Values().Reset(forms_.size());
    for (const std::size_t field : defaults_)
        SetDefault(field);
    told_.parent = nullptr;
    holds_ = Holds::Pending;
    integrity_.AddPending(*this);
}

void Recordset::Update()
{
    Follow();
    if (IsPending())
        SaveNew();
    else if (holds_ == Holds::Edited)
        SaveEdit();
    else
        ThrowNoneBegun();
}

/// Does whoever has filled the pending record know that all it refers to is there?
References Recordset::KnownReferences()
{
    if (structure_ != catalog_.StructureVersion()) {
        references_ = integrity_.FactsOf(*table_);
        structure_ = catalog_.StructureVersion();
        told_.parent = nullptr; // that table may be another one now
    }
    if (references_.kind == ReferenceFacts::Kind::None)
        return References::Known;
    if (told_.parent == nullptr || told_.parent != references_.parent || told_.field != references_.field)
        return References::Ask;
    const std::optional<ByteSpan> stored = record_->Stored(told_.field);
    const bool isStill = stored && stored->size() == sizeof told_.number && LoadI32(*stored, 0) == told_.number;
    return isStill ? References::Known : References::Ask;
}

void Recordset::SaveNew()
{
    // Before the savepoint: a number once given stays given, whatever becomes of the record.
    if (autonumber_)
        lastAutonumber_ = TakeNumber(*autonumber_);
    SavepointOnDemand savepoint(catalog_);
    const References references = KnownReferences();
    assert(references == References::Ask || integrity_.HasParents(*table_, *record_));
    row_ = table_->Insert(*record_, &savepoint, references);
    walkIsHere_ = false;
    savepoint.Release();
    holds_ = Holds::Current;
    integrity_.RemovePending(*this);
    takenNumber_.reset();
    isPlaced_ = true;
    lastSaved_ = *row_;
    lastSavedEpoch_ = rowsEpoch_;
    records_.Offer(record_);
}

void Recordset::SaveEdit()
{
    // The plan of a cascade takes a copy: it may come round and change this very row.
    Savepoint savepoint(catalog_);
    integrity_.UpdateRow(*table_, *row_, *record_);
    savepoint.Release();
    holds_ = Holds::Nothing;
}

std::optional<std::vector<std::size_t>> Recordset::TextsToWiden()
{
    Follow();
    if (holds_ == Holds::Nothing)
        ThrowNoneBegun();
    Load();
    return table_->TextsToWiden(*record_);
}

void Recordset::CancelUpdate() noexcept
{
    const Holds held = std::exchange(holds_, holds_ == Holds::Current ? Holds::Current : Holds::Nothing);
    if (held != Holds::Pending)
        return;
    integrity_.RemovePending(*this);
    if (takenNumber_)
        table_->ReturnAutonumber(*takenNumber_);
    takenNumber_.reset();
}

void Recordset::Delete()
{
    Follow();
    if (IsPending())
        return CancelUpdate();
    if (Eof())
        throw Error(ErrorNumber::NoCurrentRecord);
    DeleteRow(*row_);
}

void Recordset::DeleteRow(RowId row)
{
    Savepoint savepoint(catalog_);
    table_->Delete(row);
    savepoint.Release();
    if (row_ == row && !IsPending())
        holds_ = Holds::Nothing;
}

/// The row's place in the lower half; in the upper how often the rows had been written anew by then.
std::uint64_t Recordset::Bookmark() const noexcept
{
    return std::uint64_t{lastSavedEpoch_} << 32 | lastSaved_.Pointer();
}

void Recordset::DeleteBookmark(std::uint64_t bookmark)
{
    Follow();
    const RowId then = RowId::FromPointer(static_cast<std::uint32_t>(bookmark));
    const std::optional<RowId> row = table_->Relocated(then, static_cast<std::uint32_t>(bookmark >> 32));
    if (!row)
        throw Error(ErrorNumber::RecordDeleted);
    DeleteRow(*row);
}

} // namespace jet
