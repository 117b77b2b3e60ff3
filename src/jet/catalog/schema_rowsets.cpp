#include "jet/catalog/catalog.h"

#include "jet/base/error.h"
#include "jet/base/text_codec.h"
#include "jet/catalog/names.h"
#include "jet/catalog/system_table.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

/// The answers have fields of those that the provider of Access gives, by its names, as far as anybody asks for them.
/// Catalog and schema are Null, since Access has neither; a field that the format has no answer to is Null as well.
namespace jet {

namespace {

using Row = std::vector<Value>;

/// A restriction by its position; empty does not restrict.
std::string_view At(const Restrictions& restrictions, std::size_t position)
{
    return position < restrictions.size() ? std::string_view(restrictions[position]) : std::string_view();
}

/// A restriction compared as the sort order compares.
class Filter {
public:
    Filter(const Format& format, std::string_view wanted) : format_(&format)
    {
        if (!wanted.empty())
            key_ = NameKey(format, wanted);
    }

    [[nodiscard]] bool Admits(std::string_view name) const { return !key_ || NameKey(*format_, name) == *key_; }

private:
    const Format* format_;
    std::optional<std::string> key_;
};

/// What the OLE DB world calls the columns' types.
std::int32_t ProviderType(ColumnType type)
{
    switch (type) {
    case ColumnType::Boolean:
        return 11;
    case ColumnType::Byte:
        return 17;
    case ColumnType::Integer:
        return 2;
    case ColumnType::Long:
        return 3;
    case ColumnType::Currency:
        return 6;
    case ColumnType::Single:
        return 4;
    case ColumnType::Double:
        return 5;
    case ColumnType::DateTime:
        return 7;
    case ColumnType::Binary:
    case ColumnType::FixedBinary:
    case ColumnType::Ole:
        return 128;
    case ColumnType::Text:
    case ColumnType::Memo:
        return 130;
    case ColumnType::Guid:
        return 72;
    case ColumnType::Numeric:
        return 131;
    }
    return 0;
}

/// nullptr when the object is none that tables are listed with.
const char* TableType(const CatalogObject& object)
{
    if (object.parent != kTablesContainer)
        return nullptr;
    switch (object.type) {
    case ObjectType::Table:
        if (object.flags & kSystemObjectFlag)
            return "SYSTEM TABLE";
        // The provider of Access leaves them out of this answer.
        if (object.flags & kUnlistedObjectFlags)
            return nullptr;
        return object.flags & kAccessObjectFlags ? "ACCESS TABLE" : "TABLE";
    case ObjectType::OdbcLink:
        return "PASS-THROUGH";
    case ObjectType::Query:
        // The low byte is the kind of query; only one that selects can be looked at like a table.
        return object.flags & 0xFF ? nullptr : "VIEW";
    case ObjectType::Link:
        return "LINK";
    default:
        return nullptr;
    }
}

/// The object that a restriction on the table's name leaves, or all.
std::vector<const CatalogObject*> Candidates(Catalog& catalog, std::string_view table)
{
    if (table.empty())
        return catalog.Objects().ChildrenOf(kTablesContainer);
    const CatalogObject* object = catalog.Objects().Find(kTablesContainer, table);
    return object ? std::vector{object} : std::vector<const CatalogObject*>();
}

/// The local tables among them, system tables included, ordered by name.
std::vector<std::shared_ptr<Table>> CandidateTables(Catalog& catalog, std::string_view table)
{
    std::vector<std::pair<std::string, std::shared_ptr<Table>>> keyed;
    for (const CatalogObject* object : Candidates(catalog, table))
        if (object->type == ObjectType::Table)
            keyed.emplace_back(NameKey(catalog.GetFormat(), object->name),
                               catalog.OpenPage(static_cast<PageNumber>(object->id)));
    std::ranges::sort(keyed, {}, [](const auto& entry) { return entry.first; });
    std::vector<std::shared_ptr<Table>> tables;
    tables.reserve(keyed.size());
    for (auto& [key, open] : keyed)
        tables.push_back(std::move(open));
    return tables;
}

const char* UpdateRule(std::uint32_t flags)
{
    return flags & relationship_flags::kCascadeUpdates ? "CASCADE" : "NO ACTION";
}

const char* DeleteRuleName(std::uint32_t flags)
{
    if (flags & relationship_flags::kCascadeDeletes)
        return "CASCADE";
    return flags & relationship_flags::kSetNullOnDelete ? "SET NULL" : "NO ACTION";
}

/// The name of the unique index that a relation refers to: the one whose tree its entry on the referenced side shares.
/// Null for a relation that is not enforced.
Value ReferencedKeyName(Catalog& catalog, const Relationship& relationship)
{
    const CatalogObject* child = catalog.FindTable(relationship.table);
    const CatalogObject* parent = catalog.FindTable(relationship.referencedTable);
    if (!child || !parent)
        return Null();
    const LogicalIndex* entry =
        catalog.OpenPage(static_cast<PageNumber>(child->id))->Definition().IndexByName(relationship.name);
    if (!entry || entry->side != RelationSide::Referencing)
        return Null();
    const std::shared_ptr<Table> table = catalog.OpenPage(static_cast<PageNumber>(parent->id));
    const TableDef& def = table->Definition();
    const LogicalIndex* partner = def.IndexByNumber(entry->partnerIndex);
    if (!partner)
        return Null();
    for (const LogicalIndex& index : def.logicalIndexes)
        if (index.realIndex == partner->realIndex && index.type != IndexType::Relation)
            return index.name;
    return Null();
}

// ---- One function for each kind -------------------------------------------------------------------------------------

/// Ordered by type and then by name.
Rowset Tables(Catalog& catalog, const Restrictions& restrictions)
{
    const std::string_view wantedType = At(restrictions, 3);
    std::vector<std::pair<std::string, Row>> keyed;
    for (const CatalogObject* object : Candidates(catalog, At(restrictions, 2))) {
        const char* type = TableType(*object);
        if (!type || (!wantedType.empty() && wantedType != type))
            continue;
        Value description;
        if (object->hasProperties) {
            const PropertyBlob properties = catalog.Objects().Properties(object->id);
            if (const auto text = properties.Find({}, "Description"))
                description = DecodeText(*text, catalog.GetFormat());
        }
        keyed.emplace_back(type + NameKey(catalog.GetFormat(), object->name),
                           Row{Null(), Null(), object->name, std::string(type), Null(), std::move(description), Null(),
                               object->created, object->updated});
    }
    std::ranges::sort(keyed, {}, [](const auto& entry) { return entry.first; });
    std::vector<Row> rows;
    rows.reserve(keyed.size());
    for (auto& [key, row] : keyed)
        rows.push_back(std::move(row));
    return {{"TABLE_CATALOG", "TABLE_SCHEMA", "TABLE_NAME", "TABLE_TYPE", "TABLE_GUID", "DESCRIPTION", "TABLE_PROPID",
             "DATE_CREATED", "DATE_MODIFIED"},
            std::move(rows)};
}

Value CharacterLength(const Format& format, const Column& column)
{
    switch (column.type) {
    case ColumnType::Text:
        return static_cast<std::int32_t>(column.size / format.textUnitSize);
    case ColumnType::Binary:
    case ColumnType::FixedBinary:
        return std::int32_t{column.size};
    case ColumnType::Memo:
    case ColumnType::Ole:
        return std::int32_t{0}; // without a limit
    default:
        return Null();
    }
}

Rowset Columns(Catalog& catalog, const Restrictions& restrictions)
{
    const Filter columnFilter(catalog.GetFormat(), At(restrictions, 3));
    std::vector<Row> rows;
    for (const std::shared_ptr<Table>& table : CandidateTables(catalog, At(restrictions, 2))) {
        const TableDef& def = table->Definition();
        const PropertyBlob properties = catalog.Objects().Properties(static_cast<std::int32_t>(def.pages.front()));
        for (std::size_t i = 0; i < def.columns.size(); ++i) {
            const Column& column = def.columns[i];
            if (!columnFilter.Admits(column.name))
                continue;
            rows.push_back({Null(), Null(), table->Name(), column.name, static_cast<std::int32_t>(i + 1),
                            properties.Find(column.name, kDefaultValueProperty).has_value(), !column.rules.required,
                            ProviderType(column.type), CharacterLength(catalog.GetFormat(), column)});
        }
    }
    return {{"TABLE_CATALOG", "TABLE_SCHEMA", "TABLE_NAME", "COLUMN_NAME", "ORDINAL_POSITION", "COLUMN_HASDEFAULT",
             "IS_NULLABLE", "DATA_TYPE", "CHARACTER_MAXIMUM_LENGTH"},
            std::move(rows)};
}

/// How OLE DB says what an index does with Nulls.
std::int32_t NullsRule(const RealIndex& index)
{
    constexpr std::int32_t kAllow = 0, kDisallow = 1, kIgnore = 2;
    if (index.flags & index_flags::kRequired)
        return kDisallow;
    return index.flags & index_flags::kIgnoreNulls ? kIgnore : kAllow;
}

Rowset Indexes(Catalog& catalog, const Restrictions& restrictions)
{
    const std::string_view wantedIndex = At(restrictions, 2);
    const std::string_view wantedTable = At(restrictions, 4);
    const Filter indexFilter(catalog.GetFormat(), wantedIndex);
    std::vector<std::shared_ptr<Table>> tables;
    // A name alone: without this every definition of the database would be read for one question.
    if (wantedTable.empty() && !wantedIndex.empty()) {
        for (const PageNumber page : catalog.TablesWithIndex(wantedIndex))
            tables.push_back(catalog.OpenPage(page));
    } else {
        tables = CandidateTables(catalog, wantedTable);
    }

    std::vector<Row> rows;
    for (const std::shared_ptr<Table>& table : tables) {
        const TableDef& def = table->Definition();
        for (const LogicalIndex& index : def.logicalIndexes) {
            // The entry of a relation on its referenced side is hidden; its name is no name that anyone gave.
            if (index.side == RelationSide::Referenced || !indexFilter.Admits(index.name))
                continue;
            const RealIndex& real = def.realIndexes[index.realIndex];
            for (std::size_t i = 0; i < real.columns.size(); ++i) {
                const std::optional<std::size_t> column = def.ColumnByNumber(real.columns[i].column);
                rows.push_back({Null(), Null(), table->Name(), index.name, index.type == IndexType::Primary,
                                real.IsUnique(), NullsRule(real), static_cast<std::int32_t>(i + 1),
                                column ? Value(def.columns[*column].name) : Value(),
                                real.columns[i].order == SortOrder::Ascending ? std::int32_t{1} : std::int32_t{2},
                                static_cast<std::int32_t>(table->Tree(index.realIndex).DistinctKeys())});
            }
        }
    }
    return {{"TABLE_CATALOG", "TABLE_SCHEMA", "TABLE_NAME", "INDEX_NAME", "PRIMARY_KEY", "UNIQUE", "NULLS",
             "ORDINAL_POSITION", "COLUMN_NAME", "COLLATION", "CARDINALITY"},
            std::move(rows)};
}

Rowset TableConstraints(Catalog& catalog, const Restrictions& restrictions)
{
    const std::string_view wantedTable = At(restrictions, 5);
    const std::string_view wantedType = At(restrictions, 6);
    const Filter nameFilter(catalog.GetFormat(), At(restrictions, 2));
    std::vector<Row> rows;
    const auto add = [&](const std::string& name, const std::string& table, const char* type) {
        if ((wantedType.empty() || wantedType == type) && nameFilter.Admits(name))
            rows.push_back({Null(), Null(), name, Null(), Null(), table, std::string(type)});
    };

    for (const std::shared_ptr<Table>& table : CandidateTables(catalog, wantedTable)) {
        const TableDef& def = table->Definition();
        for (const LogicalIndex& index : def.logicalIndexes) {
            if (index.type == IndexType::Primary)
                add(index.name, table->Name(), "PRIMARY KEY");
            else if (index.type == IndexType::Plain && def.realIndexes[index.realIndex].IsUnique())
                add(index.name, table->Name(), "UNIQUE");
        }
    }
    for (const Relationship* relationship :
         wantedTable.empty() ? catalog.Relationships().All() : catalog.Relationships().Referencing(wantedTable))
        add(relationship->name, relationship->table, "FOREIGN KEY");
    return {{"CONSTRAINT_CATALOG", "CONSTRAINT_SCHEMA", "CONSTRAINT_NAME", "TABLE_CATALOG", "TABLE_SCHEMA",
             "TABLE_NAME", "CONSTRAINT_TYPE"},
            std::move(rows)};
}

Rowset ReferentialConstraints(Catalog& catalog, const Restrictions& restrictions)
{
    const std::string_view wanted = At(restrictions, 2);
    std::vector<const Relationship*> relationships;
    if (wanted.empty())
        relationships = catalog.Relationships().All();
    else if (const Relationship* found = catalog.Relationships().Find(wanted))
        relationships = {found};

    std::vector<Row> rows;
    rows.reserve(relationships.size());
    for (const Relationship* relationship : relationships)
        rows.push_back({Null(), Null(), relationship->name, Null(), Null(), ReferencedKeyName(catalog, *relationship),
                        Null(), std::string(UpdateRule(relationship->flags)),
                        std::string(DeleteRuleName(relationship->flags))});
    return {{"CONSTRAINT_CATALOG", "CONSTRAINT_SCHEMA", "CONSTRAINT_NAME", "UNIQUE_CONSTRAINT_CATALOG",
             "UNIQUE_CONSTRAINT_SCHEMA", "UNIQUE_CONSTRAINT_NAME", "MATCH_OPTION", "UPDATE_RULE", "DELETE_RULE"},
            std::move(rows)};
}

/// One row for each pair of columns, the pairs of a relation one behind the other.
Rowset ForeignKeys(Catalog& catalog, const Restrictions& restrictions)
{
    const std::string_view wantedChild = At(restrictions, 5);
    const Filter parentFilter(catalog.GetFormat(), At(restrictions, 2));
    std::vector<const Relationship*> relationships =
        wantedChild.empty() ? catalog.Relationships().All() : catalog.Relationships().Referencing(wantedChild);
    std::ranges::stable_sort(relationships, {},
                             [&](const Relationship* r) { return NameKey(catalog.GetFormat(), r->table); });

    std::vector<Row> rows;
    for (const Relationship* relationship : relationships) {
        if (!parentFilter.Admits(relationship->referencedTable))
            continue;
        const Value key = ReferencedKeyName(catalog, *relationship);
        for (std::size_t pair = 0; pair < relationship->columns.size(); ++pair)
            rows.push_back({relationship->referencedTable, relationship->columns[pair].second, relationship->table,
                            relationship->columns[pair].first, static_cast<std::int32_t>(pair + 1),
                            std::string(UpdateRule(relationship->flags)),
                            std::string(DeleteRuleName(relationship->flags)), key, relationship->name});
    }
    return {{"PK_TABLE_NAME", "PK_COLUMN_NAME", "FK_TABLE_NAME", "FK_COLUMN_NAME", "ORDINAL", "UPDATE_RULE",
             "DELETE_RULE", "PK_NAME", "FK_NAME"},
            std::move(rows)};
}

} // namespace

Rowset QuerySchema(Catalog& catalog, SchemaKind kind, const Restrictions& restrictions)
{
    switch (kind) {
    case SchemaKind::Columns:
        return Columns(catalog, restrictions);
    case SchemaKind::ReferentialConstraints:
        return ReferentialConstraints(catalog, restrictions);
    case SchemaKind::TableConstraints:
        return TableConstraints(catalog, restrictions);
    case SchemaKind::Indexes:
        return Indexes(catalog, restrictions);
    case SchemaKind::Tables:
        return Tables(catalog, restrictions);
    case SchemaKind::ForeignKeys:
        return ForeignKeys(catalog, restrictions);
    }
    throw Error(ErrorNumber::ItemNotFound);
}

} // namespace jet
