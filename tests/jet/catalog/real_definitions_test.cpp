#include "jet/catalog/catalog.h"

#include "support/shared.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace jet {
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

TEST(TableDef, RealDefinitionsAreWrittenBackByteForByte)
{
    REQUIRE_SHARED(shared);
    const velmora::testing::TempFolder folder;
    std::size_t count = 0;
    for (const std::filesystem::path& path : velmora::testing::RealDatabases(shared)) {
        SCOPED_TRACE(path.filename());
        const auto copy = velmora::testing::CopyOf(path, folder / "copy.mdb");
        const auto pager = Pager::Open(OpenFile(copy, OpenMode::ReadWrite));
        Catalog catalog(*pager);
        for (const CatalogObject* object : catalog.Objects().ChildrenOf(kTablesContainer)) {
            if (object->type != ObjectType::Table)
                continue;
            SCOPED_TRACE(object->name);
            const auto page = static_cast<PageNumber>(object->id) & 0xFFFFFF;
            TableDef def = ReadTableDef(*pager, page);
            Bytes stream = ChainContent(*pager, def);
            const Bytes written = SerializeTableDef(pager->GetFormat(), def);
            ASSERT_GE(stream.size(), written.size());
            stream.resize(written.size());
            std::fill_n(stream.begin(), 8, Byte{0});
            EXPECT_EQ(stream, written);
            const std::vector<LogicalIndex> order = def.logicalIndexes;
            SortIndexesByName(def);
            EXPECT_TRUE(std::ranges::equal(def.logicalIndexes, order, {}, &LogicalIndex::name, &LogicalIndex::name));
            ++count;
        }
    }
    EXPECT_GT(count, 150u);
}

} // namespace
} // namespace jet
