#include "jet/store/overlay_file_system.h"

#include "jet/base/error.h"
#include "jet/store/crash_file_system.h"
#include "jet/support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace jet {
namespace {

using testing::CrashFileSystem;
using testing::ErrorOf;

Bytes Everything(File& file)
{
    Bytes bytes(file.Size());
    file.ReadAt(0, bytes);
    return bytes;
}

Bytes RandomBytes(std::mt19937& random, std::size_t size)
{
    Bytes bytes(size);
    std::ranges::generate(bytes, [&] { return static_cast<Byte>(random()); });
    return bytes;
}

TEST(OverlayFileSystem, FilesChangeAsTheyWouldAndThoseBelowDoNot)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        CrashFileSystem below;
        const Bytes before = RandomBytes(random, random() % 20'000);
        below.Put("a", before);
        OverlayFileSystem overlay(below);
        const bool isNew = seed % 2 == 0;
        Bytes model = isNew ? Bytes() : before;
        for (int round = 0; round < 60; ++round) {
            const std::unique_ptr<File> file =
                overlay.Open(isNew ? "b" : "a", isNew && round == 0 ? OpenMode::CreateNew : OpenMode::ReadWrite);
            const std::size_t at = random() % (model.size() + 3'000);
            if (random() % 4 == 0) {
                file->Truncate(at);
                model.resize(at);
            } else {
                const Bytes written = RandomBytes(random, random() % 5'000);
                file->WriteAt(at, written);
                if (!written.empty())
                    model.resize(std::max(model.size(), at + written.size()));
                std::ranges::copy(written, model.begin() + static_cast<std::ptrdiff_t>(std::min(at, model.size())));
            }
            ASSERT_EQ(Everything(*file), model) << "round " << round;
        }
        EXPECT_EQ(below.Content("a"), before);
        EXPECT_EQ(below.Files().size(), 1U);
    }
}

TEST(OverlayFileSystem, NamesGoAndComeAboveOnly)
{
    CrashFileSystem below;
    below.Put("old", Bytes{1});
    OverlayFileSystem overlay(below);
    overlay.Open("new", OpenMode::CreateNew)->WriteAt(0, Bytes{2});
    EXPECT_EQ(ErrorOf([&] { (void)overlay.Open("old", OpenMode::CreateNew); }), ErrorNumber::DatabaseExists);
    overlay.Rename("new", "old");
    EXPECT_EQ(Everything(*overlay.Open("old", OpenMode::ReadOnly)), Bytes{2});
    EXPECT_FALSE(overlay.Exists("new"));
    overlay.Rename("old", "elsewhere");
    EXPECT_EQ(ErrorOf([&] { (void)overlay.Open("old", OpenMode::ReadWrite); }), ErrorNumber::FileNotFound);
    overlay.Remove("elsewhere");
    EXPECT_FALSE(overlay.Exists("elsewhere"));
    EXPECT_EQ(ErrorOf([&] { overlay.Remove("elsewhere"); }), ErrorNumber::FileNotFound);
    EXPECT_EQ(below.Content("old"), Bytes{1});
    EXPECT_EQ(below.Files().size(), 1U);
}

} // namespace
} // namespace jet
