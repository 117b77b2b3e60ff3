#include "app/application.h"

#include "app/summary.h"
#include "driver/run_files.h"
#include "log/passwords.h"
#include "mapping/tag_map.h"
#include "platform/clock.h"
#include "platform/paths.h"
#include "schema/database_view.h"
#include "settings/command_line.h"
#include "source/source.h"

#include <utility>

namespace velmora {

namespace {

constexpr std::string_view kPasswordKey = "pwd=";

/// With whatever sign: "-previev" may be meant for the one as well as for the other.
bool IsPreview(std::string_view word)
{
    return word.ends_with("preview");
}

} // namespace

std::string_view Version() noexcept
{
    return VELMORA_VERSION;
}

void Application::Form_Load(std::string_view commandLine)
{
    Controls& controls = job_.controls;
    controls = Controls();
    tagMap_.Clear();
    controls.lblVersion = Version();
    ApplyCommandLine(commandLine, controls, [this](std::string_view token) { ReportUnknown(token); });
    job_.settings.blDebug = controls.chkDebug.Checked();
    // Whoever names an address wants it: a file named as well is what the box shows again afterwards.
    controls.tabSourceType = controls.txtXML_URL.text.empty() ? 0 : 1;
    controls.UpdateEnabled();
    // Known before the mapping file is read: an error in it must not stop an unattended run with a box.
    job_.settings.blQuiet = controls.chkQuiet.Checked();

    job_.host.SetProgressRange(ProgressBarId::Records, 100);
    const bool isMappingNamed = !controls.txtFILE_MAPPING.text.empty();
    mappingLoaded_ = !isMappingNamed || velLoadTagMapping(job_, tagMap_, controls.txtFILE_MAPPING.text);
    controls.chkEnableTagMapping.value = isMappingNamed ? CheckState::Checked : CheckState::Unchecked;
    job_.host.ControlsChanged();
}

void Application::ReportUnknown(std::string_view token)
{
    const std::optional<std::string_view> meant = ResemblingWord(token);
    std::string shown(token);
    if (meant == kPasswordKey && token.find('=') != token.npos)
        shown = shown.substr(0, shown.find('=') + 1).append(kHiddenPassword);
    job_.log.Warn("unknown-word", "Unknown parameter:" + shown);
    if (meant)
        job_.log.ProtocolAppend("Did you mean " + std::string(*meant) + "?");
    if (unknown_.empty())
        unknown_ = shown;
    if (meant && mistyped_.empty())
        mistyped_ = shown;
    if (meant && IsPreview(*meant) && mistypedPreview_.empty())
        mistypedPreview_ = shown;
}

std::optional<std::string> Application::TakeRefusal()
{
    const std::string unknown = std::exchange(unknown_, {});
    const std::string mistyped = std::exchange(mistyped_, {});
    const std::string preview = std::exchange(mistypedPreview_, {});
    const Controls& controls = job_.controls;
    const auto refusal = [](const std::string& reason) { return reason + "; nothing was written"; };
    if (controls.chkStrict.Checked() && !unknown.empty())
        return refusal("Not begun, because of +strict: \"" + unknown + "\" is not known");
    if (controls.chkStrict.Checked() && !mappingLoaded_)
        return refusal("Not begun, because of +strict: the file of tag names could not be read");
    if (controls.txtFILE_XML.text == kStandardInput && !controls.FromUrl() && !job_.host.ReadsStandardInput())
        return refusal("Standard input (xml=-) is read by velmora without a window");
    if (!preview.empty() && !controls.chkPreview.Checked())
        return refusal("Not begun, because \"" + preview +
                       "\" is not known and may be mistyped: \"preview\" writes nothing");
    const bool recreates = controls.chkRecreateDatabase.Checked();
    const std::string& target = controls.txtFILE_MDB.text;
    if (mistyped.empty() || !controls.txtFILE_EXPORT.text.empty() ||
        !(recreates || controls.chkEmptyTables.Checked()) || !FileExists(target))
        return std::nullopt;
    return refusal("Not begun, because \"" + mistyped + "\" is not known and may be mistyped, and the database \"" +
                   target + "\" would be " + (recreates ? "replaced" : "emptied"));
}

RunOutcome Application::Convert()
{
    const std::int64_t begin = CoarseMilliseconds();
    const TextControl& summary = job_.controls.txtSUMMARY;
    std::optional<std::string> refusal = TakeRefusal();
    const bool isFile = !summary.text.empty() && summary.text != kStandardOutput;
    const std::optional<std::string> unfit = isFile ? UnfitSummary(summary.text) : std::nullopt;
    RunOutcome outcome = batch_.btnConvert_Click(refusal ? refusal : unfit);
    const bool mayWrite = !isFile || !job_.settings.blPreview;
    if (!summary.text.empty() && mayWrite && !unfit && !IsSummaryClashing(job_.settings))
        Summarise(outcome, CoarseMilliseconds() - begin);
    (void)job_.log.TakeFindings();
    return outcome;
}

/// What the database holds: somebody else may have opened it by now.
DatabaseContents Application::ReadContents(const RunOutcome& outcome)
{
    if (outcome.preview)
        return outcome.preview->contents;
    if (outcome.tables.empty())
        return {};
    try {
        return DatabaseView(NativePath(job_.settings.targetFile)).Read();
    } catch (const RuntimeError& error) {
        job_.log.Warn("columns-unknown", std::string("The summary does not name the columns: ").append(error.what()));
        return {};
    }
}

/// A summary that cannot be written is an error of the run.
void Application::Summarise(RunOutcome& outcome, std::int64_t milliseconds)
{
    const ConversionSettings& settings = job_.settings;
    try {
        const DatabaseContents contents = ReadContents(outcome);
        const std::string text = SummaryText({.version = Version(),
                                              .status = StatusOf(outcome, mappingLoaded_, settings.blStrict),
                                              .milliseconds = milliseconds,
                                              .controls = job_.controls,
                                              .outcome = outcome,
                                              .findings = job_.log.Found(),
                                              .contents = contents});
        if (settings.summaryFile == kStandardOutput)
            job_.host.WriteResult(text);
        else
            WriteSummary(settings.summaryFile, text);
    } catch (const RuntimeError& error) {
        job_.log.ErrorReport("Summarise", "Summarise: " + settings.summaryFile, error);
        outcome.failed = true;
    }
}

} // namespace velmora
