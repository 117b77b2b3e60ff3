#include "import/columns_beside.h"

#include <algorithm>

namespace velmora {

const std::string& ColumnsBeside::NameFor(const TableSink& sink, const std::string& column)
{
    const auto [name, isNew] = chosen_.try_emplace({sink.records->Source(), column});
    if (isNew)
        name->second = ChooseName(sink, column);
    return name->second;
}

std::string ColumnsBeside::ChooseName(const TableSink& sink, const std::string& column) const
{
    const auto columns = plan_.MadeColumns(*sink.plan);
    const auto planned = std::ranges::find(columns, column, &PlannedColumn::name);
    if (planned != columns.end() && !planned->overflow.empty())
        return planned->overflow;
    if (!plan_.importsEverything)
        return {};
    NameSet taken(names_);
    for (std::size_t field = 0; field < sink.records->FieldCount(); ++field)
        taken.Reserve(sink.records->FieldName(field));
    return taken.Take(column + "_text");
}

} // namespace velmora
