#include "mapping/tag_map.h"

#include "settings/job.h"
#include "support/scripted_host.h"
#include "support/shared.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace velmora {
namespace {

/// The entries as `<tag>[name]`, one behind the other.
std::string Text(const TagMap& map)
{
    std::string text;
    for (std::size_t number = 1; number <= map.UpperBound(); ++number)
        text += "<" + map.Entry(number).tag + ">[" + map.Entry(number).name + "]";
    return text;
}

TEST(TagMap, FindsTheFirstEntryWithExactlyTheTag)
{
    TagMap map;
    map.Add({"item", "Article"});
    map.Add({"item", "Second"});
    map.Add({"", "x"});
    map.Add({"", ""});
    map.Add({"kept", ""});
    map.Add({"kept", "too late"});
    EXPECT_EQ(map.Lookup("kept"), "kept");
    EXPECT_EQ(map.Lookup("item"), "Article");
    EXPECT_EQ(map.Lookup("Item"), "Item");
    EXPECT_EQ(map.Lookup("items"), "items");
    map.Compact();
    EXPECT_EQ(Text(map), "<item>[Article]<item>[Second]<>[x]<kept>[]<kept>[too late]");
    map.Remove(1);
    EXPECT_EQ(Text(map), "<item>[Second]<>[x]<kept>[]<kept>[too late]");
}

TEST(TagMapFile, IsReadLineByLine)
{
    struct Case {
        const char* name;
        std::string content;
        const char* entries;
        int error = 0;
        bool isGuessed = false;
    };
    using namespace std::string_literals;
    const Case cases[] = {
        {"two lines", "a\tb\r\nc\td\r\n", "<a>[b]<c>[d]"},
        {"other line ends, none at the end", "a\tb\nc\td\re\tf", "<a>[b]<c>[d]<e>[f]"},
        {"byte order mark", "\xEF\xBB\xBF\xC3\xA4\tb\r\n", "<\xC3\xA4>[b]"},
        {"further tabs belong to the name", "a\tb\tc\r\n", "<a>[b\tc]"},
        {"nothing is trimmed", " a \t b \r\n", "< a >[ b ]"},
        {"empty tag, empty name", "\tx\r\ny\t\r\n", "<>[x]<y>[]"},
        {"a line without a tab ends the reading", "a\tb\r\nc\td\r\nnotes\r\ne\tf\r\n", "<a>[b]<c>[d]"},
        {"an empty line is an error", "a\tb\r\n\r\nc\td\r\n", "<a>[b]<>[]", runtime_errors::kInvalidProcedureCall},
        {"empty file", "", ""},
        {"UTF-16LE", "\xFF\xFE\xE4\0\t\0b\0\n\0"s, "<ä>[b]"},
        {"UTF-16BE", "\xFE\xFF\0\xE4\0\t\0b"s, "<ä>[b]"},
        {"UTF-16, half a character", "\xFF\xFE\xE4"s, "", runtime_errors::kPathFileAccess},
        {"windows-1252", "\xE4\t\x80\x81\x9D\r\nc\td", "<ä>[€\u0081\u009D]<c>[d]", 0, true},
    };
    const testing::TempFolder folder;
    const std::string path = (folder / "map.tsv").string();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        testing::ScriptedHost host;
        Job job(host);
        TagMap map;
        map.Add({"old", "entry"});
        testing::WriteFile(path, c.content);
        const bool isRead = velLoadTagMapping(job, map, path);
        EXPECT_EQ(Text(map), c.entries);
        EXPECT_EQ(isRead, c.error == 0);
        ASSERT_EQ(host.errors.size(), c.error != 0 ? 1U : 0U);
        if (c.error != 0) {
            EXPECT_EQ(host.errors[0].first, c.error);
        }
        const std::string guessed = "Tag-mapping file is not UTF-8, read as windows-1252: " + path;
        EXPECT_EQ(std::count(host.lines.begin(), host.lines.end(), guessed), c.isGuessed ? 1 : 0);
        EXPECT_EQ(host.controlsChanges, 1) << "the list is redrawn in any case";
    }
}

TEST(TagMapFile, WhatIsSavedReadsBackWithoutBlankEntries)
{
    const testing::TempFolder folder;
    const std::string path = (folder / "map.tsv").string();
    testing::WriteFile(path, "what was there before, and longer than the new mapping");
    testing::ScriptedHost host;
    Job job(host);
    TagMap map;
    map.Add({"", ""});
    EXPECT_FALSE(PrepareSaving(job, map));
    for (const MappingEntry& entry : {MappingEntry{"", ""}, {"\xC3\xA4", "b\tc"}, {"", "x"}, {"a", ""}})
        map.Add(entry);
    EXPECT_TRUE(PrepareSaving(job, map));
    EXPECT_TRUE(SaveTagMapping(job, map, path));
    EXPECT_EQ(testing::ReadFile(path), "\xC3\xA4\tb\tc\r\n\tx\r\na\t\r\n");
    EXPECT_EQ(job.controls.txtFILE_MAPPING.text, path);
    TagMap readBack;
    EXPECT_TRUE(velLoadTagMapping(job, readBack, path));
    EXPECT_EQ(Text(readBack), Text(map));

    const std::string link = (folder / "link.tsv").string();
    std::filesystem::create_symlink("map.tsv", link);
    std::filesystem::permissions(path, std::filesystem::perms(0640));
    EXPECT_TRUE(SaveTagMapping(job, TagMap(), link));
    EXPECT_EQ(testing::ReadFile(path), "");
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0640));

    // Nothing can be made beside a file in this folder, which shows that the old one is not written over.
    std::filesystem::create_directory(folder / "closed");
    const std::string kept = (folder / "closed" / std::string(250, 'm')).string();
    testing::WriteFile(kept, "old");
    EXPECT_FALSE(SaveTagMapping(job, map, kept));
    EXPECT_EQ(testing::ReadFile(kept), "old");
    host.errors.clear();
    EXPECT_FALSE(SaveTagMapping(job, map, folder.Path().string()));
    ASSERT_EQ(host.errors.size(), 1U);
    EXPECT_NE(host.errors[0].second.find(folder.Path().string()), std::string::npos);
}

TEST(TagMapFile, AMissingFileKeepsTheMap)
{
    const testing::TempFolder folder;
    testing::ScriptedHost host;
    Job job(host);
    TagMap map;
    map.Add({"old", "entry"});
    EXPECT_FALSE(velLoadTagMapping(job, map, (folder / "none.tsv").string()));
    EXPECT_FALSE(velLoadTagMapping(job, map, folder.Path().string()));
    EXPECT_EQ(Text(map), "<old>[entry]");
    EXPECT_EQ(host.lines, std::vector<std::string>(2, "Tag-mapping file was not found!"));
    EXPECT_FALSE(job.settings.blAbort);
}

} // namespace
} // namespace velmora
