#include "driver/batch.h"

#include "driver/closing_words.h"
#include "driver/database_size.h"
#include "driver/once.h"
#include "driver/refusals.h"
#include "driver/rename.h"
#include "driver/run_files.h"
#include "driver/url_source.h"
#include "import/node_importer.h"
#include "plan/analyse_xml.h"
#include "plan/plain_names.h"
#include "platform/clock.h"
#include "platform/paths.h"
#include "schema/clear_tables.h"
#include "schema/database_session.h"
#include "schema/engine_errors.h"
#include "schema/known_tables.h"
#include "schema/schema_builder.h"
#include "settings/conversion_settings.h"
#include "source/source_list.h"
#include "source/sources_of_run.h"
#include "xml/load_xml.h"
#include "xml/structure_model.h"
#include "xml_export/xml_export.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

constexpr std::string_view kWorking = "Working...";

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

} // namespace

RunOutcome Batch::btnConvert_Click(const std::optional<std::string>& refusal)
{
    outcome_ = {};
    run_ = {};
    isFileComplete_ = true;
    job_.settings.blAbort = false;
    job_.log.ClearText();
    TakeSettings();
    if (RefusesToBegin(refusal)) {
        outcome_.nothingToDo = true;
        return outcome_;
    }
    ShowRunning(true);
    UrlSource source(job_);
    DatabaseSession session(locks_);
    std::optional<ControlsKept> kept;
    if (job_.settings.blPreview) {
        kept.emplace(job_.controls);
        outcome_.preview.emplace();
        session.BeginTrial();
    }
    Guarded(job_.log, [&] { Procedure(job_, "btnConvert_Click", [&](Step& step) { Run(source, session, step); }); });
    if (job_.settings.blAbort) {
        if (session.IsOpen())
            EndEarly(session);
        else if (IsWayBack(job_.settings))
            job_.log.ProtocolAppend("The run ended early: XML that was not complete is gone");
        TellOfFiles(job_.log, run_, outcome_);
        ReportUnfinished(job_.log, run_, outcome_.files);
    }
    TellOfFailures(job_.log, outcome_);
    outcome_.tables = session.Reports();
    if (outcome_.preview)
        Describe(*outcome_.preview, session);
    session.Close();
    source.Release();
    kept.reset();
    CloseProtocolFile();
    ShowRunning(false);
    outcome_.failed = job_.log.ErrorCount() > 0;
    // Nobody but the user stops a run without an error: by the button, or by an answer on the way.
    outcome_.cancelled = outcome_.cancelled || (job_.settings.blAbort && !outcome_.failed);
    return outcome_;
}

void Batch::Describe(Preview& preview, DatabaseSession& session)
{
    if (!outcome_.tables.empty())
        DescribeDatabase(job_, session, preview);
    preview.findings = job_.log.Found();
}

void Batch::TakeSettings()
{
    ReadSettingsFromForm(job_.controls, job_.settings, [this] {
        tagMap_.Compact();
        return tagMap_.UpperBound() >= 1;
    });
    if (job_.settings.blPreview)
        job_.settings.blQuiet = true; // nothing is at stake
}

/// What must not begin ends before anything is opened but the protocol, when that is not the very file that must not be
/// written.
bool Batch::RefusesToBegin(const std::optional<std::string>& refusal)
{
    const ConversionSettings& settings = job_.settings;
    std::optional<std::string> reason = WhyNotToBegin(settings);
    if (!reason)
        reason = refusal;
    if (!reason)
        return false;
    if (!IsProtocolClashing(settings))
        Guarded(job_.log,
                [this] { Procedure(job_, "btnConvert_Click", [this](Step& step) { OpenProtocolFile(step); }); });
    job_.log.ProtocolAppend(*reason);
    CloseProtocolFile();
    return true;
}

