#include "platform/file_listing.h"
#include "platform/paths.h"
#include "platform/utf8.h"
#include "support/shared.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

namespace fs = std::filesystem;

TEST(FileListing, WildcardsMatchWholeNames)
{
    struct Case {
        const char* pattern;
        const char* name;
        bool matches;
    };
    const Case cases[] = {
        {"prod_*.xml", "prod_1.xml", true},
        {"prod_*.xml", "prod_.xml", true},
        {"prod_*.xml", "prod_1.xml.bak", false},
        {"a?c", "abc", true},
        {"a?c", "ac", false},
        {"a?c",
         "a\xC3\xA4"
         "c",
         true},
        {"???", "\xF0\x9F\x98\x80", false},
        {"*", "", true},
        {"**", "x", true},
        {"", "", true},
        {"", "x", false},
        {"*ab*cd", "abxabyabcd", true},
        {"*ab*cd", "abxabyabce", false},
        {"*.*", "name", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.pattern) + " on " + c.name);
        EXPECT_EQ(MatchesWildcards(c.pattern, c.name), c.matches);
    }
    // Tried naively, every star doubles the work.
    EXPECT_FALSE(MatchesWildcards("*a*a*a*a*a*a*a*a*a*a*a*a*b", std::string(5000, 'a')));
}

TEST(FileListing, GivesOrdinaryFilesInBytewiseOrder)
{
    const testing::TempFolder folder;
    for (const char* name : {"b.xml", "a10.xml", "a2.xml", "B.xml", "\xC3\xA4.xml", ".hidden.xml", "other.txt"})
        testing::WriteFile(folder / name, "x");
    fs::create_directory(folder / "folder.xml");
    fs::create_symlink("b.xml", folder / "link.xml");
    fs::create_symlink("nowhere", folder / "dangling.xml");

    const std::string base = folder.Path().string();
    const auto names = [&](const std::string& pattern) {
        std::string all;
        for (const std::string& file : ListFiles(base + pattern)) {
            EXPECT_EQ(file.substr(0, base.size() + 1), base + "/");
            all += file.substr(base.size() + 1) + " ";
        }
        return all;
    };
    EXPECT_EQ(names("/*.xml"), "B.xml a10.xml a2.xml b.xml link.xml \xC3\xA4.xml ");
    EXPECT_EQ(names("\\a*.xml"), "a10.xml a2.xml ") << "a backslash separates what a person types";
    EXPECT_EQ(names("/.h*"), ".hidden.xml ");
    EXPECT_EQ(names("/b.xml"), "b.xml ");
    EXPECT_EQ(names("/folder.xml"), "");
    EXPECT_EQ(names("/none*"), "");
    EXPECT_EQ(names("/nowhere/*"), "");
}

TEST(Paths, OneFileIsRecognisedUnderItsOtherNames)
{
    const testing::TempFolder folder;
    const std::string base = folder.Path().string();
    testing::WriteFile(folder / "a", "");
    testing::WriteFile(folder / "b", "");
    fs::create_hard_link(folder / "a", folder / "hard");
    fs::create_symlink("a", folder / "soft");
    fs::create_directory(folder / "sub");
    fs::create_directory_symlink("sub", folder / "other");

    struct Case {
        const char* name;
        std::string first, second;
        bool same;
    };
    const Case cases[] = {
        {"equal", "/a", "/a", true},
        {"different files", "/a", "/b", false},
        {"hard link", "/a", "/hard", true},
        {"symbolic link", "/soft", "/a", true},
        {"through the parent", "/sub/../a", "/a", true},
        {"not there yet", "/sub/new", "/sub/./new", true},
        {"not there yet, through a linked folder", "/other/new", "/sub/new", true},
        {"not there yet, other separator", "\\sub\\new", "/sub/new", true},
        {"not there, different", "/sub/new", "/sub/newer", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(IsSameFile(base + c.first, base + c.second), c.same);
        EXPECT_EQ(IsSameFile(base + c.second, base + c.first), c.same);
    }
    EXPECT_FALSE(IsSameFile("", ""));
    EXPECT_TRUE(IsSameFile("new", fs::current_path().string() + "/new"));
}

TEST(Utf8, IsCutBetweenCharacters)
{
    const std::string text = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"; // 1, 2, 3 and 4 bytes
    const std::size_t expected[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 10};
    for (std::size_t limit = 0; limit < std::size(expected); ++limit)
        EXPECT_EQ(CutUtf8(text, limit).size(), expected[limit]) << limit;
    EXPECT_EQ(CountCharacters(text), 4U);
    EXPECT_EQ(CutUtf8("\x80\x80\x80", 2), "") << "stray continuation bytes are no character";
    EXPECT_EQ(WithoutByteOrderMark("\xEF\xBB\xBFx"), "x");
    EXPECT_EQ(WithoutByteOrderMark("\xEF\xBB"), "\xEF\xBB");
}

} // namespace
} // namespace velmora
