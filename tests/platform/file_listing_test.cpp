#include "platform/file_listing.h"

#include "platform/paths.h"
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

} // namespace
} // namespace velmora
