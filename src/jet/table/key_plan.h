#pragma once

#include "jet/table/record.h"
#include "jet/table/table_def.h"

#include <memory>
#include <vector>

namespace jet {

/// What is known of a key besides its bytes. A boolean is never Null.
struct KeyFacts {
    bool anyNull = false;
    bool allNull = true;
};

/// Makes the keys of one index out of records of its own table, or of those of the table on the other side of a
/// relation; its columns looked up once.
class KeyMaker {
public:
    /// `columns` are those of an index of the table; values are read from its records.
    KeyMaker(const TableDef& def, const std::vector<IndexColumn>& columns);
    /// Values come from records of another table, its columns `numbers`, from now on.
    void ReadFrom(const TableDef& def, const std::vector<std::uint16_t>& numbers);

    /// Puts the key of `record` into `key`. Throws Error when a text column has a sort order that cannot be encoded.
    KeyFacts Make(Bytes& key, const Record& record) const
    {
        // Nearly every key is a number of a record, and is made several times for each.
        if (number_ != kNone && record.HoldsBytes(number_, sizeof(std::int32_t))) {
            key.resize(kNumberKeySize);
            StoreNumberKey(key.data(), *record.Stored(number_));
            return {.anyNull = false, .allNull = false};
        }
        return MakeParts(key, record);
    }
    /// Column indexes in the records that values are read from, in the order of the key.
    [[nodiscard]] const std::vector<std::size_t>& Columns() const noexcept { return parts_->columns; }

private:
    static constexpr std::uint32_t kNone = ~std::uint32_t{0};

    [[nodiscard]] KeyFacts MakeParts(Bytes& key, const Record& record) const;
    void FindNumber();

    /// What keys that are not a number take: elsewhere, so that the others find all they need in one cache line.
    struct Parts {
        const Format* format;
        std::vector<std::size_t> columns;
        std::vector<KeyColumn> kinds; ///< parallel to columns
    };
    std::unique_ptr<Parts> parts_;
    std::uint32_t number_ = kNone; ///< the column, when it is the only one and an ascending whole number
};

/// The keys of one real index, and what it asks of them.
class KeyPlan : public KeyMaker {
public:
    KeyPlan(const TableDef& def, const RealIndex& index) : KeyMaker(def, index.columns), flags_(index.flags) {}

    [[nodiscard]] bool IsUnique() const noexcept { return flags_ & index_flags::kUnique; }
    [[nodiscard]] bool IsRequired() const noexcept { return flags_ & index_flags::kRequired; }
    /// Does the index have no entry for such a record?
    [[nodiscard]] bool LeavesOut(KeyFacts facts) const noexcept
    {
        return facts.allNull && (flags_ & index_flags::kIgnoreNulls);
    }
    /// Must no other record have the same key? Records all of whose key columns are Null do not count as duplicates.
    [[nodiscard]] bool MustBeUnique(KeyFacts facts) const noexcept { return IsUnique() && !facts.allNull; }

private:
    Byte flags_;
};

} // namespace jet
