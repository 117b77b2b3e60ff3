#include "import/record_writer.h"

#include "import/loss_report.h"
#include "import/text_export.h"
#include "schema/engine_errors.h"
#include "schema/refused_change.h"

#include <algorithm>
#include <cassert>
#include <string>
#include <utility>

namespace velmora {

namespace {

/// What a text column may hold at most.
constexpr std::size_t kMaxTextCharacters = 255;

/// The values of a pending record, by their columns' names, while positions change.
class ValuesByName {
public:
    ValuesByName(const Recordset& records, PendingValues& values) : records_(records), values_(values)
    {
        for (const auto& [origin, field] : values.held)
            named_.emplace_back(records.FieldName(field), origin);
    }
    void PutBack() const
    {
        values_.Clear();
        for (const auto& [name, origin] : named_)
            if (const auto field = records_.FieldIndex(name))
                values_.Put(*field, origin);
    }

private:
    const Recordset& records_;
    PendingValues& values_;
    std::vector<std::pair<std::string, ValueOrigin>> named_;
};

} // namespace

void RecordWriter::Begin(TableSink& sink, ElementId element)
{
    sink.records->AddNew();
    assert(endOfBegun_ != begun_.end());
    Begun& begun = *endOfBegun_++;
    begun.sink = &sink;
    begun.values.Begin(element);
    FindKeys(sink);
}

void RecordWriter::FindKeysAnew(TableSink& sink) const
{
    const auto find = [&](const std::string& name) -> std::optional<std::uint32_t> {
        if (const auto field = sink.records->FieldIndex(name))
            return static_cast<std::uint32_t>(*field);
        return std::nullopt;
    };
    sink.keyLayout = sink.records->Layout();
    sink.primaryKey = find(sink.plan->keys.primary);
    sink.isNumbered = sink.primaryKey && sink.records->IsAutonumber(*sink.primaryKey);
    sink.foreignKey = find(sink.plan->keys.foreign);
    sink.masterTable = find(sink.plan->keys.master);
    sink.types = session_.ChosenTypes(*sink.records, sink.foreignKey);
    sink.hasYesNo = std::ranges::find(sink.types, ColumnType::YesNo) != sink.types.end();
    if (std::ranges::none_of(sink.types, IsTyped))
        sink.types.clear();
}

void RecordWriter::SetPrimaryKey(TableSink& sink, std::int32_t key)
{
    if (sink.primaryKey)
        sink.records->SetLong(*sink.primaryKey, key);
}

void RecordWriter::SetForeignKey(TableSink& sink, std::int32_t key, const TableSink& owner)
{
    sink.provisionalKey = key;
    if (!sink.foreignKey)
        return;
    try {
        if (owner.isNumbered)
            sink.records->SetReference(*sink.foreignKey, key, *owner.records);
        else
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

/// After a refusal: is the field one of a text column that can be widened for its value?
bool RecordWriter::IsTooSmallText(TableSink& sink, std::size_t field, const RuntimeError& refusal)
{
    const bool isTooSmall = refusal.Number() == engine_errors::kFieldTooSmall;
    const bool isText = sink.records->MaxCharacters(field) > 0;
    if (isTooSmall && isText)
        return true;
    if (isTooSmall || refusal.Number() == engine_errors::kWrongType) // nothing widens a column of bytes
        ClearDefault(sink, field);
    return false;
}

/// Gives the place that the value's column has then.
std::size_t RecordWriter::SetWithMoreRoom(TableSink& sink, std::size_t field, std::string_view value,
                                          ValueOrigin origin, bool byTag)
{
    do
        field = MakeRoom(sink, field, value, origin, byTag);
    while (!TrySet(sink, field, value));
    return field;
}

/// Widens a column for the value; gives the place that its own has then.
std::size_t RecordWriter::MakeRoom(TableSink& sink, std::size_t field, std::string_view value, ValueOrigin origin,
                                   bool byTag)
{
    const std::string meant = sink.records->FieldName(field);
    const std::size_t characters = sink.records->CountCharacters(value);
    const std::string name = byTag ? NameInDocument(origin) : meant;
    Widen(sink, {Widening(sink, FieldToWiden(sink, field, name, characters), characters, origin)});
    return sink.records->FieldIndex(meant).value();
}

std::string RecordWriter::NameInDocument(ValueOrigin origin) const
{
    if (origin.attribute == ValueOrigin::kOwnText)
        return std::string(document_.NameText(document_.Name(origin.element)));
    return job_.settings.strAttrPrefix + std::string(document_.NameText(origin.attribute));
}

/// A value in a column whose type the program has chosen: one that it does not fit makes it a text.
void RecordWriter::SetTyped(TableSink& sink, std::size_t field, std::string_view value, ValueOrigin origin, bool byTag)
{
    if (!TrySetTyped(sink, field, value, origin))
        Set(sink, BecomeTextFor(sink, field, value, origin), value, origin, byTag);
}

/// What does not fit is not converted, however nearly it would. The empty text is Null there. False when the column has
/// to be a text.
bool RecordWriter::TrySetTyped(TableSink& sink, std::size_t field, std::string_view value, ValueOrigin origin)
{
    const ColumnType type = sink.TypeOf(field);
    if (value.empty() ? type == ColumnType::YesNo : !Fits(type, value))
        return false;
    if (value.empty())
        sink.records->SetNull(field);
    else
        sink.records->SetText(field, value);
    Values().Put(field, origin);
    return true;
}

/// The value does not fit; gives the place that its column has as a text.
std::size_t RecordWriter::BecomeTextFor(TableSink& sink, std::size_t field, std::string_view value, ValueOrigin origin)
{
    const std::string meant = sink.records->FieldName(field);
    BecomeText(
        sink, field,
        QuotedSample(value) + " at " +
            PathOfValue(document_, document_.Path(origin.element), origin.attribute, job_.settings.strAttrPrefix) +
            " does not fit");
    return sink.records->FieldIndex(meant).value();
}

void RecordWriter::BecomeText(TableSink& sink, std::size_t field, const std::string& reason)
{
    const ValuesByName values(*sink.records, Values());
    TurnIntoText(job_, session_, sink.records->Source(), {sink.records->FieldName(field), sink.TypeOf(field)}, reason);
    FindKeys(sink);
    values.PutBack();
}

/// The pending record has no value for a Yes/No column, which would say No.
void RecordWriter::TellWhatIsMissing(TableSink& sink)
{
    for (std::size_t field = 0; field < sink.types.size(); ++field)
        if (sink.types[field] == ColumnType::YesNo && !Values().isFilled[field])
            BecomeText(sink, field, "a record at " + document_.PathText(sink.plan->path) + " has no value");
}

/// A value that its column cannot hold must not look like the one that the column has by default. What an earlier value
/// of the document has brought stays.
void RecordWriter::ClearDefault(TableSink& sink, std::size_t field)
{
    if (!Values().isFilled[field])
        sink.records->SetNull(field);
}

/// The column that bears the value's own name goes first, even where a mapping has sent the value elsewhere; it must be
/// too small as well, so that every round brings the value closer to its place.
std::size_t RecordWriter::FieldToWiden(const TableSink& sink, std::size_t field, const std::string& name,
                                       std::size_t characters) const
{
    const bool isKey = name == job_.settings.strKeyPrimary || name == job_.settings.strKeyForeign;
    const auto raw = isKey ? std::nullopt : sink.records->FieldIndex(name);
    const std::size_t room = raw ? sink.records->MaxCharacters(*raw) : 0;
    return room > 0 && room < characters ? *raw : field;
}

/// A column shorter than texts can be grows in its place, if that is enough for the value.
ColumnToWiden RecordWriter::Widening(const TableSink& sink, std::size_t field, std::size_t characters,
                                     ValueOrigin origin) const
{
    using enum ColumnToWiden::Target;
    const bool canGrow = sink.records->MaxCharacters(field) < characters && characters <= kMaxTextCharacters;
    const PathId path = origin.element == kNoElement ? sink.plan->path : document_.Path(origin.element);
    return {sink.records->FieldName(field), canGrow ? Text255 : Memo, characters,
            PathOfValue(document_, path, origin.attribute, job_.settings.strAttrPrefix)};
}

void RecordWriter::Widen(TableSink& sink, const std::vector<ColumnToWiden>& columns)
{
    // Only this sink can have a pending record on the table: an owner on the same one would have had the column itself.
    const ValuesByName values(*sink.records, Values());
    velChangeColumnToMemo(job_, session_, sink.records->Source(), columns);
    FindKeys(sink);
    values.PutBack();
}

std::size_t RecordWriter::FieldBeside(TableSink& sink, const std::string& besides, const std::string& name,
                                      ValueOrigin origin)
{
    if (const auto field = sink.records->FieldIndex(name))
        return *field;
    const ValuesByName values(*sink.records, Values());
    AddColumnBeside(job_, session_, sink.records->Source(), besides, name,
                    PathOfValue(document_, document_.Path(origin.element), origin.attribute, ""));
    FindKeys(sink);
    values.PutBack();
    return sink.records->FieldIndex(name).value();
}

/// The record did not fit its page: texts become memos, as many as that takes.
void RecordWriter::MakeFit(TableSink& sink, const EngineError& error)
{
    const auto texts = sink.records->TextsToWiden();
    if (!texts)
        throw ExplainTooLarge(error, {sink.records->Source(), document_.PathText(sink.plan->path),
                                      sink.records->FieldCount(), session_.IsAccess97()});
    if (texts->empty())
        throw error;
    std::vector<ColumnToWiden> columns;
    for (const std::size_t field : *texts) {
        std::string text;
        sink.records->AppendText(field, text);
        columns.push_back(Widening(sink, field, sink.records->CountCharacters(text), Values().In(field)));
    }
    Widen(sink, columns);
}

void RecordWriter::NoteLengths(TableSink& sink, const PendingValues& values)
{
    std::string text;
    for (const auto& [origin, field] : values.held) {
        text.clear();
        if (!sink.records->AppendIsoText(field, sink.TypeOf(field) == ColumnType::Time, text))
            continue;
        std::size_t& longest = sink.longest[sink.records->FieldName(field)];
        longest = std::max(longest, sink.records->CountCharacters(text));
    }
}

void RecordWriter::Save(TableSink& sink)
{
    if (sink.hasYesNo)
        TellWhatIsMissing(sink);
    for (;;) {
        try {
            sink.records->Update();
            break;
        } catch (const EngineError& error) {
            if (error.Number() != engine_errors::kRecordTooLarge)
                throw;
            MakeFit(sink, error);
        }
    }
    const PendingValues& values = (--endOfBegun_)->values;
    ++sink.savedRecords;
    if (job_.settings.blPreview)
        NoteLengths(sink, values);
    account_.Stored(values);
    // Before its line, which may fail: the record is in its table, whatever comes.
    const bool isInner = endOfBegun_ != begun_.begin();
    if (isInner)
        AddProvisionalRow(sink);
    else
        KeepProvisionalRows();
    if (!job_.settings.blTextExport || !sink.text.file) // the sink's is far from what else a record needs
        return;
    velWriteRecordToFile(job_, sink, false);
    if (!isInner)
        sink.text.file->Settle();
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

void RecordWriter::Abandon()
{
    if (endOfBegun_ == begun_.begin())
        return;
    const ElementId owner = begun_.front().values.element;
    while (endOfBegun_ != begun_.begin())
        (--endOfBegun_)->sink->DropPending();
    if (provisional_.empty())
        return;
    for (TableSink* const sink : provisional_)
        sink->RemoveProvisionalRows();
    provisional_.clear();
    account_.TakeBackChildTexts(owner);
}

} // namespace velmora
