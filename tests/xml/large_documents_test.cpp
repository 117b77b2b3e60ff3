#include "settings/job.h"
#include "support/scripted_host.h"
#include "xml/loaded_text.h"
#include "xml/structure_model.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using testing::LoadBytes;

TEST(LargeDocuments, DistinctPathsAreNotSearchedForOneByOne)
{
    constexpr int kPaths = 20'000; // a search from the first would take 400 million steps for each of the two rounds
    std::string round;
    for (int i = 0; i < kPaths; ++i) {
        round.append("<t").append(std::to_string(i)).append(" a='1'/>");
    }
    LoadResult loaded = LoadBytes("<a><b>" + round + "</b><b>" + round + "</b></a>");
    EXPECT_EQ(loaded.document.Paths().Size(), kPaths + 3u);
    testing::ScriptedHost host;
    Job job(host);
    StructureModel model;
    AnalyseStructure(job, loaded.document, model);
    EXPECT_EQ(model.UpperBound(), kPaths + 2u);
}

TEST(LargeDocuments, LongTokensDoNotCostTheSquareOfTheirLength)
{
    const std::string longText(5'000'000, 'x');
    const LoadResult loaded = LoadBytes("<a b='" + longText + "'><!--" + longText + "-->" + longText + "</a>");
    EXPECT_EQ(loaded.problem, "");
    EXPECT_TRUE(loaded.document.AttributeValue(0, 0) == longText);
    EXPECT_TRUE(loaded.document.Content(0) == longText);
}

TEST(LargeDocuments, WhatAWalkHasPassedComesBackWhole)
{
    constexpr ElementId kRecords = 24'000; // of 1 kB: three times as much as leaves the memory at once
    const auto value = [](ElementId record) { return std::string(1000, static_cast<char>('a' + record % 26)); };
    std::string xml = "<a>";
    for (ElementId record = 1; record <= kRecords; ++record) {
        xml.append("<b c='").append(value(record)).append("'>").append(std::to_string(record)).append("</b>");
    }
    const Document document = LoadBytes(xml + "</a>", MemoryBudget(0)).document;
    for (const bool again : {false, true}) {
        for (ElementId record = 1; record <= kRecords; ++record) {
            document.Passed(record);
            ASSERT_EQ(document.AttributeValue(record, 0), value(record)) << again;
            ASSERT_EQ(document.Content(record), std::to_string(record)) << again;
        }
    }
}

} // namespace
} // namespace velmora
