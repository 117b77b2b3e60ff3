#include "jet/damage/exercise.h"
#include "jet/damage/page_damage.h"

#include "jet/connection.h"
#include "jet/store/crash_file_system.h"
#include "jet/support.h"
#include "support/shared.h"

#include <gtest/gtest.h>
#include <random>

namespace jet::testing {
namespace {

Bytes BytesOf(const std::filesystem::path& path)
{
    const std::string content = velmora::testing::ReadFile(path);
    return {content.begin(), content.end()};
}

/// Crashes, endless loops and foreign exceptions end the test program; the seed is then the last one that was printed.
void DamageAndExercise(const Bytes& file, unsigned seed)
{
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    Bytes damaged = file;
    for (unsigned times = 1 + random() % 3; times > 0; --times)
        Damage(damaged, random);
    EXPECT_EQ(Exercise(damaged, seed), "");
}

TEST(DamagedDatabase, IsRefusedWhereTheDamageIs)
{
    for (const JetVersion version : kVersions) {
        SCOPED_TRACE(static_cast<int>(version));
        const Bytes file = SmallDatabase(version);
        EXPECT_EQ(Exercise(file, 0), "");
        for (unsigned seed = 1; seed <= 100; ++seed)
            DamageAndExercise(file, seed);
    }
}

TEST(DamagedDatabase, ThatAccessMadeIsRefusedWhereTheDamageIs)
{
    REQUIRE_SHARED(shared);
    constexpr std::uintmax_t kLargest = 300'000; // larger ones make the test long and have nothing of their own
    for (const auto& entry : std::filesystem::directory_iterator(shared / "corpus" / "mdb")) {
        if (entry.path().extension() != ".mdb" || entry.file_size() > kLargest)
            continue;
        SCOPED_TRACE(entry.path().filename().string());
        const Bytes file = BytesOf(entry.path());
        for (unsigned seed = 1; seed <= 5; ++seed)
            DamageAndExercise(file, seed);
    }
}

TEST(DamagedDatabase, ThatFuzzingFoundIsSurvived)
{
    REQUIRE_SHARED(shared);
    struct Find {
        const char* file;
        unsigned seed; ///< chooses the changes that led to the fault
    };
    const Find finds[] = {{"statement-after-failed-statement.mdb", 628125964u}};
    for (const Find& find : finds) {
        SCOPED_TRACE(find.file);
        EXPECT_EQ(Exercise(BytesOf(shared / "corpus" / "fuzz" / find.file), find.seed), "");
    }
}

TEST(DamagedDatabase, TakesNoHalfOfARecord)
{
    constexpr const char* kFile = "a.mdb";
    CrashFileSystem disk;
    {
        const auto connection = Connection::Create(kFile, JetVersion::Jet4, Existing::Refuse, disk);
        connection->Execute("CREATE TABLE t (a Long, b String)");
        connection->Execute("CREATE INDEX i ON t (b)");
        connection->Commit();
    }
    Bytes file = disk.Content(kFile);
    std::size_t lastLeaf = file.size() - 4096; // the last page that holds entries of an index
    while (file[lastLeaf] != static_cast<Byte>(PageType::IndexLeaf))
        lastLeaf -= 4096;
    file[lastLeaf] = 7;
    disk.Put(kFile, file);

    const auto connection = Connection::Open(kFile, disk);
    Recordset records = connection->OpenTable("t");
    records.AddNew();
    records.SetLong(0, 1);
    EXPECT_EQ(ErrorOf([&] { records.Update(); }), ErrorNumber::NotADatabase);
    records.CancelUpdate();
    connection->Commit();
    records.MoveFirst();
    EXPECT_TRUE(records.Eof());
}

} // namespace
} // namespace jet::testing
