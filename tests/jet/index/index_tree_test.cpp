#include "jet/index/index_tree.h"

#include "jet/store/memory_pager.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <set>

namespace jet::testing {
namespace {

constexpr PageNumber kOwner = 77;

/// A tree in a file of its own.
struct TreeFile {
    explicit TreeFile(JetVersion version)
        : pager(NewPager(disk, version)), map(*pager, *UsageMap::CreateRecord(*pager, NewMapPage(*pager))),
          root(pager->Allocate().Number()), tree(*pager, root, map.Record(), kOwner)
    {
        IndexTree::MakeEmpty(pager->Write(root), pager->GetFormat(), kOwner);
        map.Add(root);
    }
    /// Its pages, level by level from the root, in the order of the nodes' entries.
    std::vector<std::vector<PageNumber>> Levels()
    {
        std::vector<std::vector<PageNumber>> levels{{root}};
        for (;;) {
            std::vector<PageNumber> below;
            for (const PageNumber number : levels.back()) {
                const PageRef ref = pager->Read(number);
                const IndexPage page(ref, pager->GetFormat());
                for (std::size_t place = page.Begin(); !page.IsLeaf() && place != page.End(); place = page.After(place))
                    below.push_back(page.Child(place));
                if (!page.IsLeaf())
                    below.push_back(page.Tail());
            }
            if (below.empty())
                return levels;
            levels.push_back(below);
        }
    }

