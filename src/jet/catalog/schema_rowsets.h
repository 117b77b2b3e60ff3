#pragma once

#include "jet/base/rowset.h"
#include "jet/catalog/catalog.h"

namespace jet {

/// Answers a question about the catalog, from memory and definitions. One that is restricted to a table or to a name
/// takes a time that does not depend on the number of tables.
[[nodiscard]] Rowset QuerySchema(Catalog& catalog, SchemaKind kind, const Restrictions& restrictions);

} // namespace jet
