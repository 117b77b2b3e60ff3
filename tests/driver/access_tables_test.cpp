#include "driver/conversion.h"

#include <gtest/gtest.h>

namespace velmora::testing {
namespace {

TEST(AccessTables, TakeRecordsOfTheDocumentInTheirOwnTypes)
{
    REQUIRE_SHARED(shared);
    Conversion run;
    std::filesystem::copy_file(shared / "corpus/mdb/testV1997.mdb", run.Target());
    std::filesystem::permissions(run.Target(), std::filesystem::perms::owner_write, std::filesystem::perm_options::add);

    run.Xml("<db><Table1><A>hello</A><B> </B><C>12</C><D>abc</D><new>x</new></Table1>"
            "<Table1 F='1.5' G='noon'><A>x</A><D>77</D><G>2024-03-05</G></Table1></db>")
        .Options("-recreate_database attr=\"\"");
    EXPECT_FALSE(run.Run().failed) << run.Error();

    EXPECT_EQ(run.Dump("Table1"), "A|B|C|D|E|F|G|H|I|new\n"
                                  "a|b|0|0|0|0|1981-12-12 00:00:00|0|False|\n"
                                  "abcdefg|hijklmnop|2|222|333333333|444.555|1974-09-21 00:00:00|3.5|True|\n"
                                  "hello||12|0|0|0||0|False|x\n"
                                  "x||0|77|0|1.5|2024-03-05 00:00:00|0|False|\n");
    EXPECT_EQ(run.Said("New column: [Table1].[new]"), 1);
    EXPECT_EQ(run.Said("Relation between [Table1] and [db] left out: There is no field named 'FKEY'"), 1);
    EXPECT_EQ(run.Said("Not imported: 2 of 9 values, the first at //db/Table1/D"), 1);
}

} // namespace
} // namespace velmora::testing
