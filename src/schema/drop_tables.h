#pragma once

#include "schema/database_session.h"

namespace velmora {

/// Drops every relation and then every user table. Views, links and system tables stay. When a table is locked, the
/// user is asked whether to try again; a refusal ends the run and leaves what was dropped until then dropped. In a
/// quiet run a locked table ends in the error report, like every other failure.
void velDropTablesAll(Job& job, DatabaseSession& session);

} // namespace velmora
