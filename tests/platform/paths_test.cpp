#include "platform/paths.h"

#include "support/shared.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

namespace fs = std::filesystem;

TEST(Paths, OneFileIsRecognisedUnderItsOtherNames)
{
    const testing::TempFolder folder;
    const std::string base = folder.Path().string();
    testing::WriteFile(folder / "a", "");
    testing::WriteFile(folder / "b", "");
    fs::create_hard_link(folder / "a", folder / "hard");
    fs::create_symlink("a", folder / "soft");
    fs::create_directory(folder / "sub");
    fs::create_directory_symlink("sub", folder / "other");

    struct Case {
        const char* name;
        std::string first, second;
        bool same;
    };
    const Case cases[] = {
        {"equal", "/a", "/a", true},
        {"different files", "/a", "/b", false},
        {"hard link", "/a", "/hard", true},
        {"symbolic link", "/soft", "/a", true},
        {"through the parent", "/sub/../a", "/a", true},
        {"not there yet", "/sub/new", "/sub/./new", true},
        {"not there yet, through a linked folder", "/other/new", "/sub/new", true},
        {"not there yet, other separator", "\\sub\\new", "/sub/new", true},
        {"not there, different", "/sub/new", "/sub/newer", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(IsSameFile(base + c.first, base + c.second), c.same);
        EXPECT_EQ(IsSameFile(base + c.second, base + c.first), c.same);
    }
    EXPECT_FALSE(IsSameFile("", ""));
    EXPECT_TRUE(IsSameFile("new", fs::current_path().string() + "/new"));
}

} // namespace
} // namespace velmora
