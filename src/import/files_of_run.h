#pragma once

#include "settings/controls.h"

#include <string>
#include <unordered_set>
#include <vector>

namespace velmora {

/// The files of one run that a table's text file could meet: a document's element may bear the very name of the
/// protocol or of a source. Made once for all documents.
class FilesOfRun {
public:
    FilesOfRun(const Controls& controls, const std::vector<std::string>& sources);

    /// Throws when the text file at `path` is one of them.
    void Refuse(const std::string& path);

private:
    std::vector<std::string> files_;           ///< those whose names end like a text file's
    std::unordered_set<std::string> harmless_; ///< paths that are known to be none of them
};

} // namespace velmora
