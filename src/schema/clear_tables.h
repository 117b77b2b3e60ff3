#pragma once

#include "schema/database_session.h"

namespace velmora {

/// Deletes the rows of every user table, in as many passes over all of them as it takes: one table's rows may go only
/// after another's. Views, links and system tables are left alone. Known to the logs as "velDropTablesAll", like its
/// neighbour. A refused statement ends in the error report, and so does a pass that has changed nothing.
void velEmptyTablesAll(Job& job, DatabaseSession& session);

/// Drops every relation and then every user table. Views, links and system tables stay. When a table is locked, the
/// user is asked whether to try again; a refusal ends the run and leaves what was dropped until then dropped. In a
/// quiet run a locked table ends in the error report, like every other failure.
void velDropTablesAll(Job& job, DatabaseSession& session);

} // namespace velmora
