// velmora: conversions from a command line, without a window.

#include "app/application.h"
#include "app/exit_status.h"
#include "app/preview_text.h"
#include "console/console_host.h"
#include "console/report.h"
#include "log/passwords.h"
#include "platform/program.h"
#include "platform/terminal.h"
#include "settings/command_line.h"
#include "source/plain_words.h"
#include "source/source.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <initializer_list>
#include <string>
#include <vector>

namespace {

using namespace velmora;

constexpr std::string_view kWindowProgram = "velmora-gui";

/// What the command line asks for, before anything is done about it.
Controls WhatIsAsked(const std::string& line)
{
    Controls controls;
    ApplyCommandLine(line, controls, [](std::string_view) {});
    return controls;
}

/// Whether a person sits there whom a run without a window can ask.
bool CanAsk()
{
    return IsTerminal(stdin) && IsTerminal(stderr);
}

ExitStatus ExplainMissingWindow(ConsoleHost& host)
{
    host.WriteError(std::string("no source is named, ") +
                    (FindInstalled(kWindowProgram).empty() ? "and this installation has no window to name one in\n"
                                                           : "and there is no display to open the window on\n") +
                    "To convert here, write for example\n"
                    "  velmora orders.xml orders.mdb\n"
                    "velmora --help lists every option");
    return ExitStatus::NothingToConvert;
}

ExitStatus Run(ConsoleHost& host, const std::string& line)
{
    Application application(host);
    host.SetCancel([&application] {
        // A quiet run is cancelled without a question, and so without the line that follows the answer.
        if (application.GetJob().settings.blQuiet)
            application.GetJob().log.ProtocolAppend("Operation cancelled by user");
        application.Cancel();
    });
    if (WhatIsAsked(line).txtSUMMARY.text == kStandardOutput)
        host.KeepOutputForResult();
    application.Form_Load(line);
    const RunOutcome outcome = application.Convert();
    const Job& job = application.GetJob();
    const ExitStatus status = StatusOf(outcome, application.MappingLoaded(), job.controls.chkStrict.Checked());
    if (outcome.preview)
        host.Write(PreviewText(outcome, job.settings, status));
    else if (const std::string table = ClosingTable(outcome.tables, host.Columns()); !table.empty())
        host.Write("\n" + table);
    return status;
}

ExitStatus Main(const std::vector<std::string>& arguments)
{
    const auto given = [&arguments](std::initializer_list<std::string_view> words) {
        return std::find_first_of(arguments.begin(), arguments.end(), words.begin(), words.end()) != arguments.end();
    };
    const bool wantsHelp = given({"--help", "-help", "-h", "/?", "help"});
    ConsoleHost host;
    if (wantsHelp || given({"--version"})) {
        host.Write(wantsHelp ? HelpText() : "velmora " + std::string(Version()) + "\n");
        return ExitStatus::Success;
    }
    CatchInterrupts();
    try {
        const PlainWords words = TakePlainWords(arguments);
        const std::string line = JoinArguments(words.arguments);
        const Controls asked = WhatIsAsked(line);
        if (asked.chkQuiet.Checked())
            return Run(host, line);
        if (!asked.txtFILE_EXPORT.text.empty() || asked.chkPreview.Checked()) // which have nothing to ask
            return Run(host, line + " +quiet");
        const bool readsInput = asked.txtFILE_XML.text == kStandardInput && asked.txtXML_URL.text.empty();
        if (!words.nameFiles && !readsInput) {
            const std::string window = HasDisplay() ? FindInstalled(kWindowProgram) : std::string();
            if (!window.empty() && BecomeProgram(window, arguments))
                return ExitStatus::Success;
            if (asked.txtFILE_XML.text.empty() && asked.txtXML_URL.text.empty())
                return ExplainMissingWindow(host);
        }
        if (readsInput || !CanAsk())
            return Run(host, line + " +quiet");
        host.TakeAnswersFrom(stdin);
        return Run(host, line);
    } catch (const CommandLineError& error) {
        host.WriteError(WithoutPasswords(error.what()));
        return ExitStatus::NothingToConvert;
    } catch (const std::exception& error) {
        host.WriteError(error.what());
        return ExitStatus::Error;
    }
}

} // namespace

int main(int argc, char* argv[])
{
    PrepareStreams();
    return static_cast<int>(Main(ProgramArguments(argc, argv)));
}
