#pragma once

#include "schema/database_session.h"

namespace velmora {

/// Deletes the rows of every user table, in as many passes over all of them as it takes: one table's rows may go only
/// after another's. Views, links and system tables are left alone. Known to the logs as "velDropTablesAll", like its
/// neighbour. A refused statement ends in the error report, and so does a pass that has changed nothing.
void velEmptyTablesAll(Job& job, DatabaseSession& session);

} // namespace velmora