void Batch::Run(UrlSource& source, DatabaseSession& session, Step& step)
{
    OpenProtocolFile(step);
    const bool usesScratch = job_.settings.targetFile.empty() && !job_.settings.textFolder.empty();
    const Places places = outcome_.preview ? TrialPlaces(places_) : places_;
    if (!PrepareTextMode(job_, places, step)) {
        outcome_.cancelled = true;
        return;
    }
    TakeSettings();
    if (IsWayBack(job_.settings)) {
        if (const std::optional<std::string> refusal = velExportXML(job_))
            TellThatThereIsNothingToDo(*refusal);
        return;
    }
    source.Fetch(places);
    const SourceFiles files = ListSourceFiles(job_.settings.sourceFile);
    run_.sources = SourcesIn(files.paths, job_.settings);
    for (const Source& file : run_.sources)
        outcome_.files.push_back({.path = file.Name()});
    std::optional<std::string> reason = files.problem;
    if (!reason)
        reason = ImpossibleRename(job_.settings, files.paths, std::time(nullptr));
    if (reason)
        return TellThatThereIsNothingToDo(*reason);
    for (const std::string& warning : TextExportWarnings(job_.settings, run_.sources.size()))
        job_.log.Warn("text-files", warning);
    ScratchDatabase scratch(job_, places);
    if (usesScratch)
        scratch.TakeFree();
    const auto openDatabase = [&] {
        Guarded(job_.log, [&] { velOpenDatabase(job_, session, [&] { return usesScratch && scratch.TakeNext(); }); });
        if (!job_.settings.blRecreateDatabase && job_.settings.blEmptyTables)
            velEmptyTablesAll(job_, session);
    };
    openDatabase();
    if (outcome_.preview && session.IsOpen())
        for (const std::string& table : session.UserTables())
            outcome_.preview->tablesBefore.insert(table);
    FilesOfRun filesOfRun(job_.settings, files.paths);
    Convert(session, filesOfRun, openDatabase, step);
    if (!run_.hasCommitted && outcome_.skippedFiles == 0)
        TellThatNothingWasRead(job_, outcome_);
}

void Batch::TellThatThereIsNothingToDo(const std::string& reason)
{
    job_.log.ProtocolAppend(reason);
    outcome_.nothingToDo = true;
}

void Batch::OpenProtocolFile(Step& step)
{
    const std::string& path = job_.settings.protocolFile;
    if (job_.settings.blPreview) {
        step("Look at protocol file [" + path + "]");
        CheckProtocolFile(job_.settings);
        job_.log.ProtocolAppend("Preview: what follows is only tried out, nothing is written");
    } else if (!path.empty()) {
        step("Open protocol file [" + path + "]");
        job_.log.OpenFile(path);
        job_.log.WriteProtocolFile(std::string(50, '='));
    }
    job_.log.WriteEarlierLines();
    job_.log.Trace("Protocoll file opened");
    job_.log.Trace(std::string("btnConvert_Click: Debug mode: ") + (job_.settings.blDebug ? "True" : "False"));
}

void Batch::CloseProtocolFile()
{
    job_.log.ProtocolAppend("Done");
    if (!job_.log.IsFileOpen())
        return;
    job_.log.Trace("Closing protocoll file");
    job_.log.CloseFile();
}

void Batch::ShowRunning(bool running)
{
    Controls& controls = job_.controls;
    controls.btnConvertCaption = running ? kWorking : "Convert";
    controls.btnConvertEnabled = !running;
    controls.btnQuitCaption = running ? "Cancel" : "Exit";
    controls.optionsEnabled = !running;
    constexpr int kConverterPage = 0;
    constexpr int kProgressPage = 2;
    controls.tabMain = running ? kProgressPage : kConverterPage;
    job_.host.ControlsChanged();
}

