#include "jet/sql/column_copy.h"

#include "jet/base/value_codec.h"
#include "jet/error.h"

#include <optional>
#include <string>
#include <variant>

namespace jet::sql {

namespace {

/// The values that rows had, one after another in the order of the rows: much less than a record for each.
class OldValues {
public:
    void Append(std::optional<ByteSpan> value)
    {
        log_.resize(log_.size() + kLengthSize);
        StoreU32(log_, log_.size() - kLengthSize, value ? static_cast<std::uint32_t>(value->size()) : kNullLength);
        if (value)
            AppendBytes(log_, *value);
        ++count_;
    }

    /// Takes the values back one by one, from the first.
    void Replay(Table& table, ReferentialIntegrity& integrity, std::size_t target) const
    {
        Record record;
        std::size_t at = 0;
        std::optional<RowId> row = table.NextRow(std::nullopt);
        for (std::size_t i = 0; i < count_ && row; ++i, row = table.NextRow(row)) {
            const std::uint32_t length = LoadU32(log_, at);
            at += kLengthSize;
            table.Read(*row, record);
            if (length == kNullLength) {
                record.SetNull(target);
            } else {
                record.SetStored(target, ByteSpan(log_).subspan(at, length));
                at += length;
            }
            integrity.UpdateRow(table, *row, record);
        }
    }

private:
    static constexpr std::size_t kLengthSize = 4;
    static constexpr std::uint32_t kNullLength = 0xFFFFFFFF;

    Bytes log_;
    std::size_t count_ = 0;
};

/// Sets `target` of `record` from `source` of the same record.
class Converter {
public:
    Converter(const Table& table, std::size_t target, std::size_t source)
        : table_(table), target_(target), source_(source), type_(table.Definition().columns[target].GetValueType())
    {
    }

    void Convert(Record& record)
    {
        const Value value = table_.Get(record, source_);
        stored_.clear();
        if (IsNull(value))
            return record.SetNull(target_);
        if (type_.type == ColumnType::Boolean) {
            record.SetSized(target_, 1)[0] = ToBoolean(value) ? 1 : 0;
            return;
        }
        // A memo's record holds it plain: whether it is stored compressed is decided where it is written.
        ValueType type = type_;
        type.compressed = type.compressed && type.type != ColumnType::Memo;
        const bool isText = type.type == ColumnType::Text || type.type == ColumnType::Memo;
        if (isText && table_.Definition().columns[target_].rules.refusesEmpty && ToText(value).empty())
            throw Error(ErrorNumber::EmptyTextRefused, {table_.Definition().columns[target_].name});
        if (isText || std::holds_alternative<std::string>(value))
            EncodeText(stored_, *table_.Definition().format, type, ToText(value));
        else
            EncodeValue(stored_, *table_.Definition().format, type, value);
        record.SetStored(target_, stored_);
    }

private:
    const Table& table_;
    std::size_t target_;
    std::size_t source_;
    ValueType type_;
    Bytes stored_;
};

} // namespace

void CopyColumnValues(Table& table, ReferentialIntegrity& integrity, std::size_t target, std::size_t source)
{
    Record record;
    Converter converter(table, target, source);
    OldValues old;
    try {
        Bytes before; // the record's own bytes move when it is converted
        for (auto row = table.NextRow(std::nullopt); row; row = table.NextRow(row)) {
            table.Read(*row, record);
            const std::optional<ByteSpan> had = record.Stored(target);
            const bool wasNull = !had;
            if (had)
                before.assign(had->begin(), had->end());
            converter.Convert(record);
            integrity.UpdateRow(table, *row, record);
            old.Append(wasNull ? std::nullopt : std::optional<ByteSpan>(before));
        }
    } catch (...) {
        old.Replay(table, integrity, target);
        throw;
    }
}

} // namespace jet::sql
