#include "driver/url_source.h"

#include "driver/curl_log.h"
#include "driver/shell_and_wait.h"
#include "log/passwords.h"
#include "platform/clock.h"
#include "platform/paths.h"
#include "platform/program.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

constexpr int kTimeoutSeconds = 30;

void RemoveFile(const std::string& path)
{
    std::error_code ignored;
    std::filesystem::remove(PathFromUtf8(path), ignored);
}

/// A step that fails with its own text.
[[noreturn]] void Fail(Step& step, const std::string& statement, const std::string& description)
{
    step(statement);
    throw RuntimeError(runtime_errors::kApplicationDefined, description);
}

std::string FindCurl(const Places& places, Step& step)
{
    std::string beside = places.program + kPathSeparator + std::string("curl").append(kProgramSuffix);
    if (IsProgram(beside))
        return beside;
    std::string installed = FindOnPath("curl");
    if (installed.empty())
        Fail(step, "Download CURL.EXE from https://curl.se/download.html and place it into your application directory!",
             "curl is neither in \"" + places.program + "\" nor on the search path");
    return installed;
}

/// What receives a download: the document, and what curl tells about it. Both are gone with this object unless kept.
class DownloadFiles {
public:
    explicit DownloadFiles(std::string xml) : xml_(std::move(xml)), log_(xml_.substr(0, xml_.size() - 3) + "log") {}
    ~DownloadFiles()
    {
        RemoveFile(log_);
        if (!kept_)
            RemoveFile(xml_);
    }
    DownloadFiles(const DownloadFiles&) = delete;
    DownloadFiles& operator=(const DownloadFiles&) = delete;

    [[nodiscard]] const std::string& Xml() const noexcept { return xml_; }
    [[nodiscard]] const std::string& Log() const noexcept { return log_; }
    std::string KeepXml()
    {
        kept_ = true;
        return xml_;
    }

private:
    std::string xml_, log_;
    bool kept_ = false;
};

/// The address stands as it was typed, without quotes: one with blanks falls apart into several words, which curl takes
/// for what they are. Between user and password stands ": ", so that the server receives the password with a blank in
/// front: servers that are used with this program are set up for that.
std::string CurlCommand(const std::string& curl, const DownloadFiles& files, const Controls& controls)
{
    std::string line = curl + " --verbose -o \"" + files.Xml() + "\" " + controls.txtXML_URL.text;
    if (!controls.txtXML_USER.text.empty())
        line += " -u \"" + controls.txtXML_USER.text + ": " + controls.txtXML_PASSWORD.text + '"';
    return line + " -s -S --stderr \"" + files.Log() + '"';
}

/// Tells of a download that failed, with all that curl has said, and ends the run.
void CheckDownload(Job& job, const DownloadFiles& files, Step& step)
{
    CurlLog log = ReadCurlLog(files.Log());
    // A word among those of the address that curl does not take ends it before its log is opened.
    if (log.failure.empty() && !FileExists(files.Xml()))
        log.failure = "curl wrote no file";
    if (log.failure.empty())
        return;
    step("Download of XML had failed!");
    job.log.ProtocolAppend("Download of XML had failed!");
    for (const std::string& line : log.lines)
        job.log.ProtocolAppend(line);
    throw RuntimeError(runtime_errors::kApplicationDefined, "\"" + WithoutUserOfUrl(job.controls.txtXML_URL.text) +
                                                                "\" could not be downloaded: " + log.failure);
}

} // namespace

std::string FreeDownloadPath(const std::string& folder, const std::function<std::time_t()>& now)
{
    const auto path = [&](const std::string& counter) {
        return folder + kPathSeparator + "xml_" + FormatTime(now(), "%Y%m%d_%H%M%S") + counter + ".xml";
    };
    std::string free = path("");
    for (int counter = 1; FileExists(free); ++counter)
        free = path("_" + std::to_string(counter));
    return free;
}

std::string GetXMLfromURL(Job& job, const Places& places)
{
    std::string path;
    Procedure(job, "velGetXMLfromURL", [&](Step& step) {
        if (job.controls.txtXML_URL.text.empty())
            Fail(step, "URL for source XML is not specified", "The source is a web address, and none is named");
        job.log.ProtocolAppend("Downloading XML file from URL");
        const std::string curl = FindCurl(places, step);
        step("Folder for the download");
        MakeFilesFolder(places);
        DownloadFiles files(FreeDownloadPath(places.files, [] { return std::time(nullptr); }));
        const std::string_view result = ShellAndWait(job, CurlCommand(curl, files, job.controls), kTimeoutSeconds);
        if (result == kShellTimeout)
            Fail(step, "Timeout reached when receiving file", "curl took too long");
        if (result == kShellError)
            Fail(step, "Error receiving the file", "\"" + curl + "\" could not be started");
        if (job.settings.blAbort)
            return;
        CheckDownload(job, files, step);
        path = files.KeepXml();
    });
    return path;
}

bool UrlSource::Fetch(const Places& places)
{
    if (!job_.controls.FromUrl())
        return true;
    download_ = GetXMLfromURL(job_, places);
    if (download_.empty())
        return false;
    typed_ = std::exchange(job_.controls.txtFILE_XML.text, download_);
    return true;
}

void UrlSource::Release()
{
    if (download_.empty())
        return;
    RemoveFile(std::exchange(download_, {}));
    job_.controls.txtFILE_XML.text = typed_;
}

} // namespace velmora
