#include "page_dump.h"
#include "text_forms.h"

using namespace jet;

void PageDump::ShowColumn(const Column& column)
{
    Line("column " + column.name + ": " + TypeName(column.type) + ", " + std::to_string(column.size) +
         " bytes, number " + std::to_string(column.number) +
         (column.IsFixed() ? ", fixed at " + std::to_string(column.fixedOffset)
                           : ", variable " + std::to_string(column.variableIndex)) +
         (column.IsAutonumber() ? ", counter" : ""));
    if (IsLongValue(column.type)) {
        ShowMapPointer("  pages", column.longValueOwned);
        ShowMapPointer("  pages with room", column.longValueFree);
    }
}

void PageDump::ShowMapPointer(const char* name, RowId record)
{
    if (record.IsNone())
        return Line(name + std::string(": no map"));
    const std::string start = name + std::string(", map at ") + Pointer(record) + ": ";
    try {
        Line(start + PageList(file_.Map(record).pages));
    } catch (const Error& error) {
        Wrong(start + error.what());
    }
}

/// The definition page that names this one as the next of its chain.
std::optional<PageNumber> PageDump::PageBeforeInChain() const
{
    for (PageNumber page = 0; page < file_.PageCount(); ++page) {
        const Bytes bytes = file_.Read(page);
        if (page != page_ && bytes[0] == static_cast<Byte>(PageType::Definition) &&
            LoadU32(bytes, kOwnerField) == page_)
            return page;
    }
    return std::nullopt;
}

void PageDump::ShowDefinitionPage()
{
    const PageNumber next = LoadU32(bytes_, kOwnerField);
    Line("table definition, " + (next == 0 ? "last page of its chain" : "goes on on page " + std::to_string(next)));
    const std::optional<PageNumber> before = PageBeforeInChain();
    if (before)
        Line("page " + std::to_string(*before) + " goes on here");
    TableDef def;
    try {
        def = file_.Definition(page_);
    } catch (const Error& error) {
        if (!before)
            Wrong(std::string("not the beginning of a definition: ") + error.what());
        return;
    }
    Line(std::to_string(def.rowCount) + " rows, last autonumber " + std::to_string(def.lastAutonumber) +
         ", columns ever " + std::to_string(def.columnsEver) + ", variable ones " +
         std::to_string(def.variableColumnsEver));
    ShowMapPointer("pages", def.ownedPages);
    ShowMapPointer("pages with room", def.freeSpacePages);
    for (const Column& column : def.columns)
        ShowColumn(column);
    for (std::size_t i = 0; i < def.realIndexes.size(); ++i) {
        const RealIndex& index = def.realIndexes[i];
        std::string columns;
        for (const IndexColumn& part : index.columns)
            columns += ' ' + def.columns[def.ColumnByNumber(part.column).value()].name +
                       (part.order == SortOrder::Descending ? " desc" : "");
        Line("tree " + std::to_string(i) + ", root on page " + std::to_string(index.root) + ":" + columns +
             (index.IsUnique() ? ", unique" : ""));
        ShowMapPointer("  pages", index.usageMap);
    }
    for (const LogicalIndex& index : def.logicalIndexes)
        Line("index " + index.name + ": number " + std::to_string(index.number) + ", tree " +
             std::to_string(index.realIndex) + (index.type == IndexType::Primary ? ", primary key" : "") +
             (index.type == IndexType::Relation
                  ? ", relation with the table on page " + std::to_string(index.partnerTable)
                  : ""));
}
