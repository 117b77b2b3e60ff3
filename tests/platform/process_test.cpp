#include "platform/process.h"

#include "platform/file_changes.h"
#include "support/shared.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using Words = std::vector<std::string>;

TEST(Process, ACommandLineFallsApartAtBlanksOutsideQuotes)
{
    const testing::TempFolder folder;
    const std::string base = folder.Path().string();
    std::filesystem::create_directory(folder / "my tools");
    testing::WriteFile(folder / "my tools/curl", "");
    struct Case {
        std::string line;
        Words words;
    };
    const Case cases[] = {
        {"curl -o \"a b.xml\"  http://x/?a=1&b=$(c) -u \"u: p\"",
         {"curl", "-o", "a b.xml", "http://x/?a=1&b=$(c)", "-u", "u: p"}},
        {"\"a b\" c\"d e\"f \"\"", {"a b", "cd ef", ""}},
        {"a 'b c' \\\"d e\\\"", {"a", "'b", "c'", "\\d e\\"}},
        {"a \"b c", {"a", "b c"}},
        {base + "/my tools/curl -v", {base + "/my tools/curl", "-v"}},
        {base + "/no tools/curl -v", {base + "/no", "tools/curl", "-v"}},
        {"", {}},
        {"  ", {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(SplitProgramLine(c.line), c.words);
    }
}

TEST(Process, RunsWithoutAShellAndCanBeEnded)
{
    EXPECT_EQ(ChildProcess::Start("/nowhere/program x"), nullptr);
    EXPECT_EQ(ChildProcess::Start(" "), nullptr);

    const testing::TempFolder folder;
    const std::string base = folder.Path().string();
    const auto touch = ChildProcess::Start("touch \"" + base + "/a b\" " + base + "/c;d");
    ASSERT_NE(touch, nullptr);
    while (!touch->HasEnded(1000)) {
    }
    EXPECT_TRUE(std::filesystem::exists(folder / "a b"));
    EXPECT_TRUE(std::filesystem::exists(folder / "c;d"));

    const auto endless = ChildProcess::Start("sleep 1000");
    ASSERT_NE(endless, nullptr);
    EXPECT_FALSE(endless->HasEnded(0));
    endless->Terminate();
    EXPECT_TRUE(endless->HasEnded(0));
}

TEST(FileMove, NeverReplacesAndCrossesVolumes)
{
    const testing::TempFolder folder;
    const std::string source = (folder / "source").string();
    const std::string taken = (folder / "taken").string();
    testing::WriteFile(source, "new");
    testing::WriteFile(taken, "old");
    EXPECT_EQ(MoveWithoutReplacing(source, taken), std::errc::file_exists);
    EXPECT_EQ(testing::ReadFile(taken), "old");

    // Most systems have this one in memory, and temporary files on a disk.
    const std::filesystem::path other = "/dev/shm";
    const std::filesystem::path target = other / ("velmora-test-" + folder.Path().filename().string());
    if (!std::filesystem::exists(other))
        GTEST_SKIP() << "skipped: there is no second volume";
    const auto time = std::filesystem::last_write_time(source) - std::chrono::hours(1);
    std::filesystem::last_write_time(source, time);
    EXPECT_FALSE(MoveWithoutReplacing(source, target.string()));
    EXPECT_FALSE(std::filesystem::exists(source));
    EXPECT_EQ(testing::ReadFile(target), "new");
    EXPECT_EQ(std::filesystem::last_write_time(target), time);
    EXPECT_EQ(MoveWithoutReplacing(taken, target.string()), std::errc::file_exists);
    EXPECT_EQ(testing::ReadFile(taken), "old");
    std::filesystem::remove(target);
}

} // namespace
} // namespace velmora
