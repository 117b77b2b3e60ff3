#pragma once

#include "driver/run_outcome.h"

#include <string>
#include <vector>

/// What a run says of its sources, its database and its text files when it has ended.
namespace velmora {

struct ConversionSettings;
struct Job;
class ProtocolLog;

/// Nothing was committed, so that the session's end takes everything back.
void TellThatNothingWasRead(Job& job, const RunOutcome& outcome);
/// After a run that ended early.
[[nodiscard]] std::string WhatTheDatabaseHolds(const RunState& run, const ConversionSettings& settings);
/// Their lines cannot be taken back, and those of -append are gone. Empty when there is nothing to say.
[[nodiscard]] std::string AboutTextFiles(const RunState& run, const ConversionSettings& settings);
/// Of several files, which are done: the others can be given to another run.
void TellOfFiles(ProtocolLog& log, const RunState& run, const RunOutcome& outcome);
/// Those that +continue has left out, and why.
void TellOfFailures(ProtocolLog& log, const RunOutcome& outcome);
/// Writes into `files` how the one ended at which the run did.
void ReportUnfinished(const ProtocolLog& log, const RunState& run, std::vector<FileReport>& files);

} // namespace velmora
