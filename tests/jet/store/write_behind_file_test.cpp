#include "jet/store/write_behind_file.h"

#include "jet/store/crash_file_system.h"
#include "jet/support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace jet::testing {
namespace {

constexpr std::uint64_t kForever = ~std::uint64_t{0};

class WriteBehind : public ::testing::Test {
protected:
    void Write(std::uint64_t offset, Bytes bytes) { file->WriteLater(offset, bytes); }
    [[nodiscard]] Bytes Read(std::uint64_t offset, std::size_t size)
    {
        Bytes bytes(size);
        file->ReadAt(offset, bytes);
        return bytes;
    }
    void Fail(std::uint64_t after, std::uint64_t count)
    {
        disk.FailAt(disk.Operations() + after, ErrorNumber::DiskFull, count);
    }

    CrashFileSystem disk;
    std::unique_ptr<File> file =
        std::make_unique<WriteBehindFile>(disk.Open("a.mdb", OpenMode::CreateNew), std::uint64_t{500});
};

TEST_F(WriteBehind, ShowsWhatWasWrittenWheneverTheDiskFails)
{
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto below = [&](std::size_t end) { return random() % end; };
    Bytes model;
    const auto put = [&](std::size_t offset, const Bytes& bytes) {
        model.resize(std::max(model.size(), offset + bytes.size()));
        std::ranges::copy(bytes, model.begin() + static_cast<std::ptrdiff_t>(offset));
    };
    int refused = 0;
    for (int step = 0; step < 5000; ++step) {
        if (below(20) == 0)
            Fail(1 + below(8), below(6));
        const std::size_t offset = below(model.size() + 1);
        const std::size_t size = std::min<std::size_t>(below(300), model.size() - offset);
        const Bytes bytes(1 + below(300), static_cast<Byte>(step));
        try {
            switch (below(12)) {
            case 0:
                file->WriteAt(offset, bytes);
                put(offset, bytes);
                break;
            case 1:
                file->Truncate(offset);
                model.resize(offset);
                break;
            case 2:
                EXPECT_EQ(file->Size(), model.size());
                break;
            case 3:
                file->Sync();
                EXPECT_TRUE(disk.Content("a.mdb") == model);
                break;
            case 4:
                file->BeginToWrite(offset, size);
                break;
            case 5:
            case 6:
            case 7:
                EXPECT_TRUE(Read(offset, size) == Bytes(model.data() + offset, model.data() + offset + size));
                break;
            default:
                Write(offset, bytes);
                put(offset, bytes);
            }
        } catch (const Error& error) {
            ++refused;
            EXPECT_EQ(error.Number(), ErrorNumber::DiskFull);
        }
        ASSERT_FALSE(HasFailure()) << "step " << step;
    }
    EXPECT_GT(refused, 10);
    Fail(0, 0);
    file->Sync();
    EXPECT_TRUE(disk.Content("a.mdb") == model);
}

TEST_F(WriteBehind, ReachesTheDiskInItsOrder)
{
    constexpr std::uint32_t kPlaces = 7;
    for (std::uint64_t stop = 2; stop < 200; stop += 3) {
        SCOPED_TRACE(stop);
        disk.StopAt(disk.Operations() + stop);
        try {
            for (std::uint32_t i = 1; i <= 300; ++i) {
                Bytes bytes(4);
                StoreU32(bytes, 0, i);
                file->WriteLater(std::uint64_t{i % kPlaces} * 4, bytes);
            }
        } catch (const Error&) {
            EXPECT_TRUE(disk.IsOff());
        }
        disk.Crash(file, Loss::Nothing);
        const Bytes content = disk.Content("a.mdb");
        std::uint32_t last = 0;
        for (std::size_t place = 0; place < content.size(); place += 4)
            last = std::max(last, LoadU32(content, place));
        for (std::uint32_t i = last; i > 0 && i + kPlaces > last; --i)
            EXPECT_EQ(LoadU32(content, std::size_t{i % kPlaces} * 4), i);
        disk.Put("a.mdb", {});
        file = std::make_unique<WriteBehindFile>(disk.Open("a.mdb", OpenMode::ReadWrite), 0);
    }
}

TEST_F(WriteBehind, KeepsWhatFailsUntilThereIsRoomOrNobodyWantsIt)
{
    const Bytes a(600, 'a');
    const Bytes b(600, 'b');
    Write(0, a);
    file->Sync();
    Fail(1, kForever);
    Bytes both = a;
    AppendBytes(both, b);
    Write(600, both);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(ErrorOf([&] { file->Sync(); }), ErrorNumber::DiskFull);
        EXPECT_EQ(ErrorOf([&] { file->WriteAt(0, b); }), ErrorNumber::DiskFull);
        EXPECT_EQ(ErrorOf([&] { Write(0, b); }), ErrorNumber::DiskFull) << "there is no end of what is kept";
        EXPECT_TRUE(Read(700, 500) == Bytes(500, 'a'));
        EXPECT_TRUE(Read(1200, 600) == b);
    }
    file->Forget(1000);
    Fail(0, 0);
    file->Sync();
    EXPECT_TRUE(disk.Content("a.mdb") == Bytes(1000, 'a'));
    // What was forgotten is not missed by anybody.
    Fail(1, kForever);
    Write(1000, b);
    file->Forget(0);
    EXPECT_EQ(file->Size(), 1000u);
}

} // namespace
} // namespace jet::testing
