#include "driver/conversion.h"
#include "schema/database_session.h"

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

TEST(AccessTables, WhatBreaksARuleIsNamedWithItsRecord)
{
    struct Case {
        const char* name;
        std::vector<const char*> design;
        const char* record;
        std::vector<const char*> said;
    };
    const Case cases[] = {
        {"a unique index",
         {"CREATE TABLE [p] ([n] String)", "CREATE UNIQUE INDEX [one_n] ON [p] ([n])"},
         "<p><n>1</n></p>",
         {"3022 ", "index [one_n] of [p], n = \"1\"; record 2 of //r/p, line 3)"}},
        {"a primary key of two columns",
         {"CREATE TABLE [p] ([n] String, [m] Long)", "CREATE UNIQUE INDEX [both] ON [p] ([n], [m]) WITH PRIMARY"},
         "<p><n>2</n></p>",
         {"3058 ", "index [both] of [p], n = \"2\", m = Null; record 2 of //r/p"}},
        {"a required column",
         {"CREATE TABLE [p] ([n] String, [m] Long NOT NULL)"},
         "<p><n>2</n></p>",
         {"3314 ", "field [p].[m], m = Null; record 2 of //r/p"}},
        {"a relation",
         {"CREATE TABLE [q] ([k] String)", "CREATE UNIQUE INDEX [q_k] ON [q] ([k]) WITH PRIMARY",
          "CREATE TABLE [p] ([n] String, [m] Long)",
          "ALTER TABLE [p] ADD CONSTRAINT [p_of_q] FOREIGN KEY ([n]) REFERENCES [q] ([k])"},
         "",
         {"3201 ", "relation [p_of_q] of [p], n = \"1\"; record 1 of //r/p", "was there before"}},
        {"a name that a column has",
         {"CREATE TABLE [p] ([N] String, [m] Long)"},
         "",
         {"3380 ", "[n] for //r/p/n, and [N], which the table has", "t="}},
        {"a marker column in an index",
         {"CREATE TABLE [p] ([n] String, [m] Long, [MASTER_TABLE] String)",
          "CREATE INDEX [mine] ON [p] ([MASTER_TABLE])"},
         "",
         {"3280 ", "[MASTER_TABLE] for //r/p", "the index [mine] of [p] needs it"}},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        DatabaseSession session;
        session.Create(run.Target(), jet::JetVersion::Jet4, jet::Existing::Refuse);
        for (const char* sql : c.design)
            session.ExecuteSql(sql);
        session.Commit();
        session.Close();
        run.Options("-recreate_database").Xml(std::string("<r>\n<p><n>1</n><m>1</m></p>\n") + c.record + "</r>");
        EXPECT_TRUE(run.Run().failed);
        for (const char* part : c.said)
            EXPECT_NE(run.Error().find(part), std::string::npos) << part << "\n in " << run.Error();
    }
}

} // namespace
} // namespace velmora::testing
