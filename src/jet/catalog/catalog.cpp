#include "jet/catalog/catalog.h"

#include "jet/base/error.h"
#include "jet/base/text_codec.h"
#include "jet/catalog/names.h"
#include "jet/catalog/property_blob.h"
#include "jet/catalog/system_table.h"

#include <algorithm>
#include <array>
#include <string>

/// Three things say of a table what it is: its definition page, its row in MSysObjects, and what is kept in memory of
/// both. What holds between two calls:
///
///   C1  A table's id in MSysObjects is the number of its definition's first page, so one leads to the other without a
///       search, and a table never moves.
///   C2  There is one Table object for a definition page, whoever asked for it: counters and trees kept in two places
///       would part. The lists own those of the system tables; tables_ owns the others, until they are dropped.
///   C3  A table that only tables_ holds is in nobody's use and may be dropped. Whoever works on one holds it.
///   C4  Every change of a definition raises structureVersion_: whoever keeps columns or links by position asks for it.
///   C5  Rules of columns (Required, default values) are no part of the definition; they stand in the properties, and
///       are put onto the columns anew whenever a definition was read or columns were made wider.
///
/// None of it is taken back by hand when a change fails midway: the savepoint does, and Reread() makes the memory
/// follow.
namespace jet {

namespace {

/// Tables, queries, relations and whatever else has a row in MSysObjects.
constexpr std::size_t kMaxObjects = 32'768;

/// The tables whose rows the lists hold; their objects belong to the lists.
constexpr PageNumber kListed[] = {kObjectsPage, kAcesPage, kRelationshipsPage};

/// "Long Time", "Medium Time", "Short Time".
constexpr std::string_view kTimeFormats = " Time";

bool IsListed(PageNumber definitionPage)
{
    return std::ranges::find(kListed, definitionPage) != std::end(kListed);
}

std::int32_t IdOf(const Table& table)
{
    return static_cast<std::int32_t>(table.Definition().pages.front());
}

/// In a damaged file another name may lead to one of the basic tables: without them nothing more could be done.
bool IsEnginesOwn(const CatalogObject& object)
{
    constexpr std::array kBasicTables = {kObjectsPage, kAcesPage, kQueriesPage, kRelationshipsPage};
    return object.flags & kSystemObjectFlag ||
           std::ranges::find(kBasicTables, static_cast<PageNumber>(object.id)) != kBasicTables.end();
}

} // namespace

Catalog::Catalog(Pager& pager) : pager_(&pager), objects_(pager), relationships_(pager)
{
    // Nobody may have two objects for one table.
    const auto borrow = [&](PageNumber page, SystemTable& table) {
        tables_.emplace(page, std::shared_ptr<Table>(std::shared_ptr<Table>(), &table.Rows()));
    };
    borrow(kObjectsPage, objects_.ObjectRows());
    borrow(kAcesPage, objects_.PermissionRows());
    borrow(kRelationshipsPage, relationships_.Rows());
}

// ---- Tables ---------------------------------------------------------------------------------------------------------

const CatalogObject* Catalog::FindTable(std::string_view name) const
{
    const CatalogObject* object = objects_.Find(kTablesContainer, name);
    return object && object->type == ObjectType::Table ? object : nullptr;
}

std::shared_ptr<Table> Catalog::Open(std::string_view name)
{
    const CatalogObject* object = FindTable(name);
    if (!object)
        throw Error(ErrorNumber::TableNotFound, {name});
    return OpenPage(static_cast<PageNumber>(object->id));
}

std::shared_ptr<Table> Catalog::OpenForChange(std::string_view name)
{
    if (const CatalogObject* object = FindTable(name); object && IsEnginesOwn(*object))
        throw Error(ErrorNumber::ReadOnly, {}, "(" + object->name + " is a table of the engine's own.)");
    return Open(name);
}

std::shared_ptr<Table> Catalog::OpenPage(PageNumber definitionPage)
{
    if (const auto open = tables_.find(definitionPage); open != tables_.end())
        return open->second;
    const CatalogObject* object = objects_.FindById(static_cast<std::int32_t>(definitionPage));
    if (!object || object->type != ObjectType::Table)
        throw Error(ErrorNumber::TableNotFound, {"page " + std::to_string(definitionPage)});
    auto table = std::make_shared<Table>(*pager_, definitionPage, object->name, objects_.ObjectRows().Rows().Group());
    table->SetHook(hook_);
    ApplyProperties(*table);
    tables_.emplace(definitionPage, table);
    return table;
}

void Catalog::ApplyProperties(Table& table)
{
    if (!objects_.FindById(IdOf(table))->hasProperties)
        return;
    const PropertyBlob properties = objects_.Properties(IdOf(table));
    std::vector<ColumnRules> all;
    for (const Column& column : table.Definition().columns) {
        ColumnRules& rules = all.emplace_back();
        rules.required = properties.FindBoolean(column.name, kRequiredProperty);
        // Only where the property exists and is false: a column made by a statement has none and takes empty texts.
        rules.refusesEmpty = properties.Find(column.name, kAllowZeroLengthProperty) &&
                             !properties.FindBoolean(column.name, kAllowZeroLengthProperty);
        if (const std::optional<ByteSpan> shown = properties.Find(column.name, kFormatProperty))
            rules.showsTimes = DecodeText(*shown, GetFormat()).ends_with(kTimeFormats);
        if (const std::optional<ByteSpan> expression = properties.Find(column.name, kDefaultValueProperty))
            rules.defaultValue =
                ParseDefaultValue(DecodeText(*expression, GetFormat()), GetFormat(), column.GetValueType());
    }
    table.SetRules(std::move(all));
}

/// The names are gathered at the first question: most connections never ask one, and it takes every definition.
std::vector<PageNumber> Catalog::TablesWithIndex(std::string_view name)
{
    if (!indexNames_) {
        IndexNames names(GetFormat());
        for (const CatalogObject* object : objects_.ChildrenOf(kTablesContainer))
            if (object->type == ObjectType::Table)
                names.Note(ReadTableDef(*pager_, static_cast<PageNumber>(object->id)));
        indexNames_ = std::move(names);
    }
    return indexNames_->TablesWith(name);
}

std::size_t Catalog::ObjectsLeft() const noexcept
{
    return objects_.Count() < kMaxObjects ? kMaxObjects - objects_.Count() : 0;
}

void Catalog::CheckRoomForObject() const
{
    if (ObjectsLeft() == 0)
        throw Error(ErrorNumber::DatabaseFull, {}, "A database holds at most 32768 objects.");
}

// ---- Changes of structure -------------------------------------------------------------------------------------------

/// Puts NOT NULL of the columns that ask for it into the table's properties.
void Catalog::StoreRequired(std::int32_t id, std::span<const ColumnSpec> columns)
{
    if (!std::ranges::any_of(columns, &ColumnSpec::required))
        return;
    PropertyBlob properties = objects_.Properties(id);
    for (const ColumnSpec& column : columns)
        if (column.required)
            properties.SetBoolean(column.name, kRequiredProperty, true);
    objects_.SetProperties(id, properties);
}

void Catalog::CreateTable(std::string_view name, const std::vector<ColumnSpec>& columns)
{
    CheckName(GetFormat(), name);
    for (const ColumnSpec& column : columns)
        CheckName(GetFormat(), column.name);
    if (const CatalogObject* taken = objects_.Find(kTablesContainer, name))
        throw Error(ErrorNumber::TableExists, {taken->name});
    CheckRoomForObject();

    // The definition first: its page's number is the id of the object.
    const PageNumber page = Table::Create(*pager_, columns);
    const auto id = static_cast<std::int32_t>(page);
    objects_.Add(id, kTablesContainer, name, ObjectType::Table);
    StoreRequired(id, columns);
    ++structureVersion_;
}

void Catalog::CheckNotInUse(std::string_view name) const
{
    const CatalogObject* object = FindTable(name);
    const auto open = object ? tables_.find(static_cast<PageNumber>(object->id)) : tables_.end();
    // The one that stands in the list is nobody's use.
    if (open != tables_.end() && open->second.use_count() > 1)
        throw Error(ErrorNumber::TableLocked, {object->name});
}

void Catalog::CheckCanDrop(std::string_view name)
{
    if (!FindTable(name))
        throw Error(ErrorNumber::NoSuchTable, {name});
    static_cast<void>(OpenForChange(name));
    CheckNotInUse(name);
}

void Catalog::DropTable(std::string_view name)
{
    CheckCanDrop(name);
    const std::shared_ptr<Table> table = Open(name);
    const PageNumber page = table->Definition().pages.front();
    if (indexNames_)
        indexNames_->Forget(page);
    objects_.Remove(static_cast<std::int32_t>(page));
    // Out of the list before its pages go, so that nobody can be given it any more; `table` keeps it until it is done.
    tables_.erase(page);
    table->Destroy();
    ++structureVersion_;
}

void Catalog::AddColumn(Table& table, const ColumnSpec& column)
{
    CheckName(GetFormat(), column.name);
    table.AddColumn(column);
    StoreRequired(IdOf(table), {&column, 1});
    NoteChange(table);
}

void Catalog::DropColumn(Table& table, std::string_view column)
{
    const std::optional<std::size_t> position = table.Definition().ColumnIndex(column);
    if (!position)
        throw Error(ErrorNumber::NoSuchField, {column, table.Name()});
    // As the table has it: properties are filed under it, whatever letter case the statement has.
    const std::string name = table.Definition().columns[*position].name;
    table.DropColumn(name);
    if (objects_.FindById(IdOf(table))->hasProperties) {
        PropertyBlob properties = objects_.Properties(IdOf(table));
        if (properties.RemoveColumn(name))
            objects_.SetProperties(IdOf(table), properties);
    }
    NoteChange(table);
}

/// The name of the relation that `side` belongs to: that of its entry in the referencing table.
std::string Catalog::RelationName(const LogicalIndex& side)
{
    if (side.side == RelationSide::Referenced) {
        const std::shared_ptr<Table> partner = OpenPage(side.partnerTable);
        if (const LogicalIndex* const other = partner->Definition().IndexByNumber(side.partnerIndex))
            return other->name;
    }
    return side.name;
}

/// The columns of a relation are alike on both sides, and no index stands on a memo.
void Catalog::CheckMayWiden(const Table& table, const ColumnSpec& spec)
{
    const TableDef& def = table.Definition();
    const std::optional<std::size_t> position = def.ColumnIndex(spec.name);
    if (!position)
        throw Error(ErrorNumber::NoSuchField, {spec.name, table.Name()});
    const Column& column = def.columns[*position];
    if (const LogicalIndex* const side = def.RelationOn(column.number)) {
        const std::string relation = RelationName(*side);
        throw Error(ErrorNumber::FieldInRelation, {},
                    "(Field '" + column.name + "' belongs to relation '" + relation + "'.)")
            .About({.table = table.Name(), .relation = relation, .columns = {column.name}});
    }
    if (spec.type != ColumnType::Memo || !def.IsInIndex(column.number))
        return;
    const LogicalIndex* const index = def.IndexOn(column.number);
    const std::string which = index == nullptr ? "An index without a name" : "Index '" + index->name + "'";
    throw Error(ErrorNumber::FieldInIndex, {}, "(" + which + " stands on field '" + column.name + "'.)")
        .About({.table = table.Name(), .index = index == nullptr ? "" : index->name, .columns = {column.name}});
}

void Catalog::WidenColumns(Table& table, const std::vector<ColumnSpec>& columns)
{
    for (const ColumnSpec& column : columns)
        CheckMayWiden(table, column);
    table.WidenColumns(columns);
    ApplyProperties(table);
    NoteChange(table);
}

void Catalog::CreateIndex(Table& table, const IndexSpec& index)
{
    CheckName(GetFormat(), index.name);
    table.CreateIndex(index);
    NoteChange(table);
}

void Catalog::DropIndex(Table& table, std::string_view name)
{
    const TableDef& def = table.Definition();
    const LogicalIndex* index = def.IndexByName(name);
    if (!index)
        throw Error(ErrorNumber::NoSuchIndex, {name, table.Name()});
    // What a relation refers to must stay; on its referencing side the relation keeps the tree for itself.
    const auto needs = [&](const LogicalIndex& other) {
        return other.type == IndexType::Relation && other.side == RelationSide::Referenced &&
               other.realIndex == index->realIndex;
    };
    if (index->type == IndexType::Relation || std::ranges::any_of(def.logicalIndexes, needs))
        throw Error(ErrorNumber::TableInRelation, {}, "(" + std::string(name) + ")");
    table.DropIndex(name);
    NoteChange(table);
}

std::vector<Property> Catalog::Properties(std::string_view table)
{
    const CatalogObject* object = FindTable(table);
    if (!object)
        throw Error(ErrorNumber::TableNotFound, {table});
    return objects_.Properties(object->id).Texts();
}

void Catalog::SetProperties(std::string_view name, std::span<const Property> properties)
{
    if (!FindTable(name))
        throw Error(ErrorNumber::NoSuchTable, {name});
    const std::shared_ptr<Table> table = OpenForChange(name);
    const TableDef& def = table->Definition();
    PropertyBlob blob = objects_.Properties(IdOf(*table));
    for (Property property : properties) {
        if (!property.column.empty()) {
            const std::optional<std::size_t> position = def.ColumnIndex(property.column);
            if (!position)
                throw Error(ErrorNumber::NoSuchField, {property.column, table->Name()});
            property.column = def.columns[*position].name;
        }
        blob.SetText(property);
    }
    objects_.SetProperties(IdOf(*table), blob);
    objects_.Touch(IdOf(*table));
    ApplyProperties(*table);
}

void Catalog::NoteChange(Table& table)
{
    objects_.Touch(IdOf(table));
    if (indexNames_)
        indexNames_->Note(table.Definition());
    ++structureVersion_;
}

/// Those of the engine's own tables, which nobody else adds rows to, are on their pages already.
void Catalog::FlushCounters()
{
    objects_.ObjectRows().Rows().FlushCounters();
}

void Catalog::ForgetMoves() noexcept
{
    for (const auto& [page, table] : tables_)
        if (table.use_count() <= 1) // ours; the engine's own tables have no owner at all
            table->ForgetMoves();
}

void Catalog::RollBack() noexcept
{
    // Most statements that fail have changed nothing yet, and then all that is known is still true.
    if (!pager_->RollBack())
        return;
    try {
        Reread();
    } catch (...) {
        pager_->Fail(std::current_exception());
    }
}

/// Tables that the statement had made are gone with their rows; those that it had dropped are opened again when asked
/// for. The others keep their objects, as recordsets hold them, and read their definitions anew.
void Catalog::Reread()
{
    objects_.Reread();
    relationships_.Reread();
    indexNames_.reset();
    ++structureVersion_;
    std::erase_if(tables_, [&](const auto& open) { return !objects_.FindById(static_cast<std::int32_t>(open.first)); });
    for (const auto& [page, table] : tables_) {
        if (IsListed(page))
            continue;
        table->Reread();
        ApplyProperties(*table);
    }
}

} // namespace jet
