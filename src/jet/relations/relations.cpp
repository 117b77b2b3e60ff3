#include "jet/relations/relations.h"

#include "jet/base/error.h"
#include "jet/catalog/names.h"
#include "jet/catalog/system_table.h"
#include "jet/relations/link.h"

#include <algorithm>
#include <optional>
#include <string>

namespace jet {

namespace {

/// The two sides of a relation to be, with everything that was looked up for it.
struct Sides {
    std::shared_ptr<Table> child;                           ///< the referencing table
    std::shared_ptr<Table> parent;                          ///< the referenced one
    std::vector<std::uint16_t> childColumns, parentColumns; ///< permanent numbers
    std::size_t parentIndex = 0;                            ///< real index
};

std::shared_ptr<Table> OpenSide(Catalog& catalog, std::string_view name)
{
    if (!catalog.FindTable(name))
        throw Error(ErrorNumber::NoSuchTableOrConstraint, {}, "(" + std::string(name) + ")");
    return catalog.OpenForChange(name);
}

const Column& FindColumn(const Table& table, std::string_view name)
{
    const std::optional<std::size_t> position = table.Definition().ColumnIndex(name);
    if (!position)
        throw Error(ErrorNumber::NoSuchField, {name, table.Name()});
    return table.Definition().columns[*position];
}

void FindColumns(Sides& sides, const RelationSpec& spec)
{
    if (spec.columns.size() != spec.referencedColumns.size())
        throw Error(ErrorNumber::RelationTypesDiffer);
    if (spec.columns.size() > kMaxIndexColumns)
        throw Error(ErrorNumber::TooManyIndexFields);
    for (std::size_t i = 0; i < spec.columns.size(); ++i) {
        const Column& child = FindColumn(*sides.child, spec.columns[i]);
        const Column& parent = FindColumn(*sides.parent, spec.referencedColumns[i]);
        if (child.type != parent.type || IsLongValue(child.type))
            throw Error(ErrorNumber::RelationTypesDiffer, {}, "(" + child.name + ", " + parent.name + ")");
        sides.childColumns.push_back(child.number);
        sides.parentColumns.push_back(parent.number);
    }
}

/// A key that is looked up with every row of the child needs an index, and a reference has to mean one row: so the
/// index is unique. Its columns come in the order of the relation's, as keys are compared as bytes.
std::size_t FindReferencedIndex(const Table& parent, const std::vector<std::uint16_t>& columns)
{
    const TableDef& def = parent.Definition();
    const auto same = [](const IndexColumn& part, std::uint16_t number) {
        return part.column == number && part.order == SortOrder::Ascending;
    };
    for (std::size_t i = 0; i < def.realIndexes.size(); ++i)
        if (def.realIndexes[i].IsUnique() && std::ranges::equal(def.realIndexes[i].columns, columns, same))
            return i;
    throw Error(def.PrimaryKey() ? ErrorNumber::NotUniquelyIndexed : ErrorNumber::NoPrimaryKey, {parent.Name()});
}

void CheckNameAndLimits(Catalog& catalog, const Sides& sides, const RelationSpec& spec)
{
    CheckName(catalog.GetFormat(), spec.name);
    if (catalog.Relationships().Find(spec.name) || catalog.Objects().Find(kRelationshipsContainer, spec.name))
        throw Error(ErrorNumber::RelationExists, {spec.name});
    if (sides.child->Definition().IndexByName(spec.name))
        throw Error(ErrorNumber::IndexNameTaken, {sides.child->Name(), spec.name});
    // A table that refers to itself gets both entries.
    const std::size_t inChild = sides.child == sides.parent ? 2 : 1;
    for (const auto& [table, entries] : {std::pair{sides.child, inChild}, std::pair{sides.parent, std::size_t{1}}})
        if (table->Definition().logicalIndexes.size() + entries > kMaxIndexes)
            throw Error(ErrorNumber::TooManyIndexes, {}, "(" + table->Name() + ")");
    catalog.CheckRoomForObject();
}

/// Every row of the child needs a row of the parent, unless a key column is Null.
void CheckRows(const Sides& sides)
{
    const RealIndex& parentIndex = sides.parent->Definition().realIndexes[sides.parentIndex];
    KeyMaker parentKeys(sides.parent->Definition(), parentIndex.columns);
    parentKeys.ReadFrom(sides.child->Definition(), sides.childColumns);
    Record record;
    Bytes key, lastFound;
    for (auto row = sides.child->NextRow(std::nullopt); row; row = sides.child->NextRow(row)) {
        sides.child->Read(*row, record);
        if (parentKeys.Make(key, record).anyNull || key == lastFound)
            continue;
        if (!sides.parent->Tree(sides.parentIndex).Contains(key))
            throw Error(ErrorNumber::DataViolatesRelation, {sides.child->Name(), sides.parent->Name()});
        // Rows of one parent often come one after another.
        lastFound = key;
    }
}

/// What Access calls the hidden entry on the referenced side: ".rA" for index number 0, and so on through capitals and
/// small letters; two letters behind those.
std::string HiddenName(std::uint32_t number)
{
    constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    const std::size_t count = kLetters.size();
    std::string name = ".r";
    if (number >= count)
        name += kLetters[(number / count - 1) % count];
    return name + kLetters[number % count];
}

/// Names do not differ by letter case, so ".rd" of number 29 meets ".rD" of number 3: then two letters are taken.
std::string FreeHiddenName(const TableDef& def)
{
    std::uint32_t number = def.NextIndexNumber();
    while (def.IndexByName(HiddenName(number)))
        number += 52;
    return HiddenName(number);
}

void AddIndexEntries(const Sides& sides, const RelationSpec& spec)
{
    LogicalIndex entry;
    entry.type = IndexType::Relation;
    entry.cascadeUpdates = spec.cascadeUpdates;
    entry.onDelete = spec.onDelete;

    // Each entry names the number of the other, so that no definition need be written twice.
    const std::uint32_t childNumber = sides.child->Definition().NextIndexNumber();
    const std::uint32_t parentNumber =
        sides.child == sides.parent ? childNumber + 1 : sides.parent->Definition().NextIndexNumber();

    LogicalIndex childEntry = entry;
    childEntry.name = spec.name;
    childEntry.side = RelationSide::Referencing;
    childEntry.partnerTable = sides.parent->Definition().pages.front();
    childEntry.partnerIndex = parentNumber;
    sides.child->AddRelationIndex(std::move(childEntry), sides.childColumns);

    LogicalIndex parentEntry = entry;
    parentEntry.name = FreeHiddenName(sides.parent->Definition());
    parentEntry.side = RelationSide::Referenced;
    parentEntry.partnerTable = sides.child->Definition().pages.front();
    parentEntry.partnerIndex = childNumber;
    sides.parent->AddRelationIndex(std::move(parentEntry), sides.parentColumns);
}

/// Can each value of these columns stand in one row only?
bool IsUnique(const Table& table, const std::vector<std::uint16_t>& columns)
{
    const auto same = [](const IndexColumn& part, std::uint16_t number) { return part.column == number; };
    return std::ranges::any_of(table.Definition().realIndexes, [&](const RealIndex& index) {
        return index.IsUnique() && std::ranges::equal(index.columns, columns, same);
    });
}

Relationship RowsOf(const Sides& sides, const RelationSpec& spec)
{
    Relationship relationship;
    relationship.name = spec.name;
    relationship.table = sides.child->Name();
    relationship.referencedTable = sides.parent->Name();
    if (IsUnique(*sides.child, sides.childColumns))
        relationship.flags |= relationship_flags::kOneToOne;
    if (spec.cascadeUpdates)
        relationship.flags |= relationship_flags::kCascadeUpdates;
    if (spec.onDelete == DeleteRule::Cascade)
        relationship.flags |= relationship_flags::kCascadeDeletes;
    if (spec.onDelete == DeleteRule::SetNull)
        relationship.flags |= relationship_flags::kSetNullOnDelete;
    // The names are those of the columns, whatever the letter case of the statement.
    const auto nameOf = [](const Table& table, std::uint16_t number) {
        return table.Definition().columns[table.Definition().ColumnByNumber(number).value()].name;
    };
    for (std::size_t i = 0; i < sides.childColumns.size(); ++i)
        relationship.columns.emplace_back(nameOf(*sides.child, sides.childColumns[i]),
                                          nameOf(*sides.parent, sides.parentColumns[i]));
    return relationship;
}

void NoteBoth(Catalog& catalog, Table& child, Table& parent)
{
    catalog.NoteChange(child);
    if (&child != &parent)
        catalog.NoteChange(parent);
}

void RemoveRelation(Catalog& catalog, const Relationship& relationship)
{
    // A copy: the list forgets its own.
    const std::string name = relationship.name;
    const std::shared_ptr<Table> child = OpenSide(catalog, relationship.table);
    const LogicalIndex* entry = child->Definition().IndexByName(name);
    if (entry && entry->side == RelationSide::Referencing) {
        const std::uint32_t partnerNumber = entry->partnerIndex;
        const std::shared_ptr<Table> parent = catalog.OpenPage(entry->partnerTable);
        child->DropIndex(name);
        if (const LogicalIndex* partner = parent->Definition().IndexByNumber(partnerNumber))
            parent->DropIndex(std::string(partner->name));
        NoteBoth(catalog, *child, *parent);
    }
    catalog.Relationships().Remove(name);
    if (const CatalogObject* object = catalog.Objects().Find(kRelationshipsContainer, name))
        catalog.Objects().Remove(object->id);
}

} // namespace

void CreateRelation(Catalog& catalog, const RelationSpec& spec)
{
    Sides sides;
    sides.child = OpenSide(catalog, spec.table);
    sides.parent = OpenSide(catalog, spec.referencedTable);
    FindColumns(sides, spec);
    sides.parentIndex = FindReferencedIndex(*sides.parent, sides.parentColumns);
    CheckNameAndLimits(catalog, sides, spec);
    CheckRows(sides);
    AddIndexEntries(sides, spec);
    catalog.Relationships().Add(RowsOf(sides, spec));
    ObjectList& objects = catalog.Objects();
    objects.Add(objects.NextSyntheticId(), kRelationshipsContainer, spec.name, ObjectType::Relation);
    NoteBoth(catalog, *sides.child, *sides.parent);
}

void DropConstraint(Catalog& catalog, std::string_view table, std::string_view name)
{
    catalog.CheckNotInUse(table);
    const std::shared_ptr<Table> child = OpenSide(catalog, table);
    const Relationship* relationship = catalog.Relationships().Find(name);
    if (relationship &&
        NameKey(catalog.GetFormat(), relationship->table) == NameKey(catalog.GetFormat(), child->Name())) {
        if (NameKey(catalog.GetFormat(), relationship->referencedTable) != NameKey(catalog.GetFormat(), table))
            catalog.CheckNotInUse(relationship->referencedTable);
        return RemoveRelation(catalog, *relationship);
    }
    const LogicalIndex* index = child->Definition().IndexByName(name);
    if (!index || !child->Definition().realIndexes[index->realIndex].IsUnique())
        throw Error(ErrorNumber::NoSuchRelation, {name, table});
    catalog.DropIndex(*child, name);
}

void DropTableAndRelations(Catalog& catalog, std::string_view name)
{
    catalog.CheckCanDrop(name);
    for (const Relationship* relationship : catalog.Relationships().ReferencedIn(name))
        if (NameKey(catalog.GetFormat(), relationship->table) != NameKey(catalog.GetFormat(), name))
            throw Error(ErrorNumber::TableInRelation, {},
                        "(" + relationship->table + " refers to " + std::string(name) + ".)");
    for (const Relationship* relationship : catalog.Relationships().Referencing(name))
        RemoveRelation(catalog, *relationship);
    catalog.DropTable(name);
}

} // namespace jet
