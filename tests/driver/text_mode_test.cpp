#include "driver/conversion.h"

#include "jet/connection.h"

namespace velmora::testing {

namespace {

const std::string kDocument = "<r><p><n>1</n><m>a</m></p></r>";

TEST(TextMode, MakesItsFolderAndItsDatabase)
{
    Conversion run;
    run.Xml(kDocument).Options("-recreate_database delimiter=\\t");
    run.job.controls.txtFILE_TXT.text = run.Path("out").string();
    run.job.controls.txtFILE_MDB.text.clear();
    EXPECT_FALSE(run.Run().failed) << run.Error();
    EXPECT_EQ(ReadFile(run.Path("out/p.txt")), "PKEY\tFKEY\tn\tm\r\n1\t1\t1\ta\r\n");
    const std::string scratch = run.Path("temporary_import_database.mdb").string();
    EXPECT_EQ(run.job.controls.txtFILE_MDB.text, scratch) << "where the user sees it";
    EXPECT_TRUE(run.job.controls.chkRecreateDatabase.Checked());
    EXPECT_EQ(run.Said("Temporary database: " + scratch), 1);

    // Another run that is still making its own, and one that has opened one.
    const std::string second = run.Path("temporary_import_database_2.mdb").string();
    const std::string third = run.Path("temporary_import_database_3.mdb").string();
    {
        const auto open = jet::Connection::Open(scratch);
        const auto unfinished = jet::Connection::Create(second, jet::JetVersion::Jet4);
        run.job.controls.txtFILE_MDB.text.clear();
        EXPECT_FALSE(run.Run().failed) << run.Error();
        EXPECT_EQ(run.Said("Temporary database: " + third), 1);
    }
    EXPECT_SOUND(std::vector<std::filesystem::path>({scratch, third}));
}

TEST(TextMode, OneLevelOfFoldersIsMade)
{
    Conversion run;
    run.Xml(kDocument).Options("delimiter=;");
    run.job.controls.txtFILE_TXT.text = run.Path("a/b").string();
    EXPECT_TRUE(run.Run().failed);
    EXPECT_EQ(run.Error().substr(0, 3), "76 ") << run.Error();
    EXPECT_FALSE(std::filesystem::exists(run.Target()));
}

TEST(TextMode, AMissingDelimiterIsAskedForUnlessTheRunIsQuiet)
{
    struct Case {
        const char* name;
        const char* options;
        std::vector<std::optional<std::string>> answers;
        bool cancelled;
        const char* record; ///< nullptr: no file
    };
    const Case cases[] = {
        {"named", "-quiet delimiter=;", {}, false, "1;1;1;a"},
        {"left empty", "-quiet", {""}, false, "111a"},
        {"cancelled", "-quiet", {std::nullopt}, true, nullptr},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        run.Xml(kDocument).Options("-columns").Options(c.options);
        run.job.controls.txtFILE_TXT.text = run.Path("out").string();
        run.host.inputs = {c.answers.begin(), c.answers.end()};
        const RunOutcome outcome = run.Run();
        EXPECT_FALSE(outcome.failed) << run.Error();
        EXPECT_EQ(outcome.cancelled, c.cancelled);
        EXPECT_EQ(run.host.messages, std::vector<std::string>(c.answers.size(), "No delimiter specitied\r\n"
                                                                                "Use \\t for tabulator"));
        EXPECT_EQ(run.Said("Done"), 1);
        EXPECT_EQ(run.job.controls.btnConvertCaption, "Convert");
        EXPECT_EQ(std::filesystem::exists(run.Path("out/p.txt")), c.record != nullptr);
        if (c.record) {
            EXPECT_EQ(ReadFile(run.Path("out/p.txt")), c.record + std::string("\r\n"));
        }
    }
}

} // namespace

} // namespace velmora::testing
