// Real documents, converted by the real program and judged independently.

#include "corpus/converted.h"
#include "settings/options.h"
#include "support/shared.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <regex>
#include <set>

namespace velmora::testing {
namespace {

class CorpusXml : public ::testing::TestWithParam<std::string> {};

TEST_P(CorpusXml, ConvertsIntoASoundDatabaseThatLacksWhatTheProtocolSays)
{
    REQUIRE_SHARED(shared);
    const std::filesystem::path xml = shared / "corpus" / "xml" / (GetParam() + ".xml");
    const TempFolder temp;
    const Converted converted(xml, temp / "out.mdb");
    ASSERT_EQ(converted.run.status, 0) << converted.Report();
    EXPECT_TRUE(converted.Says("Done")) << converted.Report();
    const Judgement judgement = Judge(temp / "out.mdb", {xml});
    EXPECT_TRUE(judgement.sound) << judgement.report;
    // A value stored twice may stand for an equal one that is lost: then the judge sees less than there is.
    if (judgement.surplus == 0) {
        EXPECT_EQ(converted.LostValues(), judgement.missing) << converted.Report();
    } else {
        EXPECT_GE(converted.LostValues(), judgement.missing) << converted.Report();
    }
}

TEST_P(CorpusXml, CountsEveryLostValueOfACopyInWhichNoTwoAreEqual)
{
    REQUIRE_SHARED(shared);
    const TempFolder temp;
    WriteUniqueCopy(shared / "corpus" / "xml" / (GetParam() + ".xml"), temp / "in.xml");
    const Converted converted(temp / "in.xml", temp / "out.mdb");
    ASSERT_EQ(converted.run.status, 0) << converted.Report();
    const Judgement judgement = Judge(temp / "out.mdb", {temp / "in.xml"});
    EXPECT_TRUE(judgement.sound) << judgement.report;
    EXPECT_EQ(converted.LostValues(), judgement.missing) << converted.Report();
    EXPECT_EQ(converted.NumberBehind("Not imported: " + std::to_string(judgement.missing) + " of ")
                  .value_or(judgement.offered),
              judgement.offered);
}

TEST_P(CorpusXml, TypedColumnsHoldTheNumbersAndInstantsOfTheTexts)
{
    REQUIRE_SHARED(shared);
    const TempFolder temp;
    std::vector<std::filesystem::path> pairs;
    const std::vector<std::string> optionSets[] = {{"-types"}, {"+complete", "ver=97"}};
    for (std::vector<std::string> options : optionSets)
        for (const char* const types : {"-types", "+types"}) {
            options.emplace_back(types);
            pairs.push_back(temp / std::to_string(pairs.size()).append(".mdb"));
            const Converted converted(shared / "corpus" / "xml" / (GetParam() + ".xml"), pairs.back(), options);
            ASSERT_EQ(converted.run.status, 0) << converted.Report();
            EXPECT_FALSE(converted.Says("became a text")) << converted.Report();
        }
    const Judgement judgement = JudgeTyped(pairs);
    EXPECT_TRUE(judgement.sound) << judgement.report;
}

INSTANTIATE_TEST_SUITE_P(Documents, CorpusXml, ::testing::ValuesIn(CorpusDocuments("xml")),
                         [](const auto& info) { return TestName(info.param); });

TEST(CorpusXmlFolder, AWildcardJobBringsAllFilesIntoOneDatabase)
{
    REQUIRE_SHARED(shared);
    const std::filesystem::path folder = shared / "corpus" / "xml" / "batch-maps";
    std::vector<std::filesystem::path> documents;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        documents.push_back(entry.path());
    const TempFolder temp;
    const Converted converted(folder / "*.xml", temp / "out.mdb");
    ASSERT_EQ(converted.run.status, 0) << converted.Report();
    EXPECT_TRUE(converted.Says("File 8 of 8: ")) << converted.Report();
    const Judgement judgement = Judge(temp / "out.mdb", documents);
    EXPECT_TRUE(judgement.sound) << judgement.report;
    EXPECT_EQ(judgement.missing, 0) << judgement.report << converted.Report();
}

struct OptionSet {
    const char* name;
    std::vector<std::string> options; ///< "$" is the test's folder
    /// The judge compares texts with texts, all of them, in a character set that has them all.
    bool canBeCounted = true;
};
const OptionSet kOptionSets[] = {
    {"WithoutRelations", {"-relations"}},
    {"SharedTables", {"+one_table_per_element"}},
    {"WithoutAttributes", {"-attributes"}},
    {"OtherNames", {"pkey=row_no", "fkey=owner_no", "attr=", "tp=t ", "ts=_x"}},
    {"OtherTags", {"tags=$/tags.tsv", "rename=$/done/%f%_1.xml", "encoding=utf-8", "unpack_limit=100"}},
    {"TextFiles",
     {"txt=$/out", "delimiter=;", "+quoted", "+bom", "eol=lf", "null=-", "date=iso", "-append", "-columns"}},
    {"KeptDatabase",
     {"-recreate_database", "+empty_tables", "-extend_mdb", "+once", "+continue", "debug", "log=$/log"}},
    {"EveryValue", {"+complete", "+skip_empty", "+strict", "threads=1", "summary=$/summary.json"}},
    {"OldAndTyped", {"ver=97", "+types"}, false},
    {"APart", {"only=//CATALOG/CD;//gpx/trk"}, false},
};

class CorpusOptions : public ::testing::TestWithParam<OptionSet> {};

TEST_P(CorpusOptions, GiveSoundDatabasesAndHonestCounts)
{
    REQUIRE_SHARED(shared);
    const TempFolder temp;
    WriteFile(temp / "tags.tsv", "name\tlabel\n");
    std::vector<std::string> options;
    for (const std::string& option : GetParam().options)
        options.push_back(std::regex_replace(option, std::regex("\\$"), temp.Path().string()));
    for (const std::string name : {"cd-catalog", "mobile-providers", "map-extract.osm", "project-plan", "gpx-track"}) {
        SCOPED_TRACE(name);
        WriteUniqueCopy(shared / "corpus" / "xml" / (name + ".xml"), temp / "unique.xml");
        const std::filesystem::path document = temp / (name + ".xml"); // which a run may rename
        std::filesystem::copy_file(temp / "unique.xml", document);
        const Converted converted(document, temp / "out.mdb", options);
        ASSERT_EQ(converted.run.status, 0) << converted.Report();
        const Judgement judgement = Judge(temp / "out.mdb", {temp / "unique.xml"});
        EXPECT_TRUE(judgement.sound) << judgement.report;
        if (GetParam().canBeCounted) {
            EXPECT_EQ(converted.LostValues(), judgement.missing) << converted.Report();
        }
    }
}

TEST(CorpusOptionSets, UseEveryOption)
{
    std::set<std::string_view> used{"xml=", "mdb=", "+quiet"};
    used.insert({"url=", "auth=", "pwd=", "timeout="}); // which need a server
    used.insert({"export=", "+overwrite", "preview"});  // which fill no database
    for (const OptionSet& set : kOptionSets)
        for (const std::string& option : set.options)
            used.insert(std::string_view(option).substr(0, std::min(option.find('='), option.size() - 1) + 1));
    for (const Option& option : Options()) {
        std::vector<std::string_view> words = Listed(option.words);
        const std::vector<std::string_view> offWords = Listed(option.offWords);
        words.insert(words.end(), offWords.begin(), offWords.end());
        EXPECT_TRUE(std::ranges::any_of(words, [&](std::string_view word) { return used.contains(word); }))
            << option.words;
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, CorpusOptions, ::testing::ValuesIn(kOptionSets),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace velmora::testing
