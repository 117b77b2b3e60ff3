#include "driver/url_source.h"

#include "driver/conversion.h"
#include "platform/program.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace velmora::testing {
namespace {

/// A web server on the loopback interface, at a port that was free; http_server.py says what it answers.
class HttpServer {
public:
    HttpServer()
    {
        WriteFile(requests_, "");
        pipe_ = ::popen(("exec python3 " HTTP_SERVER " " + requests_.string()).c_str(), "r");
        if (pipe_ == nullptr || std::fscanf(pipe_, "%d %d", &port_, &process_) != 2)
            throw std::runtime_error("the web server does not start");
    }
    ~HttpServer()
    {
        ::kill(process_, SIGTERM);
        ::pclose(pipe_);
    }
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    [[nodiscard]] std::string Url(std::string_view path) const
    {
        return "http://127.0.0.1:" + std::to_string(port_).append(path);
    }
    /// The heads of all requests until now.
    [[nodiscard]] std::string Requests() const { return ReadFile(requests_); }

private:
    TempFolder folder_;
    std::filesystem::path requests_ = folder_ / "requests";
    std::FILE* pipe_;
    int port_ = 0, process_ = 0;
};

/// A run over an address. What the user had typed as a file stays typed, and no download may be left at the end.
class UrlRun : public Conversion {
public:
    explicit UrlRun(const std::string& url, const std::filesystem::path& programFolder = {})
        : batch(job, map, {programFolder.empty() ? Folder() : programFolder.string(), Folder()})
    {
        job.controls.tabSourceType = 1;
        job.controls.txtXML_URL.text = url;
        job.controls.txtFILE_XML.text = kTyped;
    }
    ~UrlRun()
    {
        EXPECT_EQ(job.controls.txtFILE_XML.text, kTyped);
        EXPECT_EQ(host.lines.empty() ? "" : host.lines.back(), "Done");
        for (const auto& entry : std::filesystem::directory_iterator(Path("")))
            EXPECT_FALSE(entry.path().filename().string().starts_with("xml_")) << entry.path();
    }
    [[nodiscard]] std::string Folder() const { return Path("").parent_path().string(); }

