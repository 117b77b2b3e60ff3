#include "jet/sql/executor.h"

#include "jet/base/error.h"
#include "jet/base/value_codec.h"
#include "jet/base/value_text.h"
#include "jet/catalog/catalog.h"
#include "jet/relations/relations.h"

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
        const bool isText = IsText(type.type);
        if (isText && table_.Definition().columns[target_].rules.refusesEmpty && ToText(value).empty())
            throw Error(ErrorNumber::EmptyTextRefused, {table_.Definition().columns[target_].name});
        // Numbers and dates go into a text as they are shown.
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

/// Gives column `target` of every row the value of column `source`, converted to its type. Positions are 0-based.
/// Throws what Table::Update and the relations throw, FieldTooSmall and WrongType.
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

} // namespace

void Executor::Run(const Statement& statement)
{
    Savepoint savepoint(catalog_);
    std::visit([&](const auto& one) { Execute(one); }, statement);
    savepoint.Release();
}

std::shared_ptr<Table> Executor::TableToAlter(std::string_view name)
{
    if (!catalog_.FindTable(name))
        throw Error(ErrorNumber::NoSuchTable, {name});
    return catalog_.OpenForChange(name);
}

void Executor::Execute(const CreateTable& statement)
{
    catalog_.CreateTable(statement.table, statement.columns);
}

void Executor::Execute(const DropTable& statement)
{
    DropTableAndRelations(catalog_, statement.table);
}

void Executor::Execute(const AddColumn& statement)
{
    catalog_.AddColumn(*TableToAlter(statement.table), statement.column);
}

void Executor::Execute(const DropColumn& statement)
{
    catalog_.DropColumn(*TableToAlter(statement.table), statement.column);
}

void Executor::Execute(const WidenColumns& statement)
{
    catalog_.WidenColumns(*TableToAlter(statement.table), statement.columns);
}

void Executor::Execute(const CreateIndex& statement)
{
    catalog_.CreateIndex(*TableToAlter(statement.table), statement.index);
}

void Executor::Execute(const DropIndex& statement)
{
    catalog_.DropIndex(*TableToAlter(statement.table), statement.index);
}

void Executor::Execute(const AddForeignKey& statement)
{
    CreateRelation(catalog_, statement.relation);
}

void Executor::Execute(const DropConstraint& statement)
{
    jet::DropConstraint(catalog_, statement.table, statement.constraint);
}

void Executor::Execute(const DeleteRows& statement)
{
    integrity_.DeleteAll(*catalog_.OpenForChange(statement.table));
}

void Executor::Execute(const CopyColumn& statement)
{
    const std::shared_ptr<Table> table = catalog_.OpenForChange(statement.table);
    const auto position = [&](const std::string& column) {
        const std::optional<std::size_t> found = table->Definition().ColumnIndex(column);
        // A name that is no column counts as a parameter whose value nobody gave.
        if (!found)
            throw Error(ErrorNumber::UnknownParameter, {"1"}, "(" + column + ")");
        return *found;
    };
    const std::size_t target = position(statement.target);
    CopyColumnValues(*table, integrity_, target, position(statement.source));
}

} // namespace jet::sql
