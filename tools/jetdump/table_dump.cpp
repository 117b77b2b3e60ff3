// Shows a database as the engine sees it: tables with columns, indexes and rows, then relations.

#include "jet/base/value_codec.h"
#include "jet/catalog/catalog.h"
#include "jet/catalog/system_columns.h"
#include "jet/error.h"
#include "jet/store/journal.h"
#include "jet/store/pager.h"

#include <exception>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace jet;

const char* TypeName(ColumnType type)
{
    switch (type) {
    case ColumnType::Boolean:
        return "boolean";
    case ColumnType::Byte:
        return "byte";
    case ColumnType::Integer:
        return "integer";
    case ColumnType::Long:
        return "long";
    case ColumnType::Currency:
        return "currency";
    case ColumnType::Single:
        return "single";
    case ColumnType::Double:
        return "double";
    case ColumnType::DateTime:
        return "datetime";
    case ColumnType::Binary:
    case ColumnType::FixedBinary:
        return "binary";
    case ColumnType::Text:
        return "text";
    case ColumnType::Ole:
        return "ole";
    case ColumnType::Memo:
        return "memo";
    case ColumnType::Guid:
        return "guid";
    case ColumnType::Numeric:
        return "numeric";
    }
    return "unknown";
}

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

/// One line of text: what would end it or the field is written as an escape.
std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char c : text) {
        if (c == '\n')
            escaped += "\\n";
        else if (c == '\r')
            escaped += "\\r";
        else if (c == '|' || c == '\\')
            (escaped += '\\') += c;
        else
            escaped += c;
    }
    return escaped;
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

void Dump(const char* path, bool withRows, bool withSystemTables)
{
    std::unique_ptr<File> file = OpenFile(path, OpenMode::ReadOnly);
    CheckAtRest(RealFileSystem(), path, *file);
    const std::unique_ptr<Pager> pager = Pager::Open(std::move(file));
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

} // namespace

int main(int argc, char** argv)
{
    bool withRows = true, withSystemTables = false;
    std::vector<const char*> files;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--schema")
            withRows = false;
        else if (argument == "--system")
            withSystemTables = true;
        else
            files.push_back(argv[i]);
    }
    if (files.size() != 1) {
        std::cerr << "usage: jetdump [--schema] [--system] FILE\n"
                     "  --schema  without the rows\n"
                     "  --system  the engine's own tables too\n";
        return 2;
    }
    try {
        Dump(files[0], withRows, withSystemTables);
    } catch (const std::exception& error) {
        std::cerr << "jetdump: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
