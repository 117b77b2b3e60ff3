// What a preview says against what a run does, of real and hostile documents.

#include "app/foretold.h"
#include "corpus/converted.h"

namespace velmora::testing {
namespace {

class CorpusPreview : public ::testing::TestWithParam<std::string> {};

TEST_P(CorpusPreview, SaysWhatTheRunThenDoesAndWritesNothing)
{
    REQUIRE_SHARED(shared);
    struct Case {
        const char* target; ///< the second run into one goes on with what is there
        std::string options;
    };
    const TempFolder temp;
    const std::string in = temp.Path().string() + "/";
    const std::string text = "delimiter=; txt=" + in + "out";
    const Case cases[] = {
        {"plain", "+attributes"},
        {"complete", "+complete"},
        {"complete", "+types +complete +once"},
        {"text", text},
        {"text", text + " +types +append"},
        {"old-format", "ver=97 +continue"},
        {"plain", "+types -attributes +continue"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.options);
        std::string line = "xml=" + (shared / "corpus" / GetParam()).string() + ".xml log=" + in + "a.log mdb=" + in;
        line.append(c.target).append(".mdb -recreate_database ").append(c.options);
        ExpectForetold(line, temp.Path());
    }
}

std::vector<std::string> Documents()
{
    std::vector<std::string> documents;
    for (const std::string folder : {"xml", "hostile"})
        for (const std::string& name : CorpusDocuments(folder))
            documents.push_back(std::string(folder).append("/").append(name));
    return documents;
}

INSTANTIATE_TEST_SUITE_P(Documents, CorpusPreview, ::testing::ValuesIn(Documents()),
                         [](const auto& info) { return TestName(info.param); });

} // namespace
} // namespace velmora::testing