    CrashFileSystem disk;
    std::unique_ptr<Pager> pager;
    UsageMap map;
    PageNumber root;
    IndexTree tree;
};

/// What the nodes above say of a page: its entries are greater than `above`, and none is greater than `last`.
struct Bounds {
    std::optional<Bytes> above;
    std::optional<Bytes> last;
};

/// Is every page of the tree as the format wants it, and does the tree hold exactly `expected` (key and row pointer)?
void CheckTree(TreeFile& file, const std::set<Bytes>& expected)
{
    const Format& format = file.pager->GetFormat();
    const auto levels = file.Levels();
    std::set<PageNumber> reached;
    std::vector<Bytes> found;
    std::vector<Bounds> bounds{{}};
    for (std::size_t height = 0; height < levels.size(); ++height) {
        const std::vector<PageNumber>& level = levels[height];
        std::vector<Bounds> boundsBelow;
        std::optional<Bytes> previous;
        for (std::size_t i = 0; i < level.size(); ++i) {
            SCOPED_TRACE("page " + std::to_string(level[i]) + ", level " + std::to_string(levels.size() - 1 - height));
            ASSERT_TRUE(reached.insert(level[i]).second);
            const PageRef ref = file.pager->Read(level[i]);
            const IndexPage page(ref, format);
            const EntryList entries = page.Entries();
            ASSERT_EQ(page.IsLeaf(), height + 1 == levels.size());
            ASSERT_EQ(page.Level(), levels.size() - 1 - height);
            ASSERT_EQ(ref.Bytes()[1], 1);
            ASSERT_EQ(LoadU32(ref.Bytes(), 4), kOwner);
            ASSERT_EQ(LoadU16(ref.Bytes(), 2), page.FreeBytes());
            ASSERT_EQ(page.Previous(), i == 0 ? 0 : level[i - 1]);
            ASSERT_EQ(page.Next(), i + 1 == level.size() ? 0 : level[i + 1]);
            ASSERT_EQ(page.Tail() == 0, page.IsLeaf());
            ASSERT_TRUE(entries.Count() != 0 || levels.size() == 1);
            for (std::size_t e = 0; e < entries.Count(); ++e) {
                const ByteSpan entry = entries[e].first(entries[e].size() - (page.IsLeaf() ? 0 : 4));
                Bytes own(entry.begin(), entry.end());
                ASSERT_TRUE(!previous || *previous < own);
                ASSERT_TRUE(!bounds[i].above || *bounds[i].above < own);
                ASSERT_TRUE(!bounds[i].last || own <= *bounds[i].last);
                if (page.IsLeaf())
                    found.push_back(own);
                else
                    boundsBelow.push_back({e == 0 ? bounds[i].above : previous, own});
                previous = own;
            }
            if (!page.IsLeaf())
                boundsBelow.push_back({previous, bounds[i].last});
        }
        bounds = std::move(boundsBelow);
    }
    ASSERT_TRUE(std::ranges::equal(found, expected));
    const std::vector<PageNumber> mapped = file.map.Pages();
    ASSERT_TRUE(std::ranges::equal(mapped, reached));
}

Bytes LongKey(std::uint32_t value)
{
    Bytes key(5, 0x7F);
    StoreBigU32(key, 1, value ^ 0x80000000U);
    return key;
}

/// A key of `size` bytes of which none is a prefix of another.
Bytes WideKey(std::uint32_t value, std::size_t size)
{
    Bytes key(size, 0x40);
    key.front() = static_cast<Byte>(value);
    StoreBigU32(key, size - 5, value);
    key.back() = 0;
    return key;
}

/// A key of `size` bytes that sorts as its number does: a few to a page make many levels of a few entries.
Bytes LongishKey(std::uint32_t value, std::size_t size)
{
    Bytes key(size, 0x7F);
    StoreBigU32(key, 1, value);
    return key;
}

RowId RowOf(std::uint32_t number)
{
    return {100 + number / 200, static_cast<std::uint8_t>(number % 200)};
}

Bytes EntryOf(ByteSpan key, RowId row)
{
    Bytes entry(key.begin(), key.end());
    entry.resize(key.size() + 4);
    StoreBigU32(entry, key.size(), row.Pointer());
    return entry;
}

std::vector<std::size_t> LeafCounts(TreeFile& file)
{
    std::vector<std::size_t> counts;
    const std::vector<PageNumber> leaves = file.Levels().back();
    for (const PageNumber leaf : leaves) {
        const PageRef ref = file.pager->Read(leaf);
        counts.push_back(IndexPage(ref, file.pager->GetFormat()).Count());
    }
    return counts;
}

TEST(IndexTree, AppendsFillLeavesAsAccessDoes)
{
    struct Case {
        JetVersion version;
        std::uint32_t count;
        std::vector<std::size_t> leaves;
    };
    const Case cases[] = {
        {JetVersion::Jet3, 200, {200}},
        {JetVersion::Jet3, 1000, {255, 256, 256, 233}},
        {JetVersion::Jet4, 1500, {602, 602, 296}},
    };
    for (const Case& c : cases) {
        TreeFile file(c.version);
        std::set<Bytes> expected;
        for (std::uint32_t i = 1; i <= c.count; ++i) {
            EXPECT_TRUE(file.tree.Insert(LongKey(i), RowOf(i)));
            expected.insert(EntryOf(LongKey(i), RowOf(i)));
        }
        EXPECT_EQ(LeafCounts(file), c.leaves);
        CheckTree(file, expected);
    }
}

/// Inserts and removes at random, with `keyOf` numbers below `numbers`, and compares with a set.
void RunAgainstModel(JetVersion version, unsigned seed, std::uint32_t numbers, int steps, std::size_t fewestLevels,
                     const std::function<Bytes(std::uint32_t)>& keyOf)
{
    SCOPED_TRACE("Jet " + std::to_string(3 + static_cast<int>(version)) + ", seed " + std::to_string(seed));
    TreeFile file(version);
    std::mt19937 random(seed);
    std::set<Bytes> model;
    std::multiset<Bytes> keys;
    std::size_t highest = 0;
    for (int step = 0; step < steps; ++step) {
        // First the tree grows, then it shrinks to nothing.
        const bool grows = random() % 10 < (step < steps / 2 ? 8U : 2U);
        // All over the tree by turns with one stretch of it.
        constexpr int kTurn = 250;
        const std::uint32_t stretch = static_cast<std::uint32_t>(step / kTurn) * 7919;
        const std::uint32_t number =
            step / kTurn % 2 == 0 ? random() % numbers : (stretch + random() % (numbers / 16)) % numbers;
        const Bytes key = keyOf(number);
        const RowId row = RowOf(number);
        const Bytes entry = EntryOf(key, row);
        if (model.contains(entry) || !grows) {
            Bytes victim = entry;
            if (const auto at = model.lower_bound(entry); at != model.end())
                victim = *at;
            const ByteSpan victimKey = ByteSpan(victim).first(victim.size() - 4);
            const bool was = model.erase(victim) != 0;
            if (was)
                keys.erase(keys.find(Bytes(victimKey.begin(), victimKey.end())));
            ASSERT_EQ(file.tree.Remove(victimKey, RowId::FromPointer(LoadBigU32(victim, victim.size() - 4))), was);
        } else {
            ASSERT_EQ(file.tree.Insert(key, row), !keys.contains(key));
            model.insert(entry);
            keys.insert(key);
        }
        const Bytes probe = keyOf(random() % numbers);
        ASSERT_EQ(file.tree.Contains(probe), keys.contains(probe));
        const auto atLeast = model.lower_bound(probe);
        const IndexTree::Cursor cursor = file.tree.Seek(probe);
        ASSERT_EQ(cursor.AtEnd(), atLeast == model.end());
        if (!cursor.AtEnd()) {
            ASSERT_EQ(EntryOf(cursor.Key(), cursor.Row()), *atLeast);
        }
        if (step % (steps / 20) == 0) {
            CheckTree(file, model);
            if (::testing::Test::HasFatalFailure())
                return;
            highest = std::max(highest, file.Levels().size());
        }
    }
    while (!model.empty()) {
        // From either end, since the pages there have one neighbour only, and from the middle outwards.
        const std::size_t skipped = random() % std::min<std::size_t>(model.size(), 50);
        const std::size_t at = seed % 3 == 0   ? skipped
                               : seed % 3 == 1 ? model.size() - 1 - skipped
                                               : std::min(model.size() / 2 + skipped, model.size() - 1);
        const auto victim = std::next(model.begin(), static_cast<long>(at));
        ASSERT_TRUE(file.tree.Remove(ByteSpan(*victim).first(victim->size() - 4),
                                     RowId::FromPointer(LoadBigU32(*victim, victim->size() - 4))));
        model.erase(victim);
        if (model.size() % 500 == 0)
            CheckTree(file, model);
    }
    CheckTree(file, model);
    EXPECT_EQ(file.map.Pages(), std::vector<PageNumber>{file.root});
    EXPECT_GE(highest, fewestLevels);
}

TEST(IndexTree, HoldsWhatAModelHolds)
{
    for (const JetVersion version : kVersions) {
        const std::size_t half = FormatOf(version).indexPage.room / 2 - 8;
        for (const unsigned seed : {11U, 12U, 13U}) {
            RunAgainstModel(version, seed, 1U << 20, 3000, 2, LongKey);
            RunAgainstModel(version, seed, 20000, 8000, 2, [](std::uint32_t n) { return LongKey(n % 7); });
            RunAgainstModel(version, seed, 1U << 20, 3000, 2,
                            [](std::uint32_t n) { return WideKey(n, 6 + n % 97 * 2); });
            RunAgainstModel(version, seed, 4000, 5000, 4,
                            [&](std::uint32_t n) { return LongishKey(n, half / 3 - n % 7 * (half / 30)); });
            // Two or three entries to a page, by the side of small ones.
            RunAgainstModel(version, seed, 3000, 1500, 4,
                            [&](std::uint32_t n) { return WideKey(n, n % 3 == 0 ? 8 + n % 20 : half - n % 40); });
        }
    }
}

/// Wholes that are saved after their parts have smaller numbers: each key comes before the one before it, up to the
/// next whole. One key in a thousand goes again at once, from beside the next.
TEST(IndexTree, TakesPartsBeforeTheirWholes)
{
    for (const JetVersion version : kVersions) {
        TreeFile file(version);
        std::set<Bytes> expected;
        for (std::uint32_t whole = 0; whole < 6000; whole += 24)
            for (std::uint32_t part = 24; part-- > 0;) {
                const std::uint32_t number = whole + part;
                ASSERT_FALSE(file.tree.Contains(LongKey(number)));
                ASSERT_TRUE(file.tree.Insert(LongKey(number), RowOf(number)));
                ASSERT_FALSE(file.tree.Insert(LongKey(number), RowOf(number + 1)));
                expected.insert(EntryOf(LongKey(number), RowOf(number)));
                if (number % 1000 == 7)
                    ASSERT_TRUE(file.tree.Remove(LongKey(number), RowOf(number + 1)));
                else
                    expected.insert(EntryOf(LongKey(number), RowOf(number + 1)));
                ASSERT_TRUE(file.tree.Contains(LongKey(number)));
            }
        CheckTree(file, expected);
    }
}

TEST(IndexTree, RefusesWhatItCannotHold)
{
    TreeFile file(JetVersion::Jet3);
    const std::size_t longest = file.pager->GetFormat().indexPage.room / 2 - 8;
    file.tree.Insert(Bytes(longest, 1), RowOf(1));
    EXPECT_THROW(file.tree.Insert(Bytes(longest + 1, 2), RowOf(2)), Error);
    EXPECT_THROW(file.tree.Insert(Bytes(longest, 1), RowOf(1)), Error); // the entry is there already
    CheckTree(file, {EntryOf(Bytes(longest, 1), RowOf(1))});
}

TEST(IndexTree, KeysBeforeManyThatShareMoreShareTheirPages)
{
    for (const JetVersion version : kVersions) {
        TreeFile file(version);
        std::set<Bytes> expected;
        const auto insert = [&](const Bytes& key, std::uint32_t count) {
            for (std::uint32_t i = 0; i < count; ++i) {
                file.tree.Insert(key, RowOf(i));
                expected.insert(EntryOf(key, RowOf(i)));
            }
        };
        insert(Bytes(20, 0x7F), 1500); // equal keys, packed to a few bytes each
        insert(Bytes(1, 0x00), 20000); // Nulls
        CheckTree(file, expected);
        // Five bytes an entry, unpacked: half as many again are allowed, for pages that splits have left half full.
        EXPECT_LT(file.Levels().back().size(), 20000 * 5 * 2 / file.pager->GetFormat().indexPage.room * 3 / 2);
    }
}

} // namespace

TEST(IndexTree, BytesAreCountedAndCopiedWhateverTheirNumber)
{
    for (std::size_t size = 0; size < 40; ++size)
        for (std::size_t same = 0; same <= size; ++same) {
            Bytes a(size, 0x55), b(size, 0x55);
            if (same != size)
                b[same] ^= 0x80;
            EXPECT_EQ(CountShared(a, b), same) << size;
            Bytes moved(size + 3);
            for (std::size_t i = 0; i < moved.size(); ++i)
                moved[i] = static_cast<Byte>(i);
            CopyBytes(moved.data() + 1, moved.data() + 3, size); // over itself
            for (std::size_t i = 0; i < size; ++i)
                EXPECT_EQ(moved[i + 1], i + 3) << size;
        }
}

} // namespace jet::testing
