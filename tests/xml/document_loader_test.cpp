#include "xml/document_loader.h"

#include "log/runtime_error.h"
#include "xml/loaded_text.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace velmora {
namespace {

using namespace std::string_literals;
using testing::DocumentText;
using testing::LoadBytes;

/// Each ASCII character of `text` as `width` bytes.
std::string Wide(std::string_view text, int width, bool bigEndian)
{
    std::string bytes;
    for (const char c : text) {
        const std::string zeros(static_cast<std::size_t>(width) - 1, '\0');
        bytes += bigEndian ? zeros + c : c + zeros;
    }
    return bytes;
}

TEST(DocumentLoader, ReadsEveryEncoding)
{
    struct Case {
        const char* name;
        std::string bytes;
        const char* content;
        std::size_t controlBytes = 0;
    };
    const auto declared = [](const char* encoding, const std::string& content) {
        return "<?xml version=\"1.0\" encoding=\""s + encoding + "\"?><a>" + content + "</a>";
    };
    const Case cases[] = {
        {"UTF-8 mark", "\xEF\xBB\xBF<a>\xC3\xA4</a>", "ä"},
        {"UTF-8 mark beats the declaration", "\xEF\xBB\xBF" + declared("ISO-8859-1", "\xC3\xA4"), "ä"},
        {"ISO-8859-1", declared("iso-8859-1", "\xE4"), "ä"},
        {"ISO-8859-1 without a hyphen", declared("ISO8859-1", "\xE4\x80\x9F"), "ä\u0080\u009F", 2},
        {"windows-1258, an accent behind its letter", declared("windows-1258", "a\xEC"), "á"},
        {"Mac OS Roman", declared("x-mac-roman", "\x8A"), "ä"},
        {"x-sjis", declared("x-sjis", "\x93\xFA\x87\x40"), "日①"},
        {"Korean by the number of its standard", declared("ks_c_5601-1987", "\xC7\xD1\x81\x41"), "한갂"},
        {"single quotes and blanks", "<?xml version='1.0' encoding = 'windows-1252' ?><a>\x80</a>", "€"},
        {"Shift_JIS", declared("Shift_JIS", "\x93\xFA\x96\x7B\\~"), "日本\\~"},
        {"Shift_JIS with characters of the code page", declared("shift_jis", "\x87\x40"), "①"},
        {"EUC-JP", declared("EUC-JP", "\xC6\xFC\xCB\xDC"), "日本"},
        {"ISO-2022-JP, which has states", declared("ISO-2022-JP", "\x1B$BF|K\\\x1B(B"), "日本"},
        {"GB2312", declared("GB2312", "\xD6\xD0"), "中"},
        {"UTF-16LE with mark", "\xFF\xFE" + Wide("<a>", 2, false) + "\xE4\0"s + Wide("</a>", 2, false), "ä"},
        {"UTF-16BE with mark that says UTF-8", "\xFE\xFF" + Wide(declared("UTF-8", "x"), 2, true), "x"},
        {"surrogate pair", "\xFF\xFE" + Wide("<a>", 2, false) + "\x3D\xD8\x00\xDE"s + Wide("</a>", 2, false), "😀"},
        {"UTF-16LE without mark", Wide(declared("UTF-16", "x"), 2, false), "x"},
        {"UTF-16BE without mark", Wide("<a>x</a>", 2, true), "x"},
        {"UTF-32LE with mark", "\xFF\xFE\0\0"s + Wide("<a>x</a>", 4, false), "x"},
        {"UTF-32BE with mark", "\0\0\xFE\xFF"s + Wide("<a>x</a>", 4, true), "x"},
        {"UTF-32BE without mark", Wide("<a>x</a>", 4, true), "x"},
        {"says UTF-16, is UTF-8", declared("UTF-16", "\xC3\xA4"), "ä"},
        {"EBCDIC",
         "\x4C\x6F\xA7\x94\x93\x40\xA5\x85\x99\xA2\x89\x96\x95\x7E\x7F\xF1\x4B\xF0\x7F\x40\x85\x95\x83\x96\x84\x89\x95"
         "\x87"
         "\x7E\x7F\xC9\xC2\xD4\xF0\xF3\xF7\x7F\x6F\x6E\x4C\x81\x6E\xF1\x4C\x61\x81\x6E",
         "1"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const LoadResult loaded = LoadBytes(c.bytes);
        EXPECT_EQ(loaded.problem, "");
        ASSERT_EQ(loaded.document.ElementCount(), 1u);
        EXPECT_EQ(loaded.document.Content(0), c.content);
        EXPECT_EQ(loaded.controlBytes, c.controlBytes);
    }
}

TEST(DocumentLoader, JoinsCharactersThatChunksCut)
{
    // Two bytes each, behind an odd number of bytes: every chunk of an even size ends within one of them.
    std::string bytes = "<?xml version='1.0' encoding='EUC-JP' ?><aa>";
    ASSERT_EQ(bytes.size() % 2, 0u);
    bytes += "x";
    std::string expected = "x";
    for (int i = 0; i < 300'000; ++i) {
        bytes += "\xC6\xFC";
        expected += "日";
    }
    const LoadResult loaded = LoadBytes(bytes + "</aa>");
    EXPECT_EQ(loaded.problem, "");
    ASSERT_EQ(loaded.document.ElementCount(), 1u);
    EXPECT_TRUE(loaded.document.Content(0) == expected);
}

TEST(DocumentLoader, SaysWhereAndWhyAFileCannotBeRead)
{
    struct Case {
        const char* bytes;
        const char* problem;
    };
    const Case cases[] = {
        {"", "line 1, column 1: the file holds no element"},
        {"<a>\n <b></c>\n</a>", "line 2, column 7: mismatched tag: this end tag does not close <b>"},
        {"<a>\n <b>", "line 2, column 5: the file ends inside of <b>"},
        {"<a/>\n<b/>", "line 2, column 1: something follows behind the end of the document element"},
        {"<ä>&x;</ä>", "line 1, column 4: undefined entity"},
        {"<?xml version='1.0' encoding='no-such-code'?><a/>", "line 1, column 31: unknown encoding no-such-code"},
        {"<?xml version='1.0' encoding='EUC-JP'?>\n<a>\n\xC6\x01</a>",
         "line 3: bytes that are not EUC-JP, at byte 45 of the file"},
        {"<?xml version='1.0' encoding='EUC-JP'?><a/>\n\xC6",
         "line 2: the file ends in the middle of a character of EUC-JP, at byte 45 of the file"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.bytes);
        const LoadResult loaded = LoadBytes(c.bytes);
        EXPECT_EQ(loaded.problem, c.problem);
        EXPECT_TRUE(loaded.document.IsEmpty());
    }
    const testing::TempFolder folder;
    const auto load = [](const std::filesystem::path& path) { return testing::LoadFile(path.string()); };
    EXPECT_EQ(load(folder.Path()).problem, "cannot be read: Is a directory");
    EXPECT_EQ(load(folder / "missing.xml").problem, "cannot be read: No such file or directory");
}

TEST(DocumentLoader, FetchesNothingAndCountsWhatItLeavesOut)
{
    const testing::TempFolder folder;
    testing::WriteFile(folder / "secret.txt", "secret");
    const std::string file = (folder / "secret.txt").string();
    struct Case {
        const char* name;
        std::string xml;
        const char* expected;
        std::size_t skipped;
        const char* first;
    };
    const Case cases[] = {
        {"external entity", "<!DOCTYPE a [<!ENTITY e SYSTEM '" + file + "'>]><a>1&e;2&e;</a>", "a [12] x1\n", 2, "e"},
        {"declared outside", "<!DOCTYPE a SYSTEM '" + file + "'><a>1&e;&amp;</a>", "a [1&] x1\n", 1, "e"},
        {"in attributes", "<!DOCTYPE a SYSTEM '" + file + "' [<!ENTITY i 'in'>]><a b='&i;&e;&#65;&lt;'>&i;</a>",
         "a b=inA< [in] x1\n", 1, "e"},
        {"behind a parameter entity",
         "<!DOCTYPE a [<!ENTITY % p SYSTEM '" + file + "'>%p;<!ENTITY e 'late'>]><a>&e;</a>", "a x1\n", 1, "e"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const LoadResult loaded = LoadBytes(c.xml);
        EXPECT_EQ(loaded.problem, "");
        EXPECT_EQ(DocumentText(loaded.document), c.expected);
        EXPECT_EQ(loaded.skippedEntities, c.skipped);
        EXPECT_EQ(loaded.firstSkipped, c.first);
    }
}

TEST(DocumentLoader, StopsEntityBombs)
{
    std::string doubling = "<!DOCTYPE a [<!ENTITY e0 'lol'>";
    for (int i = 1; i < 40; ++i) {
        const std::string before = "&e" + std::to_string(i - 1) + ";";
        doubling += "<!ENTITY e" + std::to_string(i) + " '" + before + before + "'>";
    }
    std::string references;
    for (int i = 0; i < 100'000; ++i)
        references += "&x;";
    const std::string longEntity = "<!DOCTYPE a [<!ENTITY x '" + std::string(100'000, 'x') + "'>]><a>";
    // Long enough for the parser's own limit, which is a multiple of the input, to be a large one.
    const std::string padding = "<!--" + std::string(4'000'000, 'x') + "-->";
    const std::string bombs[] = {doubling + "]><a>&e39;</a>", doubling + "]><a b='&e39;'/>",
                                 longEntity + references + "</a>", longEntity + padding + references + "</a>"};
    for (const std::string& bomb : bombs) {
        SCOPED_TRACE(bomb.substr(0, 60));
        const LoadResult loaded = LoadBytes(bomb);
        EXPECT_TRUE(loaded.document.IsEmpty());
        EXPECT_TRUE(loaded.problem.ends_with(": its entities make too much text of it")) << loaded.problem;
    }
}

std::string ManyRecords()
{
    std::string xml = "<list>";
    for (int i = 0; i < 20'000; ++i) {
        const std::string number = std::to_string(i);
        xml += "<record id='" + number + "'>text " + number + "<leaf>" + number + "</leaf></record>";
    }
    return xml + "</list>";
}

TEST(DocumentLoader, EndsWithWhatIsThrownBetweenTwoPieces)
{
    const testing::TempFolder folder;
    const std::string path = (folder / "document.xml").string();
    for (const std::string& xml : {"<a>" + std::string(1'000'000, 'x') + "</a>", ManyRecords()}) {
        testing::WriteFile(path, xml);
        int pieces = 0;
        const auto onPiece = [&](std::int64_t) {
            if (++pieces == 3)
                throw Aborted();
        };
        EXPECT_THROW(static_cast<void>(testing::LoadFile(path, onPiece)), Aborted);
        EXPECT_EQ(pieces, 3);
    }
}

/// A temporary file on a disk that has so much room, or that takes nothing at all.
class SmallFile : public TemporaryFile {
public:
    SmallFile(std::size_t room, bool takesBytes) : room_(room), takesBytes_(takesBytes) {}
    bool Extend(std::size_t bytes) override { return bytes <= room_ && file_->Extend(bytes); }
    bool Write(std::size_t position, std::span<const std::byte> bytes) override
    {
        return takesBytes_ && file_->Write(position, bytes);
    }
    void* Map(std::size_t bytes) override { return file_->Map(bytes); }

private:
    std::unique_ptr<TemporaryFile> file_ = MakeTemporaryFile();
    std::size_t room_;
    bool takesBytes_;
};

TEST(DocumentLoader, GivesTheSameDocumentFromAFileAndStaysInMemoryWhenTheDiskIsFull)
{
    const std::string xml = ManyRecords();
    const std::string whole = DocumentText(LoadBytes(xml).document);
    const auto load = [&](const TemporaryFileMaker& maker) {
        return DocumentText(LoadBytes(xml, MemoryBudget(100'000, maker)).document);
    };
    // From the first byte on, and from the middle of the load on.
    for (const std::size_t budget : {std::size_t{0}, std::size_t{1'000'000}})
        EXPECT_TRUE(DocumentText(LoadBytes(xml, MemoryBudget(budget)).document) == whole) << budget;
    EXPECT_TRUE(load([] { return nullptr; }) == whole) << "no folder takes a file";
    EXPECT_TRUE(load([] { return std::make_unique<SmallFile>(0, true); }) == whole) << "no room from the beginning";
    EXPECT_THROW(load([] { return std::make_unique<SmallFile>(300'000, true); }), std::bad_alloc) << "full later on";
    EXPECT_THROW(load([] { return std::make_unique<SmallFile>(~std::size_t{0}, false); }), std::bad_alloc)
        << "the disk fails while the document moves there";
}

TEST(DocumentLoader, SaysOfADocumentThatIsTooLargeOnlyInWhatWhoeverParses)
{
    const testing::TempFolder folder;
    const Source source((folder / "a.xml").string());
    testing::WriteFile(source.path, ManyRecords());
    const auto tooLarge = []() -> std::unique_ptr<TemporaryFile> { throw std::length_error("it has too much of it"); };
    for (const Parsing& parsing : {Parsing{1}, Parsing{2, 1'000}, Parsing{2, 10'000'000}}) {
        const LoadResult loaded = LoadDocument(
            source, [](std::int64_t) {}, MemoryBudget(100'000, tooLarge), Blanks::BesideChildrenDropped, parsing);
        EXPECT_EQ(loaded.problem, "it has too much of it");
    }
}

TEST(DocumentLoader, TakesOnlyTheElementsAtSomePaths)
{
    struct Case {
        const char* only;
        const char* document;
        std::vector<std::string> unmatched{};
    };
    const Case cases[] = {
        {"//a/b/c", "a x1\n b xn\n  c k=1 [1] x1\n   d [2] x1\n b xn\n  c [4] x1\n"},
        {"a/b/c/d;//a/e", "a x1\n b x1\n  c x1\n   d [2] x1\n e [6] x1\n"},
        {"//a/b;//a/b/c;//a/x/y;//b",
         "a x1\n b [0] xn\n  c k=1 [1] x1\n   d [2] x1\n b xn\n  c [4] x1\n",
         {"//a/x/y", "//b"}},
        {"//a/b/@k", "", {"//a/b/@k"}},
    };
    const testing::TempFolder folder;
    Source source((folder / "a.xml").string());
    testing::WriteFile(source.path, "<a>t<b>0<c\nk='1'>1<d>2</d></c></b><x\n/>5<b><c>4</c></b><e>6</e></a>");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.only);
        source.only = c.only;
        const LoadResult loaded = testing::LoadFile(source);
        EXPECT_EQ(DocumentText(loaded.document), c.document);
        EXPECT_EQ(loaded.unmatched, c.unmatched);
    }
    source.only = "//a/b/c";
    EXPECT_EQ(LineOfElement(source, 2), 1U);
    EXPECT_EQ(LineOfElement(source, 5), 3U);
    EXPECT_EQ(LineOfElement(source, 6), std::nullopt);
}

} // namespace
} // namespace velmora
