#include "jet/index/index_key.h"

#include "jet/base/text_codec.h"
#include "jet/support.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace jet {
namespace {

using testing::FromHex;
using testing::Hex;

constexpr SortOrder kUp = SortOrder::Ascending;
constexpr SortOrder kDown = SortOrder::Descending;
const Format& kJet3 = FormatOf(JetVersion::Jet3);
const Format& kJet4 = FormatOf(JetVersion::Jet4);

std::string KeyHex(const Format& format, ColumnType type, SortOrder order, std::optional<ByteSpan> stored)
{
    Bytes key;
    AppendKey(key, format, {type, order, {}}, stored);
    return Hex(key);
}

TEST(IndexKey, ValuesAreWrittenAsAccessWritesThem)
{
    struct Case {
        const char* name;
        ColumnType type;
        SortOrder order;
        const char* stored; ///< nullptr is Null
        const char* key;
    };
    const Case cases[] = {
        {"Long", ColumnType::Long, kUp, "45 2B 00 00", "7F 80 00 2B 45"},
        {"negative Long", ColumnType::Long, kUp, "FF FF FF FF", "7F 7F FF FF FF"},
        {"Long, descending", ColumnType::Long, kDown, "01 00 00 00", "80 7F FF FF FE"},
        {"Null", ColumnType::Long, kUp, nullptr, "00"},
        {"Null, descending", ColumnType::Text, kDown, nullptr, "FF"},
        {"Byte", ColumnType::Byte, kDown, "01", "80 FE"},
        {"Integer", ColumnType::Integer, kUp, "00 80", "7F 00 00"},
        {"True", ColumnType::Boolean, kUp, "01", "7F 00"},
        {"False, descending", ColumnType::Boolean, kDown, "00", "80 00"},
        {"a boolean that is not there is False", ColumnType::Boolean, kUp, nullptr, "7F FF"},
        {"Double -349809345.0", ColumnType::Double, kUp, "00 00 00 C1 AA D9 B4 C1", "7F 3E 4B 26 55 3E FF FF FF"},
        {"Double 903809.0, descending", ColumnType::Double, kDown, "00 00 00 00 02 95 2B 41",
         "80 3E D4 6A FD FF FF FF FF"},
        {"Currency -8540982423.4530", ColumnType::Currency, kUp, "DE 23 C4 F9 51 B2 FF FF",
         "7F 7F FF B2 51 F9 C4 23 DE"},
        {"Numeric 345400, descending", ColumnType::Numeric, kDown, "00 00 00 00 00 00 00 00 00 00 00 00 00 38 45 05 00",
         "80 FF FF FF FF FF FF FF FF FF FF FF FF FF FF FA BA C7"},
        {"Numeric -354560, descending", ColumnType::Numeric, kDown,
         "80 00 00 00 00 00 00 00 00 00 00 00 00 00 69 05 00", "80 00 00 00 00 00 00 00 00 00 00 00 00 00 00 05 69 00"},
        {"GUID", ColumnType::Guid, kUp, "8F A2 5F 07 A5 71 32 40 B2 73 54 19 F4 B0 7E 59",
         "7F 07 5F A2 8F 71 A5 40 32 09 B2 73 54 19 F4 B0 7E 59 08"},
        {"binary of 9 bytes, descending", ColumnType::Binary, kDown, "01 02 03 04 05 06 07 08 09",
         "80 FE FD FC FB FA F9 F8 F7 09 F6 FF FF FF FF FF FF FF FE"},
        {"empty binary", ColumnType::Binary, kUp, "", "7F"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Bytes stored = FromHex(c.stored == nullptr ? "" : c.stored);
        EXPECT_EQ(KeyHex(kJet4, c.type, c.order, c.stored == nullptr ? std::nullopt : std::optional<ByteSpan>(stored)),
                  c.key);
    }
}

TEST(IndexKey, TextIsWrittenAsAccessWritesIt)
{
    struct Case {
        const Format& format;
        SortOrder order;
        const char* text;
        const char* key;
    };
    const Case cases[] = {
        {kJet3, kUp, "Plutzer Lebensmittelgroßmärkte AG",
         "7F 73 6D 78 77 7E 66 75 11 6D 66 61 66 70 76 6F 6A 77 77 66 6D 68 75 72 76 76 6F 60 75 6C 77 66 11 60 68 "
         "02 22 22 22 22 22 60"},
        {kJet3, kUp, "  ", "7F 00"},
        {kJet4, kUp, "only ascii chars ", "7F 64 62 5E 76 07 4A 6B 4D 59 59 07 4D 57 4A 69 6B 01 00"},
        {kJet4, kUp, "ümlaut", "7F 6F 60 5E 4A 6F 6D 01 13 00"},
        {kJet4, kUp, "ääkkösiä", "7F 4A 4A 5C 5C 64 6B 59 4A 01 13 13 02 02 13 02 02 13 00"},
        {kJet4, kUp, "AAßAA", "7F 4A 4A 6B 6B 4A 4A 01 00"},
        {kJet4, kUp, "Мир", "7F 79 43 79 3B 79 48 01 00"},
        {kJet4, kUp, "漢字仮名交じり文",
         "7F C0 B6 AC AC A0 0D A5 47 9F BE 7F 13 7F 43 B6 F6 01 02 02 02 02 02 03 01 01 FF 02 80 FF 80 00"},
        {kJet4, kUp, "A-", "7F 4A 01 01 01 01 80 0B 06 82 00"},
        {kJet4, kUp, "AA-'AA", "7F 4A 4A 4A 4A 01 01 01 01 80 0F 06 82 80 0F 06 80 00"},
        {kJet4, kUp, "-Á-Á-", "7F 4A 4A 01 0E 0E 01 01 01 80 07 06 82 80 0B 06 82 80 0F 06 82 00"},
        {kJet4, kDown, "AAÍAA", "80 B5 B5 A6 B5 B5 FE FD FD F1 FF 00"},
        {kJet4, kDown, "stuff", "80 94 92 90 AC AC FE FF 00"},
        {kJet4, kUp, "", "7F 01 00"},
        {kJet4, kUp, "😀", "7F 01 00"}, // surrogates weigh nothing
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        for (const bool compress : {false, true}) {
            Bytes stored;
            AppendText(stored, c.format, c.text, compress);
            EXPECT_EQ(KeyHex(c.format, ColumnType::Text, c.order, stored), c.key);
        }
        if (c.order == kUp) {
            EXPECT_EQ(Hex(TextKey(c.format, c.text)), c.key);
        }
    }
}

TEST(IndexKey, ANameHasTheKeyOfTheSameTextInAColumn)
{
    for (int code = 1; code < 0x80; ++code) {
        const char c = static_cast<char>(code);
        for (const std::string& name : {"a" + std::string(1, c) + "b", "ab" + std::string(1, c), std::string(70, c)}) {
            SCOPED_TRACE(name);
            Bytes stored;
            AppendText(stored, kJet4, name, false);
            EXPECT_EQ(Hex(TextKey(kJet4, name)), KeyHex(kJet4, ColumnType::Text, kUp, stored));
        }
    }
}

TEST(IndexKey, OnlyTheFirst255CharactersOfATextCount)
{
    for (const Format* format : {&kJet3, &kJet4}) {
        const std::string longest(255, 'x');
        EXPECT_EQ(TextKey(*format, longest), TextKey(*format, longest + "yz"));
        EXPECT_NE(TextKey(*format, longest), TextKey(*format, longest.substr(1)));
    }
    // The longest key there is: every character with four bytes, and hidden ones between.
    EXPECT_EQ(TextKey(kJet4, std::string(255, '-')).size(), 1 + 1 + 2 + 1 + 255 * 4 + 1u);
}

TEST(IndexKey, WhatCannotBeEncodedIsRefused)
{
    struct Case {
        const char* name;
        KeyColumn column;
        std::size_t size;
        ErrorNumber number;
        const char* names; ///< what the message must name
    };
    const Case cases[] = {
        {"another sort order", {ColumnType::Text, kUp, {1053, 0}}, 4, ErrorNumber::UnrecognizedFormat, "1053"},
        {"a later General", {ColumnType::Memo, kUp, {1033, 1}}, 4, ErrorNumber::UnrecognizedFormat, "version 1"},
        {"a Long of 3 bytes", {ColumnType::Long, kUp, {}}, 3, ErrorNumber::NotADatabase, "3 bytes"},
        {"a GUID of 15 bytes", {ColumnType::Guid, kUp, {}}, 15, ErrorNumber::NotADatabase, "15 bytes"},
        {"OLE", {ColumnType::Ole, kUp, {}}, 4, ErrorNumber::NotADatabase, "type 11"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const auto append = [&] {
            Bytes key;
            AppendKey(key, kJet4, c.column, Bytes(c.size));
        };
        EXPECT_EQ(testing::ErrorOf(append), c.number);
        const std::string message = testing::MessageOf(append);
        EXPECT_NE(message.find(c.names), std::string::npos) << message;
    }
}

} // namespace
} // namespace jet
