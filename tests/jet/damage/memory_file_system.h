#pragma once

#include "jet/error.h"
#include "jet/store/file_system.h"

#include <cstring>
#include <map>
#include <memory>
#include <string>

namespace jet::testing {

/// A file system in memory, and nothing else: as fast as can be. Nothing fails but what there is no file for, and there
/// are no locks.
class MemoryFileSystem final : public FileSystem {
public:
    [[nodiscard]] Bytes& Content(const std::filesystem::path& path)
    {
        const auto file = files_.find(path.native());
        if (file == files_.end())
            throw Error(ErrorNumber::FileNotFound, {path.string()});
        return *file->second;
    }
    void Put(const std::filesystem::path& path, ByteSpan content)
    {
        files_[path.native()] = std::make_shared<Bytes>(content.begin(), content.end());
    }

    [[nodiscard]] std::unique_ptr<File> Open(const std::filesystem::path& path, OpenMode mode) override
    {
        if (mode == OpenMode::CreateNew)
            Put(path, {});
        static_cast<void>(Content(path));
        return std::make_unique<Handle>(files_[path.native()]);
    }
    [[nodiscard]] std::unique_ptr<File> OpenTemporary() override
    {
        return std::make_unique<Handle>(std::make_shared<Bytes>());
    }
    [[nodiscard]] bool Exists(const std::filesystem::path& path) override { return files_.contains(path.native()); }
    void Remove(const std::filesystem::path& path) override
    {
        static_cast<void>(Content(path));
        files_.erase(path.native());
    }
    void Rename(const std::filesystem::path& from, const std::filesystem::path& to) override
    {
        static_cast<void>(Content(from));
        files_[to.native()] = std::move(files_[from.native()]);
        files_.erase(from.native());
    }
    void SyncFolder(const std::filesystem::path& /*file*/) override {}
    void CopyRights(const std::filesystem::path& /*from*/, const std::filesystem::path& /*to*/) override {}
    [[nodiscard]] std::filesystem::path Resolve(const std::filesystem::path& path) override { return path; }
    [[nodiscard]] bool MayReplace(const std::filesystem::path& /*file*/) override { return true; }

private:
    class Handle final : public File {
    public:
        explicit Handle(std::shared_ptr<Bytes> content) : content_(std::move(content)) {}

        void ReadAt(std::uint64_t offset, MutableBytes out) override
        {
            if (offset > content_->size() || out.size() > content_->size() - offset)
                throw Error(ErrorNumber::DiskError);
            if (!out.empty())
                std::memcpy(out.data(), content_->data() + offset, out.size());
        }
        void WriteAt(std::uint64_t offset, ByteSpan bytes) override
        {
            if (content_->size() < offset + bytes.size())
                content_->resize(offset + bytes.size());
            if (!bytes.empty())
                std::memcpy(content_->data() + offset, bytes.data(), bytes.size());
        }
        [[nodiscard]] std::uint64_t Size() override { return content_->size(); }
        void Truncate(std::uint64_t size) override { content_->resize(size); }
        void Sync() override {}

    private:
        std::shared_ptr<Bytes> content_;
    };

    std::map<std::string, std::shared_ptr<Bytes>> files_;
};

} // namespace jet::testing
