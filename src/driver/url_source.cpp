#include "driver/url_source.h"

#include "driver/curl.h"
#include "log/passwords.h"
#include "log/runtime_error.h"
#include "platform/clock.h"
#include "platform/paths.h"
#include "platform/program.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

bool IsEmptyFile(const std::string& path)
{
    std::error_code error;
    return std::filesystem::file_size(PathFromUtf8(path), error) == 0 || error;
}

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
/// for what they are. Everybody on this machine can read the line: user and password are given in another way.
std::string CurlCommand(const std::string& curl, const DownloadFiles& files, const ConversionSettings& settings)
{
    std::string line = curl + " --verbose -o \"" + files.Xml() + "\" " + settings.url;
    if (!settings.urlUser.empty())
        line += " --config -";
    return line + " -s -S --stderr \"" + files.Log() + '"';
}

/// What stands between user and password. Servers that are used with this program are set up for a password with a
/// blank in front; all others take it as it is.
enum class PasswordForm { AfterBlank, AsItIs };

/// The line that curl reads on its standard input; nothing without a user.
std::string CurlConfig(const ConversionSettings& settings, PasswordForm form)
{
    if (settings.urlUser.empty())
        return {};
    std::string line = "user = \"";
    for (const char c : settings.urlUser + (form == PasswordForm::AfterBlank ? ": " : ":") + settings.urlPassword) {
        if (c == '"' || c == '\\')
            line += '\\';
        line += c;
    }
    return line + "\"\n";
}

/// nullopt for what is no number of seconds.
std::optional<double> TimeoutSeconds(const ConversionSettings& settings)
{
    const std::string& text = settings.urlTimeout;
    if (text.empty())
        return kNoTimeout;
    double seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isNumber = error == std::errc() && end == text.data() + text.size() && seconds > 0;
    return isNumber ? std::optional(seconds) : std::nullopt;
}

/// One download; false when the server wants another form of the password. Tells of one that failed, with all that curl
/// has said, and ends the run.
bool Download(Job& job, const std::string& curl, const DownloadFiles& files, PasswordForm form, Step& step)
{
    const std::string_view result =
        ShellAndWait(job, CurlCommand(curl, files, job.settings), TimeoutSeconds(job.settings).value_or(kNoTimeout),
                     CurlConfig(job.settings, form));
    if (result == kShellTimeout)
        Fail(step, "Timeout reached when receiving file",
             "curl took longer than the " + job.settings.urlTimeout + " seconds of timeout=");
    if (result == kShellError)
        Fail(step, "Error receiving the file", "\"" + curl + "\" could not be started");
    CurlLog log = ReadCurlLog(files.Log());
    if (log.isUnauthorized && form == PasswordForm::AfterBlank && !job.settings.urlUser.empty())
        return false;
    // A word among those of the address that curl does not take ends it before its log is opened.
    if (log.lines.empty() && IsEmptyFile(files.Xml()))
        log.failure = "curl wrote no file";
    if (log.failure.empty())
        return true;
    step("Download of XML had failed!");
    job.log.ProtocolAppend("Download of XML had failed!");
    for (const std::string& line : log.lines)
        job.log.ProtocolAppend(line);
    throw RuntimeError(runtime_errors::kApplicationDefined,
                       "\"" + WithoutUserOfUrl(job.settings.url) + "\" could not be downloaded: " + log.failure);
}

} // namespace

std::string ReserveDownload(const std::string& folder, const std::function<std::time_t()>& now)
{
    for (int counter = 0;; ++counter) {
        const std::string suffix = counter == 0 ? "" : "_" + std::to_string(counter);
        std::string path = folder;
        path.append(1, kPathSeparator).append("xml_").append(FormatTime(now(), "%Y%m%d_%H%M%S"));
        path.append(suffix).append(".xml");
        if (std::FILE* file = OpenFileStream(path, "wbx")) {
            std::fclose(file);
            return path;
        }
        if (errno != EEXIST)
            throw FileError("The file", path, "cannot be made", errno);
    }
}

std::optional<std::string> UnfitDownload(const ConversionSettings& settings)
{
    if (!settings.fromUrl || TimeoutSeconds(settings))
        return std::nullopt;
    return "timeout= takes a number of seconds, not \"" + settings.urlTimeout + "\"; nothing was downloaded";
}

std::string GetXMLfromURL(Job& job, const Places& places)
{
    std::string path;
    Procedure(job, "velGetXMLfromURL", [&](Step& step) {
        if (job.settings.url.empty())
            Fail(step, "URL for source XML is not specified", "The source is a web address, and none is named");
        job.log.ProtocolAppend("Downloading XML file from URL");
        const std::string curl = FindCurl(places, step);
        step("Folder for the download");
        MakeFilesFolder(places);
        DownloadFiles files(ReserveDownload(places.files, [] { return std::time(nullptr); }));
        if (!Download(job, curl, files, PasswordForm::AfterBlank, step)) {
            job.log.ProtocolAppend("The server does not take the password with a blank in front: once more without it");
            static_cast<void>(Download(job, curl, files, PasswordForm::AsItIs, step));
            job.log.ProtocolAppend("The server took the password without a blank in front");
        }
        path = files.KeepXml();
    });
    return path;
}

void UrlSource::Fetch(const Places& places)
{
    if (!job_.settings.fromUrl)
        return;
    download_ = GetXMLfromURL(job_, places);
    job_.settings.sourceFile = download_;
    typed_ = std::exchange(job_.controls.txtFILE_XML.text, download_);
}

void UrlSource::Release()
{
    if (download_.empty())
        return;
    RemoveFile(std::exchange(download_, {}));
    job_.controls.txtFILE_XML.text = typed_;
}

} // namespace velmora
