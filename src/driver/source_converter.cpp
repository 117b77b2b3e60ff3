#include "driver/source_converter.h"

#include "driver/database_size.h"
#include "driver/once.h"
#include "driver/rename.h"
#include "import/node_importer.h"
#include "plan/analyse_xml.h"
#include "plan/plain_names.h"
#include "platform/clock.h"
#include "platform/paths.h"
#include "schema/database_session.h"
#include "schema/engine_errors.h"
#include "schema/schema_builder.h"
#include "settings/conversion_settings.h"
#include "xml/load_xml.h"
#include "xml/structure_model.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

namespace velmora {

namespace {

/// Measures what a source's conversion takes, however it ends.
class Timed {
public:
    explicit Timed(FileReport& report) : report_(report)
    {
        std::error_code error;
        const std::uintmax_t bytes = std::filesystem::file_size(PathFromUtf8(report.path), error);
        if (!error)
            report.bytes = bytes;
    }
    ~Timed() { report_.milliseconds = CoarseMilliseconds() - begin_; }
    Timed(const Timed&) = delete;
    Timed& operator=(const Timed&) = delete;

private:
    FileReport& report_;
    const std::int64_t begin_ = CoarseMilliseconds();
};

/// What a run had counted at the beginning of a source, to count anew from there when the source is taken back.
class RunPoint {
public:
    RunPoint(const RunOutcome& outcome, const RunState& run)
        : values_(outcome.leftOut.values), offered_(outcome.leftOut.offered), groups_(outcome.leftOut.groups.size()),
          recordsWithoutText_(outcome.recordsWithoutText), textFilesChanged_(run.textFilesChanged)
    {
    }
    void Restore(RunOutcome& outcome, RunState& run) const
    {
        run.unfinishedRecords = 0;
        run.isTakenBack = true;
        outcome.leftOut.values = values_;
        outcome.leftOut.offered = offered_;
        outcome.leftOut.groups.resize(groups_);
        outcome.recordsWithoutText = recordsWithoutText_;
        run.textFilesChanged = textFilesChanged_;
    }

private:
    std::int64_t values_, offered_;
    std::size_t groups_;
    std::int64_t recordsWithoutText_;
    bool textFilesChanged_;
};

} // namespace

void CommitRun(Job& job, DatabaseSession& session, RunState& run)
{
    run.commitFailed = true;
    session.Commit();
    run.commitFailed = false;
    for (const std::string& line : session.TakeAnnouncements())
        if (!job.settings.blPreview)
            job.log.ProtocolAppend(line);
}

void SourceConverter::ReadLoaded()
{
    if (!job_.settings.blOnce)
        return;
    ThrowIfAborted(job_.settings);
    loaded_.Read(session_);
}

bool SourceConverter::Convert(const Source& source, const Source* next, FileReport& report, Step& step)
{
    next_ = next;
    const Timed timed(report);
    TableSinks sinks;
    const auto convert = [&] { ConvertAndFinish(source, report, sinks, step); };
    if (!job_.settings.IsWholeOrNothing()) {
        convert();
        return true;
    }
    const std::size_t errorsBefore = job_.log.Found().errors.size();
    const RunPoint before(outcome_, run_);
    filesOfRun_.BeginDocument();
    const auto takeBack = [&] {
        before.Restore(outcome_, run_);
        filesOfRun_.TakeBackDocument();
        sinks.Texts().TakeBack();
    };
    try {
        Guarded(job_.log, convert);
    } catch (...) {
        takeBack();
        throw;
    }
    const bool hasEnded = report.end != FileReport::End::NotTried;
    if (hasEnded)
        sinks.Texts().Keep();
    else
        takeBack();
    if (!job_.settings.blAbort)
        return true;
    if (!MayGoOn(errorsBefore))
        throw Aborted();
    job_.settings.blAbort = false;
    if (!hasEnded)
        LeaveOut(source, report);
    return hasEnded; // its records are safe then: it could not be renamed
}

/// May the run go on after the errors that came after so many? Not when they concern more than one file, or the user
/// has had enough.
bool SourceConverter::MayGoOn(std::size_t errorsBefore) const
{
    const std::vector<Findings::Error>& errors = job_.log.Found().errors;
    return job_.settings.blContinue && !outcome_.cancelled && errors.size() > errorsBefore &&
           std::none_of(errors.begin() + static_cast<std::ptrdiff_t>(errorsBefore), errors.end(),
                        [](const Findings::Error& error) { return ConcernsWholeDatabase(error.number); });
}

void SourceConverter::LeaveOut(const Source& source, FileReport& report)
{
    run_.isTakenBack = false;
    report.problem = job_.log.Found().errors.back().text;
    report.end = FileReport::End::Failed;
    report.records = 0;
    report.values.reset();
    ++outcome_.failedFiles;
    job_.log.ProtocolAppend("Taken back, since it ended in an error: " + report.path);
    isFileComplete_ = source.isLastOfFile; // for the next one, if this was the last of it
    session_.TakeBack();
}

/// With +once, whether the source's content, whose hash it gives, was loaded before.
bool SourceConverter::IsLoaded(const Source& source, FileReport& report, std::string& hash)
{
    if (!job_.settings.blOnce)
        return false;
    hash = HashOfSource(job_, source);
    const std::optional<std::string> when = loaded_.WhenLoaded(hash);
    if (!when)
        return false;
    job_.log.ProtocolAppend("Skipped, its content was loaded on " + *when + ": " + report.path);
    report.end = FileReport::End::Skipped;
    ++outcome_.skippedFiles;
    return true;
}

void SourceConverter::ConvertAndFinish(const Source& source, FileReport& report, TableSinks& sinks, Step& step)
{
    std::string hash;
    if (IsLoaded(source, report, hash))
        return RenameWhenWanted(source, step);
    Finish(source, report, Import(source, report, sinks), hash, step);
}

/// True when the file could be read. A step that fails, or in which the user cancels, ends the run only after the
/// closing ones: the steps between write their trace lines and no more.
bool SourceConverter::Import(const Source& source, FileReport& report, TableSinks& sinks)
{
    job_.controls.txtXML.clear();
    job_.host.SetProgress(ProgressBarId::Records, 0);
    LoadedXml xml = velLoadXML(job_, source, &ahead_);
    if (next_ != nullptr)
        LoadNextAhead(job_, *next_, xml.document, ahead_);
    const auto run = [this](auto&& step) { return Guarded(job_.log, step); };
    const auto createDatabase = [&](const MappingPlan& plan, int pass) {
        velCreateDatabase(job_, session_, xml.document, plan, pass);
    };
    StructureModel model;
    MappingPlan plan;
    const auto readDatabase = [&]() -> const KnownDatabase& { return knownTables_.Read(); };
    run([&] { velAnalyseXML(job_, xml.document, tagMap_, model, plan, readDatabase); });
    run([&] { KeepListApart(job_, session_, plan); });
    ShowStructure(xml.document, model);
    run([&] {
        createDatabase(plan, job_.settings.blExtendMdb ? schema_pass::kExtendStructure : schema_pass::kCreateTables);
    });
    if (job_.settings.blCreateTableRelations)
        run([&] { createDatabase(plan, schema_pass::kCreateRelations); });
    WarnOfSize(EstimatedGrowth(xml.document, plan));
    run([&] { velOpenTables(job_, session_, plan, filesOfRun_, sinks); });
    DocumentImport import(job_, session_, source, xml.document, plan, sinks);
    const bool imported = run([&] { import.Run(); });
    report.values = import.Tell(imported);
    if (report.values)
        outcome_.leftOut.Add(*report.values);
    outcome_.recordsWithoutText += velCloseTables(job_, session_, sinks);
    run_.unfinishedRecords = report.records = sinks.SavedRecords();
    run_.textFilesChanged =
        run_.textFilesChanged || filesOfRun_.HasChanged() || (job_.settings.blTextExport && run_.unfinishedRecords > 0);
    ThrowIfAborted(job_.settings);
    report.problem = std::move(xml.problem);
    return xml.readable;
}

/// Before the import, which may take long and end at the limit.
void SourceConverter::WarnOfSize(std::uint64_t growth)
{
    if (job_.settings.blAbort || !session_.IsOpen())
        return;
    if (const auto warning = SizeWarning(session_.SizeBytes() + growth, session_.MaxSizeBytes()))
        job_.log.Warn("nearly-full", *warning);
}

void SourceConverter::ShowStructure(const Document& document, const StructureModel& model)
{
    if (!job_.host.ShowsStructure() || document.IsEmpty())
        return;
    job_.controls.txtXML = StructureReport(model, document);
    job_.controls.documentTags = NamesToMap(model);
    job_.host.ControlsChanged();
}

void SourceConverter::Finish(const Source& source, FileReport& report, bool converted, const std::string& hash,
                             Step& step)
{
    isFileComplete_ = isFileComplete_ && converted;
    if (converted) {
        step("Commit");
        if (!hash.empty())
            loaded_.Add(session_, hash, report.path, report.records);
        CommitRun(job_, session_, run_);
        run_.hasCommitted = true;
        run_.unfinishedRecords = 0;
        report.end = FileReport::End::Converted;
        ++outcome_.convertedFiles;
        run_.lastConverted = report.path;
    } else {
        report.end = FileReport::End::Unreadable;
        report.values.reset();
        ++outcome_.unreadableFiles;
    }
    RenameWhenWanted(source, step);
}

/// The file moves away only when its records are safe, and only when there was something to convert: it is what is left
/// of one that could not be read. An archive moves when all that is in it was converted.
void SourceConverter::RenameWhenWanted(const Source& source, Step& step)
{
    if (!source.isLastOfFile || job_.settings.renamePattern.empty())
        return;
    if (!std::exchange(isFileComplete_, true)) {
        ++outcome_.filesNotRenamed;
        job_.log.Warn("not-renamed", "Not renamed, since it was not converted: " + source.path);
        return;
    }
    if (job_.settings.blPreview)
        return;
    step("Rename XML file");
    RenameConvertedFile(job_, source.path, std::time(nullptr));
}

} // namespace velmora
