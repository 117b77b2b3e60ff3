#include "driver/url_source.h"

#include "driver/conversion.h"
#include "platform/other_programs.h"
#include "platform/program.h"
#include "support/http_server.h"

#include <cstdlib>

namespace velmora::testing {

namespace {

const std::string kOrders = "<orders><order><n>1</n></order></orders>";

/// A run over an address. What the user had typed as a file stays typed, and no download may be left at the end.
class UrlRun {
public:
    explicit UrlRun(const std::string& url, const std::filesystem::path& programFolder = {})
        : batch(run.job, run.map, {programFolder.empty() ? Folder() : programFolder.string(), Folder()})
    {
        run.job.controls.tabSourceType = 1;
        run.job.controls.txtXML_URL.text = url;
        run.job.controls.txtFILE_XML.text = kTyped;
    }
    ~UrlRun()
    {
        EXPECT_EQ(run.job.controls.txtFILE_XML.text, kTyped);
        EXPECT_EQ(run.host.lines.empty() ? "" : run.host.lines.back(), "Done");
        for (const auto& entry : std::filesystem::directory_iterator(run.Path("")))
            EXPECT_FALSE(entry.path().filename().string().starts_with("xml_")) << entry.path();
    }

    [[nodiscard]] std::string Folder() const { return run.Path("").parent_path().string(); }
    [[nodiscard]] std::string Protocol() const { return ::testing::PrintToString(run.host.lines); }

