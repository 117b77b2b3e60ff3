#include "jet/catalog/index_names.h"

#include "jet/catalog/name_key.h"

namespace jet {

void IndexNames::Note(const TableDef& def)
{
    const PageNumber table = def.pages.front();
    Forget(table);
    std::vector<std::string>& keys = keysOf_[table];
    for (const LogicalIndex& index : def.logicalIndexes) {
        keys.push_back(NameKey(*format_, index.name));
        tables_[keys.back()].insert(table);
    }
}

void IndexNames::Forget(PageNumber table)
{
    const auto known = keysOf_.find(table);
    if (known == keysOf_.end())
        return;
    for (const std::string& key : known->second) {
        const auto tables = tables_.find(key);
        tables->second.erase(table);
        if (tables->second.empty())
            tables_.erase(tables);
    }
    keysOf_.erase(known);
}

std::vector<PageNumber> IndexNames::TablesWith(std::string_view name) const
{
    const auto found = tables_.find(NameKey(*format_, name));
    return found == tables_.end() ? std::vector<PageNumber>() : std::vector(found->second.begin(), found->second.end());
}

} // namespace jet
