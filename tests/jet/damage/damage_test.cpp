#include "jet/damage/exercise.h"
#include "jet/damage/page_damage.h"

#include "jet/connection.h"
#include "support/shared.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>

namespace jet::testing {
namespace {

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
    for (const JetVersion version : {JetVersion::Jet3, JetVersion::Jet4}) {
        SCOPED_TRACE(version == JetVersion::Jet3 ? "Jet 3" : "Jet 4");
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
        std::ifstream stream(entry.path(), std::ios::binary);
        const Bytes file{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
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
        std::ifstream stream(shared / "corpus" / "fuzz" / find.file, std::ios::binary);
        const Bytes file{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        EXPECT_EQ(Exercise(file, find.seed), "");
    }
}

/// The last page that holds entries of an index.
std::size_t LastLeaf(const Bytes& file, std::size_t pageSize)
{
    std::size_t page = file.size() / pageSize - 1;
    while (file[page * pageSize] != static_cast<Byte>(PageType::IndexLeaf))
        --page;
    return page;
}

TEST(DamagedDatabase, TakesNoHalfOfARecord)
{
    const velmora::testing::TempFolder folder;
    const std::filesystem::path path = folder / "a.mdb";
    {
        const auto connection = Connection::Create(path, JetVersion::Jet4);
        connection->Execute("CREATE TABLE t (a Long, b String)");
        connection->Execute("CREATE INDEX i ON t (b)");
        connection->Commit();
    }
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    const Bytes whole{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    file.seekp(static_cast<std::streamoff>(LastLeaf(whole, 4096) * 4096));
    file.put('\x07');
    file.close();

    const auto connection = Connection::Open(path);
    Recordset records = connection->OpenTable("t");
    const auto save = [&] {
        records.AddNew();
        records.SetLong(0, 1);
        records.Update();
    };
    const auto numberOf = [](const auto& what) {
        try {
            what();
        } catch (const Error& error) {
            return error.Number();
        }
        return ErrorNumber{};
    };
    EXPECT_EQ(numberOf(save), ErrorNumber::NotADatabase);
    records.CancelUpdate();
    connection->Commit();
    records.MoveFirst();
    EXPECT_TRUE(records.Eof());
}

} // namespace
} // namespace jet::testing
