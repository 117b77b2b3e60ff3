#pragma once

#include "driver/batch.h"

#include <QString>

namespace velmora {

/// What a run did, in one line: files, tables, records, time; or why it did nothing.
[[nodiscard]] QString RunSummary(const RunOutcome& outcome, std::int64_t milliseconds, const QString& lastError);

} // namespace velmora
