#include "jet/index/index_tree.h"

#include "jet/error.h"
#include "jet/index/tree_checker.h"
#include "jet/store/data_page.h"

#include <functional>
#include <random>

namespace jet {
namespace {

using testing::CheckTree;
using testing::TreeFile;

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
    for (const JetVersion version : testing::kBothVersions) {
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
    for (const JetVersion version : testing::kBothVersions) {
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

TEST(IndexTree, NodesThatLeaveOutTheirTailsDoNoHarm)
{
    for (const JetVersion version : testing::kBothVersions) {
        TreeFile file(version);
        const Format& format = file.pager->GetFormat();
        const auto keyOf = [&](std::uint32_t n) { return LongishKey(n * 7919 % 2000, format.indexPage.room / 6); };
        for (std::uint32_t i = 0; i < 1500; ++i)
            file.tree.Insert(keyOf(i), RowOf(i));
        const auto levels = file.Levels();
        ASSERT_GE(levels.size(), 4U);
        for (std::size_t height = 0; height + 2 < levels.size(); ++height) {
            for (const PageNumber number : levels[height]) {
                // Each entry becomes the last one on its child's page.
                IndexPageEditor node(file.pager->Write(number), format);
                EntryList entries;
                for (std::size_t place = node.View().Begin(); place != node.View().End();
                     place = node.View().After(place)) {
                    Bytes entry;
                    const PageNumber child = node.View().Child(place);
                    const PageRef ref = file.pager->Read(child);
                    const IndexPage page(ref, format);
                    page.CopyEntry(page.Before(page.End()), entry);
                    StoreBigU32(entry, entry.size() - 4, child);
                    entries.Add(entry);
                }
                node.SetEntries(entries, 0, entries.Count(), Packed(format, entries, 0, entries.Count()));
            }
        }
        std::uint32_t found = 0;
        std::uint32_t refused = 0;
        for (std::uint32_t i = 0; i < 1500; ++i)
            found += file.tree.Contains(keyOf(i)) ? 1 : 0;
        EXPECT_GT(found, 500U);
        for (std::uint32_t i = 0; i < 4000; ++i) {
            try {
                i % 3 == 0 ? (void)file.tree.Insert(keyOf(i % 2000), RowOf(i))
                           : (void)file.tree.Remove(keyOf(i % 1500), RowOf(i % 1500));
            } catch (const Error&) {
                ++refused;
            }
        }
        EXPECT_LT(refused, 4000U);
    }
}

TEST(IndexTree, DamagedTreesEndInAnError)
{
    for (const char* damage : {"a child that is its parent", "leaves in a circle", "a node without children"}) {
        SCOPED_TRACE(damage);
        TreeFile file(JetVersion::Jet4);
        for (std::uint32_t i = 0; i < 2000; ++i)
            file.tree.Insert(LongKey(i), RowOf(i));
        const PageNumber firstLeaf = file.Levels().back().front();
        IndexPageEditor root(file.pager->Write(file.root), file.pager->GetFormat());
        if (damage[0] == 'a' && damage[2] == 'c')
            root.SetTail(file.root);
        else if (damage[0] == 'l')
            IndexPageEditor(file.pager->Write(file.Levels().back().back()), file.pager->GetFormat()).SetNext(firstLeaf);
        else
            IndexPageEditor::MakeEmpty(file.pager->Write(file.root), file.pager->GetFormat(), 7, 1);
        IndexTree tree(*file.pager, file.root, file.map.Record(), testing::kOwner);
        EXPECT_THROW(
            {
                for (auto at = tree.First(); !at.AtEnd(); at.Next()) {
                }
                tree.Insert(LongKey(5000), RowOf(5000));
            },
            Error);
    }
}

} // namespace
} // namespace jet
