#include "dump.h"
#include "text_forms.h"

#include "jet/base/error.h"
#include "jet/base/value_text.h"
#include "jet/catalog/catalog.h"
#include "jet/catalog/system_table.h"
#include "jet/store/pager.h"
#include "jet/store/recovery.h"

#include <iostream>
#include <memory>

using namespace jet;

namespace {

void PrintColumn(const Column& column)
{
    std::cout << "  " << column.name << ' ' << TypeName(column.type);
    if (column.type == ColumnType::Text || column.type == ColumnType::Binary)
        std::cout << ' ' << column.size;
    std::cout << (column.IsAutonumber() ? " counter" : "") << (column.rules.required ? " required" : "") << " (number "
              << column.number << ")\n";
}

void PrintIndex(const TableDef& def, const LogicalIndex& index)
{
    const RealIndex& real = def.realIndexes[index.realIndex];
    std::cout << "  index " << index.name << " (";
    for (std::size_t i = 0; i < real.columns.size(); ++i) {
        const auto column = def.ColumnByNumber(real.columns[i].column);
        std::cout << (i ? ", " : "") << (column ? def.columns[*column].name : "?")
                  << (real.columns[i].order == SortOrder::Descending ? " desc" : "");
    }
    std::cout << ')' << (index.type == IndexType::Primary ? " primary" : "") << (real.IsUnique() ? " unique" : "");
    if (index.type == IndexType::Relation)
        std::cout << (index.side == RelationSide::Referenced ? " referenced by page " : " refers to page ")
                  << index.partnerTable;
    std::cout << '\n';
}

void PrintRows(const Table& table)
{
    Record record;
    for (auto row = table.NextRow(std::nullopt); row; row = table.NextRow(row)) {
        table.Read(*row, record);
        for (std::size_t i = 0; i < record.ColumnCount(); ++i)
            std::cout << (i ? "|" : "    ") << Escaped(ToText(table.Get(record, i)));
        std::cout << '\n';
    }
}

} // namespace

void DumpTables(const char* path, bool withRows, bool withSystemTables)
{
    const std::unique_ptr<Pager> pager =
        Pager::Open(AsCommitted(RealFileSystem(), path, OpenFile(path, OpenMode::ReadOnly)));
    Catalog catalog(*pager);
    for (const CatalogObject* object : catalog.Objects().ChildrenOf(kTablesContainer)) {
        if (object->type != ObjectType::Table || (object->flags & kSystemObjectFlag && !withSystemTables))
            continue;
        const std::shared_ptr<Table> table = catalog.OpenPage(static_cast<PageNumber>(object->id));
        const TableDef& def = table->Definition();
        std::cout << "table " << object->name << " (page " << object->id << ", " << def.rowCount << " rows)\n";
        for (const Column& column : def.columns)
            PrintColumn(column);
        for (const LogicalIndex& index : def.logicalIndexes)
            PrintIndex(def, index);
        if (withRows)
            PrintRows(*table);
    }
    for (const Relationship* relation : catalog.Relationships().All()) {
        std::cout << "relation " << relation->name << ": " << relation->table << " (";
        for (std::size_t i = 0; i < relation->columns.size(); ++i)
            std::cout << (i ? ", " : "") << relation->columns[i].first << " -> " << relation->columns[i].second;
        std::cout << ") to " << relation->referencedTable << ", flags " << relation->flags << '\n';
    }
}
