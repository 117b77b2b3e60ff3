#include "driver/rename.h"

#include "driver/conversion.h"

namespace velmora::testing {

namespace {

/// 5 March 2024, 14:07:09, local.
std::time_t SomeTime()
{
    std::tm local{};
    local.tm_year = 2024 - 1900;
    local.tm_mon = 2;
    local.tm_mday = 5;
    local.tm_hour = 14;
    local.tm_min = 7;
    local.tm_sec = 9;
    local.tm_isdst = -1;
    return std::mktime(&local);
}

/// The process's current folder, for a while.
class CurrentFolder {
public:
    explicit CurrentFolder(const std::filesystem::path& folder) : before_(std::filesystem::current_path())
    {
        std::filesystem::current_path(folder);
    }
    ~CurrentFolder() { std::filesystem::current_path(before_); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    std::filesystem::path before_;
};

TEST(Rename, ThePatternGivesTheNewPath)
{
    struct Case {
        const char* pattern;
        const char* path; ///< below the test's folder
        const char* old = "in/order.v1.xml";
    };
    const Case cases[] = {
        {"%p%done\\%f%_%y%%m%%d%_%h%%n%%s%.xml", "in/done/order.v1_20240305_140709.xml"},
        {"%P%%F%.%YMD%", "in/order.v1.20240305"},
        {"%p%\\sub\\\\deep/%f%", "in/sub/deep/order.v1"},
        {"%p%../%x%%X%%%", "xX"},
        {"%p%a%d", "in/a05"},
        {"%p%a%f/h", "in/aorder.v1/14"},
        {"%p%/done/%f%", "done/order.v1", "order.v1.xml"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.pattern);
        Conversion run;
        const CurrentFolder here(run.Path(""));
        std::filesystem::create_directory("in");
        WriteFile(c.old, "content");
        run.job.settings.renamePattern = c.pattern;
        RenameConvertedFile(run.job, c.old, SomeTime());
        EXPECT_FALSE(std::filesystem::exists(c.old));
        EXPECT_EQ(ReadFile(c.path), "content");
    }
}

TEST(Rename, WhatCannotBeDoneIsAnErrorAndLeavesBothFiles)
{
    struct Case {
        const char* name;
        const char* old;
        const char* pattern;
        int number;
    };
    const Case cases[] = {
        {"the target is there", "a.xml", "%p%taken", 58},
        {"its own name", "a.xml", "%p%%f%.xml", 58},
        {"no extension", "taken", "%p%new", 5},
        {"a dot in the folder only", "v1.0/a", "%p%new", 5},
        {"a file stands where a folder is needed", "a.xml", "%p%taken/new", 75},
        {"the source is gone", "gone.xml", "%p%new", 76},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion run;
        WriteFile(run.Path("a.xml"), "source");
        WriteFile(run.Path("taken"), "target");
        run.job.settings.renamePattern = c.pattern;
        try {
            RenameConvertedFile(run.job, run.Path(c.old).string(), SomeTime());
            ADD_FAILURE() << "renamed";
        } catch (const RuntimeError& error) {
            EXPECT_EQ(error.Number(), c.number) << error.what();
        }
        EXPECT_EQ(ReadFile(run.Path("a.xml")), "source");
        EXPECT_EQ(ReadFile(run.Path("taken")), "target");
    }
}

TEST(Rename, ConvertedFilesMoveOneByOne)
{
    Conversion run;
    for (const char* name : {"1.xml", "3.xml"})
        run.Xml("<r><p><n>1</n></p></r>", name);
    run.Xml("<r>", "2.xml").Options("rename=%p%done/%f%.xml");
    EXPECT_FALSE(run.Run().failed) << run.Error();
    EXPECT_TRUE(std::filesystem::exists(run.Path("done/1.xml")));
    EXPECT_TRUE(std::filesystem::exists(run.Path("2.xml"))) << "it was not converted";
    EXPECT_EQ(run.Said("Not renamed, since it was not converted"), 1);
    EXPECT_TRUE(std::filesystem::exists(run.Path("done/3.xml")));
}

TEST(Rename, ANameThatAnEarlierFileHasLeftIsFree)
{
    Conversion run;
    run.Xml("<r><n>1</n></r>", "a.x").Xml("<r><n>2</n></r>", "a.x.x").Options("rename=%p%%f%");
    run.job.controls.txtFILE_XML.text = run.Path("a*").string();
    EXPECT_EQ(run.Run().convertedFiles, 2) << run.Protocol();
    EXPECT_EQ(ReadFile(run.Path("a")), "<r><n>1</n></r>");
    EXPECT_EQ(ReadFile(run.Path("a.x")), "<r><n>2</n></r>");
}

TEST(Rename, AFailureEndsTheRunAndKeepsTheRecords)
{
    Conversion run;
    run.Xml("<r><p><n>1</n></p></r>", "1.xml").Xml("<r><p><n>2</n></p></r>", "2.xml");
    run.Xml("<r><p><n>3</n></p></r>", "3.xml").Options("rename=%p%folder_%f%/%f%.xml debug log=run.log");
    WriteFile(run.Path("folder_2"), "no folder");
    run.job.controls.txtFILE_LOG.text = run.Path("run.log").string();
    EXPECT_TRUE(run.Run().failed);
    EXPECT_EQ(run.Dump("p"), "PKEY|FKEY|n\n1|1|1\n2|2|2\n");
    const std::string log = ReadFile(run.Path("run.log"));
    for (const char* line :
         {"    Explode old filename\r\n", "    Convert pattern to new filename\r\n", "    Finalize new filename\r\n",
          "    Create all subdirectories to the new filename\r\n", "    Rename XML file to new name\r\n",
          "\r\nFUNCTION    : btnConvert_Click\r\n", "    Closing protocoll file\r\n"})
        EXPECT_NE(log.find(line), log.npos) << line;
}

} // namespace

} // namespace velmora::testing
