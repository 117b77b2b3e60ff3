#pragma once

#include "jet/index/index_tree.h"
#include "jet/table/key_plan.h"

#include <vector>

namespace jet {

/// Collects the entries of an index that is made from existing rows, and puts them into its tree in order. All keys lie
/// in one buffer.
class IndexBuild {
public:
    explicit IndexBuild(KeyPlan plan) : plan_(std::move(plan)) {}

    [[nodiscard]] const KeyPlan& Plan() const noexcept { return plan_; }
    /// Throws NullInPrimaryKey when the index wants values and `record` has none.
    void Add(const Record& record, RowId row);
    /// Sorts and counts. Throws DuplicateKey when the index is unique and the rows are not.
    void Sort();
    /// After Sort().
    void Fill(IndexTree& tree) const;
    [[nodiscard]] std::uint32_t EntryCount() const noexcept { return static_cast<std::uint32_t>(entries_.size()); }
    [[nodiscard]] std::uint32_t DistinctKeys() const noexcept { return distinctKeys_; }

private:
    struct Entry {
        std::size_t begin;
        std::uint32_t size;
        RowId row;
        bool allNull;
    };
    [[nodiscard]] ByteSpan Key(const Entry& entry) const { return ByteSpan(keys_).subspan(entry.begin, entry.size); }

    KeyPlan plan_;
    Bytes keys_;
    std::vector<Entry> entries_;
    std::uint32_t distinctKeys_ = 0;
};

/// Plants the tree of `wanted` (columns and flags count) and fills it; `sorted` may have no entries. The usage map goes
/// to a map page of `def`. Nothing is left behind when it throws.
[[nodiscard]] RealIndex PlantTree(Pager& pager, const TableDef& def, const RealIndex& wanted, const IndexBuild& sorted);
/// Frees the tree's pages and its usage map.
void UprootTree(Pager& pager, PageNumber definitionPage, const RealIndex& index);

} // namespace jet
