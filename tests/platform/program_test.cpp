#include "platform/program.h"

#include "support/shared.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace velmora {
namespace {

/// An environment variable that has another value for a while.
class Variable {
public:
    Variable(const char* name, const std::string& value) : name_(name), before_(EnvironmentVariable(name))
    {
        ::setenv(name, value.c_str(), 1);
    }
    ~Variable() { ::setenv(name_, before_.c_str(), 1); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* name_;
    std::string before_;
};

void MakeProgram(const std::filesystem::path& path)
{
    testing::WriteFile(path, "#!/bin/sh\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

TEST(Program, TheUsersDataFolderFollowsTheEnvironment)
{
    struct Case {
        const char* data;
        const char* home;
        const char* folder;
    };
    const Case cases[] = {
        {"/data", "/home/ann", "/data/velmora"},
        {"", "/home/ann", "/home/ann/.local/share/velmora"},
        {"data", "/home/ann", "/home/ann/.local/share/velmora"},
        {"", "ann", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.folder);
        const Variable data("XDG_DATA_HOME", c.data);
        const Variable home("HOME", c.home);
        EXPECT_EQ(UserDataFolder(), c.folder);
    }
    EXPECT_FALSE(IsWritableFolder("/nowhere/at/all"));
}

TEST(Program, IsFoundInTheAbsoluteFoldersOfThePath)
{
    const testing::TempFolder folder;
    const std::string base = folder.Path().string();
    for (const char* name : {"first", "second", "third"})
        std::filesystem::create_directory(folder / name);
    testing::WriteFile(folder / "first/tool", "no program");
    MakeProgram(folder / "second/tool");
    MakeProgram(folder / "third/tool");
    const Variable path("PATH", ".::" + base + "/none:" + base + "/first:" + base + "/second:" + base + "/third");
    EXPECT_EQ(FindOnPath("tool"), base + "/second/tool");
    EXPECT_EQ(FindOnPath("other"), "");
}

TEST(Program, ThatOpensAFileIsTheDesktopsOpener)
{
    const testing::TempFolder folder;
    const std::string base = folder.Path().string();
    const Variable path("PATH", base);
    testing::WriteFile(folder / "a.xml", "");
    EXPECT_EQ(FindAssociatedProgram(base + "/none/a.xml"), "Error: Path Not Found");
    EXPECT_EQ(FindAssociatedProgram(base + "/b.xml"), "Error: File Not Found");
    EXPECT_EQ(FindAssociatedProgram(base + "/a.xml"), "Error: No Association");
    MakeProgram(folder / "xdg-open");
    EXPECT_EQ(FindAssociatedProgram(base + "/a.xml"), base + "/xdg-open");
}

} // namespace
} // namespace velmora
