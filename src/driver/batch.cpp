#include "driver/batch.h"

#include "driver/closing_words.h"
#include "driver/refusals.h"
#include "driver/rename.h"
#include "driver/run_files.h"
#include "driver/source_converter.h"
#include "driver/url_source.h"
#include "import/files_of_run.h"
#include "schema/clear_tables.h"
#include "schema/database_session.h"
#include "settings/conversion_settings.h"
#include "source/source_list.h"
#include "source/sources_of_run.h"
#include "xml_export/xml_export.h"

#include <ctime>
#include <optional>

namespace velmora {

namespace {

constexpr std::string_view kWorking = "Working...";

} // namespace

RunOutcome Batch::btnConvert_Click(const std::optional<std::string>& refusal)
{
    outcome_ = {};
    run_ = {};
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
    std::function<bool()> takeNext;
    if (usesScratch)
        takeNext = [&] { return scratch.TakeNext(); };
    const auto openDatabase = [&] {
        Guarded(job_.log, [&] { velOpenDatabase(job_, session, takeNext); });
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

/// Until the first file that can be read, a re-creation or an emptying is not final.
void Batch::Convert(DatabaseSession& session, FilesOfRun& filesOfRun, const std::function<void()>& openDatabase,
                    Step& step)
{
    job_.host.SetProgressRange(ProgressBarId::Files, static_cast<std::int64_t>(run_.sources.size()));
    job_.host.SetProgress(ProgressBarId::Files, 0);
    SourceConverter converter(job_, tagMap_, session, filesOfRun, outcome_, run_);
    converter.ReadLoaded();
    for (std::size_t n = 1; n <= run_.sources.size(); ++n) {
        job_.ProcessEvents();
        FileReport& report = outcome_.files[n - 1];
        run_.tried = n;
        job_.log.ProtocolAppend("File " + std::to_string(n) + " of " + std::to_string(run_.sources.size()) + ": " +
                                report.path);
        const Source* const next = n < run_.sources.size() ? &run_.sources[n] : nullptr;
        if (!converter.Convert(run_.sources[n - 1], next, report, step)) {
            if (run_.hasCommitted)
                velReopenDatabase(job_, session);
            else
                openDatabase();
            converter.ReadLoaded();
        }
        job_.host.SetProgress(ProgressBarId::Files, static_cast<std::int64_t>(n));
    }
}

/// After a cancel or an error. What was saved stays. A file that has not saved a record yet leaves nothing behind: the
/// database is better off as it was before it.
void Batch::EndEarly(DatabaseSession& session)
{
    try {
        if (run_.unfinishedRecords > 0 && !run_.commitFailed)
            CommitRun(job_, session, run_);
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
