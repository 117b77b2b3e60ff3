#include "driver/conversion.h"
#include "jet/connection.h"

namespace velmora::testing {

namespace {

const std::string kLong(300, 'L');

/// `count` elements c10, c11 ... that hold `text`.
std::string Columns(int count, const std::string& text)
{
    std::string xml;
    for (int column = 10; column < 10 + count; ++column) {
        const std::string tag = "c" + std::to_string(column);
        xml.append("<").append(tag).append(">").append(text).append("</").append(tag).append(">");
    }
    return xml;
}

std::string Repeated(std::string_view letter, int count)
{
    std::string text;
    while (count-- > 0)
        text += letter;
    return text;
}

TEST(Widening, RecordsTooLargeForAPageKeepAllTheirValues)
{
    struct Case {
        const char* name;
        const char* options;
        std::string record;
        int widened;
        std::string firstLine;
    };
    const Case cases[] = {
        {"Latin letters, Access 97", "ver=97", Columns(60, std::string(40, 'a')), 17,
         "Column widened: [p].[c10], 40 characters at //r/p/c10"},
        {"Cyrillic letters", "", Columns(100, Repeated("\xD1\x8F", 33)), 52,
         "Column widened: [p].[c10], 33 characters at //r/p/c10"},
        {"CJK letters", "", Columns(100, Repeated("\xE4\xB8\xAD", 24)), 27,
         "Column widened: [p].[c10], 24 characters at //r/p/c10"},
        {"the longest goes first, and alone", "",
         Columns(17, Repeated("\xE4\xB8\xAD", 117)) + "<d>" + Repeated("\xE4\xB8\xAD", 118) + "</d>", 1,
         "Column widened: [p].[d], 118 characters at //r/p/d"},
        {"as many columns as a table can have", "", Columns(253, kLong), 0, ""},
        {"all of them widened one by one", "", Columns(253, "abc") + "</p><p>" + Columns(253, kLong), 253,
         "Column widened: [p].[c10], 300 characters at //r/p/c10"},
        {"short texts in that many memos", "", Columns(253, kLong) + "</p><p>" + Columns(253, "abc"), 0, ""},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        const RunOutcome outcome = run.Options(c.options).Xml("<r><p>" + c.record + "</p></r>").Run();
        EXPECT_FALSE(outcome.failed) << run.Error();
        EXPECT_EQ(run.Said("Not imported"), 0);
        ASSERT_EQ(outcome.tables.size(), 2u);
        EXPECT_EQ(outcome.tables[0].widenedColumns, c.widened);
        EXPECT_EQ(run.Said("Column widened: [p].["), c.widened);
        EXPECT_EQ(run.Said(c.firstLine) > 0, true);
    }
}

TEST(Widening, WhatDoesNotFitEvenSoLeavesNothingBehind)
{
    Conversion run;
    run.Options("ver=97 txt=" + run.Path("texts").string() + " delimiter=;");
    std::filesystem::create_directory(run.Path("texts"));
    run.Xml("<r><p><c10>1</c10><t>a</t><t>b</t></p><p>" + Columns(252, kLong) + "<t>c</t><t>d</t></p></r>");
    EXPECT_TRUE(run.Run().failed);
    const std::string error = run.Error();
    for (const char* part : {"3047 ", "//r/p", "[p]", "254 columns", "-attributes", "t=", "ver=2000"})
        EXPECT_NE(error.find(part), error.npos) << part << " in " << error;
    EXPECT_EQ(run.Said("Column widened"), 0) << "nothing is widened for nothing";
    EXPECT_EQ(run.Dump("p").substr(run.Dump("p").find('\n')).substr(0, 6), "\n1|1|1");
    EXPECT_EQ(run.Dump("t"), "PKEY|FKEY|t\n1|1|a\n2|1|b\n");
    EXPECT_EQ(ReadFile(run.Path("texts/t.txt")), "PKEY;FKEY;t\r\n1;1;a\r\n2;1;b\r\n");
}

} // namespace

} // namespace velmora::testing
