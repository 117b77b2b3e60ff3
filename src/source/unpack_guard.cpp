#include "source/unpack_guard.h"

#include "source/source.h"

#include <algorithm>
#include <string>

namespace velmora {

namespace {

constexpr std::int64_t kMegabyte = 1'000'000;
constexpr std::int64_t kUncheckedBytes = 64 * kMegabyte; ///< a small document may be packed as well as it likes
constexpr std::int64_t kLargestRatio = 1'000;

} // namespace

void UnpackGuard::Add(std::int64_t unpacked, std::int64_t packed)
{
    totalBytes_ += unpacked;
    entryBytes_ += unpacked;
    if (totalBytes_ > limitBytes_)
        throw SourceError("unpacks to more than " + std::to_string(limitBytes_ / kMegabyte) +
                          " MB; unpack_limit= allows more");
    if (entryBytes_ > kUncheckedBytes && entryBytes_ / kLargestRatio > std::max<std::int64_t>(packed, 1))
        throw SourceError("unpacks to more than " + std::to_string(kLargestRatio) +
                          " times its size, which no document does");
}

} // namespace velmora
