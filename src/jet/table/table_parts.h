#pragma once

#include "jet/table/key_plan.h"
#include "jet/table/long_fields.h"
#include "jet/table/row_codec.h"
#include "jet/table/row_store.h"
#include "jet/table/table.h"

#include <memory>
#include <vector>

namespace jet {

/// What one change of a row needs beside the record; kept from row to row so that no change allocates.
struct RowScratch {
    struct Key {
        Bytes bytes; ///< the key as the index has it
        KeyFacts facts;
        bool inIndex = false; ///< the index does not leave the record out
    };

    Bytes oldRow;                 ///< the row as it was
    Record before;                ///< the same, read
    std::vector<RowField> fields; ///< by column index
    LongFields longFields;
    std::vector<Key> keys; ///< by real index
    std::vector<Key> oldKeys;
};

/// Everything that follows from one state of the definition.
struct Table::Parts {
    Parts(Pager& pager, const TableDef& def);

    RowStore rows;
    RowLayout layout;              ///< of rows as they are written now; older ones may have fewer fields
    std::vector<KeyPlan> keyPlans; ///< by real index
    std::vector<std::unique_ptr<IndexTree>> trees;       ///< by real index
    std::vector<std::unique_ptr<LongValues>> longValues; ///< by column index; empty for other columns
    std::vector<std::size_t> allColumns;                 ///< 0, 1, 2 ...
    std::optional<std::size_t> autonumber;               ///< column index
    /// One per change that is under way: a hook may change further rows of the same table.
    std::vector<std::unique_ptr<RowScratch>> scratch;
    std::size_t changesUnderWay = 0;
};

} // namespace jet
