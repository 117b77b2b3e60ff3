// Opens arbitrary bytes as a database, reads everything in it and changes what can be changed. Inputs are the
// databases of the folders given, damaged inside their pages.
#include "jet/damage/exercise.h"
#include "jet/damage/page_damage.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <string_view>

namespace {

using jet::Bytes;

/// The smallest thing in which a page can be damaged.
constexpr std::size_t kLeastBytes = 2 * 4096;
constexpr std::size_t kPageBytes = 4096; // whole pages in both formats
/// Few: what is left to see with another input is seen with the next one.
constexpr std::size_t kChanges = 6;

/// libFuzzer cuts long files anywhere; a file that does not end with a page would be refused unread.
Bytes WholePages(const std::uint8_t* data, std::size_t size)
{
    Bytes bytes(data, data + size);
    bytes.resize((size + kPageBytes - 1) / kPageBytes * kPageBytes);
    return bytes;
}

/// Every input has changes of its own, the same at each run.
unsigned Seed(const Bytes& file)
{
    const std::string_view bytes(reinterpret_cast<const char*>(file.data()), file.size());
    return static_cast<unsigned>(std::hash<std::string_view>()(bytes));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Bytes file = WholePages(data, size);
    const std::string fault = jet::testing::Exercise(file, Seed(file), kChanges);
    if (!fault.empty()) {
        std::fprintf(stderr, "an error that names no page: %s\n", fault.c_str());
        std::abort();
    }
    return 0;
}

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed)
{
    std::mt19937 random(seed);
    if (size < kLeastBytes) // no example is shorter: nothing to be damaged
        return LLVMFuzzerMutate(data, size, maxSize);
    for (unsigned times = 1 + random() % 4; times > 0; --times)
        jet::testing::Damage({data, size}, random);
    return size;
}
