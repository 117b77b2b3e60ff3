#include "driver/conversion.h"
#include "jet/base/error.h"
#include "jet/connection.h"

#include <algorithm>
#include <memory>

namespace velmora::testing {
namespace {

namespace fs = std::filesystem;

const std::string kFirst = "<r><p><n>1</n></p></r>";
/// Brings a table and columns, and widens one.
const std::string kBad = "<r><p><n>" + std::string(300, 'x') + "</n><m>2</m></p><q z='1'><o>3</o></q><q/></r>";
const std::string kLast = "<r><p><n>4</n><k>5</k></p></r>";

/// Makes the write of `number`, from 1, behind the protocol line that begins with `line`, fail.
void FailAt(Conversion& run, const std::string& line, int number, jet::ErrorNumber error)
{
    auto left = std::make_shared<int>(0);
    run.host.onLine = [=](std::string_view said) {
        if (said.starts_with("File "))
            *left = said.starts_with(line) ? number : 0;
    };
    run.batch.SetLocks({.now = {}, .pause = {}, .onWrite = [=] {
                            if (*left > 0 && --*left == 0)
                                throw jet::Error(error);
                        }});
}

/// All that the run has left: database and text files.
std::string Left(const Conversion& run)
{
    std::string text = run.Content();
    std::vector<fs::path> files(fs::directory_iterator(run.Path("text")), {});
    std::ranges::sort(files);
    for (const fs::path& file : files)
        text += file.filename().string() + ": " + ReadFile(file);
    return text;
}

TEST(WholeFiles, AFileThatFailsAnywhereLeavesNothing)
{
    for (const char* options : {"", "ver=97 -append", "+complete -append", "-recreate_database -relations"}) {
        SCOPED_TRACE(options);
        for (const int bad : {1, 2}) {
            SCOPED_TRACE(bad);
            Conversions runs;
            const auto prepared = [&]() -> Conversion& {
                Conversion& run = runs.Next();
                EXPECT_FALSE(run.Text().Options(options).Xml(kFirst).Run().failed) << run.Error();
                fs::remove(run.Path("a.xml"));
                return run.Options("+continue").Xml(kLast, "c.xml").Xml(kFirst, bad == 1 ? "b.xml" : "a.xml");
            };
            Conversion& without = prepared();
            EXPECT_EQ(without.Run().convertedFiles, 2);
            const std::string left = Left(without);
            int failures = 0;
            for (;; ++failures) {
                SCOPED_TRACE(failures);
                Conversion& run = prepared().Xml(kBad, bad == 1 ? "a.xml" : "b.xml");
                FailAt(run, "File " + std::to_string(bad), failures + 1, jet::ErrorNumber::SyntaxErrorInQuery);
                const RunOutcome outcome = run.Run();
                if (!outcome.failed)
                    break;
                EXPECT_EQ(Left(run), left);
                EXPECT_EQ(outcome.convertedFiles, 2);
                EXPECT_EQ(outcome.files[static_cast<std::size_t>(bad) - 1].end, FileReport::End::Failed);
                EXPECT_EQ(run.Said("Left out because of errors: 1 of 3 files"), 1) << run.Protocol();
            }
            EXPECT_GT(failures, 5) << "steps that can fail";
        }
    }
}

TEST(WholeFiles, WhatConcernsTheDatabaseEndsTheRun)
{
    struct Case {
        const char* options;
        jet::ErrorNumber error;
        int converted;
        const char* tables;
    };
    const Case cases[] = {
        {"+continue", jet::ErrorNumber::DatabaseFull, 1, "p r "},
        {"+once -recreate_database", jet::ErrorNumber::SyntaxErrorInQuery, 1, "p r velmora_log "},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.options);
        Conversion& run = runs.Next();
        run.Text().Options(c.options).Xml(kFirst, "a.xml").Xml(kBad, "b.xml").Xml(kLast, "c.xml");
        FailAt(run, "File 2", 5, c.error);
        const RunOutcome outcome = run.Run();
        EXPECT_TRUE(outcome.failed);
        EXPECT_EQ(outcome.convertedFiles, c.converted);
        EXPECT_EQ(run.Tables(), c.tables);
        EXPECT_EQ(run.TextFile("p"), "PKEY;FKEY;n~1;1;1~");
        EXPECT_EQ(run.Said("nothing of the last one"), 1) << run.Protocol();
        EXPECT_EQ(run.Said("Not finished: "), 1);
    }
}

TEST(Once, SkipsWhatTheDatabaseHoldsWhateverItsName)
{
    Conversion run;
    run.Options("-recreate_database -relations +once").Xml(kFirst, "a.xml").Xml(kFirst, "b.xml").Xml(kLast, "c.xml");
    const auto counts = [&] {
        const RunOutcome outcome = run.Run();
        EXPECT_EQ(run.Error(), "");
        return std::pair(outcome.convertedFiles, outcome.skippedFiles);
    };
    EXPECT_EQ(counts(), std::pair(2, 1));
    EXPECT_EQ(run.Dump("p"), "n|k\n1|\n4|5\n");
    const std::string list = run.Dump("velmora_log");
    EXPECT_EQ(list.substr(0, list.find('\n')), "loaded|source|sha256|records");
    EXPECT_NE(list.find("a.xml|857a1239bd467197fcd7476d29e338151bf16635dd9933db47fc6655457a7432|1\n"), list.npos)
        << list;

    const std::string before = ReadFile(run.Target());
    EXPECT_EQ(counts(), std::pair(0, 3));
    EXPECT_EQ(ReadFile(run.Target()), before);
    EXPECT_EQ(run.Xml("<r><p><n>6</n></p></r>", "d.xml").Options("rename=%p%done_%f%").Run().filesNotRenamed, 0);
    EXPECT_TRUE(fs::exists(run.Path("done_a")) && fs::exists(run.Path("done_d")))
        << "also those that were loaded before";
    EXPECT_EQ(run.Dump("p"), "n|k\n1|\n4|5\n6|\n");

    run.job.controls.txtFILE_XML_RENAMED.text.clear();
    EXPECT_EQ(run.Xml(kLast).Options("+empty_tables").Run().convertedFiles, 1) << "the list is empty, too";
    EXPECT_EQ(run.Dump("p"), "n|k\n4|5\n");
}

TEST(Once, KeepsItsListApartFromTheTablesOfDocuments)
{
    Conversion run;
    EXPECT_FALSE(run.Options("-recreate_database").Xml("<r><Velmora_Log><a>1</a></Velmora_Log></r>").Run().failed);
    EXPECT_TRUE(run.Options("+once").Run().failed) << "the table is a document's";
    EXPECT_NE(run.Error().find("3010 Table 'Velmora_Log' is not the list"), std::string::npos) << run.Error();

    Conversion other;
    EXPECT_FALSE(other.Options("-recreate_database +once").Xml(kFirst).Run().failed) << other.Error();
    for (const char* options : {"+once", "-once", "-once +complete"}) {
        const std::string before = other.Dump("velmora_log");
        other.Options(options).Xml("<r><velmora_log><a>1</a></velmora_log></r>").Run();
        EXPECT_EQ(other.Dump("velmora_log"), before) << options;
        EXPECT_TRUE(other.Error().starts_with("3010 Table 'velmora_log' would be the list") ||
                    other.Said("Name changed") > 0)
            << options << other.Error();
    }
}

TEST(Once, NeedsADatabaseThatStays)
{
    for (const char* options : {"+once", "+once -recreate_database mdb="}) {
        Conversion run;
        run.Text().Options(options);
        EXPECT_TRUE(run.Xml(kFirst).Run().nothingToDo) << options;
        EXPECT_EQ(run.Said("+once "), 1);
        EXPECT_FALSE(fs::exists(run.Target()));
    }
}

} // namespace
} // namespace velmora::testing
