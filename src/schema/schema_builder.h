#pragma once

#include "plan/mapping_plan.h"
#include "schema/database_session.h"

namespace velmora {

/// What velCreateDatabase is asked to do: `pass`.
namespace schema_pass {
inline constexpr int kCreateTables = 1;
inline constexpr int kCreateRelations = 2;
inline constexpr int kExtendStructure = 4;
} // namespace schema_pass

/// Gives the database the tables and columns (pass 1 or 4), or the foreign-key indexes and relations (pass 2), that
/// `plan` asks for. Pass 1 or 4 must come before pass 2. `document` gives messages their paths.
void velCreateDatabase(Job& job, DatabaseSession& session, const Document& document, const MappingPlan& plan, int pass);

} // namespace velmora
