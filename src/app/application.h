#pragma once

#include "driver/batch.h"
#include "mapping/tag_map.h"
#include "schema/database_view.h"
#include "settings/job.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// Major "." minor "." revision.
[[nodiscard]] std::string_view Version() noexcept;

/// The program without its front end: what one process shares, its start-up, and the runs it is asked for.
class Application {
public:
    explicit Application(Host& host) : job_(host), batch_(job_, tagMap_) {}

    /// The start-up: sets the controls to their first state, then by the raw command line (without the program's name),
    /// and loads the mapping file that it names. Unknown words go to the protocol, with the known one that each may
    /// have been meant for. Throws CommandLineError when the line makes no sense as a whole. Whether a run follows at
    /// once is for the caller to read from Job().controls.chkQuiet.
    void Form_Load(std::string_view commandLine);

    /// The "Convert" button. What was wrong with the command line keeps a run from beginning once: with "+strict"
    /// always, and otherwise where a word that was perhaps mistyped could have saved a database from being replaced or
    /// emptied, or was to be "preview".
    /// Then it writes the summary, where one is wanted; of a preview only to standard output.
    RunOutcome Convert();
    /// The "Cancel" button: ends the run that is going on; nothing without one.
    void Cancel() { batch_.btnQuit_Click(); }

    [[nodiscard]] Job& GetJob() noexcept { return job_; }
    [[nodiscard]] TagMap& GetTagMap() noexcept { return tagMap_; }
    /// False when the start-up named a mapping file that was missing or could not be read to its end.
    [[nodiscard]] bool MappingLoaded() const noexcept { return mappingLoaded_; }

private:
    void ReportUnknown(std::string_view token);
    [[nodiscard]] std::optional<std::string> TakeRefusal();
    [[nodiscard]] DatabaseContents ReadContents(const RunOutcome& outcome);
    void Summarise(RunOutcome& outcome, std::int64_t milliseconds);

    Job job_;
    TagMap tagMap_;
    Batch batch_;
    bool mappingLoaded_ = true;
    std::string unknown_;         ///< the first unknown word; the empty one that a blank too many makes is none
    std::string mistyped_;        ///< the first that resembles a known one
    std::string mistypedPreview_; ///< the first that resembles "preview"
};

} // namespace velmora