    static constexpr const char* kTyped = "typed.xml";
    Conversion run;
    Batch batch;
};

HttpAnswer Reply(const std::string& request)
{
    const auto asksFor = [&](const char* path) { return request.starts_with("GET " + std::string(path) + " "); };
    if (asksFor("/orders.xml"))
        return Answer("200 OK", "", kOrders);
    if (asksFor("/moved"))
        return Answer("302 Found", "Location: /orders.xml\r\n", "<moved/>");
    if (asksFor("/empty"))
        return Answer("200 OK", "", "");
    if (asksFor("/short"))
        return {"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n<orders>"};
    if (asksFor("/guarded"))
        return request.find("Basic YW5uOnNlY3JldA==") == request.npos // "ann:secret"
                   ? Answer("401 Unauthorized", "WWW-Authenticate: Basic realm=\"x\"\r\n", "<no/>")
                   : Answer("200 OK", "", kOrders);
    if (asksFor("/silent"))
        return {};
    return Answer("404 Not Found", "", "<html><body>no such page</body></html>");
}

TEST(UrlSource, IsDownloadedConvertedAndRemoved)
{
    HttpServer server(Reply);
    UrlRun url(server.Url("/orders.xml"));
    url.run.Options("auth=ann pwd=secret");
    EXPECT_FALSE(url.batch.btnConvert_Click().failed) << url.run.Error();
    EXPECT_EQ(url.run.Said("Downloading XML file from URL"), 1);
    EXPECT_EQ(url.run.Said("File 1 of 1: " + url.Folder() + "/xml_2"), 1);
    EXPECT_EQ(url.run.Dump("order"), "PKEY|FKEY|n\n1|1|1\n");
    ASSERT_EQ(server.Requests().size(), 1u);
    const std::string withBlankBeforePassword = "Basic YW5uOiBzZWNyZXQ="; // "ann: secret"
    EXPECT_NE(server.Requests()[0].find(withBlankBeforePassword), std::string::npos) << server.Requests()[0];
}

TEST(UrlSource, FailuresAreTold)
{
    struct Case {
        const char* name;
        const char* path; ///< nullptr: nobody listens
        const char* failure;
        const char* line; ///< of curl's log
    };
    const Case cases[] = {
        {"nobody there", nullptr, "curl: (7) ", "* Closing connection"},
        {"no such page, whose error page is a document", "/none", "HTTP/1.1 404 Not Found", "< HTTP/1.1 404 Not Found"},
        {"a redirection", "/moved", "HTTP/1.1 302 Found, the document is at /orders.xml", "< Location: /orders.xml"},
        {"an answer that breaks off", "/short", "curl: (18) ", "< Content-Length: 100"},
        {"no answer", "/silent", "curl: (52) ", "> GET /silent HTTP/1.1"},
        {"an address with a blank is two addresses", "/orders.xml nosuch://x", "curl: (1) ",
         "> GET /orders.xml HTTP/1.1"},
        {"a word that curl does not know", "/orders.xml --nonsense", "curl wrote no file", nullptr},
    };
    HttpServer server(Reply);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        UrlRun url(c.path ? server.Url(c.path) : DeadUrl());
        url.run.Options("auth=ann pwd=secret");
        EXPECT_TRUE(url.batch.btnConvert_Click().failed);
        EXPECT_EQ(url.run.Said("Download of XML had failed!"), 2) << "the line, and the error's" << url.Protocol();
        EXPECT_NE(url.run.Error().find(std::string("could not be downloaded: ") + c.failure), std::string::npos)
            << url.run.Error();
        if (c.line) {
            EXPECT_EQ(url.run.Said(c.line), 1) << url.Protocol();
        }
        EXPECT_EQ(url.run.Said("YW5uOiBzZWNyZXQ="), 0) << "the password is nobody's business";
        EXPECT_FALSE(std::filesystem::exists(url.run.Target()));
    }
}

TEST(UrlSource, APasswordReachesTheServerInTheFormThatItTakes)
{
    HttpServer server(Reply);
    UrlRun second(server.Url("/guarded"));
    second.run.Options("auth=ann pwd=secret");
    EXPECT_FALSE(second.batch.btnConvert_Click().failed) << second.Protocol();
    EXPECT_EQ(second.run.Said("The server took the password without a blank in front"), 1);
    EXPECT_EQ(server.Requests().size(), 2u);

    UrlRun refused(server.Url("/guarded"));
    refused.run.Options("auth=ann pwd=wrong");
    EXPECT_TRUE(refused.batch.btnConvert_Click().failed);
    EXPECT_NE(refused.run.Error().find("HTTP/1.1 401"), std::string::npos) << refused.run.Error();
    EXPECT_EQ(server.Requests().size(), 4u) << "one second try";

    UrlRun quotes(server.Url("/orders.xml"));
    quotes.run.Options(R"(auth=a"n\n pwd=se"c\ret)");
    EXPECT_FALSE(quotes.batch.btnConvert_Click().failed) << quotes.Protocol();
    EXPECT_NE(server.Requests().back().find("Basic YSJuXG46IHNlImNccmV0\r"), std::string::npos)
        << server.Requests().back();
}

TEST(UrlSource, TheArgumentsOfCurlHoldNoPassword)
{
    const TempFolder folder;
    WriteFile(folder / "curl", "#!/bin/sh\necho \"$@\" > " + (folder / "seen").string() + "\n");
    std::filesystem::permissions(folder / "curl", std::filesystem::perms::owner_all);
    UrlRun url("http://h/", folder.Path());
    url.run.Options("auth=ann pwd=secret");
    EXPECT_TRUE(url.batch.btnConvert_Click().failed);
    const std::string seen = ReadFile(folder / "seen");
    EXPECT_NE(seen.find(" http://h/ --config - -s -S --stderr "), std::string::npos) << seen;
    EXPECT_EQ(seen.find("secret"), std::string::npos) << seen;
}

TEST(UrlSource, AnEmptyAnswerIsADocumentThatCannotBeRead)
{
    HttpServer server(Reply);
    UrlRun url(server.Url("/empty"));
    const RunOutcome outcome = url.batch.btnConvert_Click();
    EXPECT_FALSE(outcome.failed) << url.run.Error();
    EXPECT_EQ(outcome.unreadableFiles, 1);
}

TEST(UrlSource, OptionsInTheAddressReachCurl)
{
    HttpServer server(Reply);
    UrlRun url("-L " + server.Url("/moved"));
    EXPECT_FALSE(url.batch.btnConvert_Click().failed) << url.Protocol();
    EXPECT_EQ(url.run.Dump("order"), "PKEY|FKEY|n\n1|1|1\n");
}

TEST(UrlSource, AStalledDownloadEndsWithTheUsersCancel)
{
    HttpServer server([](const std::string&) { return HttpAnswer{"HTTP/1.1 200 OK\r\n\r\n<orders>", true}; });
    UrlRun url(server.Url("/"));
    url.run.host.onEvents = [&] {
        if (!server.Requests().empty())
            url.batch.btnQuit_Click();
    };
    const RunOutcome outcome = url.batch.btnConvert_Click();
    EXPECT_TRUE(outcome.cancelled);
    EXPECT_FALSE(outcome.failed);
    EXPECT_FALSE(std::filesystem::exists(url.run.Target()));
}

TEST(UrlSource, ATimeoutEndsADownloadThatDoesNotFinish)
{
    HttpServer server([](const std::string&) { return HttpAnswer{"HTTP/1.1 200 OK\r\n\r\n<orders>", true}; });
    UrlRun url(server.Url("/"));
    url.run.Options("timeout=0.05");
    EXPECT_TRUE(url.batch.btnConvert_Click().failed);
    EXPECT_EQ(url.run.Said("Timeout reached when receiving file"), 1) << url.Protocol();
    EXPECT_FALSE(std::filesystem::exists(url.run.Target()));
}

TEST(UrlSource, ATimeoutThatIsNoNumberIsRefused)
{
    UrlRun url(DeadUrl());
    url.run.Options("timeout=soon");
    const RunOutcome outcome = url.batch.btnConvert_Click();
    EXPECT_TRUE(outcome.nothingToDo);
    EXPECT_FALSE(outcome.failed);
    EXPECT_EQ(url.run.Said("timeout= takes a number of seconds, not \"soon\""), 1) << url.Protocol();
    EXPECT_EQ(url.run.Said("Downloading"), 0);
}

TEST(UrlSource, CurlStandsBesideTheProgramOrOnThePath)
{
    HttpServer server(Reply);
    const std::string path = std::getenv("PATH");
    const TempFolder folder;
    std::filesystem::create_directory(folder / "my programs");
    std::filesystem::create_symlink(FindOnPath("curl"), folder / "my programs" / "curl");
    for (const bool beside : {false, true}) {
        SCOPED_TRACE(beside);
        UrlRun url(server.Url("/orders.xml"), beside ? folder / "my programs" : folder.Path());
        ::setenv("PATH", ".", 1);
        const RunOutcome outcome = url.batch.btnConvert_Click();
        ::setenv("PATH", path.c_str(), 1);
        EXPECT_EQ(outcome.failed, !beside) << url.Protocol();
        EXPECT_EQ(url.run.Said("Download CURL.EXE from https://curl.se/"), beside ? 0 : 1);
    }
    UrlRun nothing("");
    EXPECT_TRUE(nothing.batch.btnConvert_Click().failed);
    EXPECT_EQ(nothing.run.Said("URL for source XML is not specified"), 1);
}

TEST(UrlSource, EveryDownloadGetsANameOfItsOwn)
{
    const TempFolder folder;
    const auto next = [&] {
        const std::string path = ReserveDownload(folder.Path().string(), [] { return std::time_t{0}; });
        return path.substr(folder.Path().string().size());
    };
    const std::string first = next();
    const std::string stem = first.substr(0, first.size() - 4);
    EXPECT_EQ(stem.size(), std::string("/xml_19700101_000000").size());
    EXPECT_EQ(next(), stem + "_1.xml");
    EXPECT_EQ(next(), stem + "_2.xml");
}

} // namespace

} // namespace velmora::testing
