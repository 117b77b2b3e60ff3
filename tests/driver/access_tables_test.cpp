#include "driver/conversion.h"
#include "jet/connection.h"

namespace velmora::testing {
namespace {

const std::string kLong(300, 'L');

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
    EXPECT_EQ(run.Said("Not imported: 2 of 9 values, the first at //db/Table1/D"), 1);
    EXPECT_EQ(run.Said("Time zones left out, the times are as written: [Table1].[G]"), 1);

    // What was refused stays empty when the record is begun anew, because a text of it makes its column a memo.
    const std::string text(300, 'x');
    run.Xml("<db><Table1><A>z</A><D>abc</D><G>2024-03-05T12:00:00+01:00</G><new>" + text + "</new></Table1></db>");
    EXPECT_FALSE(run.Run().failed) << run.Error();
    EXPECT_TRUE(run.Dump("Table1").ends_with("\nz||0||0|0|2024-03-05 12:00:00|0|False|" + text + "\n"))
        << run.Dump("Table1");
}

/// Names and sizes of a table's text columns, in order; of memos the name alone.
std::string TextColumns(const std::filesystem::path& database, std::string_view table)
{
    const auto connection = jet::Connection::Open(database);
    const jet::Recordset records = connection->OpenTable(table);
    std::string text;
    for (std::size_t field = 0; field < records.FieldCount(); ++field) {
        if (records.IsMemo(field))
            text += records.FieldName(field) + " ";
        else if (records.MaxCharacters(field) > 0)
            text += records.FieldName(field) + "(" + std::to_string(records.MaxCharacters(field)) + ") ";
    }
    return text;
}

TEST(AccessTables, AColumnThatAccessMadeShorterGrowsInItsPlaceFirst)
{
    REQUIRE_SHARED(shared);
    for (const char* file : {"delColTestV1997.mdb", "delColTestV2000.mdb"}) {
        SCOPED_TRACE(file);
        Conversion run;
        CopyOf(shared / "corpus/mdb" / file, run.Target());
        const std::string text(100, 'x');
        run.Options("-recreate_database -relations");
        run.Xml("<db><Table1><id>7</id><data>" + text + "</data><data2>short</data2></Table1></db>");
        EXPECT_FALSE(run.Run().failed) << run.Error();
        EXPECT_EQ(run.Said("Column widened: [Table1].[data], 100 characters at //db/Table1/data"), 1);
        EXPECT_EQ(run.Said("Column widened"), 1);
        EXPECT_EQ(TextColumns(run.Target(), "Table1"), "data(255) data2(50) ");

        run.Xml("<db><Table1><id>8</id><data>" + kLong + "</data><data2>" + text + "</data2></Table1></db>");
        EXPECT_FALSE(run.Run().failed) << run.Error();
        EXPECT_EQ(run.Said("Column widened"), 2);
        EXPECT_EQ(TextColumns(run.Target(), "Table1"), "data2(255) data ");
        EXPECT_EQ(run.Dump("Table1"), "id|id2|data2|data\n0|2|foo2|foo\n3|5|bar2|bar\n7|0|short|" + text + "\n8|0|" +
                                          text + "|" + kLong + "\n");
    }
}

} // namespace
} // namespace velmora::testing
