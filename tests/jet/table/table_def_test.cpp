#include "jet/table/table_def.h"

#include "jet/error.h"
#include "jet/table/table.h"
#include "support/shared.h"
#include "table_support.h"

#include <gtest/gtest.h>
#include <random>

namespace jet::testing {

namespace {

Bytes ChainContent(Pager& pager, const TableDef& def)
{
    Bytes stream;
    for (const PageNumber page : def.pages) {
        const PageRef ref = pager.Read(page);
        AppendBytes(stream, ref.Bytes().subspan(stream.empty() ? 0 : 8));
    }
    return stream;
}

} // namespace

TEST(TableDef, RealDefinitionsAreWrittenBackByteForByte)
{
    REQUIRE_SHARED(shared);
    int count = 0;
    for (const std::filesystem::path& path : velmora::testing::RealDatabases(shared)) {
        SCOPED_TRACE(path.filename());
        const velmora::testing::TempFolder folder;
        std::filesystem::copy_file(path, folder / "copy.mdb");
        const auto pager = Pager::Open(OpenFile(folder / "copy.mdb", OpenMode::ReadWrite));
        const Format& format = pager->GetFormat();
        Table objects(*pager, kObjectsPage, "MSysObjects");
        const std::size_t id = objects.Definition().ColumnIndex("id").value();
        const std::size_t type = objects.Definition().ColumnIndex("Type").value();
        for (const RowId row : AllRows(objects)) {
            const std::vector<Value> values = Values(objects, row);
            if (std::get<std::int32_t>(values[type]) != 1)
                continue;
            const auto page = static_cast<PageNumber>(std::get<std::int32_t>(values[id])) & 0xFFFFFF;
            SCOPED_TRACE("definition at page " + std::to_string(page));
            TableDef def = ReadTableDef(*pager, page);
            Bytes stream = ChainContent(*pager, def);
            const Bytes written = SerializeTableDef(format, def);
            ASSERT_GE(stream.size(), written.size());
            stream.resize(written.size());
            std::fill_n(stream.begin(), 8, Byte{0});
            EXPECT_EQ(stream, written);
            const std::vector<LogicalIndex> order = def.logicalIndexes;
            SortIndexesByName(def);
            for (std::size_t i = 0; i < order.size(); ++i)
                EXPECT_EQ(def.logicalIndexes[i].name, order[i].name);
            ++count;
        }
    }
    EXPECT_GT(count, 150);
}

TEST(TableDef, DamagedDefinitionsAreRefusedOrReadAsSomethingElse)
{
    const unsigned seed = 7;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (const JetVersion version : kBothVersions) {
        Memory memory(version);
        const auto table = memory.Create(
            {Col("id", ColumnType::Long, true), Col("name", ColumnType::Text), Col("note", ColumnType::Memo)});
        table->CreateIndex({.name = "pk", .columns = {{"id", SortOrder::Ascending}}, .primary = true});
        const Bytes sound = SerializeTableDef(memory.pager->GetFormat(), table->Definition());
        for (int round = 0; round < 3000; ++round) {
            Bytes damaged = sound;
            if (round % 3 == 0)
                damaged.resize(random() % damaged.size());
            for (int i = 0; i < 2 && !damaged.empty(); ++i)
                damaged[random() % damaged.size()] = static_cast<Byte>(random());
            try {
                const TableDef def = ParseTableDef(memory.pager->GetFormat(), damaged, 9);
                static_cast<void>(SerializeTableDef(memory.pager->GetFormat(), def));
            } catch (const Error& error) {
                EXPECT_EQ(error.Number(), ErrorNumber::NotADatabase);
            }
        }
    }
}

} // namespace jet::testing
