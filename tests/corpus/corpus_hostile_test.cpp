// Hostile and malformed documents: every run ends by itself, with its closing steps and a sound database or none.

#include "corpus/converted.h"
#include "support/shared.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace velmora::testing {
namespace {

constexpr int kLoads = 0;
constexpr int kRefusedByTheDatabase = 1;
constexpr int kNotWellFormed = 3;

struct HostileDocument {
    const char* name;
    int status;
    long records = 0; ///< that the protocol reports, for those that load
};
const HostileDocument kDocuments[] = {
    {"bad-utf8", kNotWellFormed},
    {"bare-ampersand", kNotWellFormed},
    {"billion-laughs", kNotWellFormed},
    {"blank-before-declaration", kNotWellFormed},
    {"blank-only", kNotWellFormed},
    {"bom-only", kNotWellFormed},
    {"control-characters", kNotWellFormed},
    {"control-reference", kNotWellFormed},
    {"duplicate-attribute", kNotWellFormed},
    {"empty", kNotWellFormed},
    {"external-entity-file", kLoads, 3},
    {"external-entity-http", kLoads, 2},
    {"external-parameter-entity", kLoads, 2},
    {"junk-after-root", kNotWellFormed},
    {"latin1-without-declaration", kNotWellFormed},
    {"lt-in-attribute", kNotWellFormed},
    {"mismatched-tag", kNotWellFormed},
    {"names-by-case", kRefusedByTheDatabase},
    {"names-emoji", kNotWellFormed},
    {"names-long", kRefusedByTheDatabase},
    {"names-odd", kNotWellFormed},
    {"names-reserved", kRefusedByTheDatabase},
    {"nul-byte", kNotWellFormed},
    {"page.html", kNotWellFormed},
    {"picture", kNotWellFormed},
    {"real-viking-maps", kNotWellFormed},
    {"says-utf16-is-utf8", kLoads, 2},
    {"text-255-256-65535", kLoads, 8},
    {"truncated-in-tag", kNotWellFormed},
    {"truncated-in-text", kNotWellFormed},
    {"two-roots", kNotWellFormed},
    {"undefined-entity", kNotWellFormed},
    {"unquoted-attribute", kNotWellFormed},
    {"utf16-odd-length", kNotWellFormed},
    {"utf16le-without-bom", kLoads, 4},
    {"wide-300", kRefusedByTheDatabase},
};

/// What a hostile file may not do to the machine. The sanitizers' own memory is not counted against the program.
#if defined(__SANITIZE_ADDRESS__)
constexpr long kMaxPeakKilobytes = 1024 * 1024;
#else
constexpr long kMaxPeakKilobytes = 256 * 1024;
#endif

class CorpusHostile : public ::testing::TestWithParam<HostileDocument> {};

TEST_P(CorpusHostile, EndsWithItsClosingStepsAndASoundDatabaseOrNone)
{
    REQUIRE_SHARED(shared);
    const TempFolder temp;
    const Converted converted(shared / "corpus" / "hostile" / (std::string(GetParam().name) + ".xml"),
                              temp / "out.mdb");
    EXPECT_EQ(converted.run.status, GetParam().status) << converted.Report();
    EXPECT_TRUE(converted.Says("Done")) << converted.Report();
    EXPECT_LT(converted.run.peakKilobytes, kMaxPeakKilobytes);
    const bool made = std::filesystem::exists(temp / "out.mdb");
    if (made) {
        const Judgement judgement = Judge(shared, temp / "out.mdb");
        EXPECT_TRUE(judgement.sound) << judgement.report;
    }
    if (GetParam().status == kLoads) {
        EXPECT_TRUE(converted.Says(" " + std::to_string(GetParam().records) + " records were imported"))
            << converted.Report();
    }
    if (GetParam().status == kNotWellFormed && made) {
        EXPECT_EQ(Dump(temp / "out.mdb"), "") << "a part of a broken document stands in the database";
    }
}

INSTANTIATE_TEST_SUITE_P(Documents, CorpusHostile, ::testing::ValuesIn(kDocuments),
                         [](const auto& info) { return TestName(info.param.name); });

TEST(CorpusHostileFolder, HoldsNoDocumentThatIsNotTried)
{
    REQUIRE_SHARED(shared);
    for (const auto& entry : std::filesystem::directory_iterator(shared / "corpus" / "hostile")) {
        const bool tried = std::any_of(std::begin(kDocuments), std::end(kDocuments),
                                       [&](const HostileDocument& d) { return entry.path().stem() == d.name; });
        EXPECT_TRUE(tried || entry.path().extension() != ".xml") << entry.path();
    }
}

TEST(CorpusHostileFolder, AWildcardJobGoesOnBehindFilesThatCannotBeRead)
{
    REQUIRE_SHARED(shared);
    const TempFolder temp;
    int count = 0;
    for (const HostileDocument& document : kDocuments) {
        if (document.status == kRefusedByTheDatabase)
            continue;
        const std::string name = std::string(document.name) + ".xml";
        std::filesystem::copy_file(shared / "corpus" / "hostile" / name, temp / name);
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

TEST(Hostile, NoEntityMakesTheProgramReadAnotherFile)
{
    const TempFolder temp;
    WriteFile(temp / "secret.txt", "canary-in-a-coal-mine");
    WriteFile(temp / "secret.dtd", "<!ENTITY declared 'canary-in-a-coal-mine'>");
    const std::string file = "file://" + (temp / "secret.txt").string();
    const std::string dtd = "file://" + (temp / "secret.dtd").string();
    const std::pair<const char*, std::string> cases[] = {
        {"general entity", "<!DOCTYPE r [<!ENTITY e SYSTEM '" + file + "'>]><r><a>&e;</a><b>kept</b></r>"},
        {"external subset", "<!DOCTYPE r SYSTEM '" + dtd + "'><r><a>&declared;</a><b>kept</b></r>"},
        {"parameter entity",
         "<!DOCTYPE r [<!ENTITY % p SYSTEM '" + dtd + "'> %p;]><r><a>&declared;</a><b>kept</b></r>"},
        {"relative name", "<!DOCTYPE r [<!ENTITY e SYSTEM 'secret.txt'>]><r><a>&e;</a><b>kept</b></r>"},
    };
    for (const auto& [name, document] : cases) {
        SCOPED_TRACE(name);
        WriteFile(temp / "in.xml", document);
        const Converted converted(temp / "in.xml", temp / "out.mdb");
        EXPECT_EQ(converted.run.status, 0) << converted.Report();
        EXPECT_EQ(converted.Report().find("canary"), std::string::npos) << converted.Report();
        const std::string dump = Dump(temp / "out.mdb");
        EXPECT_EQ(dump.find("canary"), std::string::npos) << dump;
        EXPECT_NE(dump.find("kept"), std::string::npos) << dump;
    }
}

} // namespace
} // namespace velmora::testing
