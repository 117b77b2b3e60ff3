// What the tables of small documents must hold; tables.txt has the documents and the tables.

#include "driver/conversion.h"

#include <regex>
#include <sstream>

namespace velmora::testing {
namespace {

struct OneRun {
    std::string options;
    std::vector<std::string> documents{};
};
struct Case {
    std::string name;
    std::vector<OneRun> runs = std::vector<OneRun>(1);
    std::string content{}, losses{};
    std::vector<std::string> says{}, saysNot{};
};

/// `line` with "{300L}" written out.
std::string WrittenOut(std::string line)
{
    static const std::regex many(R"(\{(\d+)(.)\})");
    for (std::smatch match; std::regex_search(line, match, many);)
        line = match.prefix().str() + std::string(std::stoul(match[1]), match.str(2)[0]) + match.suffix().str();
    return line;
}

std::vector<Case> Cases()
{
    std::vector<Case> cases;
    std::istringstream file(ReadFile(TABLES));
    for (std::string text; std::getline(file, text);) {
        if (text.empty() || text.starts_with('#'))
            continue;
        const std::string line = WrittenOut(text);
        const auto rest = [&](std::string_view key) { return line.substr(std::min(key.size() + 1, line.size())); };
        if (line.starts_with("== "))
            cases.push_back({line.substr(3)});
        else if (line.starts_with("options:"))
            cases.back().runs.back().options = rest("options:");
        else if (line.starts_with("then:"))
            cases.back().runs.push_back({"-recreate_database " + rest("then:")});
        else if (line.starts_with("says:"))
            cases.back().says.push_back(rest("says:"));
        else if (line.starts_with("does not say:"))
            cases.back().saysNot.push_back(rest("does not say:"));
        else if (line.starts_with('<'))
            cases.back().runs.back().documents.push_back(line);
        else
            (line.starts_with(' ') || line.starts_with("Not ") ? cases.back().losses : cases.back().content) +=
                line + "\n";
    }
    return cases;
}

TEST(Tables, AreAsWorkedOutByHand)
{
    const std::vector<Case> cases = Cases();
    EXPECT_GT(cases.size(), 30u);
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        for (const OneRun& one : c.runs) {
            run.Options(one.options);
            char name = 'a';
            for (const std::string& document : one.documents)
                run.Xml(document, std::string(1, name++) + ".xml");
            EXPECT_EQ(run.Run().convertedFiles, name - 'a') << run.Error();
        }
        EXPECT_EQ(run.Error(), "");
        EXPECT_EQ(run.Content(), c.content);
        EXPECT_EQ(run.Losses(), c.losses);
        for (const std::string& text : c.says)
            EXPECT_GT(run.Said(text), 0) << text << run.Protocol();
        for (const std::string& text : c.saysNot)
            EXPECT_EQ(run.Said(text), 0) << text << run.Protocol();
    }
}

TEST(Tables, BearTheNamesThatTagsAreMappedTo)
{
    const std::string longText(300, 'L');
    Conversion run;
    run.Map("p", "person").Map("n", "full.name").Map("n", "second").Map("attr_k", "key").Map("T", "x");
    run.Map("a", "b").Map("c", "a");
    // The tag "a" goes to the column "b", and "c" to "a": the column of the tag's own name is widened first, then the
    // one that is meant.
    run.Xml("<r><x:p k=\"v\"><n>Ann</n><t>1</t><t>2</t></x:p><q><a>s</a><c>s</c></q><q><a>" + longText +
            "</a><c>t</c></q></r>")
        .Run();
    EXPECT_EQ(run.Content(), "person(PKEY|FKEY|key|full_name): 1|1|v|Ann\n"
                             "q(PKEY|FKEY|a|b): 1|1|s|s / 2|1|t|" +
                                 longText +
                                 "\n"
                                 "r(PKEY|FKEY): 1|0\n"
                                 "t(PKEY|FKEY|t): 1|1|1 / 2|1|2\n"
                                 "person.FKEY -> r.PKEY\n"
                                 "q.FKEY -> r.PKEY\n"
                                 "t.FKEY -> person.PKEY\n");
}

} // namespace
} // namespace velmora::testing
