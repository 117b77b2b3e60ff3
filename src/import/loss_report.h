#pragma once

#include "import/value_account.h"
#include "settings/job.h"

namespace velmora {

/// Says in the protocol how many of the document's values were not imported, and for each path and reason how many,
/// with a sample; the longest lists are cut. Nothing when all are there.
void ReportLoss(Job& job, const Document& document, const ValueAccount& account);

} // namespace velmora
