#pragma once

#include "jet/base/value.h"

#include <string>

namespace jet {

/// One property of a table or of one of its columns that holds text, such as "Description".
struct Property {
    std::string column; ///< empty: of the table itself
    std::string name;
    std::string value;                  ///< UTF-8
    ColumnType type = ColumnType::Text; ///< Text or Memo; Access shows those of both types alike

    bool operator==(const Property&) const = default;
};

} // namespace jet
