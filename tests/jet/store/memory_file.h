#pragma once

#include "jet/error.h"
#include "jet/store/pager.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <vector>

namespace jet::testing {

/// The bytes of a file that is not there. Pages that are all zero take no memory, so that a full database can be made.
struct MemoryDisk {
    static constexpr std::uint64_t kChunk = 2048;

    std::map<std::uint64_t, Bytes> chunks; ///< by number; missing ones are zero
    std::uint64_t size = 0;
};

/// A file on a MemoryDisk, which outlives it. Offsets and sizes are multiples of kChunk, except in reads.
class MemoryFile final : public File {
public:
    explicit MemoryFile(MemoryDisk& disk) : disk_(disk) {}

    void ReadAt(std::uint64_t offset, MutableBytes out) override
    {
        if (offset + out.size() > disk_.size)
            throw Error(ErrorNumber::DiskError);
        for (std::size_t done = 0; done < out.size(); done += MemoryDisk::kChunk) {
            const std::size_t n = std::min<std::size_t>(MemoryDisk::kChunk, out.size() - done);
            const auto chunk = disk_.chunks.find((offset + done) / MemoryDisk::kChunk);
            if (chunk == disk_.chunks.end())
                std::fill_n(out.data() + done, n, Byte{0});
            else
                std::copy_n(chunk->second.data(), n, out.data() + done);
        }
    }

    void WriteAt(std::uint64_t offset, ByteSpan bytes) override
    {
        for (std::size_t done = 0; done < bytes.size(); done += MemoryDisk::kChunk) {
            const ByteSpan chunk = bytes.subspan(done, MemoryDisk::kChunk);
            const std::uint64_t number = (offset + done) / MemoryDisk::kChunk;
            const bool zero = chunk[0] == 0 && std::memcmp(chunk.data(), chunk.data() + 1, chunk.size() - 1) == 0;
            if (zero)
                disk_.chunks.erase(number);
            else
                disk_.chunks[number].assign(chunk.begin(), chunk.end());
        }
        disk_.size = std::max(disk_.size, offset + bytes.size());
    }

    std::uint64_t Size() override { return disk_.size; }
    void Truncate(std::uint64_t size) override { disk_.size = size; }
    void Sync() override {}

private:
    MemoryDisk& disk_;
};

inline constexpr JetVersion kBothVersions[] = {JetVersion::Jet3, JetVersion::Jet4};

inline std::unique_ptr<Pager> NewPager(MemoryDisk& disk, JetVersion version,
                                       std::size_t cacheBytes = Pager::kDefaultCacheBytes)
{
    return Pager::Create(std::make_unique<MemoryFile>(disk), {version, 42329.94479166667}, cacheBytes);
}

inline std::unique_ptr<Pager> OpenPager(MemoryDisk& disk)
{
    return Pager::Open(std::make_unique<MemoryFile>(disk));
}

/// The pages that the global map says are free, ascending.
inline std::vector<PageNumber> FreePages(Pager& pager)
{
    std::vector<PageNumber> pages;
    for (PageNumber page = 0; page < pager.PageCount(); ++page)
        if (pager.IsFree(page))
            pages.push_back(page);
    return pages;
}

} // namespace jet::testing