/// Converts the files one after another; each is committed when it is done. Until the first one that can be read, a
/// re-creation or an emptying is not final.
void Batch::Convert(DatabaseSession& session, FilesOfRun& filesOfRun, const std::function<void()>& openDatabase,
                    Step& step)
{
    job_.host.SetProgressRange(ProgressBarId::Files, static_cast<std::int64_t>(run_.sources.size()));
    job_.host.SetProgress(ProgressBarId::Files, 0);
    KnownTables knownTables(session);
    const Shared shared{session, knownTables, filesOfRun};
    const auto readLoaded = [&] {
        ThrowIfAborted(job_.settings);
        loaded_.Read(session);
    };
    if (job_.settings.blOnce)
        readLoaded();
    for (std::size_t n = 1; n <= run_.sources.size(); ++n) {
        job_.ProcessEvents();
        const Source& file = run_.sources[n - 1];
        FileReport& report = outcome_.files[n - 1];
        run_.tried = n;
        job_.log.ProtocolAppend("File " + std::to_string(n) + " of " + std::to_string(run_.sources.size()) + ": " +
                                report.path);
        const Timed timed(report);
        if (!ConvertWhole(file, report, shared, step)) {
            isFileComplete_ = file.isLastOfFile; // for the next one, if this was the last of it
            if (run_.hasCommitted)
                velReopenDatabase(job_, session);
            else
                openDatabase();
            if (job_.settings.blOnce)
                readLoaded();
        }
        job_.host.SetProgress(ProgressBarId::Files, static_cast<std::int64_t>(n));
    }
}

/// With +once, whether the source's content, whose hash it gives, was loaded before.
bool Batch::IsLoaded(const Source& source, FileReport& report, std::string& hash)
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

void Batch::ConvertAndFinish(const Source& source, FileReport& report, const Shared& shared, TableSinks& sinks,
                             Step& step)
{
    std::string hash;
    if (IsLoaded(source, report, hash))
        return RenameWhenWanted(source, step);
    const bool converted = ConvertOneFile(source, report, shared, sinks);
    FinishFile(source, report, converted, shared.session, hash, step);
}

/// May the run go on behind the errors that came after so many? Not when they concern more than one file, or the user
/// has had enough.
bool Batch::MayGoOn(std::size_t errorsBefore) const
{
    const std::vector<Findings::Error>& errors = job_.log.Found().errors;
    return job_.settings.blContinue && !outcome_.cancelled && errors.size() > errorsBefore &&
           std::none_of(errors.begin() + static_cast<std::ptrdiff_t>(errorsBefore), errors.end(),
                        [](const Findings::Error& error) { return ConcernsWholeDatabase(error.number); });
}

