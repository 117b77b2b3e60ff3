#include "jet/store/overlay_file_system.h"

#include "jet/base/error.h"

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

namespace jet {

namespace fs = std::filesystem;

namespace {

/// What is copied up when a part of it is written. Pages of both formats are whole pieces.
constexpr std::uint64_t kPiece = 2048;

} // namespace

/// What a file is now: pieces written since, and behind them what the file below has.
struct OverlayFileSystem::Content {
    fs::path below;              ///< empty: nothing
    std::uint64_t size = 0;      ///< in all
    std::uint64_t sizeBelow = 0; ///< of what still counts of the file below
    std::unique_ptr<File> above{};
    std::vector<bool> isAbove{}; ///< by piece

    [[nodiscard]] bool IsAbove(std::uint64_t piece) const { return piece < isAbove.size() && isAbove[piece]; }
};

class OverlayFileSystem::Handle final : public File {
public:
    Handle(FileSystem& system, std::shared_ptr<Content> content, std::unique_ptr<File> below, std::string name)
        : system_(system), content_(std::move(content)), below_(std::move(below)), name_(std::move(name))
    {
    }

    void ReadAt(std::uint64_t offset, MutableBytes out) override
    {
        if (offset + out.size() > content_->size)
            throw Error(ErrorNumber::DiskError, {}, "(" + name_ + " ends at byte " + std::to_string(Size()) + ")");
        while (!out.empty()) {
            const bool isAbove = content_->IsAbove(offset / kPiece);
            std::uint64_t end = (offset / kPiece + 1) * kPiece;
            while (end < offset + out.size() && content_->IsAbove(end / kPiece) == isAbove)
                end += kPiece;
            const MutableBytes part = out.first(std::min<std::uint64_t>(end - offset, out.size()));
            if (isAbove)
                content_->above->ReadAt(offset, part);
            else
                ReadBelow(offset, part);
            offset += part.size();
            out = out.subspan(part.size());
        }
    }

    void WriteAt(std::uint64_t offset, ByteSpan bytes) override
    {
        if (bytes.empty())
            return;
        const std::uint64_t end = offset + bytes.size();
        if (!content_->above)
            content_->above = system_.OpenTemporary();
        if (offset % kPiece != 0)
            Lift(offset / kPiece);
        if (end % kPiece != 0)
            Lift(end / kPiece);
        content_->above->WriteAt(offset, bytes);
        for (std::uint64_t piece = offset / kPiece; piece * kPiece < end; ++piece)
            Mark(piece);
        content_->size = std::max(content_->size, end);
    }

    std::uint64_t Size() override { return content_->size; }

    void Truncate(std::uint64_t size) override
    {
        const std::uint64_t pieces = (size + kPiece - 1) / kPiece;
        if (content_->isAbove.size() > pieces)
            content_->isAbove.resize(pieces);
        // What a later write makes part of the file again is zero there.
        if (size % kPiece != 0 && content_->IsAbove(size / kPiece))
            content_->above->WriteAt(size, Bytes(kPiece - size % kPiece));
        content_->size = size;
        content_->sizeBelow = std::min(content_->sizeBelow, size);
    }

    void Sync() override {}
    [[nodiscard]] bool TryLock(std::uint64_t offset, std::uint64_t size) override
    {
        return !below_ || below_->TryLock(offset, size);
    }
    [[nodiscard]] std::string Name() const override { return name_; }

private:
    void ReadBelow(std::uint64_t offset, MutableBytes out)
    {
        const std::uint64_t there = content_->sizeBelow - std::min(content_->sizeBelow, offset);
        const MutableBytes part = out.first(std::min<std::uint64_t>(there, out.size()));
        if (!part.empty())
            below_->ReadAt(offset, part);
        std::ranges::fill(out.subspan(part.size()), Byte{});
    }

    void Lift(std::uint64_t piece)
    {
        if (content_->IsAbove(piece))
            return;
        Bytes bytes(kPiece);
        ReadBelow(piece * kPiece, bytes);
        content_->above->WriteAt(piece * kPiece, bytes);
        Mark(piece);
    }

    void Mark(std::uint64_t piece)
    {
        if (piece >= content_->isAbove.size())
            content_->isAbove.resize(piece + 1);
        content_->isAbove[piece] = true;
    }

    FileSystem& system_;
    std::shared_ptr<Content> content_;
    std::unique_ptr<File> below_;
    std::string name_;
};

std::unique_ptr<File> OverlayFileSystem::Make(const fs::path& path)
{
    if (Exists(path))
        throw Error(ErrorNumber::DatabaseExists, {}, "(" + path.string() + ")");
    std::error_code error;
    if (path.has_parent_path() && !fs::is_directory(path.parent_path(), error))
        throw Error(ErrorNumber::InvalidPath, {path.string()});
    if (!MayMake(path))
        throw Error(ErrorNumber::ReadOnly, {}, "(" + path.string() + ")");
    const auto content = std::make_shared<Content>();
    files_[path] = content;
    return std::make_unique<Handle>(below_, content, nullptr, path.string());
}

std::unique_ptr<File> OverlayFileSystem::Open(const fs::path& path, OpenMode mode)
{
    if (mode == OpenMode::CreateNew)
        return Make(path);
    std::shared_ptr<Content> content;
    if (const auto known = files_.find(path); known != files_.end())
        content = known->second;
    else if (gone_.contains(path))
        throw Error(ErrorNumber::FileNotFound, {path.string()});
    std::unique_ptr<File> below;
    if (!content || !content->below.empty())
        below = below_.Open(content ? content->below : path, mode);
    if (!content) {
        const std::uint64_t size = below->Size();
        content = std::make_shared<Content>(Content{path, size, size});
        files_[path] = content;
    }
    return std::make_unique<Handle>(below_, content, std::move(below), path.string());
}

bool OverlayFileSystem::Exists(const fs::path& path)
{
    return files_.contains(path) || (!gone_.contains(path) && below_.Exists(path));
}

void OverlayFileSystem::Remove(const fs::path& path)
{
    if (!Exists(path))
        throw Error(ErrorNumber::FileNotFound, {path.string()});
    files_.erase(path);
    gone_.insert(path);
}

void OverlayFileSystem::Rename(const fs::path& from, const fs::path& to)
{
    static_cast<void>(Open(from, OpenMode::ReadOnly)); // it has a content then
    files_[to] = files_[from];
    files_.erase(from);
    gone_.insert(from);
}

} // namespace jet
