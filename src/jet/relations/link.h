#pragma once

#include "jet/catalog/catalog.h"
#include "jet/index/index_key.h"
#include "jet/table/table.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace jet {

/// Makes the keys of one index out of records of its own table, or of those of the table on the other side of a
/// relation.
class KeyMaker {
public:
    /// `columns` are those of an index of `table`; values are read from records of `table`.
    KeyMaker(const Table& table, const std::vector<IndexColumn>& columns);

    /// Values come from records of `table`, its columns `numbers`, from now on.
    void ReadFrom(const Table& table, const std::vector<std::uint16_t>& numbers);

    /// Puts the key into `key`; false when one of its columns is Null, which refers to nothing.
    [[nodiscard]] bool Make(Bytes& key, const Record& record) const;
    /// Where the values stand in the record.
    [[nodiscard]] const std::vector<std::size_t>& Positions() const noexcept { return positions_; }

private:
    const Format* format_;
    std::vector<KeyColumn> columns_;
    std::vector<std::size_t> positions_;
};

/// One enforced relation with what looking up its keys takes. Valid as long as no definition changes.
struct Link {
    Table* child;                                 ///< the referencing table
    Table* parent;                                ///< the referenced one
    std::string name;                             ///< of the relation
    std::size_t childIndex, parentIndex;          ///< real indexes
    KeyMaker childKeyOfChild, childKeyOfParent;   ///< keys of the child's index
    KeyMaker parentKeyOfChild, parentKeyOfParent; ///< keys of the parent's index
    bool cascadeUpdates;
    DeleteRule onDelete;
    /// The parent's key that was last found to exist; empty = none. Rows of one parent often come one after another.
    Bytes lastFound;
};

/// The links of each table, made when first asked for and made anew after any definition has changed.
class LinkCache {
public:
    struct TableLinks {
        std::vector<Link*> toParents;
        std::vector<Link*> toChildren;
    };

    explicit LinkCache(Catalog& catalog) : catalog_(&catalog) {}

    /// Throws CorruptPage when the two sides of a relation do not fit together.
    [[nodiscard]] const TableLinks& Of(Table& table);

private:
    [[nodiscard]] Link* LinkOf(Table& child, const LogicalIndex& entry);

    Catalog* catalog_;
    std::uint64_t version_ = 0;
    std::unordered_map<const Table*, TableLinks> tables_;
    /// By the child's definition page and the number of its index entry.
    std::map<std::pair<PageNumber, std::uint32_t>, std::unique_ptr<Link>> links_;
};

} // namespace jet
