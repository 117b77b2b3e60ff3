#include "jet/store/data_page.h"

#include "memory_file.h"

#include <gtest/gtest.h>
#include <random>

namespace jet::testing {

namespace {

struct ModelRow {
    SlotState state = SlotState::Row;
    Bytes bytes;
};

void ExpectHolds(const DataPage& page, const std::vector<ModelRow>& model, const Format& format)
{
    ASSERT_EQ(page.SlotCount(), model.size());
    std::size_t used = format.dataPage.slots;
    for (std::size_t slot = 0; slot < model.size(); ++slot) {
        SCOPED_TRACE("slot " + std::to_string(slot));
        const ByteSpan row = page.Row(slot);
        EXPECT_EQ(page.State(slot), model[slot].state);
        EXPECT_EQ(Bytes(row.begin(), row.end()), model[slot].bytes);
        used += 2 + row.size();
    }
    EXPECT_EQ(page.FreeBytes(), format.pageSize - used);
}

} // namespace

TEST(DataPage, AnySequenceOfChangesKeepsEveryRow)
{
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (const JetVersion version : kBothVersions) {
        const Format& format = FormatOf(version);
        MemoryDisk disk;
        const auto pager = NewPager(disk, version);
        for (int round = 0; round < 20; ++round) {
            const MutablePageRef page = pager->Allocate();
            DataPageEditor::MakeEmpty(page, format, 77);
            DataPageEditor editor(page, format);
            std::vector<ModelRow> model;
            const std::size_t largest = round % 2 == 0 ? 20 : 600;
            for (int step = 0; step < 400; ++step) {
                const std::size_t size = random() % largest;
                const std::size_t slot = model.empty() ? 0 : random() % model.size();
                if (random() % 2 == 0 || model.empty()) {
                    if (!editor.Fits(size))
                        continue;
                    const std::uint8_t added = editor.Append(size);
                    ASSERT_EQ(added, model.size());
                    std::ranges::generate(editor.RowBytes(added), random);
                    model.push_back(
                        {SlotState::Row, Bytes(editor.RowBytes(added).begin(), editor.RowBytes(added).end())});
                } else if (random() % 3 == 0) {
                    editor.Delete(slot);
                    model[slot] = {SlotState::Deleted, {}};
                } else if (model[slot].state != SlotState::Deleted) {
                    const std::size_t room = editor.View().FreeBytes() + model[slot].bytes.size();
                    EXPECT_EQ(editor.Resize(slot, size), size <= room);
                    if (size <= room)
                        model[slot].bytes.resize(size);
                    model[slot].state = step % 2 == 0 ? SlotState::Moved : SlotState::MovedHere;
                    editor.SetState(slot, model[slot].state);
                }
            }
            ASSERT_NO_FATAL_FAILURE(ExpectHolds(editor.View(), model, format));
            // The page's own count of free bytes, and its owner.
            EXPECT_EQ(LoadU16(page.Bytes(), 2), editor.View().FreeBytes());
            EXPECT_EQ(editor.View().Owner(), 77u);
        }
    }
}

TEST(DataPage, TakesNoMoreRowsThanARowNumberCanName)
{
    MemoryDisk disk;
    const auto pager = NewPager(disk, JetVersion::Jet4);
    const MutablePageRef page = pager->Allocate();
    DataPageEditor::MakeEmpty(page, pager->GetFormat(), 2);
    DataPageEditor editor(page, pager->GetFormat());
    while (editor.Fits(0))
        editor.Append(0);
    EXPECT_EQ(editor.View().SlotCount(), kMaxRowsPerPage);
}

TEST(DataPage, SlotsThatContradictThePageAreDamage)
{
    struct Case {
        const char* name;
        std::size_t at; ///< within a Jet 4 page of two rows
        std::uint16_t value;
    };
    const Case cases[] = {
        {"slots overrun the page", 12, 2100},
        {"row begins in the slots", 16, 15},
        {"row begins behind its end", 16, 4095},
        {"the row before begins outside the page", 14, 0x1FFF},
        {"no data page", 0, 0x0102},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        MemoryDisk disk;
        const auto pager = NewPager(disk, JetVersion::Jet4);
        const MutablePageRef page = pager->Allocate();
        DataPageEditor::MakeEmpty(page, pager->GetFormat(), 2);
        DataPageEditor(page, pager->GetFormat()).Append(10);
        DataPageEditor(page, pager->GetFormat()).Append(20);
        StoreU16(page.Data(), c.at, c.value);
        EXPECT_THROW(static_cast<void>(DataPage(page.Bytes(), 5, pager->GetFormat()).Row(1)), Error);
        EXPECT_THROW(static_cast<void>(DataPageEditor(page, pager->GetFormat()).Resize(1, 30)), Error);
    }
}

} // namespace jet::testing
