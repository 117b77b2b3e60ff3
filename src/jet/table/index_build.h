#pragma once

#include "jet/index/index_tree.h"
#include "jet/table/entry_sorter.h"
#include "jet/table/key_plan.h"

#include <utility>

namespace jet {

/// Collects the entries of an index that is made from existing rows, and puts them into its tree in order.
class IndexBuild {
public:
    /// `budget`: bytes of memory for the entries, see EntrySorter.
    IndexBuild(FileSystem& system, KeyPlan plan, std::size_t budget = EntrySorter::kBudget)
        : plan_(std::move(plan)), entries_(system, budget)
    {
    }

    [[nodiscard]] const KeyPlan& Plan() const noexcept { return plan_; }
    /// Throws NullInPrimaryKey when the index wants values and `record` has none.
    void Add(const Record& record, RowId row);
    /// Sorts and counts. Throws DuplicateKey when the index is unique and the rows are not.
    void Sort();
    /// After Sort().
    void Fill(IndexTree& tree);
    [[nodiscard]] std::uint32_t EntryCount() const noexcept { return entries_.Count(); }
    [[nodiscard]] std::uint32_t DistinctKeys() const noexcept { return distinctKeys_; }

private:
    KeyPlan plan_;
    EntrySorter entries_;
    Bytes key_; ///< the one that is added, the one before it
    std::uint32_t distinctKeys_ = 0;
};

/// Plants the tree of `wanted` (columns and flags count) and fills it; `sorted` may have no entries. The usage map goes
/// to a map page of `def`. Nothing is left behind when it throws.
[[nodiscard]] RealIndex PlantTree(Pager& pager, const TableDef& def, const RealIndex& wanted, IndexBuild& sorted);
/// Frees the tree's pages and its usage map.
void UprootTree(Pager& pager, PageNumber definitionPage, const RealIndex& index);

} // namespace jet
