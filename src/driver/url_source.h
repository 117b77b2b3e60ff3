#pragma once

#include "driver/run_files.h"
#include "settings/job.h"

#include <ctime>
#include <functional>
#include <optional>
#include <string>

namespace velmora {

/// Makes an empty file for a download in `folder`, which nobody else gets: "xml_", date and time, ".xml"; a counter
/// from 1 stands behind the time while the name is taken. `now` is asked anew for each try. Throws RuntimeError.
[[nodiscard]] std::string ReserveDownload(const std::string& folder, const std::function<std::time_t()>& now);

/// Why the download that the settings ask for cannot begin: a limit that is no number. nullopt when it can, and for
/// local files.
[[nodiscard]] std::optional<std::string> UnfitDownload(const ConversionSettings& settings);

/// Downloads the XML file that the settings name by its address, with curl, and gives its path. After an error or a
/// cancel nothing is left of the download.
[[nodiscard]] std::string GetXMLfromURL(Job& job, const Places& places);

/// The source of a run whose source is a web address: while it is held, the downloaded file's path stands in the
/// controls; afterwards the file is gone and what the user had typed stands there again.
class UrlSource {
public:
    explicit UrlSource(Job& job) : job_(job) {}
    ~UrlSource() { Release(); }
    UrlSource(const UrlSource&) = delete;
    UrlSource& operator=(const UrlSource&) = delete;

    /// Downloads the file; nothing in a run over local files.
    void Fetch(const Places& places);
    void Release();

private:
    Job& job_;
    std::string typed_;
    std::string download_;
};

} // namespace velmora
