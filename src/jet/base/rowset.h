#pragma once

#include "jet/base/value.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace jet {

/// Schema rowsets; the numbers are ADO's.
enum class SchemaKind {
    Columns = 4,
    ReferentialConstraints = 9,
    TableConstraints = 10,
    Indexes = 12,
    Tables = 20,
    ForeignKeys = 27,
};

/// A restriction by position; an empty text does not restrict (ADO's Empty).
using Restrictions = std::vector<std::string>;

/// The answer to a question about the catalog: named fields, rows that are read from the first to the last.
class Rowset {
public:
    Rowset(std::vector<std::string> fields, std::vector<std::vector<Value>> rows)
        : fields_(std::move(fields)), rows_(std::move(rows))
    {
    }

    [[nodiscard]] bool Eof() const noexcept { return at_ >= rows_.size(); }
    void MoveNext() noexcept { ++at_; }
    /// Field of the current row. Throws ItemNotFound, NoCurrentRecord.
    [[nodiscard]] const Value& Field(std::string_view name) const;
    /// The same as text; Null is empty.
    [[nodiscard]] std::string Text(std::string_view name) const;

private:
    std::vector<std::string> fields_;
    std::vector<std::vector<Value>> rows_;
    std::size_t at_ = 0;
};

} // namespace jet
