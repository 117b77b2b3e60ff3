#pragma once

#include <filesystem>

namespace velmora {

/// A database file that is to be made anew. The old one is put aside under another name in the same folder and is
/// removed only when the new one has taken its place, so that there is a whole database at every moment; without that
/// it comes back.
class ReplacedFile {
public:
    ReplacedFile() = default;
    ~ReplacedFile();
    ReplacedFile(const ReplacedFile&) = delete;
    ReplacedFile& operator=(const ReplacedFile&) = delete;

    /// Puts back what a killed run left aside, when nothing stands at `path`.
    static void Recover(const std::filesystem::path& path) noexcept;
    /// Puts the file at `path` aside. False when that cannot be done: it is no ordinary file, or the folder forbids it.
    [[nodiscard]] bool PutAside(const std::filesystem::path& path);
    /// The new file stands: the old one goes.
    void Discard() noexcept;

private:
    std::filesystem::path path_;
    std::filesystem::path aside_; ///< empty: nothing is put aside
};

} // namespace velmora
