#pragma once

#include "import/value_account.h"
#include "settings/job.h"

namespace velmora {

/// Says in the protocol how many of the document's values were not imported, and for each path and reason how many,
/// with a sample; the longest lists are cut. Gives their number; says nothing when all are there.
std::int64_t ReportLoss(Job& job, const Document& document, const MappingPlan& plan, const ValueAccount& account);

} // namespace velmora
