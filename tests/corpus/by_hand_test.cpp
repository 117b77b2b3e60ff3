// Small documents whose tables, rows and relations were worked out by hand from the rules of the conversion.

#include "corpus/converted.h"
#include "support/shared.h"

#include <gtest/gtest.h>
#include <regex>
#include <sstream>

namespace velmora::testing {
namespace {

class ByHand : public ::testing::TestWithParam<const char*> {};

/// One file beside a document: comments, the options, the protocol's figures, an empty line, and the dump.
struct Expectation {
    explicit Expectation(const std::filesystem::path& path)
    {
        std::istringstream lines(ReadFile(path));
        std::string line;
        while (std::getline(lines, line) && !line.empty()) {
            if (line.starts_with("options:"))
                for (std::istringstream words(line.substr(8)); words >> line;)
                    options.push_back(line);
            else if (!line.starts_with("#"))
                figures = line;
        }
        for (; std::getline(lines, line); dump += line + "\n") {
        }
    }

    std::vector<std::string> options;
    std::string figures;
    std::string dump;
};

/// The protocol's figures in the form of an expectation's line.
std::string FiguresOf(const std::string& protocol)
{
    std::smatch match;
    const auto figure = [&](const char* pattern) {
        return std::regex_search(protocol, match, std::regex(pattern)) ? match.str(1) : std::string("none");
    };
    return "approx " + figure("Approx\\. (\\d+) records") + ", imported " + figure("(\\d+) records were imported") +
           ", lost " + figure("Not imported: (\\d+ of \\d+) values");
}

TEST_P(ByHand, GivesTheTablesAndRowsOfItsExpectation)
{
    const std::filesystem::path folder = VELMORA_CORPUS_TEST_FOLDER "/by_hand";
    const std::string name = GetParam();
    const Expectation expected(folder / (name + ".txt"));
    const TempFolder temp;
    const Converted converted(folder / (name + ".xml"), temp / "out.mdb", expected.options);
    ASSERT_EQ(converted.run.status, 0) << converted.Report();
    EXPECT_EQ(FiguresOf(converted.run.output), expected.figures) << converted.Report();
    EXPECT_EQ(Dump(temp / "out.mdb"), expected.dump);
    EXPECT_SOUND(temp / "out.mdb");
}

INSTANTIATE_TEST_SUITE_P(Documents, ByHand,
                         ::testing::Values("last_entry", "attribute_meets_child", "single_then_repeated",
                                           "stripped_prefix", "repeated_leaf_with_attributes",
                                           "sink_switched_by_sibling", "wrapping_tags", "shared_tables",
                                           "same_names_numbered", "without_relations", "text_alone", "widened_column"),
                         [](const auto& info) { return std::string(info.param); });

} // namespace
} // namespace velmora::testing
