#include "import/text_export.h"

#include "driver/conversion.h"
#include "support/process.h"

namespace velmora::testing {

namespace {

/// A conversion into text files, with a semicolon between the values.
class TextConversion : public Conversion {
public:
    TextConversion()
    {
        job.controls.txtFILE_TXT.text = (Folder() / "").string();
        Options("delimiter=;");
    }
    [[nodiscard]] std::filesystem::path Folder() const { return Path("text"); }
    [[nodiscard]] std::string Text(std::string_view table) const
    {
        return ReadFile(Folder() / std::string(table).append(".txt"));
    }
};

const char* const kDocument = "<r><p a=\"1\"><n>x</n><m/></p><p><n>y;\"z\"</n><m>2</m></p></r>";

TEST(TextExport, QuotedFilesReadBackElsewhere)
{
    TextConversion run;
    run.Options("+quoted delimiter=,");
    run.Xml("<r><p><n>a,\"b\"&#10;c&#13;&#10;d</n><m>, </m></p><p><n>\xC3\xA4\xE2\x82\xAC</n><m>'</m></p></r>");
    EXPECT_FALSE(run.Run().failed) << run.Error();
    const ProcessResult reader = RunProcess(
        {"python3", "-c", "import csv, sys; print(list(csv.reader(open(sys.argv[1], newline='', encoding='utf-8'))))",
         (run.Folder() / "p.txt").string()},
        {{"PYTHONIOENCODING", "utf-8"}});
    EXPECT_EQ(reader.output, "[['PKEY', 'FKEY', 'n', 'm'], ['1', '1', 'a,\"b\"\\nc\\r\\nd', ', '], "
                             "['2', '1', '\xC3\xA4\xE2\x82\xAC', \"'\"]]\n")
        << reader.errors;
}

TEST(TextExport, SourcesAreAppendedToWhatTheOnesBeforeHaveWritten)
{
    TextConversion run;
    run.Xml("<r><p><n>1</n></p></r>", "a.xml").Xml("<r><p><n>2</n><m>3</m></p></r>", "b.xml");
    EXPECT_FALSE(run.Run().failed) << run.Error();
    EXPECT_EQ(run.Text("p"), "PKEY;FKEY;n\r\n1;1;1\r\n2;2;2;3\r\n");
    EXPECT_EQ(run.Said("does not name the columns that table [p] has now"), 1);

    EXPECT_FALSE(run.Options("-append").Run().failed) << run.Error();
    EXPECT_EQ(run.Text("p"), "PKEY;FKEY;n;m\r\n2;2;2;3\r\n") << "each source replaces the files";
    EXPECT_EQ(run.Said("Each source file replaces"), 1);
}

TEST(TextExport, AColumnThatIsWidenedKeepsItsPlaceInTheFile)
{
    // The repeated leaf's text counts as short until a record holds it.
    const std::string text(300, 't');
    TextConversion run;
    run.Xml("<r><p><n>1</n><m>2</m></p></r>", "a.xml").Xml("<r><p><n>3</n><m>4</m></p></r>", "b.xml");
    run.job.controls.txtFILE_XML.text = run.Path("a.xml").string();
    EXPECT_FALSE(run.Run().failed) << run.Error();
    run.Xml("<r><p><n>" + text + "</n><m>4</m></p></r>", "a.xml").Options("-recreate_database");
    EXPECT_FALSE(run.Run().failed) << run.Error();
    EXPECT_EQ(run.Dump("p"), "PKEY|FKEY|m|n\n1|1|2|1\n2|2|4|" + text + "\n");
    EXPECT_EQ(run.Text("p"), "PKEY;FKEY;n;m\r\n1;1;1;2\r\n2;2;" + text + ";4\r\n");
}

TEST(TextExport, ElementsThatShareATableShareItsFile)
{
    TextConversion run;
    run.Options("+one_table_per_element delimiter=\\t|\\t");
    run.Xml("<r><a><item><x>1</x></item></a><b><item><x>2</x></item></b><z>e</z></r>");
    EXPECT_FALSE(run.Run().failed) << run.Error();
    EXPECT_EQ(run.Text("item"),
              "PKEY\t|\tFKEY\t|\tMASTER_TABLE\t|\tx\r\n1\t|\t1\t|\ta\t|\t1\r\n2\t|\t1\t|\tb\t|\t2\r\n");
}

TEST(TextExport, WhatHasNoFileOfItsOwnIsTold)
{
    TextConversion run;
    run.Options("-attributes").Xml("<r x=\"1\"/>");
    EXPECT_FALSE(run.Run().failed) << run.Error();
    EXPECT_FALSE(std::filesystem::exists(run.Folder() / "r.txt")) << "the last element has no table number";
    EXPECT_EQ(run.Said("Not in a text file: 1 records, the first of table [r]"), 1);
}

TEST(TextExport, EveryTableHasAFileNameOfItsOwn)
{
    const std::pair<const char*, const char*> cases[] = {
        {"order line", "order line.txt"},
        {"\xC3\xA4", "\xC3\xA4.txt"},
        {"a/b", "a%2Fb.txt"},
        {"a%2Fb", "a%252Fb.txt"},
        {"\\:*?\"<>|\x01", "%5C%3A%2A%3F%22%3C%3E%7C%01.txt"},
        {"..", "...txt"},
    };
    for (const auto& [table, file] : cases)
        EXPECT_EQ(TextFileName(table), file);

    TextConversion run;
    EXPECT_FALSE(run.Xml("<r><p><n>1</n></p></r>").Map("p", "a/b").Run().failed) << run.Error();
    EXPECT_EQ(run.Text("a%2Fb"), "PKEY;FKEY;n\r\n1;1;1\r\n");
}

TEST(TextExport, WhatIsSavedBeforeACancelIsInTheFile)
{
    TextConversion run;
    run.Xml("<r><p><n>1</n></p><p><n>2</n></p><p><n>3</n></p></r>");
    int records = 0;
    run.host.onEvents = [&] {
        if (run.Said("Import XML: Approx.") > 0 && ++records == 3)
            run.batch.btnQuit_Click();
    };
    EXPECT_TRUE(run.Run().cancelled);
    EXPECT_EQ(run.Text("p"), "PKEY;FKEY;n\r\n1;1;1\r\n");
    EXPECT_EQ(run.Dump("p"), "PKEY|FKEY|n\n1|1|1\n");
    EXPECT_EQ(run.Said("what was saved until then stays"), 1);
}

TEST(TextExport, AFileThatCannotBeWrittenEndsTheRunAndIsNamed)
{
    struct Case {
        const char* name;
        void (*prepare)(TextConversion&);
        const char* error;
    };
    const Case cases[] = {
        {"a folder", [](TextConversion& run) { std::filesystem::create_directory(run.Folder() / "p.txt"); },
         "p.txt] cannot be written"},
        {"the protocol",
         [](TextConversion& run) { run.job.controls.txtFILE_LOG.text = (run.Folder() / "p.txt").string(); },
         "is also a file that this run reads or writes"},
#ifdef __linux__
        {"a full disk",
         [](TextConversion& run) { std::filesystem::create_symlink("/dev/full", run.Folder() / "p.txt"); },
         "61 The text file ["},
#endif
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TextConversion run;
        std::filesystem::create_directory(run.Folder());
        c.prepare(run);
        EXPECT_TRUE(run.Xml(kDocument).Run().failed);
        ASSERT_EQ(run.host.errors.size(), 1u);
        EXPECT_NE(run.Error().find(c.error), std::string::npos) << run.Error();
        EXPECT_EQ(run.Said("Done"), 1);
    }
}

TEST(Access97, CharactersThatItCannotStoreAreCountedPerFile)
{
    Conversion run;
    run.Options("ver=97").Xml(
        "<r><p><n>\xC3\xA4\xE2\x82\xAC</n><m>\xD0\x96x\xD0\x96</m></p><p><n>\xE4\xBD\xA0</n></p></r>");
    run.Xml("<r><p><n>1</n></p></r>", "b.xml");
    EXPECT_FALSE(run.Run().failed) << run.Error();
    EXPECT_EQ(run.Said("Access 97 cannot store"), 1) << "nothing to tell about the second file";
    EXPECT_EQ(run.Said("cannot store 3 characters, which became \"?\", the first in [p].[m]"), 1)
        << ::testing::PrintToString(run.host.lines);
    EXPECT_EQ(run.Dump("p"), "PKEY|FKEY|n|m\n1|1|\xC3\xA4\xE2\x82\xAC|?x?\n2|1|?|\n3|2|1|\n");
}

} // namespace

} // namespace velmora::testing
