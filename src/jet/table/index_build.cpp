#include "jet/table/index_build.h"

#include "jet/base/error.h"
#include "jet/table/table_def.h"

namespace jet {

void IndexBuild::Add(const Record& record, RowId row)
{
    const KeyFacts facts = plan_.Make(key_, record);
    if (plan_.IsRequired() && facts.anyNull)
        throw Error(ErrorNumber::NullInPrimaryKey);
    if (!plan_.LeavesOut(facts))
        entries_.Add({key_, row, facts.allNull});
}

/// Before the tree is planted: rows that break the index's rule are found first.
void IndexBuild::Sort()
{
    distinctKeys_ = 0;
    key_.clear();
    entries_.ForEach([this](const EntrySorter::Entry& entry) {
        // No key is empty, so the first one repeats nothing.
        const bool repeats = CompareBytes(key_, entry.key) == 0;
        if (repeats && plan_.IsUnique() && !entry.allNull)
            throw Error(ErrorNumber::DuplicateKey);
        if (!repeats) {
            ++distinctKeys_;
            key_.assign(entry.key.begin(), entry.key.end());
        }
    });
}

void IndexBuild::Fill(IndexTree& tree)
{
    // In ascending order every entry goes to the end of the rightmost leaf, and the leaves come out full.
    entries_.ForEach([&tree](const EntrySorter::Entry& entry) { tree.Insert(entry.key, entry.row); });
}

RealIndex PlantTree(Pager& pager, const TableDef& def, const RealIndex& wanted, IndexBuild& sorted)
{
    const PageNumber definitionPage = def.pages.front();
    RealIndex index;
    index.columns = wanted.columns;
    index.flags = wanted.flags;
    index.entriesAtBuild = sorted.EntryCount();
    index.distinctKeys = sorted.DistinctKeys();
    index.usageMap = PlaceMapRecord(pager, def);
    {
        const MutablePageRef root = pager.Allocate();
        IndexTree::MakeEmpty(root, pager.GetFormat(), definitionPage);
        index.root = root.Number();
    }
    // The tree adds further pages itself; its root it was given.
    UsageMap(pager, index.usageMap).Add(index.root);
    IndexTree tree(pager, index.root, index.usageMap, definitionPage);
    sorted.Fill(tree);
    return index;
}

void UprootTree(Pager& pager, PageNumber definitionPage, const RealIndex& index)
{
    IndexTree(pager, index.root, index.usageMap, definitionPage).Destroy();
    RemoveMapRecord(pager, index.usageMap);
}

} // namespace jet
