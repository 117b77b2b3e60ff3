#include "jet/catalog/relationship_list.h"

#include "jet/catalog/names.h"

namespace jet {

using namespace relationships_column;

RelationshipList::RelationshipList(Pager& pager)
    : format_(&pager.GetFormat()), table_(pager, kRelationshipsPage, "MSysRelationships", kReferencedColumn + 1)
{
    Load();
}

std::string RelationshipList::Key(std::string_view name) const
{
    return NameKey(*format_, name);
}

void RelationshipList::Reread()
{
    table_.Rows().Reread();
    byName_.clear();
    byTable_.clear();
    byReferencedTable_.clear();
    Load();
}

void RelationshipList::Load()
{
    Record record;
    Table& rows = table_.Rows();
    for (auto row = rows.NextRow(std::nullopt); row; row = rows.NextRow(row)) {
        rows.Read(*row, record);
        const std::string name = table_.Text(record, kName);
        // One that was met before gets one more pair.
        Relationship& relationship = byName_[Key(name)];
        if (relationship.columns.empty()) {
            relationship.name = name;
            relationship.flags = static_cast<std::uint32_t>(table_.Long(record, kFlags));
            relationship.table = table_.Text(record, kTable);
            relationship.referencedTable = table_.Text(record, kReferencedTable);
            Enter(relationship);
        }
        // The rows of one relation may stand in any order; no relation has more pairs than an index has columns.
        const auto pair = static_cast<std::uint32_t>(table_.Long(record, kPair));
        if (pair >= kMaxIndexColumns)
            continue;
        if (relationship.columns.size() <= pair)
            relationship.columns.resize(pair + 1);
        relationship.columns[pair] = {table_.Text(record, kColumn), table_.Text(record, kReferencedColumn)};
    }
}

const Relationship* RelationshipList::Find(std::string_view name) const
{
    const auto found = byName_.find(Key(name));
    return found == byName_.end() ? nullptr : &found->second;
}

void RelationshipList::Enter(const Relationship& relationship)
{
    byTable_.emplace(Key(relationship.table), Key(relationship.name));
    byReferencedTable_.emplace(Key(relationship.referencedTable), Key(relationship.name));
}

/// Both lists are ordered by table and then by name, so what belongs to one table stands together; an empty name sorts
/// before all of them.
std::vector<const Relationship*> RelationshipList::Of(const TableAndName& index, std::string_view table) const
{
    std::vector<const Relationship*> found;
    const std::string key = Key(table);
    for (auto at = index.lower_bound({key, {}}); at != index.end() && at->first == key; ++at)
        found.push_back(&byName_.at(at->second));
    return found;
}

std::vector<const Relationship*> RelationshipList::Referencing(std::string_view table) const
{
    return Of(byTable_, table);
}

std::vector<const Relationship*> RelationshipList::ReferencedIn(std::string_view table) const
{
    return Of(byReferencedTable_, table);
}

std::vector<const Relationship*> RelationshipList::All() const
{
    std::vector<const Relationship*> all;
    for (const auto& [key, relationship] : byName_)
        all.push_back(&relationship);
    return all;
}

Record RelationshipList::RowOf(const Relationship& relationship, std::size_t pair) const
{
    Record record = table_.Blank();
    table_.Set(record, kName, relationship.name);
    table_.Set(record, kFlags, static_cast<std::int32_t>(relationship.flags));
    table_.Set(record, kPairCount, static_cast<std::int32_t>(relationship.columns.size()));
    table_.Set(record, kPair, static_cast<std::int32_t>(pair));
    table_.Set(record, kTable, relationship.table);
    table_.Set(record, kColumn, relationship.columns[pair].first);
    table_.Set(record, kReferencedTable, relationship.referencedTable);
    table_.Set(record, kReferencedColumn, relationship.columns[pair].second);
    return record;
}

/// One row for each pair of columns; each of them repeats what is true of the whole relation.
void RelationshipList::Add(Relationship relationship)
{
    for (std::size_t pair = 0; pair < relationship.columns.size(); ++pair)
        table_.Rows().Insert(RowOf(relationship, pair));
    Enter(relationship);
    std::string key = Key(relationship.name);
    byName_.emplace(std::move(key), std::move(relationship));
}

void RelationshipList::Remove(std::string_view name)
{
    const auto found = byName_.find(Key(name));
    if (found == byName_.end())
        return;
    for (const RowId row : table_.RowsWith(kName, found->second.name))
        table_.Rows().Delete(row);
    byTable_.erase({Key(found->second.table), found->first});
    byReferencedTable_.erase({Key(found->second.referencedTable), found->first});
    byName_.erase(found);
}

} // namespace jet
