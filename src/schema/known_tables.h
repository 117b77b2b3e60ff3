#pragma once

#include "plan/known_database.h"
#include "schema/database_session.h"

namespace velmora {

/// What the open database holds and knows of itself. `session` must outlive its name rules.
[[nodiscard]] KnownDatabase ReadKnownDatabase(DatabaseSession& session);

} // namespace velmora
