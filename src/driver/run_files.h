#pragma once

#include "settings/job.h"

#include <optional>
#include <string>

namespace velmora {

/// Where the program finds its tools and puts files of its own. Folders without a separator at their end.
struct Places {
    std::string program; ///< where its executable stands, and tools that came with it
    std::string files;   ///< for the scratch database and downloads; need not be there yet
};

/// The places of this installation: the program's own folder for both, or for files the user's data folder when the
/// program's own cannot be written.
[[nodiscard]] Places StandardPlaces();

/// For a run that leaves no file: what it cannot do without stands where the system puts such files.
[[nodiscard]] Places TrialPlaces(const Places& places);

/// Makes the folder for files when it is missing. Throws RuntimeError.
void MakeFilesFolder(const Places& places);

/// Why the files named by `settings` cannot be used together: a database or a protocol would be written over one of
/// them. nullopt when all is well.
[[nodiscard]] std::optional<std::string> ClashingFiles(const ConversionSettings& settings);
/// Whether the protocol is one of the files that would be written over.
[[nodiscard]] bool IsProtocolClashing(const ConversionSettings& settings);
/// Whether the summary is the name of another file, too.
[[nodiscard]] bool IsSummaryClashing(const ConversionSettings& settings);

/// Brings the controls of a run into text files to where it can begin: makes the folder, asks for a delimiter that is
/// missing unless the run is quiet, names the scratch database when none is named. False when the user cancelled the
/// question; else the settings are to be taken once more. Nothing without a text folder. Throws RuntimeError.
[[nodiscard]] bool PrepareTextMode(Job& job, const Places& places, Step& step);

/// Which of the scratch databases a run takes, PrepareTextMode having named the first. The settings name it, and the
/// controls show it.
class ScratchDatabase {
public:
    ScratchDatabase(Job& job, const Places& places) : job_(job), places_(places) {}

    /// Takes the first one that no other run has open.
    void TakeFree();
    /// Takes the next one that is free: another run may have opened the one at hand since it was. False when there have
    /// been too many.
    [[nodiscard]] bool TakeNext();

private:
    Job& job_;
    const Places& places_;
    int number_ = 1;
};

} // namespace velmora
