#include "jet/table/row_codec.h"

#include "jet/support.h"

#include <gtest/gtest.h>

namespace jet::testing {

namespace {

struct Layout {
    TableDef def;

    explicit Layout(JetVersion version) { def.format = &FormatOf(version); }
    void Add(ColumnType type, std::uint16_t size, std::uint16_t fixedOffset = 0)
    {
        Column column;
        column.name = "c";
        column.type = type;
        column.size = size;
        column.number = def.columnsEver++;
        if (type == ColumnType::Text) {
            column.variableIndex = def.variableColumnsEver++;
        } else {
            column.flags = column_flags::kFixed;
            column.fixedOffset = fixedOffset;
        }
        def.columns.push_back(column);
    }
};

Bytes Encode(const TableDef& def, const std::vector<RowField>& fields)
{
    const RowLayout layout(def);
    Bytes row(layout.Measure(fields), 0xEE);
    layout.Encode(fields, row);
    return row;
}

} // namespace

TEST(RowCodec, RowsAreWrittenAsAccessWritesThem)
{
    const Bytes number = {1, 2, 3, 4};
    const Bytes text = {'A', 'b'};
    struct Case {
        const char* name;
        JetVersion version;
        bool number, text, flag;
        const char* bytes;
    };
    const Case cases[] = {
        {"Jet 4", JetVersion::Jet4, true, true, true, "03 00 01 02 03 04 41 62 08 00 06 00 01 00 07"},
        {"Jet 4, all Null", JetVersion::Jet4, false, false, false, "03 00 00 00 00 00 06 00 06 00 01 00 00"},
        {"Jet 3", JetVersion::Jet3, true, true, true, "03 01 02 03 04 41 62 07 05 01 07"},
        {"Jet 3, text Null", JetVersion::Jet3, true, false, false, "03 01 02 03 04 05 05 01 01"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Layout layout(c.version);
        layout.Add(ColumnType::Long, 4);
        layout.Add(ColumnType::Text, 100);
        layout.Add(ColumnType::Boolean, 1);
        EXPECT_EQ(Hex(Encode(layout.def, {{number, c.number}, {text, c.text}, {{}, c.flag}})), c.bytes);
    }
}

TEST(RowCodec, ARowOfBooleansHasRoomForAPointer)
{
    for (const JetVersion version : {JetVersion::Jet3, JetVersion::Jet4}) {
        Layout layout(version);
        layout.Add(ColumnType::Boolean, 1);
        const Bytes row = Encode(layout.def, {{{}, true}});
        EXPECT_EQ(row.size(), 4u);
        EXPECT_TRUE(RowView(row, layout.def, 1).IsSet(layout.def.columns[0]));
    }
}

TEST(RowCodec, JumpTableNamesTheFirstFieldBehindEach256Bytes)
{
    // 45 fields: field 14 begins at 256, field 23 behind 512, the end behind 768; the row has more than 1024 bytes.
    Layout layout(JetVersion::Jet3);
    std::vector<Bytes> texts(45);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        layout.Add(ColumnType::Text, 255);
        texts[i].assign(i < 13 ? 19 : i == 13 ? 8 : i < 23 ? 29 : i < 44 ? 8 : 300, 'x');
    }
    std::vector<RowField> fields;
    for (const Bytes& text : texts)
        fields.push_back({text, true});
    const Bytes row = Encode(layout.def, fields);
    ASSERT_GT(row.size(), 1024u);
    EXPECT_EQ(Hex(ByteSpan(row).last(11).first(5)), "FF 2D 17 0E 2D");
    const RowView view(row, layout.def, 1);
    for (std::size_t i = 0; i < texts.size(); ++i)
        EXPECT_EQ(view.Field(layout.def.columns[i]).value().size(), texts[i].size()) << "field " << i;
}

TEST(RowCodec, EveryColumnHasItsBit)
{
    for (const JetVersion version : {JetVersion::Jet3, JetVersion::Jet4}) {
        Layout layout(version);
        std::vector<RowField> fields;
        for (std::size_t i = 0; i < 130; ++i) {
            layout.Add(ColumnType::Boolean, 1);
            fields.push_back({{}, i % 3 == 0});
        }
        const Bytes row = Encode(layout.def, fields);
        const RowView view(row, layout.def, 1);
        for (std::size_t i = 0; i < fields.size(); ++i)
            EXPECT_EQ(view.IsSet(layout.def.columns[i]), fields[i].isSet) << "field " << i;
    }
}

} // namespace jet::testing
