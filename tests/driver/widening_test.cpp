#include "driver/conversion.h"

namespace velmora::testing {

namespace {

const std::string kLong(300, 'L');

TEST(Widening, TextsTooLongForTheirColumnsArrive)
{
    struct Case {
        const char* name;
        std::string xml;
        const char* table;
        std::string dump;
    };
    const Case cases[] = {
        {"a leaf, with a list before it: key and list stay, the counter has no gap",
         "<r><p><t>a</t><t>b</t><n>s</n></p><p><t>c</t><t>d</t><n>" + kLong + "</n><m>x</m></p><p><n>z</n></p></r>",
         "p", "PKEY|FKEY|m|n\n1|1||s\n2|1|x|" + kLong + "\n3|1||z\n"},
        {"the list of that record",
         "<r><p><t>a</t><t>b</t><n>s</n></p><p><t>c</t><t>d</t><n>" + kLong + "</n><m>x</m></p><p><n>z</n></p></r>",
         "t", "PKEY|FKEY|t\n1|1|a\n2|1|b\n3|2|c\n4|2|d\n"},
        {"none for what is a memo from the start; digits count as a number, whose size is no length",
         "<r><p><a>" + std::string(255, 'x') + "</a><b>" + std::string(256, 'x') + "</b><c>" + std::string(300, '1') +
             "</c><d>1</d></p></r>",
         "p",
         "PKEY|FKEY|a|b|d|c\n1|1|" + std::string(255, 'x') + "|" + std::string(256, 'x') + "|1|" +
             std::string(300, '1') + "\n"},
        {"an attribute", "<r><p k=\"s\"><n>1</n></p><p k=\"" + kLong + "\"><n>2</n></p></r>", "p",
         "PKEY|FKEY|n|attr_k\n1|1|1|s\n2|1|2|" + kLong + "\n"},
        {"a repeated leaf, while its owner is not yet saved",
         "<r><p><n>1</n><t>a</t><t>" + kLong + "</t><t>c</t></p></r>", "t",
         "PKEY|FKEY|t\n1|1|a\n2|1|" + kLong + "\n3|1|c\n"},
        {"a record of attributes alone", "<r><p><c k=\"s\"/></p><p><c k=\"" + kLong + "\"/></p></r>", "c",
         "PKEY|FKEY|attr_k\n1|1|s\n2|2|" + kLong + "\n"},
        {"a repeated leaf's attribute", "<r><n>1</n><c k=\"s\"/><c k=\"" + kLong + "\"/></r>", "c",
         "PKEY|FKEY|c|attr_k\n1|1||s\n2|1||" + kLong + "\n"},
        {"a column named otherwise than the tag", "<r><p><x:n.o>s</x:n.o></p><p><x:n.o>" + kLong + "</x:n.o></p></r>",
         "p", "PKEY|FKEY|n_o\n1|1|s\n2|1|" + kLong + "\n"},
        {"two columns in one record", "<r><p><a>s</a><b>s</b></p><p><a>" + kLong + "</a><b>" + kLong + "</b></p></r>",
         "p", "PKEY|FKEY|a|b\n1|1|s|s\n2|1|" + kLong + "|" + kLong + "\n"},
        {"through one of two sinks on a table",
         "<r><x:p><n>s</n></x:p><y:p><n>" + kLong + "</n><m>1</m></y:p><x:p><n>t</n></x:p></r>", "p",
         "PKEY|FKEY|m|n\n1|1||s\n2|1|1|" + kLong + "\n3|1||t\n"},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        const RunOutcome outcome = run.Xml(c.xml).Run();
        EXPECT_FALSE(outcome.failed) << run.Error();
        EXPECT_EQ(run.Dump(c.table), c.dump);
        EXPECT_EQ(run.Said("Not imported"), 0);
    }
}

TEST(Widening, AMappingToAnotherColumnsNameLosesNothing)
{
    // The tag "a" goes to the column "b", and "c" to "a": the column of the tag's own name is widened first, then the
    // one that is meant.
    Conversion run;
    run.Map("a", "b").Map("c", "a");
    run.Xml("<r><p><a>s</a><c>s</c></p><p><a>" + kLong + "</a><c>t</c></p></r>");
    EXPECT_FALSE(run.Run().failed) << run.Error();
    EXPECT_EQ(run.Dump("p"), "PKEY|FKEY|a|b\n1|1|s|s\n2|1|t|" + kLong + "\n");
}

TEST(Widening, ARecordTooLargeForAPageKeepsAllItsValues)
{
    constexpr int kColumns = 40;
    std::string record;
    for (int column = 10; column < 10 + kColumns; ++column) {
        const std::string text(200, static_cast<char>('A' + column % 26));
        const std::string tag = "c" + std::to_string(column);
        record += "<" + tag + ">" + text + "</" + tag + ">";
    }
    Conversion run;
    run.Xml("<r><p>" + record + "<last>1</last></p><p><last>2</last></p></r>");
    const RunOutcome outcome = run.Run();
    EXPECT_FALSE(outcome.failed) << run.Error();
    EXPECT_EQ(run.Said("Not imported"), 0);
    const std::string dump = run.Dump("p");
    for (int column = 10; column < 10 + kColumns; ++column)
        EXPECT_NE(dump.find(std::string(200, static_cast<char>('A' + column % 26))), std::string::npos) << column;
    ASSERT_EQ(outcome.tables.size(), 2u);
    EXPECT_EQ(outcome.tables[0].table, "p");
    EXPECT_EQ(outcome.tables[0].records, 2);
    EXPECT_GT(outcome.tables[0].widenedColumns, 0);
}

TEST(Widening, EveryColumnOfAWideTableMayBeWidened)
{
    constexpr int kColumns = 140; // each widening uses two of the 255 column numbers of a table
    std::string shorts, longs;
    for (int column = 0; column < kColumns; ++column) {
        const std::string tag = "c" + std::to_string(column);
        shorts += "<" + tag + ">s</" + tag + ">";
        longs += "<" + tag + ">" + kLong + "</" + tag + ">";
    }
    Conversion run;
    const RunOutcome outcome = run.Xml("<r><p>" + shorts + "</p><p>" + longs + "</p></r>").Run();
    EXPECT_FALSE(outcome.failed) << run.Error();
    EXPECT_EQ(run.Said("Not imported"), 0);
}

} // namespace

} // namespace velmora::testing
