#pragma once

#include "driver/run_outcome.h"
#include "mapping/tag_map.h"
#include "schema/known_tables.h"
#include "schema/loaded_sources.h"
#include "settings/job.h"
#include "xml/load_ahead.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace velmora {

class DatabaseSession;
class Document;
class FilesOfRun;
class StructureModel;
class TableSinks;

/// Commits what the session holds, and says what was announced: it has become true by that.
void CommitRun(Job& job, DatabaseSession& session, RunState& run);

/// Brings the sources of a run into its database and text files, one after another; each is committed when it is done.
/// The counts of `outcome` and `run` are kept up with them.
class SourceConverter {
public:
    SourceConverter(Job& job, TagMap& tagMap, DatabaseSession& session, FilesOfRun& filesOfRun, RunOutcome& outcome,
                    RunState& run)
        : job_(job), tagMap_(tagMap), session_(session), filesOfRun_(filesOfRun), outcome_(outcome), run_(run),
          knownTables_(session)
    {
    }

    /// Looks what the database, just opened, lists as loaded. Nothing without +once.
    void ReadLoaded();
    /// Converts one source; `next` is the one behind it, if any, which may be loaded meanwhile. Where a source is whole
    /// or nothing, what came of one that ends early is taken back, and with +continue the run goes on after an error
    /// that concerns this source alone: the result is false then, and the database was closed. Everything else that
    /// ends the run is thrown.
    [[nodiscard]] bool Convert(const Source& source, const Source* next, FileReport& report, Step& step);

private:
    [[nodiscard]] bool IsLoaded(const Source& source, FileReport& report, std::string& hash);
    void ConvertAndFinish(const Source& source, FileReport& report, TableSinks& sinks, Step& step);
    [[nodiscard]] bool Import(const Source& source, FileReport& report, TableSinks& sinks);
    void Finish(const Source& source, FileReport& report, bool converted, const std::string& hash, Step& step);
    void RenameWhenWanted(const Source& source, Step& step);
    [[nodiscard]] bool MayGoOn(std::size_t errorsBefore) const;
    void LeaveOut(const Source& source, FileReport& report);
    void WarnOfSize(std::uint64_t growth);
    void ShowStructure(const Document& document, const StructureModel& model);

    Job& job_;
    TagMap& tagMap_;
    DatabaseSession& session_;
    FilesOfRun& filesOfRun_;
    RunOutcome& outcome_;
    RunState& run_;
    KnownTables knownTables_;
    LoadedSources loaded_;
    LoadAhead ahead_;
    const Source* next_ = nullptr; ///< the source behind the one at hand
    bool isFileComplete_ = true;   ///< all of the file at hand was converted that came up to now
};

} // namespace velmora
