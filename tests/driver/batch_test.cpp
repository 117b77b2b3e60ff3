#include "driver/conversion.h"

#include <algorithm>
#include <csignal>
#include <set>
#include <sys/resource.h>
#include <thread>

namespace velmora::testing {

namespace {

/// Ends with an error: nothing holds the innermost element.
const std::string kFailing = "<doc><w><l><i><n>1</n></i></l></w></doc>";
const std::string kThree = "<r><p><n>1</n></p><p><n>2</n></p><p><n>3</n></p></r>";

TEST(Batch, FilesOfOneRunAreToldOneByOneAndTogether)
{
    Conversion run;
    run.Xml("<r><p><n>1</n></p></r>", "b.xml").Xml("<R><P><n>2</n><m>x</m><q><z>1</z></q></P></R>", "c.xml");
    run.Xml("<r><p><n>0</n></p></r>", "a.xml");
    const RunOutcome outcome = run.Run();
    EXPECT_FALSE(outcome.failed) << run.Error();
    EXPECT_EQ(outcome.convertedFiles, 3);
    for (int n = 1; n <= 3; ++n)
        EXPECT_EQ(run.Said("File " + std::to_string(n) +
                           " of 3: " + run.Path(std::string(1, static_cast<char>('a' + n - 1)) + ".xml").string()),
                  1);
    ASSERT_EQ(outcome.tables.size(), 3u);
    EXPECT_EQ(outcome.tables[1].table, "p") << "in whichever letter case";
    EXPECT_EQ(outcome.tables[1].records, 3);
    EXPECT_EQ(outcome.tables[1].newColumns, 1);
}

TEST(Batch, AFileIsAsItStandsWhenItsTurnHasComeHoweverManyAreLoadedAhead)
{
    for (const char* threads : {"threads=1", "threads=2", "threads=4"}) {
        SCOPED_TRACE(threads);
        Conversion run;
        run.Xml("<r><p><n>1</n></p></r>", "1.xml").Xml("<r><p><n>2</n></p></r>", "2.xml");
        run.Xml("<r><p>", "3.xml").Xml("<r><p><n>4</n></p></r>", "4.xml").Xml(kThree, "5.xml").Options(threads);
        run.host.onEvents = [&run, isChanged = false]() mutable {
            if (isChanged || run.Said("Import XML") == 0)
                return;
            run.Xml("<r><p><n>two</n></p></r>", "2.xml");
            std::filesystem::remove(run.Path("5.xml"));
            isChanged = true;
        };
        EXPECT_TRUE(run.Run().failed);
        EXPECT_EQ(run.Error(), "53 Source XML file not found");
        EXPECT_EQ(run.Dump("p"), "PKEY|FKEY|n\n1|1|1\n2|2|two\n3|3|4\n");
        const auto isBefore = [&run](std::string_view first, std::string_view second) {
            const std::string protocol = run.Protocol();
            return protocol.find(first) < protocol.find(second);
        };
        EXPECT_TRUE(isBefore("File 3 of 5", "Not loaded") && isBefore("Not loaded", "File 4 of 5")) << run.Protocol();
    }
}

/// The numbers of this process's threads.
std::set<std::filesystem::path> Threads()
{
    const std::filesystem::directory_iterator threads("/proc/self/task");
    return {begin(threads), end(threads)};
}

TEST(Batch, TheNextFileIsLoadedWhileOneIsImported)
{
    for (const char* threads : {"1", "2", "4"}) {
        SCOPED_TRACE(threads);
        Conversion run;
        run.Xml("<r><p><n>1</n></p></r>", "1.xml").Xml("<r><p><n>2</n></p></r>", "2.xml");
        run.Options(std::string("threads=") + threads);
        const std::set<std::filesystem::path> threadsAtFirst = Threads();
        run.host.onEvents = [&, isChanged = false]() mutable {
            if (isChanged || run.Said("Import XML") == 0)
                return;
            // Once no other thread is left, what was to be loaded meanwhile has been, and nobody can tell that the file
            // becomes another one.
            while (!std::ranges::includes(threadsAtFirst, Threads()))
                std::this_thread::yield();
            const auto time = std::filesystem::last_write_time(run.Path("2.xml"));
            run.Xml("<r><p><n>3</n></p></r>", "2.xml");
            std::filesystem::last_write_time(run.Path("2.xml"), time);
            isChanged = true;
        };
        EXPECT_FALSE(run.Run().failed) << run.Error();
        EXPECT_EQ(run.Dump("p"), std::string("PKEY|FKEY|n\n1|1|1\n2|2|") + (*threads == '1' ? "3" : "2") + "\n");
    }
}

TEST(Batch, ThousandsOfFilesAreARunLikeAnyOther)
{
    constexpr int kFiles = 2000;
    Conversion run;
    for (int file = 0; file < kFiles; ++file)
        run.Xml("<r><p><n>1</n></p></r>", std::to_string(file) + ".xml");
    const RunOutcome outcome = run.Options("log=" + run.Path("run.log").string()).Run();
    EXPECT_EQ(outcome.convertedFiles, kFiles) << run.Error();
    EXPECT_EQ(run.Said("File 2000 of 2000: " + run.Path("999.xml").string()), 1);
    ASSERT_EQ(outcome.tables.size(), 2u);
    EXPECT_EQ(outcome.tables[0].records + outcome.tables[1].records, 2 * kFiles);
    EXPECT_TRUE(run.Dump("p").ends_with("\n2000|2000|1\n"));
}

TEST(Batch, ARelationThatRowsForbidIsLeftOut)
{
    Conversion run;
    run.Xml("<p><n>1</n></p>", "a.xml").Xml("<r><p><n>2</n></p></r>", "b.xml").Xml("<r><p><n>3</n></p></r>", "c.xml");
    EXPECT_FALSE(run.Run().failed) << run.Error();
    EXPECT_EQ(run.Said("Relation between [p] and [r] left out"), 1);
    EXPECT_EQ(run.Dump("p"), "PKEY|FKEY|n\n1|0|1\n2|1|2\n3|2|3\n");
    EXPECT_EQ(run.Relations(), "");
}

TEST(Batch, ATableMayHaveMoreChildrenThanItCanHaveIndexes)
{
    constexpr int kChildren = 40;
    std::string children;
    for (int child = 0; child < kChildren; ++child) {
        const std::string tag = "t" + std::to_string(child);
        children += "<" + tag + "><n>" + std::to_string(child) + "</n></" + tag + ">";
    }
    Conversion run;
    EXPECT_FALSE(run.Xml("<r>" + children + "</r>").Run().failed) << run.Error();
    EXPECT_GT(run.Said("left out"), 0);
    EXPECT_EQ(run.Dump("t39"), "PKEY|FKEY|n\n1|1|39\n");
}

TEST(Batch, NothingToDoTouchesNothing)
{
    struct Case {
        const char* name;
        void (*set)(Conversion&);
        const char* line;
        const char* target = ""; ///< what stands in it
    };
    const auto keep = [](Conversion& c) { c.Options("-recreate_database"); };
    const Case cases[] = {
        {"no match", [](Conversion& c) { c.job.controls.txtFILE_XML.text = c.Path("*.none").string(); },
         "No files to import"},
        {"a match but for the case", [](Conversion& c) { c.job.controls.txtFILE_XML.text = c.Path("?.XML").string(); },
         "No files to import (1 in other letter case)"},
        {"the target is the protocol",
         [](Conversion& c) { c.job.controls.txtFILE_LOG.text = c.job.controls.txtFILE_MDB.text; },
         "is also the protocol file"},
        {"the target is the mapping",
         [](Conversion& c) { c.job.controls.txtFILE_MAPPING.text = c.job.controls.txtFILE_MDB.text; },
         "is also the tag-mapping file"},
        {"the protocol is a source", [](Conversion& c) { c.job.controls.txtFILE_LOG.text = c.Path("a.xml").string(); },
         "is also the XML file"},
        {"the target is a short text", [](Conversion&) {}, "is no database of Access 97 to 2003", "old"},
        {"the target is an XML file", keep, "is no database of Access 97 to 2003",
         "<?xml version=\"1.0\"?><list><entry>one of many that make the file longer than a header</entry><entry>two"
         "</entry><entry>three</entry><entry>four</entry></list>"},
        {"a name that Access would refuse",
         [](Conversion& c) { c.job.controls.txtFILE_MDB.text = c.Path("new.AccDB").string(); }, "name it .mdb"},
        {"a source without an extension",
         [](Conversion& c) {
             c.Xml(kThree, "ca.xml").Xml(kThree, "cb").Options("rename=%p%done/%f%");
             c.job.controls.txtFILE_XML.text = c.Path("c*").string();
         },
         "cb] cannot be renamed: its name has no extension"},
        {"renamed to its own name", [](Conversion& c) { c.Options("rename=%p%/%f%.xml"); }, "that is the name it has"},
        {"renamed to nothing", [](Conversion& c) { c.Options("rename=%p%done/"); }, "that leaves no name"},
        {"two sources of one new name", [](Conversion& c) { c.Xml(kThree, "b.xml").Options("rename=%p%/done_%ymd%"); },
         "another file of the run"},
        {"renamed to a source that has yet to go",
         [](Conversion& c) { c.Xml(kThree, "a_1.xml").Options("rename=%p%%f%_1.xml"); }, "is there already"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion run;
        run.Xml(kThree);
        WriteFile(run.Target(), c.target);
        c.set(run);
        const RunOutcome outcome = run.batch.btnConvert_Click();
        EXPECT_TRUE(outcome.nothingToDo);
        EXPECT_FALSE(outcome.failed);
        EXPECT_EQ(run.Said(c.line), 1) << run.Protocol();
        EXPECT_EQ(run.Said("Done"), 1);
        EXPECT_EQ(ReadFile(run.Target()), c.target);
        std::filesystem::remove(run.Target());
        EXPECT_EQ(ReadFile(run.Path("a.xml")), kThree);
        EXPECT_FALSE(std::filesystem::exists(run.Path("done")));
        EXPECT_EQ(run.job.controls.btnConvertCaption, "Convert");
    }
}

TEST(Batch, WithoutASavedRecordTheDatabaseStaysAsItWas)
{
    struct Case {
        const char* name;
        const char* options;
        std::string xml;
        bool exists;
        const char* line;
    };
    const char* const nothing = "nothing was saved, the database stays as it was";
    const char* const unread = "No source could be read: the database stays as it was";
    const Case cases[] = {
        {"an error in a database made anew", "+skip_empty", kFailing, true, nothing},
        {"an error in a database emptied", "+skip_empty -recreate_database +empty_tables", kFailing, true, nothing},
        {"an error in a new database", "+skip_empty", kFailing, false, "no database was made"},
        {"no readable source for a database made anew", "", "<r><p>", true, unread},
        {"no readable source for a database emptied", "-recreate_database +empty_tables", "no XML", true, unread},
        {"no readable source for a new database", "", "<r>", false, "No source could be read: no database was made"},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        if (c.exists) {
            EXPECT_FALSE(run.Xml(kThree).Run().failed);
        }
        const std::string before = c.exists ? run.Content() : "";
        const RunOutcome outcome = run.Options(c.options).Xml(c.xml).Xml(c.xml, "b.xml").Run();
        EXPECT_EQ(outcome.failed, c.xml == kFailing);
        EXPECT_EQ(outcome.unreadableFiles, outcome.failed ? 0 : 2);
        EXPECT_TRUE(outcome.tables.empty());
        EXPECT_EQ(run.Said(c.line), 1) << run.Protocol();
        EXPECT_EQ(run.Said("MDB file deleted") + run.Said("Create database"), 0) << "what was taken back";
        ASSERT_EQ(std::filesystem::exists(run.Target()), c.exists);
        if (c.exists) {
            EXPECT_EQ(run.Content(), before);
        }
    }
}

TEST(Batch, ACancelIsAskedForUnlessTheRunIsQuiet)
{
    for (const bool confirmed : {false, true}) {
        SCOPED_TRACE(confirmed);
        Conversion run;
        run.Options("-quiet").Xml(kThree);
        run.host.answers = {confirmed ? Answer::Ok : Answer::Cancel};
        bool asked = false;
        run.host.onEvents = [&] {
            if (!std::exchange(asked, true))
                run.batch.btnQuit_Click();
        };
        EXPECT_EQ(run.Run().cancelled, confirmed);
        EXPECT_EQ(run.Said("Operation cancelled by user"), confirmed ? 1 : 0);
        ASSERT_EQ(run.host.messages.size(), 1u);
        run.batch.btnQuit_Click();
        EXPECT_EQ(run.host.messages.size(), 1u) << "without a run there is nothing to cancel";
    }
}

TEST(Batch, ADatabaseIsMadeAnewOnlyWhenTheNewOneStands)
{
    Conversion run;
    EXPECT_FALSE(run.Xml(kThree).Run().failed);
    EXPECT_EQ(run.Said("MDB file deleted"), 0);
    const std::string old = ReadFile(run.Target());
    bool stoodTillTheEnd = true;
    run.host.onEvents = [&] { stoodTillTheEnd = stoodTillTheEnd && ReadFile(run.Target()) == old; };
    EXPECT_FALSE(run.Xml("<r><q><n>1</n></q></r>").Run().failed);
    EXPECT_TRUE(stoodTillTheEnd);
    EXPECT_EQ(run.Said("MDB file deleted"), 1);
    EXPECT_EQ(run.Tables(), "q r ");
}

TEST(Batch, ARunThatEndsBetweenFilesTellsWhichAreDone)
{
    Conversion run;
    run.Xml(kThree, "a.xml").Xml("<r>", "b.xml").Xml(kFailing, "c.xml").Xml(kThree, "d.xml").Xml(kThree, "e.xml");
    const RunOutcome outcome = run.Options("+skip_empty").Run();
    EXPECT_TRUE(outcome.failed);
    const std::string folder = run.Path("").string();
    for (const std::string& line :
         {"Converted: 1 of 5 files, the last " + folder + "a.xml; 1 could not be read",
          "Not finished: " + folder + "c.xml", "Not tried: 2 of 5 files, " + folder + "d.xml to " + folder + "e.xml"})
        EXPECT_EQ(run.Said(line), 1) << line << run.Protocol();
    ASSERT_EQ(outcome.tables.size(), 1u) << "what was taken back is not counted";
    EXPECT_EQ(outcome.tables[0].records, 3);
}

TEST(Batch, ACommitThatFailsIsFollowedByWhatTheDatabaseHolds)
{
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited{};
    getrlimit(RLIMIT_FSIZE, &unlimited);
    std::string many = "<r>";
    for (int record = 0; record < 2000; ++record)
        many += "<p><n>" + std::string(100, 'x') + "</n></p>";
    Conversion run;
    run.Xml(kThree, "a.xml").Xml(many + "</r>", "b.xml");
    run.host.onEvents = [&] {
        if (run.Said("File 2 of 2") == 0)
            return;
        const rlimit full{std::filesystem::file_size(run.Target()), unlimited.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
    };
    const RunOutcome outcome = run.Run();
    setrlimit(RLIMIT_FSIZE, &unlimited);
    std::signal(SIGXFSZ, handler);
    EXPECT_TRUE(outcome.failed);
    EXPECT_EQ(run.host.errors.size(), 1u) << run.Error();
    EXPECT_EQ(run.Said("the database holds the files that were converted before, nothing of the last one"), 1)
        << run.Protocol();
    EXPECT_EQ(run.Dump("p"), "PKEY|FKEY|n\n1|1|1\n2|1|2\n3|1|3\n");
    ASSERT_EQ(outcome.tables.size(), 2u);
    EXPECT_EQ(outcome.tables[0].records + outcome.tables[1].records, 4);
}

TEST(Batch, ADatabaseThatKeepsItsFormatSaysSo)
{
    const char* const versions[] = {"ver=2000", "ver=97"};
    const char* const lines[] = {
        "stays in the format of Access 2000; Access 97 (ver=)",
        "stays in the format of Access 97, with the characters of code page 1252; Access 2000"};
    for (const int made : {0, 1}) {
        SCOPED_TRACE(versions[made]);
        Conversion run;
        run.Xml(kThree).Options(versions[made]).Run();
        run.Options("-recreate_database").Run();
        EXPECT_EQ(run.Said("stays in the format"), 0);
        run.Options(versions[1 - made]).Run();
        EXPECT_EQ(run.Said(lines[made]), 1) << run.Protocol();
    }
}

TEST(Batch, ATargetThatCannotBeDeletedEndsTheRun)
{
    Conversion run;
    run.Xml(kThree);
    std::filesystem::create_directory(run.Target());
    const RunOutcome outcome = run.batch.btnConvert_Click();
    EXPECT_TRUE(outcome.failed);
    EXPECT_EQ(run.Said("Could not delete MDB file"), 1);
    EXPECT_NE(run.Error().find("70 "), std::string::npos) << run.Error();
    EXPECT_TRUE(std::filesystem::is_directory(run.Target()));
}

TEST(Batch, TheProtocolFileTellsTheWholeRun)
{
    Conversion run;
    run.Options("debug").Xml(kThree);
    run.job.controls.txtFILE_LOG.text = run.Path("run.log").string();
    run.Run();
    const std::string log = ReadFile(run.Path("run.log"));
    std::size_t at = 0;
    const char* const lines =
        "==================================================\r\n|Protocoll file opened|"
        "btnConvert_Click: Debug mode: True|velOpenDatabase: |Create MDB File|File 1 of 1: |Open XML|Analyse XML|"
        "Create tables|Check if table [r] exists|Create table [r]|Create index [r_PKEY]|New column [p].[n]?|"
        "Create relations|Create relation between [p] and [r]|Create Index on [p_FKEY]|"
        "Check if constraint named [p_LINK] exists|velOpenTables: |Open table [p]|"
        "Import XML: Approx. 5 records will be imported|--- Start importing nodes -----------------|"
        "velImportNode: |Add new record to table [r]|Update record in table [r]|  Analyse tag <p>|"
        "Insert value for [p].[n]|Import XML: 4 records were imported|Close tables|Close table [p]|"
        "Create database|Done|Closing protocoll file";
    for (const std::string& line : Parts(lines)) {
        const std::size_t found = log.find(line, at);
        ASSERT_NE(found, log.npos) << line << "\n" << log.substr(at, 2000);
        at = found;
    }
}

} // namespace

} // namespace velmora::testing
