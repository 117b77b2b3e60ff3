#include "jet/base/text_codec.h"

#include "jet/support.h"

#include <gtest/gtest.h>

namespace jet::testing {

TEST(TextCodec, StoresTextAsTheFormatDoes)
{
    struct Case {
        const char* name;
        JetVersion version;
        bool compress;
        std::string_view utf8;
        const char* bytes;
        std::size_t replaced = 0;
    };
    constexpr auto k3 = JetVersion::Jet3;
    constexpr auto k4 = JetVersion::Jet4;
    const Case cases[] = {
        {"empty", k4, true, "", ""},
        {"plain", k4, false, "Ab", "41 00 62 00"},
        {"compressed from three characters on", k4, true, "abc", "FF FE 61 62 63"},
        {"two characters stay plain", k4, true, "ab", "61 00 62 00"},
        {"two characters of two bytes each stay plain", k4, true, "äö", "E4 00 F6 00"},
        {"characters up to FF are compressed", k4, true, "Müller", "FF FE 4D FC 6C 6C 65 72"},
        {"one character over FF makes all plain", k4, true, "ab€", "61 00 62 00 AC 20"},
        {"a zero makes all plain", k4, true, std::string_view("ab\0cdefghijk", 12),
         "61 00 62 00 00 00 63 00 64 00 65 00 66 00 67 00 68 00 69 00 6A 00 6B 00"},
        {"outside the BMP a surrogate pair", k4, true, "\U0001F600", "3D D8 00 DE"},
        {"a lone surrogate as it stands", k4, false, "\xED\xA0\xBD", "3D D8"},
        {"malformed bytes one by one", k4, false, "\xC3(\xFF\xE2\x82", "FD FF 28 00 FD FF FD FF FD FF"},
        {"overlong and too large", k4, false, "\xC0\x80\xF4\x90\x80\x80", "FD FF FD FF FD FF FD FF FD FF FD FF"},
        {"a leading mark must not look compressed", k4, false, "\uFEFFab", "FF FE 00 FF FE 61 00 62 00"},
        {"nor where the compressed form cannot hold the text", k4, true, "\uFEFFa\u0100", "60 20 61 00 00 01", 1},
        {"code page", k3, false, "Ab", "41 62"},
        {"upper half of the code page", k3, true, "ä€\u0178", "E4 80 9F"},
        {"undefined bytes of the code page", k3, false, "\u0081\u008D\u008F\u0090\u009D", "81 8D 8F 90 9D"},
        {"what the code page lacks", k3, false, "a\u0100\U0001F600\u0080", "61 3F 3F 3F", 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes out;
        EXPECT_EQ(AppendText(out, FormatOf(c.version), c.utf8, c.compress), c.replaced);
        EXPECT_EQ(Hex(out), c.bytes);
    }
}

TEST(TextCodec, CopiesAsciiJustAsItIsEncoded)
{
    for (std::size_t size = 1; size < 40; ++size)
        for (std::size_t at = 0; at <= size; ++at) // at the end: none is special
            for (const char special : {'\0', '\x01', '\x7F', '\x80', '\xFF'}) {
                SCOPED_TRACE("size " + std::to_string(size) + ", at " + std::to_string(at));
                std::string text(size, 'x');
                if (at < size)
                    text[at] = special;
                const bool isAscii = at == size || static_cast<unsigned char>(special) < 0x80;
                Bytes plain(size), wide(2 * size), expected, expectedWide;
                ASSERT_EQ(CopyPlainAscii(plain.data(), text), isAscii && (at == size || special != 0));
                ASSERT_EQ(ExpandAscii(wide.data(), text), isAscii);
                for (const char c : text) {
                    expected.push_back(static_cast<Byte>(c));
                    expectedWide.insert(expectedWide.end(), {static_cast<Byte>(c), 0});
                }
                EXPECT_TRUE(!isAscii || special == 0 || plain == expected);
                EXPECT_TRUE(!isAscii || wide == expectedWide);
            }
}

TEST(TextCodec, ReadsEveryStoredForm)
{
    struct Case {
        const char* name;
        JetVersion version;
        const char* bytes;
        std::string_view utf8;
    };
    const Case cases[] = {
        {"compressed", JetVersion::Jet4, "FF FE 61 62 E4", "abä"},
        {"switched to plain and back", JetVersion::Jet4, "FF FE 61 00 AC 20 00 62", "a€b"},
        {"ends in plain mode", JetVersion::Jet4, "FF FE 61 00 AC 20", "a€"},
        {"half a character at the end is dropped", JetVersion::Jet4, "61 00 62", "a"},
        {"half a character in plain mode is dropped", JetVersion::Jet4, "FF FE 00 62", ""},
        {"unpaired surrogates", JetVersion::Jet4, "00 DC 3D D8 41 00", "\xED\xB0\x80\xED\xA0\xBD\x41"},
        {"code page", JetVersion::Jet3, "41 80 FF 81", "A€ÿ\u0081"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(DecodeText(FromHex(c.bytes), FormatOf(c.version)), c.utf8);
    }
}

} // namespace jet::testing
