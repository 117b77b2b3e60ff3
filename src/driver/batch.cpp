#include "driver/batch.h"

#include "driver/source_files.h"
#include "import/node_importer.h"
#include "platform/file_listing.h"
#include "schema/database_session.h"
#include "schema/schema_builder.h"
#include "settings/available_options.h"
#include "settings/read_settings.h"
#include "xml/structure_analysis.h"
#include "xml/white_space.h"

#include <optional>

namespace velmora {

namespace {

constexpr std::string_view kWorking = "Working...";

/// Why there is nothing to convert; nullopt when there is.
std::optional<std::string> NoSource(const Controls& controls, const std::vector<std::string>& files)
{
    const std::string& source = controls.txtFILE_XML.text;
    if (TrimWhiteSpace(source).empty())
        return "No XML file specified!";
    if (!files.empty())
        return std::nullopt;
    return source.find_first_of("*?") != source.npos ? "No files to import" : "File does not exist!";
}

} // namespace

RunOutcome Batch::btnConvert_Click()
{
    outcome_ = {};
    job_.settings.blAbort = false;
    job_.log.ClearText();
    // What must not begin ends here, before anything is opened: the protocol file may be the very file that must not be
    // written.
    const std::vector<std::string> files = ListFiles(job_.controls.txtFILE_XML.text);
    std::optional<std::string> refusal;
    if (const auto unavailable = UnavailableOption(job_.controls))
        refusal = std::string(*unavailable);
    else
        refusal = ClashingFiles(job_.controls, files);
    if (refusal) {
        job_.log.ProtocolAppend(*refusal);
        job_.log.ProtocolAppend("Done");
        outcome_.nothingToDo = true;
        return outcome_;
    }

    ShowRunning(true);
    DatabaseSession session;
    Procedure(job_, "btnConvert_Click", [&](Step& step) {
        OpenProtocolFile();
        ReadSettingsFromForm(job_.controls, job_.settings, [this] {
            tagMap_.Compact();
            return tagMap_.UpperBound() >= 1;
        });
        if (const auto reason = NoSource(job_.controls, files)) {
            job_.log.ProtocolAppend(*reason);
            outcome_.nothingToDo = true;
            return;
        }
        Convert(files, session, step);
    });
    outcome_.tables = session.Reports();
    session.Close();
    job_.log.ProtocolAppend("Done");
    if (job_.log.IsFileOpen()) {
        job_.log.Trace("Closing protocoll file");
        job_.log.CloseFile();
    }
    ShowRunning(false);
    outcome_.failed = job_.log.ErrorCount() > 0;
    return outcome_;
}

void Batch::OpenProtocolFile()
{
    if (!job_.controls.txtFILE_LOG.text.empty()) {
        job_.log.OpenFile(job_.controls.txtFILE_LOG.text);
        job_.log.WriteProtocolFile(std::string(50, '='));
        job_.log.Trace("Protocoll file opened");
    }
    job_.log.Trace(std::string("btnConvert_Click: Debug mode: ") + (job_.settings.blDebug ? "True" : "False"));
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

/// Opens the database once and converts the files one after another; each is committed when it is done.
void Batch::Convert(const std::vector<std::string>& files, DatabaseSession& session, Step& step)
{
    velOpenDatabase(job_, session);
    job_.host.SetProgressRange(ProgressBarId::Files, static_cast<std::int64_t>(files.size()));
    job_.host.SetProgress(ProgressBarId::Files, 0);
    for (std::size_t n = 1; n <= files.size() && !job_.settings.blAbort; ++n) {
        const std::string& path = files[n - 1];
        job_.log.ProtocolAppend("File " + std::to_string(n) + " of " + std::to_string(files.size()) + ": " + path);
        ConvertOneFile(path, session);
        if (!job_.settings.blAbort) {
            step("Commit");
            session.Commit();
        }
        job_.host.SetProgress(ProgressBarId::Files, static_cast<std::int64_t>(n));
    }
    if (session.IsOpen() && job_.settings.blAbort)
        CommitWhatIsSaved(session);
}

/// After a cancel or an error in the middle of a file: what was saved until then stays.
void Batch::CommitWhatIsSaved(DatabaseSession& session)
{
    try {
        session.Commit();
        job_.log.ProtocolAppend("The run ended early: what was saved until then stays in the database");
    } catch (const RuntimeError& error) {
        job_.log.ErrorReport("btnConvert_Click", "btnConvert_Click: Commit what was saved before the run ended early",
                             error);
    }
}

void Batch::ConvertOneFile(const std::string& path, DatabaseSession& session)
{
    job_.controls.txtXML.clear();
    job_.host.SetProgress(ProgressBarId::Records, 0);
    LoadedXml xml = velLoadXML(job_, path);
    if (job_.settings.blAbort)
        return;
    StructureModel model;
    velAnalyseXML(job_, xml.document, model);
    velCreateDatabase(job_, session, xml.document, model, tagMap_,
                      job_.settings.blExtendMdb ? schema_pass::kExtendStructure : schema_pass::kCreateTables);
    if (job_.settings.blCreateTableRelations)
        velCreateDatabase(job_, session, xml.document, model, tagMap_, schema_pass::kCreateRelations);
    TableSinks sinks;
    velOpenTables(job_, session, model, tagMap_, sinks);
    ImportDocument(job_, session, xml.document, model, tagMap_, sinks);
    velCloseTables(job_, session, sinks);
    if (!job_.settings.blAbort)
        ++(xml.readable ? outcome_.convertedFiles : outcome_.unreadableFiles);
}

void Batch::btnQuit_Click()
{
    if (job_.controls.btnConvertCaption != kWorking)
        return;
    if (!job_.settings.blQuiet) {
        const Answer answer = job_.host.Ask("Conversion is running. Do you really want to cancel it?", kCaption,
                                            Buttons::OkCancel, Icon::Question, Answer::Cancel);
        if (answer != Answer::Ok)
            return;
        job_.log.ProtocolAppend("Operation cancelled by user");
    }
    job_.settings.blAbort = true;
    outcome_.cancelled = true;
}

} // namespace velmora
