#pragma once

#include "driver/run_files.h"
#include "driver/run_outcome.h"
#include "mapping/tag_map.h"
#include "schema/loaded_sources.h"
#include "schema/lock_retry.h"
#include "settings/job.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {

class DatabaseSession;
class Document;
class FilesOfRun;
class KnownTables;
class StructureModel;
class TableSinks;
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
    /// What all sources of a run share.
    struct Shared {
        DatabaseSession& session;
        KnownTables& knownTables;
        FilesOfRun& filesOfRun;
    };

    void TakeSettings();
    [[nodiscard]] bool RefusesToBegin(const std::optional<std::string>& refusal);
    void Run(UrlSource& source, DatabaseSession& session, Step& step);
    void OpenProtocolFile(Step& step);
    void ShowRunning(bool running);
    void TellThatThereIsNothingToDo(const std::string& reason);
    void Convert(DatabaseSession& session, FilesOfRun& filesOfRun, const std::function<void()>& openDatabase,
                 Step& step);
    [[nodiscard]] bool IsLoaded(const Source& source, FileReport& report, std::string& hash);
    void ConvertAndFinish(const Source& source, FileReport& report, const Shared& shared, TableSinks& sinks,
                          Step& step);
    [[nodiscard]] bool ConvertWhole(const Source& source, FileReport& report, const Shared& shared, Step& step);
    void RenameWhenWanted(const Source& source, Step& step);
    [[nodiscard]] bool MayGoOn(std::size_t errorsBefore) const;
    [[nodiscard]] bool ConvertOneFile(const Source& source, FileReport& report, const Shared& shared,
                                      TableSinks& sinks);
    void WarnOfSize(const DatabaseSession& session, std::uint64_t growth);
    void ShowStructure(const Document& document, const StructureModel& model);
    void FinishFile(const Source& source, FileReport& report, bool converted, DatabaseSession& session,
                    const std::string& hash, Step& step);
    void Commit(DatabaseSession& session);
    void Describe(Preview& preview, DatabaseSession& session);
    void EndEarly(DatabaseSession& session);
    void CloseProtocolFile();

    Job& job_;
    TagMap& tagMap_;
    Places places_;
    LockSeam locks_;
    RunOutcome outcome_;
    RunState run_;
    bool isFileComplete_ = true; ///< all of the file at hand was converted that came up to now
    LoadedSources loaded_;       ///< with +once
};

} // namespace velmora
