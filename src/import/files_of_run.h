#pragma once

#include "settings/conversion_settings.h"

#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace velmora {

/// The files of one run that a table's text file could meet: a document's element may bear the very name of the
/// protocol or of a source. Made once for all documents.
class FilesOfRun {
public:
    FilesOfRun(const ConversionSettings& settings, const std::vector<std::string>& sources);

    /// Throws when the text file at `path` is one of them.
    void Refuse(const std::string& path);
    /// Has Refuse() let it pass?
    [[nodiscard]] bool IsKnown(const std::string& path) const { return harmless_.contains(path); }

    /// The run begins to write into the text file at `path`; true when it had not before.
    bool NoteOpened(const std::string& path)
    {
        const bool isFirst = opened_.insert(path).second;
        if (isFirst)
            openedLast_.push_back(path);
        return isFirst;
    }
    [[nodiscard]] bool HasOpened(const std::string& path) const { return opened_.contains(path); }
    /// A text file was made, deleted or written into.
    void NoteChange() noexcept { hasChanged_ = true; }
    [[nodiscard]] bool HasChanged() const noexcept { return hasChanged_; }
    /// A document's import begins.
    void BeginDocument()
    {
        openedLast_.clear();
        hadChanged_ = hasChanged_;
    }
    /// Everything is as it was when the last document began.
    void TakeBackDocument()
    {
        for (const std::string& path : std::exchange(openedLast_, {}))
            opened_.erase(path);
        hasChanged_ = hadChanged_;
    }
    /// True at the first call.
    [[nodiscard]] bool TellOfKeys() noexcept { return !std::exchange(hasToldOfKeys_, true); }

private:
    std::vector<std::string> files_;           ///< those whose names end like a text file's
    std::unordered_set<std::string> harmless_; ///< paths that are known to be none of them
    std::unordered_set<std::string> opened_;
    std::vector<std::string> openedLast_; ///< for the first time by the document at hand
    bool hasChanged_ = false;
    bool hadChanged_ = false; ///< when it began
    bool hasToldOfKeys_ = false;
};

} // namespace velmora
