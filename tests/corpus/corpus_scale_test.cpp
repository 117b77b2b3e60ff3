// What `make check-large` does with gigabytes, at a hundredth of the size.

#include "corpus/converted.h"
#include "support/shared.h"

#include <gtest/gtest.h>

namespace velmora::testing {
namespace {

std::string Repeated(const std::string& text, int count)
{
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

TEST(Scale, RowsAndCharactersAgreeWithAnIndependentCount)
{
    const TempFolder temp;
    const std::string xml = (temp / "in.xml").string();
    const std::string mdb = (temp / "out.mdb").string();
    ASSERT_EQ(RunProcess({"python3", VELMORA_BENCH_FOLDER "/make_input.py", "orders", "1", xml}).status, 0);
    const Converted converted(xml, mdb);
    ASSERT_EQ(converted.run.status, 0) << converted.Report();
    const ProcessResult counted = RunProcess({"python3", VELMORA_BENCH_FOLDER "/check_counts.py", xml, mdb});
    EXPECT_EQ(counted.status, 0) << counted.output << counted.errors;
    EXPECT_SOUND(mdb);
}

TEST(Scale, EveryChildOfAWideParentIsARow)
{
    const TempFolder temp;
    // In the smaller pages of Access 97 the indexes of so many have three levels.
    WriteFile(temp / "in.xml", "<list><title>t</title>" + Repeated("<entry>x</entry>", 60'000) + "</list>");
    const Converted converted(temp / "in.xml", temp / "out.mdb", {"ver=97"});
    ASSERT_EQ(converted.run.status, 0) << converted.Report();
    const ProcessResult counted = RunProcess({"mdb-count", (temp / "out.mdb").string(), "entry"});
    EXPECT_EQ(counted.output, "60000\n");
    EXPECT_FALSE(converted.Says("Not imported")) << converted.Report();
    EXPECT_SOUND(temp / "out.mdb");
}

TEST(Scale, ADeepDocumentIsJustADocument)
{
    const TempFolder temp;
    WriteFile(temp / "in.xml", Repeated("<a>", 1000) + "1" + Repeated("</a>", 1000));
    const Converted shared(temp / "in.xml", temp / "shared.mdb", {"+one_table_per_element"});
    EXPECT_EQ(shared.run.status, 0) << shared.Report();
    EXPECT_SOUND(temp / "shared.mdb");

    // More tables than a database holds: said before the first of them is made.
    WriteFile(temp / "in.xml", Repeated("<a>", 100'000) + "1" + Repeated("</a>", 100'000));
    const Converted refused(temp / "in.xml", temp / "refused.mdb");
    EXPECT_EQ(refused.run.status, 1) << refused.Report().substr(0, 4000);
    EXPECT_TRUE(refused.Says("Done"));
    if (std::filesystem::exists(temp / "refused.mdb")) {
        EXPECT_EQ(Dump(temp / "refused.mdb"), "");
    }
}

TEST(Scale, ALongTextComesBackAsItWas)
{
    constexpr std::size_t kExportableBytes = 199'000; // mdb-export cuts a field at 200,000
    const TempFolder temp;
    std::string text;
    for (int number = 0; text.size() < kExportableBytes; ++number)
        text += std::to_string(number) + " ";
    text += "\xE6\xBC\xA2"; // more than a byte, at the end; mdbtools does not know characters beyond the basic plane
    WriteFile(temp / "in.xml", "<doc><rec><text>" + text + "</text><n>1</n></rec></doc>");
    const Converted converted(temp / "in.xml", temp / "out.mdb");
    ASSERT_EQ(converted.run.status, 0) << converted.Report();
    const ProcessResult exported = RunProcess({"mdb-export", "-H", (temp / "out.mdb").string(), "rec"});
    EXPECT_TRUE(exported.output == "1,1,\"" + text + "\",\"1\"\n") << exported.output.substr(0, 200);
    EXPECT_SOUND(temp / "out.mdb");
}

} // namespace
} // namespace velmora::testing
