#pragma once

#include "jet/store/file_system.h"

#include <map>
#include <memory>
#include <set>

namespace jet {

/// Another file system as it is, over which writes lie that never reach it: what would become of its files can be tried
/// out. Files of the other one are opened, and locked, as for a change, so that what would be refused is refused. What
/// was written stands in temporary files that nobody else can see.
class OverlayFileSystem final : public FileSystem {
public:
    explicit OverlayFileSystem(FileSystem& below = RealFileSystem()) : below_(below) {}

    [[nodiscard]] std::unique_ptr<File> Open(const std::filesystem::path& path, OpenMode mode) override;
    [[nodiscard]] bool Exists(const std::filesystem::path& path) override;
    void Remove(const std::filesystem::path& path) override;
    void Rename(const std::filesystem::path& from, const std::filesystem::path& to) override;
    void SyncFolder(const std::filesystem::path& /*file*/) override {}
    void CopyRights(const std::filesystem::path& /*from*/, const std::filesystem::path& /*to*/) override {}
    [[nodiscard]] std::filesystem::path Resolve(const std::filesystem::path& path) override
    {
        return below_.Resolve(path);
    }
    [[nodiscard]] bool MayMake(const std::filesystem::path& file) override { return below_.MayMake(file); }
    [[nodiscard]] bool MayReplace(const std::filesystem::path& file) override { return below_.MayReplace(file); }
    [[nodiscard]] std::unique_ptr<File> OpenTemporary() override { return below_.OpenTemporary(); }
    [[nodiscard]] DateTime LocalTime() override { return below_.LocalTime(); }
    void FillRandom(MutableBytes out) override { below_.FillRandom(out); }
    [[nodiscard]] std::string ComputerName() override { return below_.ComputerName(); }

private:
    struct Content;
    class Handle;

    [[nodiscard]] std::unique_ptr<File> Make(const std::filesystem::path& path);

    FileSystem& below_;
    std::map<std::filesystem::path, std::shared_ptr<Content>> files_; ///< those that were opened
    std::set<std::filesystem::path> gone_;                            ///< of the files below, removed or renamed
};

} // namespace jet
