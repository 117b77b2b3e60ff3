#pragma once

#include "jet/table/table_def.h"

#include <string>

namespace jet {

/// The key of an index entry, column by column, as what its bytes say: "Id 5, Name "ANN"". Numbers come back whole; of
/// a text its letters, without case, with `...` where the key goes on with accents and the like. What does not fit the
/// columns stands as bytes.
[[nodiscard]] std::string KeyText(ByteSpan key, const TableDef& def, const RealIndex& index);

} // namespace jet
