#pragma once

#include "jet/base/value.h"
#include "schema/origin.h"

#include <span>
#include <vector>

namespace velmora {

/// How a table's properties hold what it is: "velmora_source", a memo, for us; "Description" for people. A text that is
/// too long for one property goes on in "velmora_source2" and so on. "velmora_type" says that the column's type was
/// chosen, and can be another one; "Format" lets Access show times of day as such.
[[nodiscard]] std::vector<jet::Property> ToProperties(const Origins& origins, bool access97);
[[nodiscard]] Origins ToOrigins(std::span<const jet::Property> properties);

} // namespace velmora
