#include "jet/sql/executor.h"

#include "jet/base/error.h"
#include "jet/catalog/savepoint.h"
#include "jet/relations/relations.h"
#include "jet/sql/column_copy.h"

namespace jet::sql {

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
