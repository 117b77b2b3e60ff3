#pragma once

#include "app/application.h"
#include "support/scripted_host.h"
#include "support/shared.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <string>

namespace velmora::testing {

/// The summary of a run, status and tables and columns and values and all, without what differs from run to run.
[[nodiscard]] inline std::string SummaryOf(const std::string& commandLine)
{
    ScriptedHost host;
    Application application(host);
    application.Form_Load("+quiet +strict summary=- " + commandLine);
    (void)application.Convert();
    static const std::regex kDiffers("\"(seconds|preview)\": [^,\n]*");
    return std::regex_replace(host.result, kDiffers, "");
}

/// Contents and times of all that stands in a folder, and of itself.
[[nodiscard]] inline std::map<std::string, std::pair<std::filesystem::file_time_type, std::string>>
StateOf(const std::filesystem::path& folder)
{
    std::map<std::string, std::pair<std::filesystem::file_time_type, std::string>> state;
    state["."].first = std::filesystem::last_write_time(folder);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        state[entry.path().string()] = {entry.last_write_time(), entry.is_regular_file() ? ReadFile(entry.path()) : ""};
    return state;
}

/// Does a preview write nothing into `folder`, and foretell what the run then does? Gives the run's summary.
inline std::string ExpectForetold(const std::string& commandLine, const std::filesystem::path& folder)
{
    const auto before = StateOf(folder);
    const std::string foretold = SummaryOf("preview " + commandLine);
    EXPECT_TRUE(StateOf(folder) == before);
    const std::string done = SummaryOf(commandLine);
    EXPECT_EQ(foretold, done);
    return done;
}

} // namespace velmora::testing
