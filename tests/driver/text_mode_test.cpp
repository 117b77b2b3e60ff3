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

    // Another run that opens one after it was found free.
    std::unique_ptr<jet::Connection> meanwhile;
    run.host.onLine = [&](std::string_view line) {
        if (line == "Temporary database: " + scratch)
            meanwhile = jet::Connection::Open(scratch);
    };
    run.job.controls.txtFILE_MDB.text.clear();
    EXPECT_FALSE(run.Run().failed) << run.Error();
    EXPECT_EQ(run.Said("Temporary database: " + second), 1);
    meanwhile.reset();
    EXPECT_SOUND(std::vector<std::filesystem::path>({scratch, second, third}));
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

/// Two runs of `first` and `second` into text files made anew, with `prepare` between them.
void ExportTwice(Conversion& run, const char* first, const char* second, void (*prepare)(Conversion&))
{
    run.Options("delimiter=; -append").Xml(first);
    run.job.controls.txtFILE_TXT.text = run.Path("out").string();
    EXPECT_FALSE(run.Run().failed) << run.Error();
    prepare(run);
    run.Xml(second).Run();
}

TEST(TextMode, OldFilesGoOnlyWhenAllNewOnesCanBeWritten)
{
    namespace fs = std::filesystem;
    struct Case {
        const char* name;
        void (*prepare)(Conversion&);
        const char* error;
    };
    const Case cases[] = {
        {"one cannot be written", [](Conversion& run) { fs::create_directory(run.Path("out/q.txt")); }, "q.txt"},
        {"two tables share one", [](Conversion& run) { fs::create_symlink("p.txt", run.Path("out/q.txt")); },
         "are one file"},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        ExportTwice(run, "<r><p><n>1</n></p></r>", "<r><p><n>2</n></p><m><n>1</n></m><q><n>2</n></q></r>", c.prepare);
        EXPECT_NE(run.Error().find(c.error), std::string::npos) << run.Error();
        EXPECT_EQ(ReadFile(run.Path("out/p.txt")), "PKEY;FKEY;n\r\n1;1;1\r\n");
        EXPECT_FALSE(fs::exists(run.Path("out/m.txt"))) << "what was made to see is gone again";
        EXPECT_EQ(run.Said("text files"), 0);
        EXPECT_EQ(run.Dump("p"), "PKEY|FKEY|n\n1|1|1\n");
    }
}

TEST(TextMode, TheClosingLineSpeaksOfTheFilesThatWereTouched)
{
    const char* const refused = "<doc><w><l><i><n>2</n></i></l></w></doc>";
    const auto skip = [](Conversion& run) { run.Options("+skip_empty"); };
    Conversions runs;
    Conversion& failed = runs.Next();
    ExportTwice(failed, "<r><i><n>1</n></i></r>", refused, skip);
    EXPECT_EQ(
        failed.Said("the database stays as it was; text files in [" + failed.Path("out").string() + "] were changed"),
        1);
    Conversion& unread = runs.Next();
    ExportTwice(unread, "<r><i><n>1</n></i></r>", "<r>", [](Conversion&) {});
    EXPECT_EQ(unread.Said("No source could be read: the database stays as it was, and the text files are left alone"),
              1);
    EXPECT_EQ(ReadFile(unread.Path("out/i.txt")), "PKEY;FKEY;n\r\n1;1;1\r\n");
}

TEST(TextMode, KeysThatBeginAnewBehindOldLinesAreTold)
{
    struct Case {
        const char* options;
        int lines;
    };
    for (const Case& c :
         {Case{"append", 1}, Case{"append -recreate_database", 0}, Case{"append -relations", 0}, Case{"-append", 0}}) {
        SCOPED_TRACE(c.options);
        Conversion run;
        run.Options("delimiter=;").Options(c.options).Xml(kDocument).Xml(kDocument, "b.xml");
        run.job.controls.txtFILE_TXT.text = run.Path("out").string();
        EXPECT_FALSE(run.Run().failed) << run.Error();
        EXPECT_EQ(run.Said("mdb= "), 0) << "the lines are its own";
        run.Run();
        EXPECT_EQ(run.Said("mdb= and kept with -recreate_database"), c.lines);
    }
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
