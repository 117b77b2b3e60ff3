#include "driver/closing_words.h"

#include "log/protocol_log.h"
#include "platform/paths.h"
#include "settings/job.h"

namespace velmora {

void TellThatNothingWasRead(Job& job, const RunOutcome& outcome)
{
    std::string line = outcome.failedFiles > 0 ? "No source could be converted: " : "No source could be read: ";
    line += FileExists(job.settings.targetFile) ? "the database stays as it was" : "no database was made";
    if (job.settings.blTextExport)
        line += ", and the text files are left alone";
    job.log.ProtocolAppend(line);
}

std::string WhatTheDatabaseHolds(const RunState& run, const ConversionSettings& settings)
{
    if (!run.commitFailed && !run.isTakenBack && (run.hasCommitted || run.unfinishedRecords > 0))
        return "what was saved until then stays in the database";
    if (run.hasCommitted)
        return "the database holds the files that were converted before, nothing of the last one";
    return FileExists(settings.targetFile) ? "nothing was saved, the database stays as it was"
                                           : "nothing was saved, no database was made";
}

std::string AboutTextFiles(const RunState& run, const ConversionSettings& settings)
{
    return run.textFilesChanged ? "; text files in [" + settings.textFolder + "] were changed" : "";
}

void TellOfFiles(ProtocolLog& log, const RunState& run, const RunOutcome& outcome)
{
    const std::size_t count = run.sources.size();
    if (count < 2)
        return;
    const auto ofAll = [count](std::size_t n) { return std::to_string(n) + " of " + std::to_string(count) + " files"; };
    const auto converted = static_cast<std::size_t>(outcome.convertedFiles);
    const auto unreadable = static_cast<std::size_t>(outcome.unreadableFiles);
    std::string line = "Converted: " + ofAll(converted);
    if (converted > 0)
        line += ", the last " + run.lastConverted;
    if (unreadable > 0)
        line += "; " + std::to_string(unreadable) + " could not be read";
    log.ProtocolAppend(line);
    const auto others = static_cast<std::size_t>(outcome.failedFiles) + static_cast<std::size_t>(outcome.skippedFiles);
    if (run.tried > converted + unreadable + others)
        log.ProtocolAppend("Not finished: " + run.sources[run.tried - 1].Name());
    if (run.tried < count)
        log.ProtocolAppend("Not tried: " + ofAll(count - run.tried) + ", " + run.sources[run.tried].Name() +
                           (run.tried + 1 < count ? " to " + run.sources.back().Name() : ""));
}

void TellOfFailures(ProtocolLog& log, const RunOutcome& outcome)
{
    if (outcome.failedFiles == 0)
        return;
    log.ProtocolAppend("Left out because of errors: " + std::to_string(outcome.failedFiles) + " of " +
                       std::to_string(outcome.files.size()) + " files");
    for (const FileReport& file : outcome.files)
        if (file.end == FileReport::End::Failed)
            log.ProtocolAppend("  " + file.path + ": " + file.problem);
}

void ReportUnfinished(const ProtocolLog& log, const RunState& run, std::vector<FileReport>& files)
{
    if (run.tried == 0 || files[run.tried - 1].end != FileReport::End::NotTried)
        return;
    FileReport& report = files[run.tried - 1];
    const bool hasFailed = log.ErrorCount() > 0;
    report.end = hasFailed ? FileReport::End::Failed : FileReport::End::Cancelled;
    if (hasFailed)
        report.problem = log.Found().errors.back().text;
    if (run.unfinishedRecords == 0 || run.commitFailed)
        report.records = 0;
}

} // namespace velmora
