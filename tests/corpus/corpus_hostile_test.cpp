// Hostile and malformed documents: every run ends by itself, with its closing steps and a sound database or none.

#include "corpus/converted.h"
#include "support/shared.h"

#include <gtest/gtest.h>
#include <map>

namespace velmora::testing {
namespace {

constexpr int kLoads = 0;
constexpr int kRefusedByTheDatabase = 1;
constexpr int kNotWellFormed = 3;

/// What becomes of a document; most of them are not well-formed.
struct Outcome {
    int status = kNotWellFormed;
    long records = 0; ///< that the protocol reports, for those that load
};

Outcome OutcomeOf(const std::string& document)
{
    static const std::map<std::string, Outcome> others = {
        {"external-entity-file", {kLoads, 3}},      {"external-entity-http", {kLoads, 2}},
        {"external-parameter-entity", {kLoads, 2}}, {"names-by-case", {kRefusedByTheDatabase}},
        {"names-long", {kRefusedByTheDatabase}},    {"names-reserved", {kRefusedByTheDatabase}},
        {"says-utf16-is-utf8", {kLoads, 2}},        {"text-255-256-65535", {kLoads, 8}},
        {"utf16le-without-bom", {kLoads, 4}},       {"wide-300", {kRefusedByTheDatabase}},
    };
    const auto found = others.find(document);
    return found == others.end() ? Outcome() : found->second;
}

/// What a hostile file may not do to the machine. The sanitizers' own memory is not counted against the program.
#if defined(__SANITIZE_ADDRESS__)
constexpr long kMaxPeakKilobytes = 1024 * 1024;
#else
constexpr long kMaxPeakKilobytes = 256 * 1024;
#endif

class CorpusHostile : public ::testing::TestWithParam<std::string> {};

TEST_P(CorpusHostile, EndsWithItsClosingStepsAndASoundDatabaseOrNone)
{
    REQUIRE_SHARED(shared);
    const auto [status, records] = OutcomeOf(GetParam());
    const TempFolder temp;
    const Converted converted(shared / "corpus" / "hostile" / (GetParam() + ".xml"), temp / "out.mdb");
    EXPECT_EQ(converted.run.status, status) << converted.Report();
    EXPECT_TRUE(converted.Says("Done")) << converted.Report();
    EXPECT_LT(converted.run.peakKilobytes, kMaxPeakKilobytes);
    const bool made = std::filesystem::exists(temp / "out.mdb");
    if (made) {
        const Judgement judgement = Judge(temp / "out.mdb");
        EXPECT_TRUE(judgement.sound) << judgement.report;
    }
    if (status == kLoads) {
        EXPECT_TRUE(converted.Says(" " + std::to_string(records) + " records were imported")) << converted.Report();
    }
    if (status == kNotWellFormed && made) {
        EXPECT_EQ(Dump(temp / "out.mdb"), "") << "a part of a broken document stands in the database";
    }
}

INSTANTIATE_TEST_SUITE_P(Documents, CorpusHostile, ::testing::ValuesIn(CorpusDocuments("hostile")),
                         [](const auto& info) { return TestName(info.param); });

TEST(CorpusHostileFolder, AWildcardJobGoesOnBehindFilesThatCannotBeRead)
{
    REQUIRE_SHARED(shared);
    const TempFolder temp;
    int count = 0;
    for (const std::string& document : CorpusDocuments("hostile")) {
        if (OutcomeOf(document).status == kRefusedByTheDatabase)
            continue;
        std::filesystem::copy_file(shared / "corpus" / "hostile" / (document + ".xml"), temp / (document + ".xml"));
        ++count;
    }
    WriteFile(temp / "zz-last.xml", "<last><rec><v>behind them all</v></rec></last>");
    ++count;
    std::filesystem::create_directory(temp / "a-directory.xml");
    const Converted converted(temp / "*.xml", temp / "out.mdb");
    EXPECT_EQ(converted.run.status, 3) << converted.Report();
    const std::string number = std::to_string(count);
    EXPECT_TRUE(converted.Says("File " + number + " of " + number + ": ")) << converted.Report();
    EXPECT_TRUE(converted.Says("Done"));
    EXPECT_NE(Dump(temp / "out.mdb").find("\"behind them all\""), std::string::npos) << converted.Report();
    EXPECT_SOUND(temp / "out.mdb");
}

} // namespace
} // namespace velmora::testing
