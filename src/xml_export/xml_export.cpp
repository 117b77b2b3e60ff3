#include "xml_export/xml_export.h"

#include "platform/paths.h"
#include "xml_export/document_export.h"
#include "xml_export/export_plan.h"
#include "xml_export/output_file.h"

#include <algorithm>
#include <deque>
#include <vector>

namespace velmora {

namespace {

constexpr std::size_t kMostNamed = 10;

/// "out.xml", or of several "out_1.xml", "out_2.xml".
std::vector<std::string> FileNames(const std::string& path, std::size_t count)
{
    if (count == 1)
        return {path};
    const std::size_t folder = FolderPart(NativePath(path)).size();
    const std::size_t dot = path.rfind('.');
    const std::size_t end = dot == path.npos || dot <= folder ? path.size() : dot;
    std::vector<std::string> names;
    for (std::size_t number = 1; number <= count; ++number)
        names.push_back(path.substr(0, end) + "_" + std::to_string(number) + path.substr(end));
    return names;
}

void TellOfUnknown(Job& job, const std::vector<std::string>& unknown)
{
    for (std::size_t i = 0; i < std::min(unknown.size(), kMostNamed); ++i)
        job.log.Warn("left-out", "Left out, since nothing says where it stands in a document: " + unknown[i]);
    if (unknown.size() > kMostNamed)
        job.log.Warn("left-out", "and " + std::to_string(unknown.size() - kMostNamed) + " more");
}

/// What is there already is replaced when a person says so. Throws ExportRefused when nobody does.
bool MayReplace(Job& job, const std::vector<std::string>& names)
{
    const auto isThere = [](const std::string& name) { return FileExists(name); };
    const auto there = std::find_if(names.begin(), names.end(), isThere);
    if (there == names.end())
        return false;
    const auto more = std::count_if(there + 1, names.end(), isThere);
    const std::string files =
        "\"" + *there + "\"" + (more == 0 ? " is" : " and " + std::to_string(more) + " more of its documents are");
    if (!job.settings.blQuiet &&
        job.host.Ask(files + " there already.\r\nDo you want to replace what is there?", kCaption, Buttons::YesNoCancel,
                     Icon::Question, Answer::No) == Answer::Yes)
        return true;
    throw ExportRefused("\"" + *there + "\" is there already; +overwrite replaces it");
}

/// Throws ExportRefused.
void Export(Job& job, Step& step)
{
    const std::string& database = job.settings.targetFile;
    step("Open database [" + database + "] for reading");
    DatabaseSession session;
    session.OpenReadOnly(PathFromUtf8(NativePath(database)));
    step("Read what the tables are");
    const ExportPlan plan = MakeExportPlan(session);
    DocumentExport document(job, session, plan);
    const std::vector<RootRecord> roots = document.Roots();
    if (roots.empty())
        throw ExportRefused("the database has no record of a document element");

    const std::vector<std::string> names = FileNames(job.settings.xmlFile, roots.size());
    const bool mayReplace = job.settings.blOverwrite || MayReplace(job, names);
    TellOfUnknown(job, plan.unknown);
    std::deque<OutputFile> files;
    for (std::size_t i = 0; i < roots.size(); ++i) {
        step("Write [" + names[i] + "]");
        document.Write(roots[i], files.emplace_back(names[i]));
        files.back().Close();
        job.ProcessEvents();
    }
    for (OutputFile& file : files)
        file.MoveIntoPlace(mayReplace);
    for (const std::string& line : document.LeftOut())
        job.log.Warn("left-out", line);
    job.log.ProtocolAppend("Written: " + names.front() + (names.size() > 1 ? " to " + names.back() : "") + ", " +
                           std::to_string(document.Written()) + " records");
}

} // namespace

std::optional<std::string> velExportXML(Job& job)
{
    try {
        Procedure(job, "velExportXML", [&](Step& step) { Export(job, step); });
        return std::nullopt;
    } catch (const ExportRefused& refused) {
        return refused.what();
    }
}

} // namespace velmora
