#include "driver/conversion.h"
#include "import/text_export.h"
#include "jet/connection.h"

namespace velmora::testing {
namespace {

namespace fs = std::filesystem;

const std::string kDocument = "<r><p><n>1</n><m>a</m></p></r>";
/// Its import fails at the first element, with the option +skip_empty.
const std::string kRefused = "<doc><w><l><i><n>2</n></i></l></w></doc>";

TEST(TextFiles, HoldWhatTheTablesHold)
{
    const std::string longText(300, 't');
    struct Case {
        const char* name;
        const char* options;
        std::string documents; ///< of a run each; between two of them stands a bar
        const char* table;
        std::string text;
        const char* second = nullptr; ///< document of a second source of each run
    };
    const Case cases[] = {
        {"as it comes", "", "<r><p a='1'><n>x</n><m/></p><p><n>y;\"z\"</n><m>2</m></p></r>", "p",
         "PKEY;FKEY;attr_a;n;m~1;1;1;x;~2;1;;y;\"z\";2~"},
        {"without names, tabs between", "delimiter=\\t -columns", kDocument, "p", "1\t1\t1\ta~"},
        {"quoted", "+quoted delimiter=;;", "<r><p><n>a;</n><m>b;;c</m><o>d\"</o></p></r>", "p",
         "PKEY;;FKEY;;n;;m;;o~1;;1;;\"a;\";;\"b;;c\";;\"d\"\"\"~"},
        {"elements that share a table", "+o delimiter=\\t|\\t",
         "<r><a><item><x>1</x></item></a><b><item><x>2</x></item></b><z>e</z></r>", "item",
         "PKEY\t|\tFKEY\t|\tMASTER_TABLE\t|\tx~1\t|\t1\t|\ta\t|\t1~2\t|\t1\t|\tb\t|\t2~"},
        {"appended to", "-relations", kDocument + "|" + kDocument, "p", "n;m~1;a~1;a~"},
        {"made anew", "-relations -append", kDocument + "|<r><p><n>2</n></p></r>", "p", "n~2~"},
        {"made anew once in a run, not for each source", "+complete -append -relations",
         kDocument + "|<r><p><n>2</n></p></r>", "p", "n~2~3~", "<r><p><n>3</n></p></r>"},
        {"typed columns, as the document writes their values", "+types -relations",
         "<r><p><a>true</a><b>1.50</b><c>2024-03-05</c><d>14:07:09</d><e>2024-03-05T14:07:09</e></p></r>", "p",
         "a;b;c;d;e~true;1.5;2024-03-05;14:07:09;2024-03-05T14:07:09~"},
        {"a column that is widened between two lines keeps its place", "-recreate_database",
         kDocument + "|<r><p><n>2</n><m>b</m></p><p><n>" + longText + "</n><m>c</m></p></r>", "p",
         "PKEY;FKEY;n;m~1;1;1;a~2;2;2;b~3;2;" + longText + ";c~"},
        {"for a system with other lines, appended to", "+bom eol=LF -relations", kDocument + "|" + kDocument, "p",
         "\xEF\xBB\xBFn;m\n1;a\n1;a\n"},
        {"what is not there told from what is empty", "-relations +complete +quoted null=\\N",
         "<r><p><n>\\N</n><m/></p><p><n>\\.</n></p></r>", "p", "n;m~\"\\N\";~\"\\.\";\\N~"},
        {"the same by quotation marks alone", "-relations +complete +quoted", "<r><p><n/></p><p><m>1</m></p></r>", "p",
         "n;m~\"\";~;1~"},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        run.Text().Options(c.options);
        if (c.second != nullptr)
            run.Xml(c.second, "b.xml");
        for (const std::string& document : Parts(c.documents))
            EXPECT_FALSE(run.Xml(document).Run().failed) << run.Error();
        EXPECT_EQ(run.TextFile(c.table), c.text);
        EXPECT_EQ(run.Said("does not name the columns"), 0);
    }
}

/// As CSV, and in tables of SQLite that are tied together as those of the database are.
TEST(TextFiles, QuotedReadBackElsewhere)
{
    constexpr const char* kReader = R"(
import csv, sqlite3, sys
database = sqlite3.connect(':memory:')
database.execute('PRAGMA foreign_keys = ON')
database.execute('CREATE TABLE r (PKEY INTEGER PRIMARY KEY, FKEY)')
database.execute('CREATE TABLE p (PKEY INTEGER PRIMARY KEY, FKEY REFERENCES r(PKEY), n, m)')
for table in 'rp':
    with open(f'{sys.argv[1]}/{table}.txt', newline='', encoding='utf-8-sig') as file:
        names, *rows = csv.reader(file, strict=True)
    marks = ','.join('?' * len(names))
    database.executemany(f'INSERT INTO {table} ({",".join(names)}) VALUES ({marks})', rows)
print(database.execute('SELECT r.PKEY, p.PKEY, n, m FROM r JOIN p ON p.FKEY = r.PKEY ORDER BY p.PKEY').fetchall())
)";
    for (const char* options : {"", "eol=lf +bom"}) {
        Conversion run;
        run.Text().Options("+quoted delimiter=,").Options(options);
        run.Xml("<r><p><n>a,\"b\"&#10;c&#13;&#10;d</n><m>, </m></p><p><n>\xC3\xA4\xE2\x82\xAC</n><m>'</m></p>"
                "<p><n>e&#13;f</n><m>\"</m></p></r>");
        EXPECT_FALSE(run.Run().failed) << run.Error();
        const ProcessResult reader = RunPython({"-c", kReader, run.Path("text").string()});
        EXPECT_EQ(reader.output, "[(1, 1, 'a,\"b\"\\nc\\r\\nd', ', '), (1, 2, '\xC3\xA4\xE2\x82\xAC', \"'\"), "
                                 "(1, 3, 'e\\rf', '\"')]\n")
            << reader.errors;
    }
}

TEST(TextFiles, HoldDatesAsTheyAreWanted)
{
    for (const auto& [options, text] :
         {std::pair("", "2024-03-05 14:07:09;b~2024-03-05 00:00:00;~1899-12-30 14:07:09;~"),
          {"date=iso", "2024-03-05T14:07:09;b~2024-03-05;~14:07:09;~"}}) {
        Conversion run;
        {
            const auto database = jet::Connection::Create(run.Target(), jet::JetVersion::Jet4);
            database->Execute("CREATE TABLE p (n DateTime, m String)");
            database->Commit();
        }
        run.Text().Options("-recreate_database -relations -columns").Options(options);
        run.Xml("<r><p><n>2024-03-05T14:07:09</n><m>b</m></p><p><n>2024-03-05</n></p><p><n>14:07:09</n></p></r>");
        EXPECT_FALSE(run.Run().failed) << run.Error();
        EXPECT_EQ(run.TextFile("p"), text);
    }
}

TEST(TextFiles, OfLaterSourcesAreAddedToOrReplaced)
{
    Conversion run;
    run.Text().Xml("<r><p><n>1</n></p></r>", "a.xml").Xml("<r><p><n>2</n><m>3</m></p></r>", "b.xml");
    EXPECT_FALSE(run.Run().failed) << run.Error();
    EXPECT_EQ(run.TextFile("p"), "PKEY;FKEY;n~1;1;1~2;2;2;3~");
    EXPECT_EQ(run.Said("does not name the columns that table [p] has now"), 1);

    EXPECT_FALSE(run.Options("-append").Run().failed) << run.Error();
    EXPECT_EQ(run.TextFile("p"), "PKEY;FKEY;n;m~2;2;2;3~") << "each source replaces the files";
    EXPECT_EQ(run.Said("Each source file replaces"), 1);
}

TEST(TextFiles, HaveTheNamesOfTheirTables)
{
    const std::pair<const char*, const char*> cases[] = {
        {"order line", "order line.txt"},
        {"a/b", "a%2Fb.txt"},
        {"a%2Fb", "a%252Fb.txt"},
        {"\\:*?\"<>|\x01", "%5C%3A%2A%3F%22%3C%3E%7C%01.txt"},
        {"..", "...txt"},
    };
    for (const auto& [table, file] : cases)
        EXPECT_EQ(TextFileName(table), file);
    Conversion run;
    EXPECT_FALSE(run.Text().Xml(kDocument).Map("p", "a/b").Run().failed) << run.Error();
    EXPECT_EQ(run.TextFile("a%2Fb"), "PKEY;FKEY;n;m~1;1;1;a~");

    Conversion without;
    EXPECT_FALSE(without.Text().Options("-attributes").Xml("<r x=\"1\"/>").Run().failed) << without.Error();
    EXPECT_FALSE(fs::exists(without.Path("text/r.txt"))) << "the last element has no table number";
    EXPECT_EQ(without.Said("Not in a text file: 1 records, the first of table [r]"), 1);
}

TEST(TextFiles, HoldWhatIsSavedBeforeACancel)
{
    Conversion run;
    run.Text().Xml("<r><p><n>1</n></p><p><n>2</n></p><p><n>3</n></p></r>");
    int records = 0;
    run.host.onEvents = [&] {
        if (run.Said("Import XML: Approx.") > 0 && ++records == 3)
            run.batch.btnQuit_Click();
    };
    EXPECT_TRUE(run.Run().cancelled);
    EXPECT_EQ(run.TextFile("p"), "PKEY;FKEY;n~1;1;1~");
    EXPECT_EQ(run.Dump("p"), "PKEY|FKEY|n\n1|1|1\n");
    EXPECT_EQ(run.Said("what was saved until then stays"), 1);
}

TEST(TextFiles, ThatCannotBeWrittenEndTheRunAndAreNamed)
{
    struct Case {
        const char* name;
        void (*prepare)(Conversion&);
        const char* error;
    };
    const Case cases[] = {
        {"a folder", [](Conversion& run) { fs::create_directory(run.Path("text/p.txt")); }, "p.txt] cannot be written"},
        {"the protocol", [](Conversion& run) { run.job.controls.txtFILE_LOG.text = run.Path("text/p.txt").string(); },
         "is also a file that this run reads or writes"},
        {"a full disk", [](Conversion& run) { fs::create_symlink("/dev/full", run.Path("text/p.txt")); },
         "61 The text file ["},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion run;
        fs::create_directory(run.Path("text"));
        c.prepare(run);
        EXPECT_TRUE(run.Text().Xml(kDocument).Run().failed);
        EXPECT_NE(run.Error().find(c.error), std::string::npos) << run.Error();
        EXPECT_EQ(run.Said("Done"), 1);
    }
    Conversion run; // one level of folders is made, no more
    run.Text().Xml(kDocument).job.controls.txtFILE_TXT.text = run.Path("a/b").string();
    EXPECT_TRUE(run.Run().failed);
    EXPECT_EQ(run.Error().substr(0, 3), "76 ") << run.Error();
    EXPECT_FALSE(fs::exists(run.Target()));
}

TEST(TextFiles, OfEarlierRunsGoOnlyWhenAllNewOnesCanBeWritten)
{
    struct Case {
        const char* name;
        void (*prepare)(Conversion&);
        const char* error;
    };
    const Case cases[] = {
        {"one cannot be written", [](Conversion& run) { fs::create_directory(run.Path("text/q.txt")); }, "q.txt"},
        {"two tables share one", [](Conversion& run) { fs::create_symlink("p.txt", run.Path("text/q.txt")); },
         "are one file"},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        EXPECT_FALSE(run.Text().Options("-append").Xml(kDocument).Run().failed) << run.Error();
        c.prepare(run);
        run.Xml("<r><p><n>2</n></p><m><n>1</n></m><q><n>2</n></q></r>").Run();
        EXPECT_NE(run.Error().find(c.error), std::string::npos) << run.Error();
        EXPECT_EQ(run.TextFile("p"), "PKEY;FKEY;n;m~1;1;1;a~");
        EXPECT_FALSE(fs::exists(run.Path("text/m.txt"))) << "what was made to see is gone again";
        EXPECT_EQ(run.Said("text files"), 0);
        EXPECT_EQ(run.Dump("p"), "PKEY|FKEY|n|m\n1|1|1|a\n");
    }
}

TEST(TextFiles, AreSpokenOfInTheClosingLine)
{
    struct Case {
        const char* options;
        const char* document;
        const char* line;
    };
    const Case cases[] = {
        {"+skip_empty", kRefused.c_str(), "text] were changed"},
        {"", "<r>", "the database stays as it was, and the text files are left alone"},
    };
    Conversions runs;
    for (const Case& c : cases) {
        Conversion& run = runs.Next();
        run.Text().Options("-append").Xml("<r><i><n>1</n></i></r>").Run();
        run.Options(c.options).Xml(c.document).Run();
        EXPECT_EQ(run.Said(c.line), 1) << run.Protocol();
    }
}

TEST(TextFiles, KeysThatBeginAnewBehindOldLinesAreTold)
{
    for (const auto& [options, lines] :
         {std::pair("append", 1), {"append -recreate_database", 0}, {"append -relations", 0}, {"-append", 0}}) {
        SCOPED_TRACE(options);
        Conversion run;
        run.Text().Options(options).Xml(kDocument).Xml(kDocument, "b.xml");
        EXPECT_FALSE(run.Run().failed) << run.Error();
        EXPECT_EQ(run.Said("mdb= "), 0) << "the lines are its own";
        run.Run();
        EXPECT_EQ(run.Said("mdb= and kept with -recreate_database"), lines);
    }
}

TEST(TextFiles, WithoutADatabaseComeThroughATemporaryOne)
{
    Conversion run;
    run.Text().Xml(kDocument).Options("-recreate_database").job.controls.txtFILE_MDB.text.clear();
    EXPECT_FALSE(run.Run().failed) << run.Error();
    EXPECT_EQ(run.TextFile("p"), "PKEY;FKEY;n;m~1;1;1;a~");
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
    EXPECT_EQ(run.Said("Could not delete MDB file"), 0) << "nor are the tables of another run";
    meanwhile.reset();
    EXPECT_SOUND(std::vector<fs::path>({scratch, second, third}));
}

TEST(TextFiles, AMissingDelimiterIsAskedForUnlessTheRunIsQuiet)
{
    struct Case {
        const char* name;
        const char* options;
        std::vector<std::optional<std::string>> answers;
        bool cancelled;
        const char* text; ///< nullptr: no file
    };
    const Case cases[] = {
        {"named", "-quiet", {}, false, "1;1;1;a~"},
        {"typed", "-quiet delimiter=", {"\\t"}, false, "1\t1\t1\ta~"},
        {"left empty", "-quiet delimiter=", {""}, false, "111a~"},
        {"cancelled", "-quiet delimiter=", {std::nullopt}, true, nullptr},
        {"quiet", "delimiter=", {}, false, "111a~"},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        run.Text().Xml(kDocument).Options("-columns").Options(c.options);
        run.host.inputs = {c.answers.begin(), c.answers.end()};
        EXPECT_EQ(run.Run().cancelled, c.cancelled);
        EXPECT_EQ(run.Error(), "");
        EXPECT_EQ(run.host.messages, std::vector<std::string>(c.answers.size(), "No delimiter specitied\r\n"
                                                                                "Use \\t for tabulator"));
        EXPECT_EQ(run.job.controls.btnConvertCaption, "Convert");
        EXPECT_EQ(fs::exists(run.Path("text/p.txt")), c.text != nullptr);
        if (c.text) {
            EXPECT_EQ(run.TextFile("p"), c.text);
        }
    }
}

} // namespace
} // namespace velmora::testing
