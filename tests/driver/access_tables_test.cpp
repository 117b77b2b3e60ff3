#include "driver/conversion.h"

namespace velmora::testing {
namespace {

TEST(AccessTables, TakeRecordsOfTheDocumentInTheirOwnTypes)
{
    REQUIRE_SHARED(shared);
    Conversion run;
    CopyOf(shared / "corpus/mdb/testV1997.mdb", run.Target());

    run.Xml("<db><Table1><A>hello</A><B> </B><C>12</C><D>abc</D><new>x</new></Table1>"
            "<Table1 F='1.5' G='noon'><A>x</A><D>77</D><G>2024-03-05T12:00:00.2Z</G></Table1></db>")
        .Options("-recreate_database attr=\"\"");
    EXPECT_FALSE(run.Run().failed) << run.Error();

    EXPECT_EQ(run.Dump("Table1"), "A|B|C|D|E|F|G|H|I|new\n"
                                  "a|b|0|0|0|0|1981-12-12 00:00:00|0|False|\n"
                                  "abcdefg|hijklmnop|2|222|333333333|444.555|1974-09-21 00:00:00|3.5|True|\n"
                                  "hello||12||0|0||0|False|x\n"
                                  "x||0|77|0|1.5|2024-03-05 12:00:00|0|False|\n");
    EXPECT_EQ(run.Said("New column: [Table1].[new]"), 1);
    EXPECT_EQ(run.Said("Relation between [Table1] and [db] left out: There is no field named 'FKEY'"), 1);
    EXPECT_EQ(run.Said("Not imported: 2 of 9 values, the first at //db/Table1/D (+complete imports them)"), 1);
    EXPECT_EQ(run.Said("Time zones left out, the times are as written: [Table1].[G]"), 1);

    // What was refused stays empty when the record is begun anew, because a text of it makes its column a memo.
    const std::string text(300, 'x');
    run.Xml("<db><Table1><A>z</A><D>abc</D><G>2024-03-05T12:00:00+01:00</G><new>" + text + "</new></Table1></db>");
    EXPECT_FALSE(run.Run().failed) << run.Error();
    EXPECT_TRUE(run.Dump("Table1").ends_with("\nz||0||0|0|2024-03-05 12:00:00|0|False|" + text + "\n"))
        << run.Dump("Table1");
}

} // namespace
} // namespace velmora::testing