/// Where a source is whole or nothing, what came of one that ends early is taken back, and the run goes on behind an
/// error of its own. False when the database was closed for that.
bool Batch::ConvertWhole(const Source& source, FileReport& report, const Shared& shared, Step& step)
{
    TableSinks sinks;
    const auto convert = [&] { ConvertAndFinish(source, report, shared, sinks, step); };
    if (!job_.settings.IsWholeOrNothing()) {
        convert();
        return true;
    }
    const std::size_t errorsBefore = job_.log.Found().errors.size();
    const RunPoint before(outcome_, run_);
    shared.filesOfRun.BeginDocument();
    const auto takeBack = [&] {
        run_.unfinishedRecords = 0;
        run_.isTakenBack = true;
        before.Restore(outcome_, run_);
        shared.filesOfRun.TakeBackDocument();
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
    if (hasEnded) // its records are safe: it could not be renamed
        return true;
    run_.isTakenBack = false;
    report.problem = job_.log.Found().errors.back().text;
    report.end = FileReport::End::Failed;
    report.records = 0;
    report.values.reset();
    ++outcome_.failedFiles;
    job_.log.ProtocolAppend("Taken back, since it ended in an error: " + report.path);
    shared.session.TakeBack();
    return false;
}

/// True when the file could be read. A step that fails, or in which the user cancels, ends the run only after the
/// closing ones: the steps between write their trace lines and no more.
bool Batch::ConvertOneFile(const Source& source, FileReport& report, const Shared& shared, TableSinks& sinks)
{
    DatabaseSession& session = shared.session;
    job_.controls.txtXML.clear();
    job_.host.SetProgress(ProgressBarId::Records, 0);
    LoadedXml xml = velLoadXML(job_, source);
    const auto run = [this](auto&& step) { return Guarded(job_.log, step); };
    const auto createDatabase = [&](const MappingPlan& plan, int pass) {
        velCreateDatabase(job_, session, xml.document, plan, pass);
    };
    StructureModel model;
    MappingPlan plan;
    const auto readDatabase = [&]() -> const KnownDatabase& { return shared.knownTables.Read(); };
    run([&] { velAnalyseXML(job_, xml.document, tagMap_, model, plan, readDatabase); });
    run([&] { KeepListApart(job_, session, plan); });
    ShowStructure(xml.document, model);
    run([&] {
        createDatabase(plan, job_.settings.blExtendMdb ? schema_pass::kExtendStructure : schema_pass::kCreateTables);
    });
    if (job_.settings.blCreateTableRelations)
        run([&] { createDatabase(plan, schema_pass::kCreateRelations); });
    WarnOfSize(session, EstimatedGrowth(xml.document, plan));
    run([&] { velOpenTables(job_, session, plan, shared.filesOfRun, sinks); });
    DocumentImport import(job_, session, source, xml.document, plan, sinks);
    const bool imported = run([&] { import.Run(); });
    report.values = import.Tell(imported);
    if (report.values)
        outcome_.leftOut.Add(*report.values);
    outcome_.recordsWithoutText += velCloseTables(job_, session, sinks);
    run_.unfinishedRecords = report.records = sinks.SavedRecords();
    run_.textFilesChanged = run_.textFilesChanged || shared.filesOfRun.HasChanged() ||
                            (job_.settings.blTextExport && run_.unfinishedRecords > 0);
    ThrowIfAborted(job_.settings);
    report.problem = std::move(xml.problem);
    return xml.readable;
}

/// Before the import, which may take long and end at the limit.
void Batch::WarnOfSize(const DatabaseSession& session, std::uint64_t growth)
{
    if (job_.settings.blAbort || !session.IsOpen())
        return;
    if (const auto warning = SizeWarning(session.SizeBytes() + growth, session.MaxSizeBytes()))
        job_.log.Warn("nearly-full", *warning);
}

void Batch::ShowStructure(const Document& document, const StructureModel& model)
{
    if (!job_.host.ShowsStructure() || document.IsEmpty())
        return;
    job_.controls.txtXML = StructureReport(model, document);
    job_.controls.documentTags = NamesToMap(model);
    job_.host.ControlsChanged();
}

void Batch::FinishFile(const Source& source, FileReport& report, bool converted, DatabaseSession& session,
                       const std::string& hash, Step& step)
{
    isFileComplete_ = isFileComplete_ && converted;
    if (converted) {
        step("Commit");
        if (!hash.empty())
            loaded_.Add(session, hash, report.path, report.records);
        Commit(session);
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
void Batch::RenameWhenWanted(const Source& source, Step& step)
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

/// What was announced has become true by it.
void Batch::Commit(DatabaseSession& session)
{
    run_.commitFailed = true;
    session.Commit();
    run_.commitFailed = false;
    for (const std::string& line : session.TakeAnnouncements())
        if (!job_.settings.blPreview)
            job_.log.ProtocolAppend(line);
}

/// After a cancel or an error. What was saved stays. A file that has not saved a record yet leaves nothing behind: the
/// database is better off as it was before it.
void Batch::EndEarly(DatabaseSession& session)
{
    try {
        if (run_.unfinishedRecords > 0 && !run_.commitFailed)
            Commit(session);
    } catch (const RuntimeError& error) {
        job_.log.ErrorReport("btnConvert_Click", "btnConvert_Click: Commit what was saved before the run ended early",
                             error);
    }
    if (!job_.settings.blPreview)
        job_.log.ProtocolAppend("The run ended early: " + WhatTheDatabaseHolds(run_, job_.settings) +
                                AboutTextFiles(run_, job_.settings));
}

void Batch::btnQuit_Click()
{
    if (job_.controls.btnConvertCaption != kWorking)
        return;
    if (!job_.settings.blQuiet) {
        const Answer answer =
            job_.host.Ask(kCancelQuestion, kCaption, Buttons::OkCancel, Icon::Question, Answer::Cancel);
        if (answer != Answer::Ok)
            return;
        job_.log.ProtocolAppend("Operation cancelled by user");
    }
    job_.settings.blAbort = true;
    outcome_.cancelled = true;
}

} // namespace velmora
