#pragma once

#include <cstdint>

namespace velmora {

/// Tells a document that was packed well from a bomb: a few kilobytes that unpack to more than any disk holds. Counts
/// what comes out of one packed file, of all its entries together.
class UnpackGuard {
public:
    explicit UnpackGuard(std::int64_t limitBytes) : limitBytes_(limitBytes) {}

    /// An entry begins, whose packed bytes are counted from 0.
    void BeginEntry() noexcept { entryBytes_ = 0; }
    /// `unpacked` bytes more came out, of `packed` bytes of the entry so far. Throws SourceError.
    void Add(std::int64_t unpacked, std::int64_t packed);

private:
    std::int64_t limitBytes_;
    std::int64_t totalBytes_ = 0, entryBytes_ = 0;
};

} // namespace velmora
