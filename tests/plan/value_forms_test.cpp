#include "plan/value_forms.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace velmora {
namespace {

TEST(ValueForms, OnlyTheseFormsAreTyped)
{
    const std::pair<ColumnType, std::vector<std::string>> cases[] = {
        {ColumnType::YesNo, {"true", "false"}},
        {ColumnType::Long, {"0", "7", "-7", "10", "2147483647", "-2147483648"}},
        {ColumnType::Double, {"0.0", "1.50", "-0.5", "12345678901234.5", "0.000000123456789012345", "-10.25"}},
        {ColumnType::Date, {"2024-02-29", "0100-01-01", "9999-12-31T23:59:59", "1899-12-30", "2024-03-05T00:00:00"}},
        {ColumnType::Time, {"00:00:00", "23:59:59"}},
        {ColumnType::Text,
         {"True",
          "1 ",
          " 1",
          "007",
          "+1",
          "-0",
          "-",
          "--1",
          "1e5",
          ".5",
          "5.",
          "1,5",
          "NaN",
          "INF",
          "-.5",
          "00.5",
          "2147483648",
          "-2147483649",
          "1.5.",
          "1.5 ",
          "1.2.3",
          "1.5e3",
          "t",
          "falsey",
          "24:00:00",
          "23:59:60",
          "23:60:00",
          "1:02:03",
          "01:02",
          "01:02:03Z",
          "01:02:03.5",
          "2023-02-29",
          "0099-12-31",
          "2024-13-01",
          "2024-00-01",
          "2024-03-05Z",
          "2024-3-5",
          "02024-03-05",
          "-2024-03-05",
          "2024-03-05T24:00:00",
          "2024-03-05 14:07:09",
          "2024-03-05T14:07",
          "2024-03-05T14:07:09.5",
          "2024-03-05T14:07:09+01:00",
          "\xD9\xA1",
          "1234567890123456.0",
          "1.500000000000000",
          "0." + std::string(300, '0') + "1"}},
    };
    for (const auto& [type, values] : cases)
        for (const std::string& value : values) {
            ValuesSeen seen;
            seen.Add(value);
            EXPECT_EQ(seen.NarrowestType(1), type) << value << ": " << NameOf(seen.NarrowestType(1));
            EXPECT_TRUE(Fits(type, value)) << value;
            EXPECT_EQ(Fits(ColumnType::Long, value), type == ColumnType::Long) << value;
        }
}

TEST(ValueForms, AColumnGetsTheNarrowestTypeThatAllOfItsValuesFit)
{
    struct Case {
        std::vector<const char*> values;
        std::int64_t records;
        ColumnType type;
    };
    const Case cases[] = {
        {{}, 3, ColumnType::Text},
        {{"true", "false"}, 2, ColumnType::YesNo},
        {{"true", "false"}, 3, ColumnType::Text},
        {{"true", "1"}, 2, ColumnType::Text},
        {{"1"}, 3, ColumnType::Long},
        {{"1", "1.5"}, 2, ColumnType::Double},
        {{"2147483648", "1.5"}, 2, ColumnType::Text},
        {{"1", "x", "2"}, 3, ColumnType::Text},
        {{"2024-03-05", "2024-03-05T14:07:09"}, 2, ColumnType::Date},
        {{"2024-03-05", "14:07:09"}, 2, ColumnType::Text},
        {{"2024-03-05", "2024"}, 2, ColumnType::Text},
    };
    for (const Case& c : cases) {
        ValuesSeen seen;
        for (const char* const value : c.values)
            seen.Add(value);
        EXPECT_EQ(seen.NarrowestType(c.records), c.type) << ::testing::PrintToString(c.values);
    }
}

} // namespace
} // namespace velmora
