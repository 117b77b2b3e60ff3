#include "jet/relations/link.h"

#include "jet/base/error.h"

#include <algorithm>

namespace jet {

namespace {

std::vector<std::uint16_t> NumbersOf(const RealIndex& index)
{
    std::vector<std::uint16_t> numbers;
    for (const IndexColumn& column : index.columns)
        numbers.push_back(column.column);
    return numbers;
}

/// Can the values of one index be looked up in the other?
/// Keys of one type mean nothing in the index of another: the same number has other bytes as Long and as Integer.
bool SameTypes(const Table& table, const RealIndex& index, const Table& other, const RealIndex& otherIndex)
{
    const auto typeIn = [](const Table& owner) {
        return [&def = owner.Definition()](const IndexColumn& column) {
            return def.columns[def.ColumnByNumber(column.column).value()].type;
        };
    };
    return std::ranges::equal(index.columns, otherIndex.columns, {}, typeIn(table), typeIn(other));
}

KeyMaker Foreign(const Table& index, const RealIndex& real, const Table& values, const RealIndex& valuesIndex)
{
    KeyMaker maker(index.Definition(), real.columns);
    maker.ReadFrom(values.Definition(), NumbersOf(valuesIndex));
    return maker;
}

} // namespace

/// Both sides of a relation lead to the same link. What the definitions say of each other is checked here, once: from a
/// damaged file the two may not fit.
Link* LinkCache::LinkOf(Table& child, const LogicalIndex& entry)
{
    const PageNumber page = child.Definition().pages.front();
    std::unique_ptr<Link>& link = links_[{page, entry.number}];
    if (link)
        return link.get();
    Table& parent = *catalog_->OpenPage(entry.partnerTable);
    const LogicalIndex* partner = parent.Definition().IndexByNumber(entry.partnerIndex);
    const RealIndex& childIndex = child.Definition().realIndexes[entry.realIndex];
    if (!partner || partner->side != RelationSide::Referenced ||
        !SameTypes(child, childIndex, parent, parent.Definition().realIndexes[partner->realIndex]))
        throw CorruptPage(page, "the relation " + entry.name + " does not fit its other side in " + parent.Name());
    const RealIndex& parentIndex = parent.Definition().realIndexes[partner->realIndex];
    link.reset(new Link{.parent = &parent,
                        .parentIndex = partner->realIndex,
                        .lastFound = {},
                        .parentKeyOfChild = Foreign(parent, parentIndex, child, childIndex),
                        .parentKeyOfParent = KeyMaker(parent.Definition(), parentIndex.columns),
                        .child = &child,
                        .childIndex = entry.realIndex,
                        .childKeyOfChild = KeyMaker(child.Definition(), childIndex.columns),
                        .childKeyOfParent = Foreign(child, childIndex, parent, parentIndex),
                        .name = entry.name,
                        .cascadeUpdates = entry.cascadeUpdates,
                        .onDelete = entry.onDelete});
    return link.get();
}

/// Asked with every record, so it is kept; links hold positions of columns and numbers of indexes, and any change of
/// structure, of whatever table, may have moved them. Changes of structure are rare: all links are thrown away then.
const LinkCache::TableLinks& LinkCache::Of(Table& table)
{
    if (version_ != catalog_->StructureVersion()) {
        version_ = catalog_->StructureVersion();
        tables_.clear();
        links_.clear();
    }
    if (const auto known = tables_.find(&table); known != tables_.end())
        return known->second;

    TableLinks links;
    for (const LogicalIndex& entry : table.Definition().logicalIndexes) {
        if (entry.side == RelationSide::Referencing) {
            links.toParents.push_back(LinkOf(table, entry));
        } else if (entry.side == RelationSide::Referenced) {
            Table& child = *catalog_->OpenPage(entry.partnerTable);
            const LogicalIndex* partner = child.Definition().IndexByNumber(entry.partnerIndex);
            if (!partner || partner->side != RelationSide::Referencing)
                throw CorruptPage(table.Definition().pages.front(),
                                  "the relation entry " + entry.name + " has no other side in " + child.Name());
            links.toChildren.push_back(LinkOf(child, *partner));
        }
    }
    return tables_.emplace(&table, std::move(links)).first->second;
}

} // namespace jet
