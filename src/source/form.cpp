#include "source/form.h"

#include "platform/paths.h"
#include "platform/utf8.h"

#include <array>
#include <cstdio>

namespace velmora {

namespace {

using namespace std::string_view_literals;

struct Beginning {
    std::string_view bytes;
    Form form;
};
constexpr std::array kBeginnings{
    Beginning{"\x1F\x8B"sv, Form::Gzip},
    Beginning{"BZh"sv, Form::Bzip2},
    Beginning{"\xFD"
              "7zXZ\0"sv,
              Form::Xz},
    Beginning{"\x28\xB5\x2F\xFD"sv, Form::Zstd},
    Beginning{"PK\x03\x04"sv, Form::Zip},
    Beginning{"PK\x05\x06"sv, Form::Zip}, // with nothing in it
    // Byte order marks, and the "<?" of EBCDIC.
    Beginning{"\xFF\xFE"sv, Form::Xml},
    Beginning{"\xFE\xFF"sv, Form::Xml},
    Beginning{"\0\0\xFE\xFF"sv, Form::Xml},
    Beginning{"\x4C\x6F"sv, Form::Xml},
};

} // namespace

Form FormOf(std::string_view firstBytes) noexcept
{
    for (const Beginning& beginning : kBeginnings)
        if (firstBytes.starts_with(beginning.bytes))
            return beginning.form;
    firstBytes = WithoutByteOrderMark(firstBytes);
    // Wide encodings have zeros beside each letter.
    const std::size_t letter = firstBytes.find_first_not_of("\0 \t\r\n"sv);
    return letter != firstBytes.npos && firstBytes[letter] == '<' ? Form::Xml : Form::Other;
}

Form FormOfFile(std::string_view path)
{
    std::FILE* const file = OpenFileStream(NativePath(path), "rb");
    if (file == nullptr)
        return Form::Other;
    std::array<char, kFormBytes> head{};
    const std::size_t count = std::fread(head.data(), 1, head.size(), file);
    std::fclose(file);
    return FormOf({head.data(), count});
}

} // namespace velmora
