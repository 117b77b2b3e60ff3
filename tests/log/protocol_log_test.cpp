#include "log/protocol_log.h"

#include "support/scripted_host.h"
#include "support/shared.h"

#include <gtest/gtest.h>
#include <regex>

namespace velmora {
namespace {

/// `text` with every time stamp turned into "@", so that it can be compared.
std::string Unstamped(const std::string& text)
{
    return std::regex_replace(text, std::regex("[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}"), "@");
}

class ProtocolLogTest : public ::testing::Test {
protected:
    [[nodiscard]] std::string FileText() const { return Unstamped(testing::ReadFile(folder / "run.log")); }
    void Open() { log.OpenFile((folder / "run.log").string()); }

    testing::TempFolder folder;
    testing::ScriptedHost host;
    RunFlags flags;
    ProtocolLog log{flags, host, [] { return std::string("velmora xml=\"a.xml\""); }};
};

TEST_F(ProtocolLogTest, NewestLineStandsFirstInTheTextAndLastInTheFile)
{
    log.ProtocolAppend("before");
    testing::WriteFile(folder / "run.log", "earlier run\r\n");
    Open();
    log.ProtocolAppend("one");
    log.ProtocolAppend("only in the text", false);
    log.Trace("not traced");
    flags.blDebug = true;
    log.Trace("traced");
    log.WriteProtocolFile("as it stands");
    EXPECT_EQ(FileText(), "earlier run\r\n@ one\r\n@    traced\r\nas it stands\r\n") << "before the file is closed";
    log.CloseFile();
    log.ProtocolAppend("after");
    log.Trace("nowhere to go");

    EXPECT_EQ(Unstamped(log.Text()), "@ after\r\n@ only in the text\r\n@ one\r\n@ before\r\n");
    EXPECT_EQ(FileText(), "earlier run\r\n@ one\r\n@    traced\r\nas it stands\r\n");
    log.ClearText();
    EXPECT_EQ(log.Text(), "");
}

TEST_F(ProtocolLogTest, AnErrorReportIsABlockInTheFileAndABoxUnlessQuiet)
{
    Open();
    log.ErrorReport("velLoadXML", "velLoadXML: Open XML", RuntimeError(53, "File not found"));
    EXPECT_TRUE(flags.blAbort);
    EXPECT_EQ(FileText(), "-------------------------------------------\r\n"
                          "TIME        : @\r\n"
                          "ERROR #     : 53\r\n"
                          "DESCRIPTION : File not found\r\n"
                          "FUNCTION    : velLoadXML\r\n"
                          "STATEMENT   : velLoadXML: Open XML\r\n"
                          "PARAMETERS  : velmora xml=\"a.xml\"\r\n"
                          "-------------------------------------------\r\n");
    EXPECT_EQ(host.lines, std::vector<std::string>{"Error: velLoadXML: Open XML"});
    EXPECT_EQ(host.messages, std::vector<std::string>{"An Error has occured!\r\n\r\nError: 53: File not found\r\n\r\n"
                                                      "Function: velLoadXML: \r\n\r\nDebug: velLoadXML: Open XML"});

    flags = {.blAbort = false, .blQuiet = true, .blDebug = false};
    log.ErrorReport("velLoadXML", "velLoadXML: ", RuntimeError(53, "File not found"));
    EXPECT_TRUE(flags.blAbort);
    EXPECT_EQ(host.messages.size(), 1U);
    EXPECT_EQ(host.errors.size(), 2U) << "the console shows errors of quiet runs too";
    EXPECT_EQ(log.ErrorCount(), 2);
}

TEST_F(ProtocolLogTest, PasswordsAreShownNowhere)
{
    struct Case {
        const char* text;
        const char* shown;
    };
    const Case cases[] = {
        {"Unknown parameter:PW=secret", "Unknown parameter:PW=***"},
        {"xml=a pwd=\"se cret\" q", "xml=a pwd=*** q"},
        {"pwd=\"secret", "pwd=***"},
        {"pwd= q", "pwd= q"},
        {"< Location: https://ann:secret@h/a@b and ftp://h/", "< Location: https://***@h/a@b and ftp://h/"},
        {"http://h/a:b@c xpwd=1", "http://h/a:b@c xpwd=1"},
    };
    flags.blDebug = true;
    Open();
    for (const Case& c : cases) {
        log.ProtocolAppend(c.text);
        EXPECT_EQ(host.lines.back(), c.shown);
        log.Trace(c.text);
        log.ErrorReport("vel", c.text, RuntimeError(1, c.text));
        EXPECT_EQ(host.errors.back().second, c.shown);
        EXPECT_NE(host.messages.back().find(c.shown), std::string::npos);
    }
    EXPECT_EQ(FileText().find("secret"), std::string::npos) << FileText();
}

TEST_F(ProtocolLogTest, AFileThatCannotBeOpenedSaysWhichAndWhy)
{
    struct Case {
        std::string path;
        int number;
    };
    const Case cases[] = {
        {(folder / "no/such/folder.log").string(), runtime_errors::kPathNotFound},
        {folder.Path().string(), runtime_errors::kPathFileAccess},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        try {
            log.OpenFile(c.path);
            ADD_FAILURE() << "was opened";
        } catch (const RuntimeError& error) {
            EXPECT_EQ(error.Number(), c.number);
            EXPECT_NE(std::string(error.what()).find(c.path), std::string::npos);
        }
        EXPECT_FALSE(log.IsFileOpen());
    }
}

#ifdef __linux__
TEST_F(ProtocolLogTest, AFullDiskIsReportedOnce)
{
    log.OpenFile("/dev/full");
    log.ProtocolAppend("one");
    log.ProtocolAppend("two");
    EXPECT_FALSE(log.IsFileOpen());
    EXPECT_TRUE(flags.blAbort);
    ASSERT_EQ(host.errors.size(), 1U);
    EXPECT_EQ(host.errors[0].first, runtime_errors::kDiskFull);
    EXPECT_EQ(host.lines, (std::vector<std::string>{"Error: WriteProtocolFile: /dev/full", "one", "two"}));
}
#endif

} // namespace
} // namespace velmora
