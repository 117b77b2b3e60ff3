#pragma once

#include "driver/run_files.h"
#include "driver/run_outcome.h"
#include "mapping/tag_map.h"
#include "schema/lock_retry.h"
#include "settings/job.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace velmora {

class DatabaseSession;
class FilesOfRun;
class UrlSource;

inline constexpr std::string_view kCancelQuestion = "Conversion is running. Do you really want to cancel it?";

/// Runs one job over one or many XML files, or over one from a web address: what the "Convert" button does.
class Batch {
public:
    Batch(Job& job, TagMap& tagMap, Places places = StandardPlaces())
        : job_(job), tagMap_(tagMap), places_(std::move(places))
    {
    }

    /// The whole run; with a `refusal`, which came up before it, only that is said. Reports its own failures; never
    /// throws.
    RunOutcome btnConvert_Click(const std::optional<std::string>& refusal = std::nullopt);
    /// What the runs from now on take for the locks of others, and how they wait for them: for tests.
    void SetLocks(LockSeam locks) { locks_ = std::move(locks); }
    /// Cancels the run that is going on, after asking unless quiet. Nothing without one.
    void btnQuit_Click();

private:
    void TakeSettings();
    [[nodiscard]] bool RefusesToBegin(const std::optional<std::string>& refusal);
    void Run(UrlSource& source, DatabaseSession& session, Step& step);
    void OpenProtocolFile(Step& step);
    void ShowRunning(bool running);
    void TellThatThereIsNothingToDo(const std::string& reason);
    void Convert(DatabaseSession& session, FilesOfRun& filesOfRun, const std::function<void()>& openDatabase,
                 Step& step);
    void Describe(Preview& preview, DatabaseSession& session);
    void EndEarly(DatabaseSession& session);
    void CloseProtocolFile();

    Job& job_;
    TagMap& tagMap_;
    Places places_;
    LockSeam locks_;
    RunOutcome outcome_;
    RunState run_;
};

} // namespace velmora
