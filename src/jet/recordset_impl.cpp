#include "jet/recordset_impl.h"

#include "jet/base/text_codec.h"
#include "jet/base/value_codec.h"
#include "jet/error.h"

#include <algorithm>

namespace jet {

namespace {

constexpr Byte kSystemTableType = 0x53;
/// What one field may leave behind in the buffer that every field is encoded in.
constexpr std::size_t kMaxKeptBuffer = std::size_t{1} << 20;

bool IsText(ColumnType type)
{
    return type == ColumnType::Text || type == ColumnType::Memo;
}

} // namespace

Recordset::Impl::Impl(std::shared_ptr<Table> table, ReferentialIntegrity& integrity)
    : table_(std::move(table)), integrity_(integrity), source_(table_->Name())
{
    TakeLayout();
}

void Recordset::Impl::Close() noexcept
{
    if (!table_)
        return;
    CancelUpdate();
    generation_ = table_->Generation();
    table_.reset();
}

Table& Recordset::Impl::OpenTable() const
{
    if (!table_)
        throw Error(ErrorNumber::NoCurrentRecord, {}, "(The recordset on " + source_ + " is closed.)");
    return *table_;
}

// ---- Fields ---------------------------------------------------------------------------------------------------------

void Recordset::Impl::TakeLayout()
{
    const TableDef& def = table_->Definition();
    generation_ = table_->Generation();
    columns_ = def.columns;
    rowsMap_ = def.ownedPages;
    const auto autonumber = std::ranges::find_if(columns_, &Column::IsAutonumber);
    autonumber_ = autonumber == columns_.end() ? std::nullopt : std::optional(autonumber - columns_.begin());
}

/// Follows a change of the columns: the values of a pending record move to the places that columns of the same name
/// have now.
void Recordset::Impl::Follow()
{
    if (OpenTable().Generation() == generation_)
        return;
    if (rowsMap_ != table_->Definition().ownedPages) {
        row_.reset();
        started_ = false;
    }
    loaded_ = false;
    const std::vector<Column> old = std::move(columns_);
    TakeLayout();
    if (!pending_)
        return;
    const Record values = std::move(record_);
    record_.Reset(columns_.size());
    const auto type = [](const Column& column) { return column.type; };
    for (std::size_t from = 0; from < old.size(); ++from) {
        const auto to = std::ranges::find(columns_, old[from].name, &Column::name);
        if (to == columns_.end() || values.IsNull(from))
            continue;
        // A text fits a memo as it is stored; between other types a column of the same name is another column.
        if (type(*to) == type(old[from]) || (IsText(type(*to)) && IsText(type(old[from]))))
            record_.SetStored(static_cast<std::size_t>(to - columns_.begin()), *values.Stored(from));
    }
}

const Column& Recordset::Impl::ColumnAt(std::size_t field) const
{
    const std::vector<Column>& columns = Columns();
    if (field >= columns.size())
        throw Error(ErrorNumber::ItemNotFound, {}, "(field " + std::to_string(field) + " of " + source_ + ")");
    return columns[field];
}

const Column& Recordset::Impl::ColumnToSet(std::size_t field)
{
    Follow();
    if (!pending_)
        throw Error(ErrorNumber::NoCurrentRecord, {}, "(No record of " + source_ + " has been begun.)");
    if (field >= columns_.size())
        throw Error(ErrorNumber::ItemNotFound, {}, "(field " + std::to_string(field) + " of " + source_ + ")");
    return columns_[field];
}

Value Recordset::Impl::Get(std::size_t field)
{
    Follow();
    [[maybe_unused]] const Column& exists = ColumnAt(field);
    if (pending_) {
        if (field == autonumber_ && record_.IsNull(field)) {
            takenNumber_ = table_->TakeAutonumber();
            StoreI32(record_.SetSized(field, sizeof(std::int32_t)), 0, *takenNumber_);
        }
    } else if (Eof()) {
        throw Error(ErrorNumber::NoCurrentRecord);
    } else if (!loaded_) {
        table_->Read(*row_, record_);
        loaded_ = true;
    }
    return table_->Get(record_, field);
}

const Record& Recordset::Impl::PendingValues()
{
    Follow();
    return record_;
}

// ---- A record being added -------------------------------------------------------------------------------------------

void Recordset::Impl::AddNew()
{
    Follow();
    if (table_->Definition().tableType == kSystemTableType)
        throw Error(ErrorNumber::ReadOnly, {}, "(" + source_ + " is a table of the engine's own.)");
    if (pending_)
        Update();
    record_.Reset(columns_.size());
    loaded_ = false;
    pending_ = true;
    integrity_.AddPending(*this);
}

void Recordset::Impl::EncodeTextInto(const Column& column, std::string_view utf8)
{
    const Format& format = *table_->Definition().format;
    encoded_.clear();
    // A character takes at least one byte of UTF-8, so most texts need not be counted.
    const bool mayBeLong = column.type == ColumnType::Text && utf8.size() > column.size / format.textUnitSize;
    if (mayBeLong && format.version == JetVersion::Jet4 && Utf16Length(utf8) > column.size / format.textUnitSize)
        throw Error(ErrorNumber::FieldTooSmall);
    const bool compress = column.type == ColumnType::Text && column.moreFlags & kMoreFlagsCompressed;
    const std::size_t replaced = AppendText(encoded_, format, utf8, compress);
    if (mayBeLong && format.version == JetVersion::Jet3 && encoded_.size() > column.size)
        throw Error(ErrorNumber::FieldTooSmall);
    replaced_ += replaced;
}

void Recordset::Impl::SetText(std::size_t field, std::string_view utf8)
{
    const Column& column = ColumnToSet(field);
    if (!IsText(column.type))
        return Set(field, ParseText(column.GetValueType(), utf8));
    EncodeTextInto(column, utf8);
    record_.SetStored(field, encoded_);
    if (encoded_.capacity() > kMaxKeptBuffer)
        encoded_ = Bytes();
}

void Recordset::Impl::SetLong(std::size_t field, std::int32_t value)
{
    const Column& column = ColumnToSet(field);
    if (column.type != ColumnType::Long)
        return Set(field, value);
    NoteOwnNumber(field, value);
    StoreI32(record_.SetSized(field, sizeof value), 0, value);
}

void Recordset::Impl::Set(std::size_t field, const Value& value)
{
    const Column& column = ColumnToSet(field);
    if (IsNull(value))
        return record_.SetNull(field);
    if (IsText(column.type))
        return SetText(field, ToText(value));
    if (const auto* text = std::get_if<std::string>(&value))
        return Set(field, ParseText(column.GetValueType(), *text));
    if (column.type == ColumnType::Boolean) {
        const auto* flag = std::get_if<bool>(&value);
        const bool isSet = flag ? *flag : ToText(value) != "0";
        record_.SetSized(field, 1)[0] = isSet ? 1 : 0;
        return;
    }
    if (const auto* number = std::get_if<std::int32_t>(&value))
        NoteOwnNumber(field, *number);
    encoded_.clear();
    EncodeValue(encoded_, *table_->Definition().format, column.GetValueType(), value);
    record_.SetStored(field, encoded_);
}

/// A number that the caller sets counts as given when it is the next one, so that no other record gets it before this
/// one is saved: a record that is taken back and begun anew keeps its key.
void Recordset::Impl::NoteOwnNumber(std::size_t field, std::int32_t value)
{
    if (field != autonumber_ || takenNumber_ == value)
        return;
    if (takenNumber_)
        table_->ReturnAutonumber(*takenNumber_);
    takenNumber_.reset();
    if (static_cast<std::uint32_t>(value) == table_->Definition().lastAutonumber + 1)
        takenNumber_ = table_->TakeAutonumber();
}

void Recordset::Impl::Update()
{
    Follow();
    if (!pending_)
        throw Error(ErrorNumber::NoCurrentRecord, {}, "(No record of " + source_ + " has been begun.)");
    if (autonumber_)
        lastAutonumber_ = std::get<std::int32_t>(Get(*autonumber_));
    row_ = table_->Insert(record_);
    pending_ = false;
    integrity_.RemovePending(*this);
    takenNumber_.reset();
    started_ = loaded_ = true;
    lastSaved_ = *row_;
    lastSavedMap_ = rowsMap_;
}

void Recordset::Impl::CancelUpdate() noexcept
{
    if (!pending_)
        return;
    pending_ = false;
    integrity_.RemovePending(*this);
    if (takenNumber_)
        table_->ReturnAutonumber(*takenNumber_);
    takenNumber_.reset();
    loaded_ = false;
}

void Recordset::Impl::Delete()
{
    Follow();
    if (pending_)
        return CancelUpdate();
    if (Eof())
        throw Error(ErrorNumber::NoCurrentRecord);
    table_->Delete(*row_);
    loaded_ = false;
}

/// The row's place in the lower half; in the upper what tells whether rows still have the places of that time.
std::uint64_t Recordset::Impl::Bookmark() const noexcept
{
    return std::uint64_t{lastSavedMap_.Pointer()} << 32 | lastSaved_.Pointer();
}

void Recordset::Impl::DeleteBookmark(std::uint64_t bookmark)
{
    if (bookmark >> 32 != OpenTable().Definition().ownedPages.Pointer())
        throw Error(ErrorNumber::RecordDeleted, {}, "(The rows of " + source_ + " have been written anew.)");
    const RowId row = RowId::FromPointer(static_cast<std::uint32_t>(bookmark));
    table_->Delete(row);
    if (row_ == row)
        loaded_ = false;
}

// ---- Walking
// ----------------------------------------------------------------------------------------------------------

bool Recordset::Impl::Eof()
{
    Follow();
    if (!started_)
        MoveFirst();
    return !row_;
}

void Recordset::Impl::MoveFirst()
{
    Follow();
    CancelUpdate();
    row_ = table_->NextRow(std::nullopt);
    started_ = true;
    loaded_ = false;
}

void Recordset::Impl::MoveNext()
{
    if (Eof())
        throw Error(ErrorNumber::NoCurrentRecord);
    CancelUpdate();
    row_ = table_->NextRow(row_);
    loaded_ = false;
}

} // namespace jet
