#pragma once

#include "jet/catalog/catalog.h"
#include "jet/table/key_plan.h"
#include "jet/table/table.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace jet {

/// One enforced relation with what looking up its keys takes. Valid as long as no definition changes.
struct Link {
    // What is looked at with every row of the child comes first.
    Table* parent;           ///< the referenced table
    std::size_t parentIndex; ///< real index of the parent
    /// The parent's key that was last found to exist; empty = none. Rows of one parent often come one after another.
    Bytes lastFound;
    KeyMaker parentKeyOfChild, parentKeyOfParent; ///< keys of the parent's index
    Table* child;                                 ///< the referencing table
    std::size_t childIndex;                       ///< real index of the child
    KeyMaker childKeyOfChild, childKeyOfParent;   ///< keys of the child's index
    std::string name;                             ///< of the relation
    bool cascadeUpdates;
    DeleteRule onDelete;
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
