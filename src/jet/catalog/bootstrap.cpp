#include "jet/catalog/catalog.h"

#include "jet/catalog/owner_ids.h"
#include "jet/catalog/system_table.h"
#include "jet/store/data_page.h"
#include "jet/table/column_design.h"

#include <algorithm>
#include <cassert>
#include <span>
#include <string>
#include <vector>

namespace jet {

namespace {

constexpr Byte kSystemTableType = 0x53;

// ---- The system tables ----------------------------------------------------------------------------------------------

/// Text and binary columns have the greatest size that the format allows; the flags follow from the type.
struct SystemColumn {
    std::string_view name;
    ColumnType type;
    bool ownerId = false;
    bool jet4Only = false;
};

struct SystemIndex {
    std::string_view name;
    std::vector<std::uint16_t> columns;
    Byte flags;
    IndexType type;
};

struct SystemTableSpec {
    std::string_view name;
    PageNumber definitionPage;
    std::vector<SystemColumn> columns; ///< in the order of their numbers
    std::vector<SystemIndex> indexes;  ///< in the order of their numbers
};

std::vector<SystemTableSpec> SystemTables()
{
    using enum ColumnType;
    using namespace index_flags;
    return {
        {"MSysObjects",
         kObjectsPage,
         {{"Id", Long},
          {"ParentId", Long},
          {"Name", Text},
          {"Type", Integer},
          {"DateCreate", DateTime},
          {"DateUpdate", DateTime},
          {"Owner", Binary, true},
          {"Flags", Long},
          {"Database", Memo},
          {"Connect", Memo},
          {"ForeignName", Text},
          {"RmtInfoShort", Binary},
          {"RmtInfoLong", Ole},
          {"Lv", Ole},
          {"LvProp", Ole},
          {"LvModule", Ole},
          {"LvExtra", Ole}},
         {{"ParentIdName", {1, 2}, kUnique, IndexType::Plain}, {"Id", {0}, kUnique, IndexType::Primary}}},
        {"MSysACEs",
         kAcesPage,
         {{"ObjectId", Long}, {"SID", Binary, true}, {"ACM", Long}, {"FInheritable", Boolean}},
         {{"ObjectId", {0}, kRequired, IndexType::Plain}}},
        {"MSysQueries",
         kQueriesPage,
         {{"ObjectId", Long},
          {"Attribute", ColumnType::Byte},
          {"Order", Binary},
          {"Name1", Text},
          {"Name2", Text},
          {"Expression", Memo},
          {"Flag", Integer},
          {"LvExtra", Long, false, true}},
         {{"ObjectIdAttribute", {0, 1, 2}, kUnique, IndexType::Primary}}},
        {"MSysRelationships",
         kRelationshipsPage,
         {{"szRelationship", Text},
          {"grbit", Long},
          {"ccolumn", Long},
          {"icolumn", Long},
          {"szObject", Text},
          {"szColumn", Text},
          {"szReferencedObject", Text},
          {"szReferencedColumn", Text}},
         {{"szRelationship", {0}, kIgnoreNulls, IndexType::Plain},
          {"szObject", {4}, kIgnoreNulls, IndexType::Plain},
          {"szReferencedObject", {6}, kIgnoreNulls, IndexType::Plain}}},
    };
}

// ---- Where things stand ---------------------------------------------------------------------------------------------

struct MapPage {
    PageNumber page;
    std::size_t records;
};

/// Pages behind the definitions. Records of usage maps are given out table by table: owned pages, pages with room, the
/// same two for each long-value column, one for each index. Jet 3 begins a new page once the first one is full,
/// although what comes next would share it.
struct Placement {
    std::vector<MapPage> maps;
    std::vector<PageNumber> roots; ///< of the indexes, table by table
    PageNumber objectRows;
    PageNumber aceRows;
    PageNumber pageCount;
};

Placement PlacementOf(JetVersion version)
{
    if (version == JetVersion::Jet3)
        return {{{6, 15}, {7, 1}, {8, 1}, {10, 1}, {12, 13}}, {9, 11, 13, 14, 15, 16, 17}, 18, 19, 20};
    return {{{6, 31}}, {7, 8, 9, 10, 11, 12, 13}, 14, 15, 16};
}

/// Writes the records of usage maps one after another to the pages meant for them.
class MapWriter {
public:
    MapWriter(Pager& pager, std::vector<MapPage> pages) : pager_(&pager), pages_(std::move(pages))
    {
        for (const MapPage& map : pages_)
            DataPageEditor::MakeEmpty(pager_->Write(map.page), pager_->GetFormat(), kUsageMapOwner);
    }

