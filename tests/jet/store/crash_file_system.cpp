#include "jet/store/crash_file_system.h"

#include "jet/store/write_behind_file.h"
#include "support/shared.h"

#include <algorithm>
#include <cstring>

namespace jet::testing {

namespace {

constexpr std::uint64_t kSectorBytes = 512;

bool IsZero(ByteSpan bytes)
{
    return bytes[0] == 0 && std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0;
}

} // namespace

// ---- Content --------------------------------------------------------------------------------------------------------

void CrashFileSystem::Extent::Read(std::uint64_t offset, MutableBytes out) const
{
    while (!out.empty()) {
        const std::uint64_t within = offset % kChunk;
        const auto n = static_cast<std::size_t>(std::min<std::uint64_t>(kChunk - within, out.size()));
        if (const auto chunk = chunks.find(offset / kChunk); chunk == chunks.end())
            std::fill_n(out.begin(), n, Byte{0});
        else
            std::copy_n(chunk->second.begin() + static_cast<std::ptrdiff_t>(within), n, out.begin());
        offset += n;
        out = out.subspan(n);
    }
}

void CrashFileSystem::Extent::Write(std::uint64_t offset, ByteSpan bytes)
{
    size = std::max(size, offset + bytes.size());
    while (!bytes.empty()) {
        const std::uint64_t within = offset % kChunk;
        const auto n = static_cast<std::size_t>(std::min<std::uint64_t>(kChunk - within, bytes.size()));
        const ByteSpan part = bytes.first(n);
        if (n == kChunk && IsZero(part))
            chunks.erase(offset / kChunk);
        else
            std::ranges::copy(part, chunks[offset / kChunk].begin() + static_cast<std::ptrdiff_t>(within));
        offset += n;
        bytes = bytes.subspan(n);
    }
}

void CrashFileSystem::Extent::Resize(std::uint64_t newSize)
{
    size = newSize;
    chunks.erase(chunks.lower_bound((newSize + kChunk - 1) / kChunk), chunks.end());
    if (const auto last = chunks.find(newSize / kChunk); last != chunks.end())
        std::fill(last->second.begin() + static_cast<std::ptrdiff_t>(newSize % kChunk), last->second.end(), Byte{0});
}

// ---- An open file ---------------------------------------------------------------------------------------------------

class CrashFileSystem::Handle final : public File {
public:
    Handle(CrashFileSystem& system, std::shared_ptr<Node> node, std::string name, bool writable)
        : system_(system), node_(std::move(node)), name_(std::move(name)), writable_(writable)
    {
        ++system_.openFiles_;
    }
    ~Handle() override
    {
        const Guarded guarded(system_.mutex_);
        --system_.openFiles_;
        std::erase_if(node_->locks, [this](const Lock& lock) { return lock.owner == this; });
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    void ReadAt(std::uint64_t offset, MutableBytes out) override
    {
        const Guarded guarded(system_.mutex_);
        system_.CheckPower();
        if (offset + out.size() > node_->now.size)
            throw Error(ErrorNumber::DiskError, {}, "(" + name_ + " ends before)");
        node_->now.Read(offset, out);
    }

    void WriteAt(std::uint64_t offset, ByteSpan bytes) override
    {
        const Guarded guarded(system_.mutex_);
        CheckWritable();
        system_.Count();
        system_.CheckRoom(*node_, std::max(node_->now.size, offset + bytes.size()));
        node_->now.Write(offset, bytes);
        node_->unsynced.push_back({false, offset, Bytes(bytes.begin(), bytes.end())});
    }

    std::uint64_t Size() override
    {
        const Guarded guarded(system_.mutex_);
        return node_->now.size;
    }

    void Truncate(std::uint64_t size) override
    {
        const Guarded guarded(system_.mutex_);
        CheckWritable();
        system_.Count();
        system_.CheckRoom(*node_, size);
        node_->now.Resize(size);
        node_->unsynced.push_back({true, size, {}});
    }

    void Sync() override
    {
        const Guarded guarded(system_.mutex_);
        system_.Count();
        for (const Change& change : node_->unsynced)
            if (change.isResize)
                node_->synced.Resize(change.offset);
            else
                node_->synced.Write(change.offset, change.bytes);
        node_->unsynced.clear();
    }

    bool TryLock(std::uint64_t offset, std::uint64_t size) override
    {
        const Guarded guarded(system_.mutex_);
        const std::uint64_t end = size == kToTheEnd ? ~std::uint64_t{0} : offset + size;
        for (const Lock& lock : node_->locks)
            if (lock.owner != this && lock.begin < end && offset < lock.end && !(lock.shared && !writable_))
                return false;
        node_->locks.push_back({this, offset, end, !writable_});
        return true;
    }

    [[nodiscard]] std::string Name() const override { return name_; }

private:
    void CheckWritable() const
    {
        if (!writable_)
            throw Error(ErrorNumber::DiskError, {}, "(" + name_ + " was opened for reading)");
    }

    CrashFileSystem& system_;
    std::shared_ptr<Node> node_;
    std::string name_;
    bool writable_;
};

// ---- Folders --------------------------------------------------------------------------------------------------------

std::unique_ptr<File> CrashFileSystem::Open(const std::filesystem::path& path, OpenMode mode)
{
    const Guarded guarded(mutex_);
    CheckPower();
    if (mode == OpenMode::CreateNew) {
        if (Exists(path))
            throw Error(ErrorNumber::DatabaseExists, {}, "(" + path.string() + ")");
        Count();
        ChangeEntries({{path, std::make_shared<Node>()}});
    }
    std::unique_ptr<File> file = std::make_unique<Handle>(*this, Find(path), path.string(), mode != OpenMode::ReadOnly);
    return writesBehind_ ? std::make_unique<WriteBehindFile>(std::move(file), 0) : std::move(file);
}

std::unique_ptr<File> CrashFileSystem::OpenTemporary()
{
    const Guarded guarded(mutex_);
    Count();
    return std::make_unique<Handle>(*this, std::make_shared<Node>(), "a temporary file", true);
}

void CrashFileSystem::Remove(const std::filesystem::path& path)
{
    const Guarded guarded(mutex_);
    static_cast<void>(Find(path));
    Count();
    ChangeEntries({{path, nullptr}});
}

void CrashFileSystem::Rename(const std::filesystem::path& from, const std::filesystem::path& to)
{
    const Guarded guarded(mutex_);
    const std::shared_ptr<Node> node = Find(from);
    Count();
    ChangeEntries({{from, nullptr}, {to, node}});
}

void CrashFileSystem::SyncFolder(const std::filesystem::path& file)
{
    const Guarded guarded(mutex_);
    Count();
    const auto isOfFolder = [&](const EntryChange& change) {
        return change.front().first.parent_path() == file.parent_path();
    };
    for (const EntryChange& change : unsyncedEntries_)
        if (isOfFolder(change))
            Apply(syncedEntries_, change);
    std::erase_if(unsyncedEntries_, isOfFolder);
}

void CrashFileSystem::ChangeEntries(const EntryChange& change)
{
    Apply(entries_, change);
    unsyncedEntries_.push_back(change);
}

void CrashFileSystem::Apply(Entries& entries, const EntryChange& change)
{
    for (const auto& [path, node] : change)
        if (node)
            entries[path] = node;
        else
            entries.erase(path);
}

const std::shared_ptr<CrashFileSystem::Node>& CrashFileSystem::Find(const std::filesystem::path& path) const
{
    const auto entry = entries_.find(path);
    if (entry == entries_.end())
        throw Error(ErrorNumber::FileNotFound, {path.string()});
    return entry->second;
}

// ---- Misfortune -----------------------------------------------------------------------------------------------------

void CrashFileSystem::Count()
{
    ++operations_;
    if (operations_ >= failAt_ && operations_ - failAt_ < failures_)
        throw Error(failure_, {}, "(operation " + std::to_string(operations_) + ")");
    CheckPower();
}

void CrashFileSystem::CheckPower() const
{
    if (IsOff())
        throw Error(ErrorNumber::DiskError, {}, "(the power is off)");
}

void CrashFileSystem::CheckRoom(const Node& node, std::uint64_t newSize) const
{
    std::uint64_t used = newSize;
    for (const auto& [path, other] : entries_)
        used += other.get() == &node ? 0 : other->now.size;
    if (newSize > node.now.size && used > capacity_)
        throw Error(ErrorNumber::DiskFull, {}, "(the disk holds " + std::to_string(capacity_) + " bytes)");
}

void CrashFileSystem::Crash(Loss loss)
{
    if (openFiles_ != 0)
        throw std::logic_error("files are open: destroy what uses them while the power is off");
    std::set<std::shared_ptr<Node>> nodes;
    for (const auto& [path, node] : entries_)
        nodes.insert(node);
    for (const auto& [path, node] : syncedEntries_)
        nodes.insert(node);
    if (loss != Loss::Nothing) {
        for (const EntryChange& change : unsyncedEntries_)
            if (loss == Loss::Some && random_() % 2 == 0)
                Apply(syncedEntries_, change);
        entries_ = syncedEntries_;
        for (const std::shared_ptr<Node>& node : nodes) {
            if (loss == Loss::Some)
                LoseSome(*node);
            node->now = node->synced;
        }
    }
    for (const std::shared_ptr<Node>& node : nodes) {
        node->synced = node->now;
        node->unsynced.clear();
    }
    syncedEntries_ = entries_;
    unsyncedEntries_.clear();
    stopAt_ = ~std::uint64_t{0};
    failures_ = 0;
}

/// Of each unsynced write some of its sectors reach the disk: mostly all or none of them.
void CrashFileSystem::LoseSome(Node& node)
{
    for (const Change& change : node.unsynced) {
        const auto fate = random_() % 3;
        if (fate == 0)
            continue;
        if (change.isResize) {
            node.synced.Resize(change.offset);
            continue;
        }
        for (std::size_t at = 0; at < change.bytes.size();) {
            const std::size_t sector = kSectorBytes - (change.offset + at) % kSectorBytes;
            const ByteSpan part = ByteSpan(change.bytes).subspan(at, std::min(sector, change.bytes.size() - at));
            if (fate == 1 || random_() % 2 == 0)
                node.synced.Write(change.offset + at, part);
            at += part.size();
        }
    }
}

// ---- Looking --------------------------------------------------------------------------------------------------------

std::vector<std::filesystem::path> CrashFileSystem::Files() const
{
    const Guarded guarded(mutex_);
    std::vector<std::filesystem::path> files;
    for (const auto& [path, node] : entries_)
        files.push_back(path);
    return files;
}

Bytes CrashFileSystem::Content(const std::filesystem::path& path) const
{
    const Guarded guarded(mutex_);
    const Extent& extent = Find(path)->now;
    Bytes content(static_cast<std::size_t>(extent.size));
    extent.Read(0, content);
    return content;
}

void CrashFileSystem::Put(const std::filesystem::path& path, ByteSpan content)
{
    const Guarded guarded(mutex_);
    auto node = std::make_shared<Node>();
    node->now.Write(0, content);
    node->synced = node->now;
    entries_[path] = syncedEntries_[path] = node;
}

void CrashFileSystem::CopyOut(const std::filesystem::path& path, const std::filesystem::path& realPath) const
{
    const Bytes content = Content(path);
    velmora::testing::WriteFile(realPath, {reinterpret_cast<const char*>(content.data()), content.size()});
}

} // namespace jet::testing