    static constexpr const char* kTyped = "typed.xml";
    Batch batch;
};

TEST(UrlSource, IsDownloadedConvertedAndRemoved)
{
    const HttpServer server;
    // The line says how often the server was asked and what it was told.
    struct Case {
        const char* name;
        std::string url;
        const char* options;
        const char* request;
        const char* said;
    };
    const Case cases[] = {
        {"with a blank before the password", server.Url("/orders.xml"), "auth=ann pwd=secret",
         "Basic YW5uOiBzZWNyZXQ=\r", "Downloading XML file from URL"}, // "ann: secret"
        {"without one when the server wants that", server.Url("/guarded"), "auth=ann pwd=secret",
         "Basic YW5uOnNlY3JldA==\r", "The server took the password without a blank in front"},
        {"quotes and backslashes as they are", server.Url("/orders.xml"), R"(auth=a"n\n pwd=se"c\ret)",
         "Basic YSJuXG46IHNlImNccmV0\r", "xml_2"},
        {"options of curl in the address", "-L " + server.Url("/moved"), "", "GET /orders.xml", "File 1 of 1: "},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        UrlRun run(c.url);
        run.Options(c.options);
        EXPECT_FALSE(run.batch.btnConvert_Click().failed) << run.Protocol();
        EXPECT_EQ(run.Dump("order"), "PKEY|FKEY|n\n1|1|1\n");
        EXPECT_GT(run.Said(c.said), 0) << run.Protocol();
        EXPECT_NE(server.Requests().find(c.request), std::string::npos) << server.Requests();
    }
    UrlRun empty(server.Url("/empty"));
    EXPECT_EQ(empty.batch.btnConvert_Click().unreadableFiles, 1) << "an empty answer is a document that cannot be read";
}

TEST(UrlSource, FailuresAreTold)
{
    const HttpServer server;
    const std::string nobody = "http://127.0.0.1:1/";
    struct Case {
        const char* name;
        std::string url;
        const char* options;
        const char* said; ///< in the error, or in the protocol, where curl's own words stand
    };
    const Case cases[] = {
        {"nobody there", nobody, "", "curl: (7) "},
        {"no such page, whose error page is a document", server.Url("/none"), "", "HTTP/1.1 404 Not Found"},
        {"a redirection", server.Url("/moved"), "", "HTTP/1.1 302 Found, the document is at /orders.xml"},
        {"an answer that breaks off", server.Url("/short"), "", "< Content-Length: 100"},
        {"no answer", server.Url("/silent"), "", "curl: (52) "},
        {"an address with a blank is two addresses", server.Url("/orders.xml nosuch://x"), "", "curl: (1) "},
        {"a word that curl does not know", server.Url("/orders.xml --nonsense"), "", "curl wrote no file"},
        {"a wrong password", server.Url("/guarded"), "pwd=wrong", "HTTP/1.1 401"},
        {"no end", server.Url("/stalled"), "timeout=0.05", "Timeout reached when receiving file"},
        {"no address", "", "", "URL for source XML is not specified"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        UrlRun run(c.url);
        run.Options("auth=ann pwd=secret").Options(c.options);
        EXPECT_TRUE(run.batch.btnConvert_Click().failed);
        const bool isCurls = !c.url.empty() && !std::string_view(c.options).starts_with("timeout");
        EXPECT_EQ(run.Said("Download of XML had failed!"), isCurls ? 2 : 0) << "the line, and the error's";
        EXPECT_NE((run.Error() + run.Protocol()).find(c.said), std::string::npos) << run.Protocol();
        EXPECT_EQ(run.Said("YW5uOiBzZWNyZXQ="), 0) << "the password is nobody's business";
        EXPECT_FALSE(std::filesystem::exists(run.Target()));
    }
    UrlRun soon(nobody);
    soon.Options("timeout=soon");
    EXPECT_TRUE(soon.batch.btnConvert_Click().nothingToDo);
    EXPECT_EQ(soon.Said("timeout= takes a number of seconds, not \"soon\""), 1) << soon.Protocol();
    EXPECT_EQ(soon.Said("Downloading"), 0);
}

TEST(UrlSource, TheArgumentsOfCurlHoldNoPassword)
{
    const TempFolder folder;
    WriteFile(folder / "curl", "#!/bin/sh\necho \"$@\" > " + (folder / "seen").string() + "\n");
    std::filesystem::permissions(folder / "curl", std::filesystem::perms::owner_all);
    UrlRun run("http://h/", folder.Path());
    run.Options("auth=ann pwd=secret");
    EXPECT_TRUE(run.batch.btnConvert_Click().failed);
    const std::string seen = ReadFile(folder / "seen");
    EXPECT_NE(seen.find(" http://h/ --config - -s -S --stderr "), std::string::npos) << seen;
    EXPECT_EQ(seen.find("secret"), std::string::npos) << seen;
}

TEST(UrlSource, AStalledDownloadEndsWithTheUsersCancel)
{
    const HttpServer server;
    UrlRun run(server.Url("/stalled"));
    run.host.onEvents = [&] {
        if (!server.Requests().empty())
            run.batch.btnQuit_Click();
    };
    const RunOutcome outcome = run.batch.btnConvert_Click();
    EXPECT_TRUE(outcome.cancelled);
    EXPECT_FALSE(outcome.failed);
    EXPECT_FALSE(std::filesystem::exists(run.Target()));
}

TEST(UrlSource, CurlStandsBesideTheProgramOrOnThePath)
{
    const HttpServer server;
    const std::string path = std::getenv("PATH");
    const TempFolder folder;
    std::filesystem::create_directory(folder / "my programs");
    std::filesystem::create_symlink(FindOnPath("curl"), folder / "my programs" / "curl");
    for (const bool beside : {false, true}) {
        SCOPED_TRACE(beside);
        UrlRun run(server.Url("/orders.xml"), beside ? folder / "my programs" : folder.Path());
        ::setenv("PATH", ".", 1);
        const RunOutcome outcome = run.batch.btnConvert_Click();
        ::setenv("PATH", path.c_str(), 1);
        EXPECT_EQ(outcome.failed, !beside) << run.Protocol();
        EXPECT_EQ(run.Said("Download CURL.EXE from https://curl.se/"), beside ? 0 : 1);
    }
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
