#pragma once

#include "driver/batch.h"

#include <QString>

namespace velmora {

/// What a run did, in one line: files, tables, records, time; or why it did nothing. `wroteXml`: it went the way back.
[[nodiscard]] QString RunSummary(const RunOutcome& outcome, bool wroteXml, std::int64_t milliseconds,
                                 const QString& lastError);

} // namespace velmora
