// The least that any converter must do: one expat parse of the input with empty handlers, and writing the output's
// bytes. usage: bench_floor XML OUTPUT COPY

#include <cstdio>
#include <cstdlib>
#include <expat.h>
#include <memory>
#include <string>
#include <vector>

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

constexpr std::size_t kChunkBytes = 256 * 1024;

File Open(const char* path, const char* mode)
{
    File file(std::fopen(path, mode));
    if (!file) {
        std::perror(path);
        std::exit(2);
    }
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    return file;
}

bool Parse(std::FILE* input)
{
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                              &XML_ParserFree);
    XML_SetElementHandler(
        parser.get(), [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
    XML_SetCharacterDataHandler(parser.get(), [](void*, const XML_Char*, int) {});
    for (;;) {
        void* buffer = XML_GetBuffer(parser.get(), static_cast<int>(kChunkBytes));
        const std::size_t count = std::fread(buffer, 1, kChunkBytes, input);
        if (XML_ParseBuffer(parser.get(), static_cast<int>(count), count == 0) != XML_STATUS_OK)
            return false;
        if (count == 0)
            return true;
    }
}

bool Copy(std::FILE* input, std::FILE* output)
{
    std::vector<char> buffer(kChunkBytes);
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), input)) {
        if (std::fwrite(buffer.data(), 1, count, output) != count)
            return false;
    }
    return std::fflush(output) == 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::fputs("usage: bench_floor XML OUTPUT COPY\n", stderr);
        return 2;
    }
    if (!Parse(Open(argv[1], "rb").get())) {
        std::fprintf(stderr, "%s is not well-formed\n", argv[1]);
        return 1;
    }
    if (!Copy(Open(argv[2], "rb").get(), Open(argv[3], "wb").get())) {
        std::perror(argv[3]);
        return 1;
    }
    return 0;
}
