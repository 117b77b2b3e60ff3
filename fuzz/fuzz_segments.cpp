// Parses arbitrary bytes by one parser, and in segments whose size the first byte tells: what is told must be the same.
#include "input_file.h"
#include "xml/document_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace velmora;
    using testing::LoadText;
    if (size == 0)
        return 0;
    fuzzing::WriteInput(data + 1, size - 1);
    const Source source(fuzzing::InputPath());
    const Parsing inSegments{.threads = 2, .segmentBytes = std::size_t{1} + *data};
    fuzzing::Check(LoadText(source, {}) == LoadText(source, inSegments));
    return 0;
}
