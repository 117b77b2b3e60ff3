// Opens arbitrary bytes as a database, reads everything in it and changes what can be changed. Inputs are databases
// damaged inside their pages: of a folder given, or, when that is empty, small ones that the engine makes itself.
#include "jet/damage/exercise.h"
#include "jet/damage/page_damage.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

namespace {

using jet::Bytes;
using jet::JetVersion;

/// The smallest thing in which a page can be damaged.
constexpr std::size_t kLeastBytes = 2 * 4096;
constexpr std::size_t kPageBytes = 4096; // whole pages in both formats

/// libFuzzer cuts long files anywhere; a file that does not end with a page would be refused unread.
Bytes WholePages(const std::uint8_t* data, std::size_t size)
{
    Bytes bytes(data, data + size);
    bytes.resize((size + kPageBytes - 1) / kPageBytes * kPageBytes);
    return bytes;
}

unsigned Hash(const Bytes& bytes)
{
    std::uint32_t hash = 2166136261u; // FNV-1a
    for (const jet::Byte byte : bytes)
        hash = (hash ^ byte) * 16777619u;
    return hash;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Bytes file = WholePages(data, size);
    const std::string fault = jet::testing::Exercise(file, Hash(file));
    if (!fault.empty()) {
        std::fprintf(stderr, "an error that names no page: %s\n", fault.c_str());
        std::abort();
    }
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed)
{
    static const Bytes own[] = {jet::testing::SmallDatabase(JetVersion::Jet3),
                                jet::testing::SmallDatabase(JetVersion::Jet4)};
    std::mt19937 random(seed);
    if (size < kLeastBytes) {
        const Bytes& start = own[random() % std::size(own)];
        size = std::min(start.size(), maxSize);
        std::copy_n(start.begin(), size, data);
    }
    for (unsigned times = 1 + random() % 4; times > 0; --times)
        jet::testing::Damage({data, size}, random);
    return size;
}