    /// A map with one member, or none when `page` is 0. It begins at page 0, whatever its member.
    RowId Add(PageNumber page = 0)
    {
        while (pages_[current_].records == 0)
            ++current_;
        --pages_[current_].records;
        DataPageEditor editor(pager_->Write(pages_[current_].page), pager_->GetFormat());
        const auto [slot, record] = editor.Append(pager_->GetFormat().usageMap.recordSize);
        std::ranges::fill(record, jet::Byte{0});
        if (page != 0)
            record[kInlineMapBits + page / 8] = static_cast<jet::Byte>(1u << page % 8);
        return {pages_[current_].page, slot};
    }

private:
    Pager* pager_;
    std::vector<MapPage> pages_; ///< `records`: still to come
    std::size_t current_ = 0;
};

// ---- Definitions ----------------------------------------------------------------------------------------------------

/// Columns as any statement would make them, but for the marks of the engine's own.
void AddColumns(const Pager& pager, const SystemTableSpec& spec, TableDef& def)
{
    const Format& format = pager.GetFormat();
    for (const SystemColumn& wanted : spec.columns) {
        if (wanted.jet4Only && format.version == JetVersion::Jet3)
            continue;
        const bool isText = wanted.type == ColumnType::Text;
        Column& column = DesignColumn(def,
                                      {.name = std::string(wanted.name),
                                       .type = wanted.type,
                                       .characters = kMaxTextUnits * (isText ? 1 : format.textUnitSize)},
                                      pager.Header());
        column.flags |= column_flags::kSystem;
        if (wanted.ownerId)
            column.flags |= column_flags::kOwnerId;
        // None of the engine's own columns has a position, and none asks for compressed text.
        column.position = 0;
        column.moreFlags = 0;
    }
}

/// Makes the definition and empty indexes of one table; `roots` are used up from the front.
void MakeTable(Pager& pager, const SystemTableSpec& spec, PageNumber rowsPage, std::span<const PageNumber>& roots,
               MapWriter& maps)
{
    const Format& format = pager.GetFormat();
    TableDef def;
    def.format = &format;
    def.pages = {spec.definitionPage};
    def.tableType = kSystemTableType;
    if (format.definition.autonumberStep != Format::kAbsent)
        StoreU32(def.rawHeader, format.definition.autonumberStep, 1);
    AddColumns(pager, spec, def);

    def.ownedPages = maps.Add(rowsPage);
    def.freeSpacePages = maps.Add(rowsPage);
    for (Column& column : def.columns) {
        if (!IsLongValue(column.type))
            continue;
        column.longValueOwned = maps.Add();
        column.longValueFree = maps.Add();
    }
    for (const SystemIndex& wanted : spec.indexes) {
        RealIndex index;
        for (const std::uint16_t column : wanted.columns)
            index.columns.push_back({column, SortOrder::Ascending});
        index.root = roots.front();
        roots = roots.subspan(1);
        index.usageMap = maps.Add(index.root);
        index.flags = static_cast<jet::Byte>(wanted.flags | format.realIndex.alwaysSet);
        IndexTree::MakeEmpty(pager.Write(index.root), format, spec.definitionPage);

        LogicalIndex entry;
        entry.name = wanted.name;
        entry.number = entry.realIndex = static_cast<std::uint32_t>(def.realIndexes.size());
        entry.type = wanted.type;
        def.logicalIndexes.push_back(std::move(entry));
        def.realIndexes.push_back(std::move(index));
    }
    SortIndexesByName(def);

    // Jet 4 keeps the descriptors of its own tables by name, Jet 3 by number; the list of long values is by name in
    // both.
    def.longValueOrder.clear();
    std::vector<Column> byName = def.columns;
    std::ranges::sort(byName, {}, [&](const Column& c) { return TextKey(format, c.name); });
    for (const Column& column : byName)
        if (IsLongValue(column.type))
            def.longValueOrder.push_back(column.number);
    if (format.version == JetVersion::Jet4)
        def.columns = std::move(byName);
    WriteTableDef(pager, def);
}

// ---- Rows -----------------------------------------------------------------------------------------------------------

void AddObjects(Pager& pager, const OwnerIds& owners, DateTime created)
{
    struct Object {
        std::int32_t id, parent;
        std::string_view name;
        std::int32_t type;
    };
    constexpr std::int32_t kTable = 1, kDatabase = 2, kContainer = 3;
    const Object objects[] = {
        {kTablesContainer, kRootContainer, "Tables", kContainer},
        {kDatabasesContainer, kRootContainer, "Databases", kContainer},
        {kRelationshipsContainer, kRootContainer, "Relationships", kContainer},
        {kDatabaseObject, kDatabasesContainer, "MSysDb", kDatabase},
        {kObjectsPage, kTablesContainer, "MSysObjects", kTable},
        {kAcesPage, kTablesContainer, "MSysACEs", kTable},
        {kQueriesPage, kTablesContainer, "MSysQueries", kTable},
        {kRelationshipsPage, kTablesContainer, "MSysRelationships", kTable},
    };
    SystemTable table(pager, kObjectsPage, "MSysObjects", objects_column::kLvProp + 1);
    for (const Object& object : objects) {
        Record record = table.Blank();
        table.Set(record, objects_column::kId, object.id);
        table.Set(record, objects_column::kParentId, object.parent);
        table.Set(record, objects_column::kName, std::string(object.name));
        table.Set(record, objects_column::kType, object.type);
        table.Set(record, objects_column::kDateCreate, created);
        table.Set(record, objects_column::kDateUpdate, created);
        table.Set(record, objects_column::kOwner, object.type == kDatabase ? owners.admin : owners.engine);
        table.Set(record, objects_column::kFlags, static_cast<std::int32_t>(kSystemObjectFlag));
        table.Rows().Insert(record);
    }
    table.Rows().FlushCounters();
}

void AddPermissions(Pager& pager, const OwnerIds& owners)
{
    // Rights as bits: below 0x10000 those of using the object (in a container, of making one there; reading, inserting,
    // replacing and deleting data), above those of deleting it and of its rights and owner. The rows stand in the
    // order in which new files have them.
    struct Ace {
        std::int32_t object;
        const Bytes& id;
        std::int32_t rights;
        bool inheritable = false;
    };
    const Ace aces[] = {
        {kObjectsPage, owners.admin, 0x60000},
        {kAcesPage, owners.admin, 0x60000},
        {kQueriesPage, owners.admin, 0x60000},
        {kRelationshipsPage, owners.admin, 0xE0000},
        {kTablesContainer, owners.creator, 0xF00FE, true},
        {kTablesContainer, owners.admin, 0x60001},
        {kRelationshipsContainer, owners.creator, 0xF00FE, true},
        {kRelationshipsContainer, owners.admin, 0x60001},
        {kDatabasesContainer, owners.admin, 0x60000},
        {kDatabaseObject, owners.admin, 0x6000E},
        {kDatabaseObject, owners.users, 0x0000E},
        {kQueriesPage, owners.users, 0x00014},
        {kRelationshipsPage, owners.users, 0x00014},
        {kObjectsPage, owners.users, 0x00014},
        {kTablesContainer, owners.users, 0xFFEFF, true},
        {kRelationshipsContainer, owners.users, 0xFFFFF, true},
    };
    SystemTable table(pager, kAcesPage, "MSysACEs", aces_column::kInheritable + 1);
    for (const Ace& ace : aces) {
        Record record = table.Blank();
        table.Set(record, aces_column::kObjectId, ace.object);
        table.Set(record, aces_column::kSid, ace.id);
        table.Set(record, aces_column::kAcm, ace.rights);
        table.Set(record, aces_column::kInheritable, ace.inheritable);
        table.Rows().Insert(record);
    }
    table.Rows().FlushCounters();
}

} // namespace

void BuildEmptyDatabase(Pager& pager, DateTime created)
{
    const Format& format = pager.GetFormat();
    const Placement placement = PlacementOf(format.version);
    for (PageNumber page = kObjectsPage; page < placement.pageCount; ++page) {
        // The pages of a new file are known beforehand; asking for them in turn keeps the map of free pages true.
        [[maybe_unused]] const PageNumber given = pager.Allocate().Number();
        assert(given == page);
    }
    DataPageEditor::MakeEmpty(pager.Write(placement.objectRows), format, kObjectsPage);
    DataPageEditor::MakeEmpty(pager.Write(placement.aceRows), format, kAcesPage);

    MapWriter maps(pager, placement.maps);
    std::span<const PageNumber> roots = placement.roots;
    for (const SystemTableSpec& spec : SystemTables()) {
        const PageNumber rows = spec.definitionPage == kObjectsPage ? placement.objectRows
                                : spec.definitionPage == kAcesPage  ? placement.aceRows
                                                                    : 0;
        MakeTable(pager, spec, rows, roots, maps);
    }
    // From here on the tables can be written like any others, indexes and all.
    const OwnerIds owners(pager);
    AddObjects(pager, owners, created);
    AddPermissions(pager, owners);
}

} // namespace jet
