#pragma once

#include "schema/recordset.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace velmora {

/// Finds the records of one key after another by the index on it. Keys that come in ascending order, as they do where
/// nobody has put records in between, cost no search: the walk stands on the next one already.
class KeyWalk {
public:
    /// `records` walks by `field`, a whole number.
    KeyWalk(Recordset records, std::size_t field) : records_(std::move(records)), field_(field) {}

    /// Stands on the first record whose key is `key`, or on one of them where it stood before; false when there is
    /// none.
    [[nodiscard]] bool Find(std::int32_t key);
    /// To the next record with the same key.
    [[nodiscard]] bool Next();
    /// Back to a record of `key`, where Rows().Position() gave `position`.
    void Return(std::int32_t key, std::uint64_t position);

    [[nodiscard]] Recordset& Rows() noexcept { return records_; }

private:
    void NoteCurrent();

    Recordset records_;
    std::size_t field_;
    // No key stands between the one found last and the current record's.
    std::optional<std::int32_t> wanted_;
    std::optional<std::int32_t> current_; ///< none at the end
};

} // namespace velmora
