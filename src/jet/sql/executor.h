#pragma once

#include "jet/catalog/catalog.h"
#include "jet/relations/integrity.h"
#include "jet/sql/ast.h"

namespace jet::sql {

/// Carries out parsed statements. A statement that fails has changed nothing.
class Executor {
public:
    Executor(Catalog& catalog, ReferentialIntegrity& integrity) : catalog_(catalog), integrity_(integrity) {}

    void Run(const Statement& statement);

private:
    void Execute(const CreateTable& statement);
    void Execute(const DropTable& statement);
    void Execute(const AddColumn& statement);
    void Execute(const DropColumn& statement);
    void Execute(const WidenColumns& statement);
    void Execute(const CreateIndex& statement);
    void Execute(const DropIndex& statement);
    void Execute(const AddForeignKey& statement);
    void Execute(const DropConstraint& statement);
    void Execute(const DeleteRows& statement);
    void Execute(const CopyColumn& statement);

    /// For ALTER TABLE and the index statements. Throws NoSuchTable.
    [[nodiscard]] std::shared_ptr<Table> TableToAlter(std::string_view name);

    Catalog& catalog_;
    ReferentialIntegrity& integrity_;
};

} // namespace jet::sql
