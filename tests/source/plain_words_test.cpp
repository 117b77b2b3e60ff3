#include "source/plain_words.h"

#include "settings/command_line.h"
#include "support/shared.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace velmora {
namespace {

using Texts = std::vector<std::string>;

/// In a folder that holds files of many names and forms.
class PlainWordsTest : public ::testing::Test {
protected:
    PlainWordsTest()
    {
        std::filesystem::current_path(folder_.Path());
        for (const char* name : {"a.xml", "b c.xml", "d|e.xml", "-f.xml", "g=h.xml", "@i.xml", "here", "xml:j.xml"})
            testing::WriteFile(name, "<a/>");
        testing::WriteFile("wide", {"\xFF\xFE<\0a\0", 6});
        testing::WriteFile("packed", "\x1F\x8B\b");
        testing::WriteFile("text", "a;b");
        testing::WriteFile("q", "<a/>");
    }
    ~PlainWordsTest() override { std::filesystem::current_path(before_); }

private:
    const std::filesystem::path before_ = std::filesystem::current_path();
    const testing::TempFolder folder_;
};

TEST_F(PlainWordsTest, BecomeOptionsUnlessTheyMayBeMistyped)
{
    struct Case {
        Texts words, arguments;
    };
    const Case cases[] = {
        {{}, {}},
        {{"a.xml", "out.mdb"}, {"-recreate_database", "mdb=out.mdb", "xml=a.xml"}},
        {{"+d", "b c.xml", "in/*.xml.gz", "OUT.MDB"},
         {"-recreate_database", "mdb=OUT.MDB", "xml=b c.xml|in/*.xml.gz", "+d"}},
        {{"none.XML", "here", "wide", "packed", "mdb=a.mdb"}, {"xml=none.XML|here|wide|packed", "mdb=a.mdb"}},
        {{"d|e.xml", "./g=h.xml.mdb"}, {"-recreate_database", "mdb=./g=h.xml.mdb", "xml=d|e.xml"}},
        {{"@i.xml"}, {"xml=./@i.xml"}},
        {{"out.mdb", "export=a.xml"}, {"-recreate_database", "mdb=out.mdb", "export=a.xml"}},
        // What is an option stays one, and what may be meant for one, or for nothing, is left to the parser.
        {{"q", "append", "xml=text", "m=out.mdb"}, {"q", "append", "xml=text", "m=out.mdb"}},
        {{"text", "none", "", "xlm=a.xml", "-xml", "+a.xml", "-out.mdb", "mdb:out.mdb", "http://a/b.html"},
         {"text", "none", "", "xlm=a.xml", "-xml", "+a.xml", "-out.mdb", "mdb:out.mdb", "http://a/b.html"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.words));
        const PlainWords taken = TakePlainWords(c.words);
        EXPECT_EQ(taken.arguments, c.arguments);
        EXPECT_EQ(taken.nameFiles, c.arguments != c.words);
    }
}

TEST_F(PlainWordsTest, AreRefusedWhereTheyMeanTwoThings)
{
    const std::pair<Texts, const char*> cases[] = {
        {{"a.mdb", "a.xml", "b.mdb"}, "Two databases are named, \"a.mdb\" and \"b.mdb\""},
        {{"a.mdb", "m=b.mdb"}, "Two databases"},
        {{"a.xml", "x=b.xml"}, "both name the source"},
        {{"url=http://a", "a.xml"}, "both name the source"},
        {{"a.xml", "d|e.xml"}, "convert it alone"},
        {{"-f.xml"}, "for the file write \"./-f.xml\""},
        {{"g=h.xml"}, "for the file write \"./g=h.xml\""},
        {{"xml:j.xml"}, "mistyped"},
    };
    for (const auto& [words, message] : cases) {
        SCOPED_TRACE(::testing::PrintToString(words));
        try {
            static_cast<void>(TakePlainWords(words));
            ADD_FAILURE() << "accepted";
        } catch (const CommandLineError& error) {
            EXPECT_NE(std::string_view(error.what()).find(message), std::string_view::npos) << error.what();
        }
    }
}

} // namespace
} // namespace velmora
