#include "import/record_writer.h"

#include "import/text_export.h"
#include "schema/column_widening.h"
#include "schema/engine_errors.h"
#include "schema/table_name.h"

#include <string>
#include <utility>

namespace velmora {

namespace {

/// A memo takes up to this many bytes of the record for itself, so that widening a shorter text gains nothing.
constexpr std::size_t kMemoBytesInRecord = 64;

/// The values of a pending record, by their columns' names, while positions change.
class ValuesByName {
public:
    explicit ValuesByName(TableSink& sink) : sink_(sink)
    {
        for (const std::size_t field : sink.values.filled)
            named_.emplace_back(sink.records->FieldName(field), sink.values.byField[field]);
    }
    void PutBack() const
    {
        PendingValues& values = sink_.values;
        values.byField.assign(sink_.records->FieldCount(), {});
        values.filled.clear();
        for (const auto& [name, origin] : named_)
            if (const auto field = sink_.records->FieldIndex(name))
                values.Put(*field, origin);
    }

private:
    TableSink& sink_;
    std::vector<std::pair<std::string, ValueOrigin>> named_;
};

} // namespace

void RecordWriter::Begin(TableSink& sink, ElementId element)
{
    sink.records->AddNew();
    begun_.push_back(&sink);
    sink.values.Clear();
    sink.values.element = element;
    FindKeys(sink);
}

void RecordWriter::FindKeys(TableSink& sink) const
{
    const std::uint64_t layout = sink.records->Layout();
    if (sink.keyLayout == layout)
        return;
    sink.keyLayout = layout;
    sink.values.byField.assign(sink.records->FieldCount(), {});
    sink.primaryKey = sink.records->FieldIndex(job_.settings.strKeyPrimary);
    sink.foreignKey = sink.records->FieldIndex(job_.settings.strKeyForeign);
    sink.masterTable = sink.records->FieldIndex(kMasterTable);
}

void RecordWriter::SetForeignKey(TableSink& sink, std::int32_t key)
{
    sink.provisionalKey = key;
    if (!sink.foreignKey)
        return;
    try {
        sink.records->SetLong(*sink.foreignKey, key);
    } catch (const RuntimeError& error) {
        if (IsLockConflict(error))
            throw;
    }
}

void RecordWriter::SetMasterTable(TableSink& sink, std::string_view ownerTable)
{
    if (!sink.masterTable)
        return;
    try {
        sink.records->SetText(*sink.masterTable, ownerTable);
    } catch (const RuntimeError& error) {
        if (IsLockConflict(error))
            throw;
    }
}

void RecordWriter::Set(TableSink& sink, std::size_t field, const RawName& rawName, std::string_view value,
                       ValueOrigin origin)
{
    for (;;) {
        try {
            sink.records->SetText(field, value);
            sink.values.Put(field, origin);
            return;
        } catch (const RuntimeError& error) {
            if (error.Number() == engine_errors::kWrongType)
                ClearDefault(sink, field);
            if (error.Number() != engine_errors::kFieldTooSmall || sink.records->IsMemo(field))
                throw;
        }
        const auto moved = Widen(sink, field, ColumnToWiden(sink, field, rawName));
        if (!moved)
            return;
        field = *moved;
    }
}

/// A value that its column cannot hold must not look like the one that the column has by default. What an earlier value
/// of the document has brought stays.
void RecordWriter::ClearDefault(TableSink& sink, std::size_t field)
{
    if (sink.values.byField[field].element == kNoElement)
        sink.records->SetNull(field);
}

/// The column that bears the value's own name goes first, even where a mapping has sent the value elsewhere; it must be
/// one that can be widened, so that every round brings the value closer to its place.
std::string RecordWriter::ColumnToWiden(const TableSink& sink, std::size_t field, const RawName& rawName) const
{
    const std::string name = rawName.Text();
    const auto raw = sink.records->FieldIndex(name);
    const bool isKey = name == job_.settings.strKeyPrimary || name == job_.settings.strKeyForeign;
    if (raw && !isKey && !sink.records->IsMemo(*raw))
        return name;
    return sink.records->FieldName(field);
}

std::optional<std::size_t> RecordWriter::Widen(TableSink& sink, std::size_t field, std::string column)
{
    const std::string meant = sink.records->FieldName(field);
    // Only this sink can have a pending record on the table: an owner on the same one would have had the column itself.
    const ValuesByName values(sink);
    if (!velChangeColumnToMemo(job_, session_, *sink.records, std::move(column)))
        return std::nullopt;
    FindKeys(sink);
    values.PutBack();
    return sink.records->FieldIndex(meant);
}

void RecordWriter::Save(TableSink& sink)
{
    for (;;) {
        try {
            sink.records->Update();
            break;
        } catch (const RuntimeError& error) {
            if (error.Number() != engine_errors::kRecordTooLarge)
                throw;
            const auto longest = sink.records->LongestText(kMemoBytesInRecord);
            if (!longest)
                throw;
            if (!Widen(sink, *longest, sink.records->FieldName(*longest)))
                return;
        }
    }
    begun_.pop_back();
    ++sink.savedRecords;
    account_.Stored(sink.values);
    velWriteRecordToFile(job_, sink, false);
    if (!begun_.empty()) {
        AddProvisionalRow(sink);
        return;
    }
    if (sink.text.file)
        sink.text.file->Settle();
    KeepProvisionalRows();
}

/// The owner stands: what was saved for it stays.
void RecordWriter::KeepProvisionalRows()
{
    for (TableSink* const sink : provisional_) {
        sink->provisionalRows.clear();
        if (sink->text.file)
            sink->text.file->Settle();
    }
    provisional_.clear();
}

void RecordWriter::AddProvisionalRow(TableSink& sink)
{
    if (sink.provisionalRows.empty())
        provisional_.push_back(&sink);
    sink.provisionalRows.push_back(sink.records->Bookmark());
}

std::int32_t RecordWriter::Key(TableSink& sink)
{
    FindKeys(sink);
    return sink.primaryKey ? sink.records->GetLong(*sink.primaryKey) : 0;
}

void RecordWriter::Abandon(ElementId owner)
{
    for (; !begun_.empty(); begun_.pop_back()) {
        TableSink& sink = *begun_.back();
        if (sink.records->IsOpen() && sink.records->IsPending())
            sink.records->CancelUpdate();
    }
    if (provisional_.empty())
        return;
    for (TableSink* const sink : provisional_)
        RemoveProvisionalRows(*sink);
    provisional_.clear();
    account_.TakeBackChildTexts(owner);
}

void RecordWriter::RemoveProvisionalRows(TableSink& sink)
{
    sink.savedRecords -= static_cast<std::int64_t>(sink.provisionalRows.size());
    if (sink.text.file)
        sink.text.file->RollBack();
    try {
        if (sink.records->IsOpen())
            for (const std::uint64_t row : sink.provisionalRows)
                sink.records->DeleteBookmark(row);
    } catch (const RuntimeError& error) {
        if (error.Number() != engine_errors::kRecordDeleted)
            throw;
        // A widening has made the engine write the table anew, with all rows in other places: their key tells them.
        if (sink.foreignKey)
            sink.records->DeleteRows(*sink.foreignKey, sink.provisionalKey);
    }
    sink.provisionalRows.clear();
}

} // namespace velmora
