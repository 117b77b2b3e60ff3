#pragma once

#include "jet/table/record.h"
#include "jet/table/table_def.h"

#include <span>
#include <vector>

namespace jet {

/// What is known of a key besides its bytes. A boolean is never Null.
struct KeyFacts {
    bool anyNull = false;
    bool allNull = true;
};

/// How the keys of one real index are made from records, its columns looked up once.
class KeyPlan {
public:
    KeyPlan(const TableDef& def, const RealIndex& index);

    /// Appends the key of `record` to `key`. Throws Error when a text column has a sort order that cannot be encoded.
    KeyFacts Append(Bytes& key, const Record& record) const;

    [[nodiscard]] bool IsUnique() const noexcept { return flags_ & index_flags::kUnique; }
    [[nodiscard]] bool IsRequired() const noexcept { return flags_ & index_flags::kRequired; }
    /// Does the index have no entry for such a record?
    [[nodiscard]] bool LeavesOut(KeyFacts facts) const noexcept
    {
        return facts.allNull && (flags_ & index_flags::kIgnoreNulls);
    }
    /// Must no other record have the same key? Records all of whose key columns are Null do not count as duplicates.
    [[nodiscard]] bool MustBeUnique(KeyFacts facts) const noexcept { return IsUnique() && !facts.allNull; }
    /// Column indexes, in the order of the key.
    [[nodiscard]] std::span<const std::size_t> Columns() const noexcept { return columns_; }

private:
    const Format* format_;
    Byte flags_;
    std::vector<std::size_t> columns_;
    std::vector<KeyColumn> kinds_; ///< parallel to columns_
};

} // namespace jet
