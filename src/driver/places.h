#pragma once

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

/// Makes the folder for files when it is missing. Throws RuntimeError.
void MakeFilesFolder(const Places& places);

} // namespace velmora
