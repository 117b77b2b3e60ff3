#include "jet/sql/column_copy.h"

#include "jet/base/error.h"
#include "jet/base/value_codec.h"

#include <optional>
#include <string>
#include <variant>

namespace jet::sql {

namespace {

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
    for (auto row = table.NextRow(std::nullopt); row; row = table.NextRow(row)) {
        table.Read(*row, record);
        converter.Convert(record);
        integrity.UpdateRow(table, *row, record);
    }
}

} // namespace jet::sql
