#pragma once

#include "jet/base/rowset.h"
#include "jet/base/value.h"
#include "jet/catalog/names.h"
#include "jet/catalog/object_list.h"
#include "jet/catalog/relationship_list.h"
#include "jet/table/table.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace jet {

/// What the database consists of: its tables by name, and every change of their structure together with the rows of the
/// system tables that tell of it. Names compare as the sort order does. A change that throws may have come halfway: it
/// is taken back by the savepoint around it.
class Catalog {
public:
    /// Throws CorruptPage when the system tables cannot be read.
    explicit Catalog(Pager& pager);

    /// Told of every change of a row in the tables opened from now on.
    void SetRowHook(RowHook* hook) noexcept { hook_ = hook; }
    [[nodiscard]] Pager& GetPager() const noexcept { return *pager_; }
    [[nodiscard]] const Format& GetFormat() const noexcept { return pager_->GetFormat(); }
    [[nodiscard]] ObjectList& Objects() noexcept { return objects_; }
    [[nodiscard]] RelationshipList& Relationships() noexcept { return relationships_; }

    // Tables.

    /// The table of that name; nullptr when there is none (a query or a link of that name is none).
    [[nodiscard]] const CatalogObject* FindTable(std::string_view name) const;
    /// The one object that stands for the table on this connection. Throws TableNotFound.
    [[nodiscard]] std::shared_ptr<Table> Open(std::string_view name);
    /// The same, for a statement that changes the table. Throws ReadOnly for the engine's own tables.
    [[nodiscard]] std::shared_ptr<Table> OpenForChange(std::string_view name);
    /// By its definition page. Throws TableNotFound.
    [[nodiscard]] std::shared_ptr<Table> OpenPage(PageNumber definitionPage);
    /// The definition pages of the tables that have an index of that name.
    [[nodiscard]] std::vector<PageNumber> TablesWithIndex(std::string_view name);
    /// Objects that can still be made before the format's limit is reached.
    [[nodiscard]] std::size_t ObjectsLeft() const noexcept;

    // Changes of structure.

    /// Throws TableExists, InvalidName, SizeTooLong, TooManyFields, FieldDefinedTwice, TwoAutoNumbers, DatabaseFull.
    void CreateTable(std::string_view name, const std::vector<ColumnSpec>& columns);
    /// Throws TableLocked while a recordset is open on the table.
    void CheckNotInUse(std::string_view name) const;
    /// Throws NoSuchTable, ReadOnly, TableLocked.
    void CheckCanDrop(std::string_view name);
    /// The table takes part in no relation and can be dropped.
    void DropTable(std::string_view name);
    /// Throws FieldExists, InvalidName, SizeTooLong,
    /// TooManyFields, TwoAutoNumbers.
    void AddColumn(Table& table, const ColumnSpec& column);
    /// Throws NoSuchField, FieldInIndex (also for the last column), FieldInRelation.
    void DropColumn(Table& table, std::string_view column);
    /// See Table::WidenColumns(). Throws FieldInIndex and FieldInRelation as well, with the name of what stands in the
    /// way.
    void WidenColumns(Table& table, const std::vector<ColumnSpec>& columns);
    /// Throws InvalidName, IndexExists, PrimaryKeyExists, TooManyIndexes, TooManyIndexFields, NoSuchField,
    /// DuplicateKey, NullInPrimaryKey.
    void CreateIndex(Table& table, const IndexSpec& index);
    /// Throws NoSuchIndex, TableInRelation.
    void DropIndex(Table& table, std::string_view name);
    /// Texts among the properties of the table and of its columns, as they are stored. Throws TableNotFound.
    [[nodiscard]] std::vector<Property> Properties(std::string_view table);
    /// Adds or changes them, all at once. Names of columns are those of `table` or compare equal to them. Throws
    /// NoSuchTable, ReadOnly, NoSuchField, SizeTooLong.
    void SetProperties(std::string_view table, std::span<const Property> properties);
    /// To be called after a change of a table's definition that was not made here.
    void NoteChange(Table& table);
    /// Counts changes of any table's definition.
    [[nodiscard]] std::uint64_t StructureVersion() const noexcept { return structureVersion_; }

    /// Throws DatabaseFull when no more objects fit.
    void CheckRoomForObject() const;
    /// Writes what the tables keep in memory (counts of rows and keys, autonumbers) to their pages.
    void FlushCounters();
    /// To be called after a commit: tables that nobody has open forget where their rows were before.
    void ForgetMoves() noexcept;
    /// Everything goes back to the pager's savepoint, pages and what is known of them. When that cannot be done, the
    /// pager has failed.
    void RollBack() noexcept;

private:
    void Reread();
    void ApplyProperties(Table& table);
    void CheckMayWiden(const Table& table, const ColumnSpec& column);
    [[nodiscard]] std::string RelationName(const LogicalIndex& side);
    void StoreRequired(std::int32_t id, std::span<const ColumnSpec> columns);

    Pager* pager_;
    RowHook* hook_ = nullptr;
    ObjectList objects_;
    RelationshipList relationships_;
    std::unordered_map<PageNumber, std::shared_ptr<Table>> tables_; ///< those opened so far
    std::optional<IndexNames> indexNames_;                          ///< once asked for
    std::uint64_t structureVersion_ = 0;
};

/// Makes the file that `pager` has just created into an empty database: the four system tables, the containers and
/// their permissions, page for page as the engine of Access lays them out. `created` is the date that every object
/// carries.
void BuildEmptyDatabase(Pager& pager, DateTime created);

/// Answers a question about the catalog, from memory and definitions. One that is restricted to a table or to a name
/// takes a time that does not depend on the number of tables.
[[nodiscard]] Rowset QuerySchema(Catalog& catalog, SchemaKind kind, const Restrictions& restrictions);

/// Around one statement, or one change of a record: unless Release() is called, its end takes everything back that was
/// changed since its beginning, pages and what is known of them. There is one at a time.
class Savepoint {
public:
    /// Throws what the pager failed with.
    explicit Savepoint(Catalog& catalog) : catalog_(&catalog)
    {
        catalog.GetPager().ThrowIfFailed();
        catalog.FlushCounters(); // where all that a statement may change is looked for
        catalog.GetPager().SetSavepoint();
    }
    ~Savepoint()
    {
        if (catalog_ != nullptr)
            catalog_->RollBack();
    }
    Savepoint(const Savepoint&) = delete;
    Savepoint& operator=(const Savepoint&) = delete;

    void Release() noexcept
    {
        catalog_->GetPager().ReleaseSavepoint();
        catalog_ = nullptr;
    }

private:
    Catalog* catalog_;
};

/// The same around the insert of one record, set only when that asks for it.
class SavepointOnDemand final : public ChangeGuard {
public:
    explicit SavepointOnDemand(Catalog& catalog) : catalog_(catalog) {}
    ~SavepointOnDemand()
    {
        if (isSet_)
            catalog_.RollBack();
    }
    SavepointOnDemand(const SavepointOnDemand&) = delete;
    SavepointOnDemand& operator=(const SavepointOnDemand&) = delete;

    void Begin() override
    {
        catalog_.GetPager().SetSavepoint();
        isSet_ = true;
    }
    void Release() noexcept
    {
        if (isSet_)
            catalog_.GetPager().ReleaseSavepoint();
        isSet_ = false;
    }

private:
    Catalog& catalog_;
    bool isSet_ = false;
};

} // namespace jet
