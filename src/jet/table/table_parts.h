#pragma once

#include "jet/table/key_plan.h"
#include "jet/table/row_codec.h"
#include "jet/table/row_store.h"
#include "jet/table/table.h"

#include <memory>
#include <vector>

namespace jet {

/// What one change of a row needs beside the record; kept from row to row so that no change allocates.
struct RowScratch {
    /// A long value that goes to pages of its own once nothing can refuse the record any more.
    struct Outside {
        std::size_t column;
        std::size_t fieldAt; ///< in `longFields`: 12 bytes that hold the place
        ByteSpan value;
    };
    struct Key {
        Bytes bytes;
        KeyFacts facts;
        bool inIndex = false;
    };

    Bytes oldRow;                         ///< the row as it was
    Record before;                        ///< the same, read
    std::vector<RowField> fields;         ///< by column index
    std::vector<std::size_t> longFieldAt; ///< by column index: where a long value's field begins in `longFields`
    Bytes longFields;
    Bytes memo;                       ///< a short memo in its other form
    std::vector<Bytes> expandedMemos; ///< long ones that came compressed
    std::vector<Outside> outside;
    Bytes writtenField;
    std::vector<bool> keptLongValues; ///< by column index: the value stays where it is
    std::vector<Key> keys;            ///< by real index
    std::vector<Key> oldKeys;
};

/// Everything that follows from one state of the definition.
struct Table::Parts {
    Parts(Pager& pager, const TableDef& def);

    RowStore rows;
    RowLayout layout;
    std::vector<KeyPlan> keyPlans;                       ///< by real index
    std::vector<std::unique_ptr<IndexTree>> trees;       ///< by real index
    std::vector<std::unique_ptr<LongValues>> longValues; ///< by column index; empty for other columns
    std::vector<std::size_t> allColumns;                 ///< 0, 1, 2 ...
    std::optional<std::size_t> autonumber;               ///< column index
    /// One per change that is under way: a hook may change further rows of the same table.
    std::vector<std::unique_ptr<RowScratch>> scratch;
    std::size_t changesUnderWay = 0;
};

} // namespace jet
