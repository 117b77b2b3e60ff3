#include "jet/table/index_build.h"

#include "jet/error.h"
#include "jet/table/map_records.h"

#include <algorithm>
#include <cstring>

namespace jet {

namespace {

int Compare(ByteSpan a, ByteSpan b)
{
    const int order = std::memcmp(a.data(), b.data(), std::min(a.size(), b.size()));
    return order != 0 ? order : (a.size() > b.size()) - (a.size() < b.size());
}

} // namespace

void IndexBuild::Add(const Record& record, RowId row)
{
    const std::size_t begin = keys_.size();
    const KeyFacts facts = plan_.Append(keys_, record);
    if (plan_.IsRequired() && facts.anyNull)
        throw Error(ErrorNumber::NullInPrimaryKey);
    if (plan_.LeavesOut(facts))
        keys_.resize(begin);
    else
        entries_.push_back({begin, static_cast<std::uint32_t>(keys_.size() - begin), row, facts.allNull});
}

void IndexBuild::Sort()
{
    std::sort(entries_.begin(), entries_.end(), [this](const Entry& a, const Entry& b) {
        const int order = Compare(Key(a), Key(b));
        return order != 0 ? order < 0 : a.row < b.row;
    });
    distinctKeys_ = 0;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        const bool repeats = i != 0 && Compare(Key(entries_[i - 1]), Key(entries_[i])) == 0;
        if (repeats && plan_.IsUnique() && !entries_[i].allNull)
            throw Error(ErrorNumber::DuplicateKey);
        distinctKeys_ += !repeats;
    }
}

void IndexBuild::Fill(IndexTree& tree) const
{
    for (const Entry& entry : entries_)
        tree.Insert(Key(entry), entry.row);
}

RealIndex PlantTree(Pager& pager, const TableDef& def, const RealIndex& wanted, const IndexBuild& sorted)
{
    const PageNumber definitionPage = def.pages.front();
    RealIndex index;
    index.columns = wanted.columns;
    index.flags = wanted.flags;
    index.entriesAtBuild = sorted.EntryCount();
    index.distinctKeys = sorted.DistinctKeys();
    index.usageMap = PlaceMapRecord(pager, def);
    try {
        {
            const MutablePageRef root = pager.Allocate();
            IndexTree::MakeEmpty(root, pager.GetFormat(), definitionPage);
            index.root = root.Number();
        }
        UsageMap(pager, index.usageMap).Add(index.root);
        IndexTree tree(pager, index.root, index.usageMap, definitionPage);
        sorted.Fill(tree);
    } catch (...) {
        if (index.root == 0)
            RemoveMapRecord(pager, index.usageMap);
        else
            UprootTree(pager, definitionPage, index);
        throw;
    }
    return index;
}

void UprootTree(Pager& pager, PageNumber definitionPage, const RealIndex& index)
{
    IndexTree(pager, index.root, index.usageMap, definitionPage).Destroy();
    RemoveMapRecord(pager, index.usageMap);
}

} // namespace jet
