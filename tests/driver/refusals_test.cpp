// What the database refuses ends the run, with all that a user needs to know.

#include "driver/conversion.h"
#include "jet/connection.h"

namespace velmora::testing {
namespace {

void ExpectParts(const Conversion& run, const std::string& parts)
{
    for (const std::string& part : Parts(parts))
        EXPECT_NE(run.Error().find(part), std::string::npos) << part << "\n in " << run.Error();
}

void MakeDatabase(const Conversion& run, jet::JetVersion version, const std::string& statements)
{
    const auto made = jet::Connection::Create(run.Target(), version);
    for (const std::string& sql : Parts(statements))
        made->Execute(sql);
    made->Commit();
}

std::string Element(const std::string& tag, const std::string& content)
{
    return "<" + tag + ">" + content + "</" + tag + ">";
}

TEST(Refusals, OfATableNamePathReasonAndTheSwitchThatHelps)
{
    const std::string longName(70, 'n');
    std::string manyTables, manyColumns;
    for (int column = 0; column < 254; ++column)
        manyColumns += Element("c" + std::to_string(column), "1");
    for (int table = 0; table < 17'000; ++table)
        manyTables += Element("t" + std::to_string(table), "<x/>");
    struct Case {
        const char* name;
        const char* options;
        std::string inside; ///< the document element
        const char* said;   ///< parts, separated by bars
    };
    const Case cases[] = {
        {"columns that differ in case only", "", "<p><Name>1</Name><name>2</name></p>",
         "3191 |[name] for //r/p/name, and [Name] for //r/p/Name|t="},
        {"columns that the sort order takes for one", "", "<p><gro\xC3\x9F>1</gro\xC3\x9F><x>1</x><GROSS>2</GROSS></p>",
         "3191 |[GROSS] for //r/p/GROSS, and [gro\xC3\x9F] for //r/p/gro\xC3\x9F|t="},
        {"columns whose accented letters differ in case", "ver=97",
         "<p><\xC3\xA9>1</\xC3\xA9><x>1</x><\xC3\x89>2</\xC3\x89></p>",
         "3191 |[\xC3\x89] for //r/p/\xC3\x89, and [\xC3\xA9] for //r/p/\xC3\xA9|t="},
        {"a column like a key", "", "<p><pkey>1</pkey></p>", "3191 |//r/p/pkey, and the key column [PKEY]|pkey="},
        {"too many columns", "", Element("p", manyColumns), "3190 |[p] for //r/p|-attributes"},
        {"an index's name too long", "", Element(longName.substr(10), "<x>1</x>"),
         "3125 |nnn_PKEY] for //r/n|t=|pkey="},
        {"a column's name too long", "", Element("p", Element(longName, "1")), "//r/p/nnn|[nnn|t="},
        {"a table's name too long", "", Element(longName, "<x>1</x>"), "//r/nnn|[nnn|t="},
        {"a key name that the database refuses", "pkey=a!b", "<p><x>1</x></p>", "[a!b]|pkey="},
        {"more tables and relations than a database holds", "", manyTables, "17001 tables|-relations"},
        {"wrapping elements inside each other", "+skip_empty", "<n>1</n><g><h><p><x>1</x></p></h></g>",
         "9 Subscript out of range|//r/g/h|//r/g;|+skip_empty"},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        EXPECT_TRUE(run.Options(c.options).Xml(Element("r", c.inside)).Run().failed);
        ExpectParts(run, c.said);
    }
}

TEST(Refusals, OfARelationNameBothPaths)
{
    // The last entry of the model shares its namesake's table, whose relation goes to another parent.
    const std::string group = "<g><n>x</n><item z=\"1\">p</item><item z=\"2\">q</item></g>";
    const std::string document = Element("r", "<item><v>a</v></item>" + group + group);
    Conversion run;
    EXPECT_TRUE(run.Options("-attributes").Xml(document).Run().failed);
    ExpectParts(run, "3201 |relation [item_LINK] of [item], FKEY = \"2\"; record 3 of //r/g/item|a record of "
                     "//r/g,|-relations");
    EXPECT_EQ(run.Dump("item"), "PKEY|FKEY|v|item\n1|1|a|\n2|1||p\n3|1||q\n");
    EXPECT_EQ(run.Dump("g"), "PKEY|FKEY|n\n1|1|x\n") << "the record whose list was refused is not there";

    Conversion without;
    EXPECT_FALSE(without.Options("-attributes -relations").Xml(document).Run().failed);
    EXPECT_EQ(without.Dump("item"), "v|item\na|\n|p\n|q\n|p\n|q\n");
}

TEST(Refusals, OfARuleNameItsRecord)
{
    struct Case {
        const char* name;
        const char* design; ///< statements, separated by bars
        const char* record;
        const char* said;
        const char* complete; ///< what the database has then with +complete
    };
    const Case cases[] = {
        {"a unique index", "CREATE TABLE [p] ([n] String)|CREATE UNIQUE INDEX [one_n] ON [p] ([n])", "<p><n>1</n></p>",
         "3022 |index [one_n] of [p], n = \"1\"; record 2 of //r/p, line 3)",
         "p(n|m|n_text): 1|1| / ||1\nr(PKEY|FKEY): 1|\n"},
        {"a primary key of two columns",
         "CREATE TABLE [p] ([n] String, [m] Long)|CREATE UNIQUE INDEX [both] ON [p] ([n], [m]) WITH PRIMARY",
         "<p><n>2</n></p>", "3058 |index [both] of [p], n = \"2\", m = Null; record 2 of //r/p",
         "p(n|m):\np_2(PKEY|FKEY|n|m): 1|1|1|1 / 2|1|2|\nr(PKEY|FKEY): 1|\np_2.FKEY -> r.PKEY\n"},
        {"a required column", "CREATE TABLE [p] ([n] String, [m] Long NOT NULL)", "<p><n>2</n></p>",
         "3314 |field [p].[m], m = Null; record 2 of //r/p",
         "p(n|m):\np_2(PKEY|FKEY|n|m): 1|1|1|1 / 2|1|2|\nr(PKEY|FKEY): 1|\np_2.FKEY -> r.PKEY\n"},
        {"a required number", "CREATE TABLE [p] ([n] String, [m] Long NOT NULL)", "<p><n>2</n><m>many</m></p>",
         "3314 |field [p].[m], m = Null; record 2 of //r/p",
         "p(n|m):\np_2(PKEY|FKEY|n|m): 1|1|1|1 / 2|1|2|many\nr(PKEY|FKEY): 1|\np_2.FKEY -> r.PKEY\n"},
        {"a required text without a second one of its kind",
         "CREATE TABLE [p] ([n] String NOT NULL, [m] Long)|CREATE UNIQUE INDEX [one_n] ON [p] ([n])", "<p><n>1</n></p>",
         "3022 |index [one_n] of [p], n = \"1\"; record 2 of //r/p, line 3)",
         "p(n|m):\np_2(PKEY|FKEY|n|m): 1|1|1|1 / 2|1|1|\nr(PKEY|FKEY): 1|\np_2.FKEY -> r.PKEY\n"},
        {"a relation",
         "CREATE TABLE [q] ([k] String)|CREATE UNIQUE INDEX [q_k] ON [q] ([k]) WITH PRIMARY|"
         "CREATE TABLE [p] ([n] String, [m] Long)|"
         "ALTER TABLE [p] ADD CONSTRAINT [p_of_q] FOREIGN KEY ([n]) REFERENCES [q] ([k])",
         "", "3201 |relation [p_of_q] of [p], n = \"1\"; record 1 of //r/p|was there before",
         "p(n|m|n_text): |1|1\nq(k):\nr(PKEY|FKEY): 1|\np.n -> q.k\n"},
        {"a name that a column has", "CREATE TABLE [p] ([N] String, [m] Long)", "",
         "3380 |[n] for //r/p/n, and [N], which the table has|t=", "p(N|m): 1|1\nr(PKEY|FKEY): 1|\n"},
        {"a marker column in an index",
         "CREATE TABLE [p] ([n] String, [m] Long, [MASTER_TABLE] String)|CREATE INDEX [mine] ON [p] ([MASTER_TABLE])",
         "", "3280 |[MASTER_TABLE] for //r/p|the index [mine] of [p] needs it",
         "p(n|m|MASTER_TABLE): 1|1|r\nr(PKEY|FKEY): 1|\n"},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        const std::string document = std::string("<r>\n<p><n>1</n><m>1</m></p>\n") + c.record + "</r>";
        MakeDatabase(run, jet::JetVersion::Jet4, c.design);
        EXPECT_TRUE(run.Options("-recreate_database").Xml(document).Run().failed);
        ExpectParts(run, c.said);

        Conversion& complete = runs.Next();
        MakeDatabase(complete, jet::JetVersion::Jet4, c.design);
        EXPECT_FALSE(complete.Options("-recreate_database +complete").Xml(document).Run().failed) << complete.Error();
        EXPECT_EQ(complete.Said(", 0 lost"), 1) << complete.Protocol();
        EXPECT_EQ(complete.Content(), c.complete);
    }
}

TEST(Refusals, OfAnEmptyTextLoseNothingWithComplete)
{
    struct Case {
        const char* name;
        const char* design;
        const char* complete;
    };
    const Case cases[] = {
        {"it goes beside the column", "CREATE TABLE [p] ([n] String, [m] String)",
         "p(n|m|n_text): 1|| / |1|\nr(PKEY|FKEY): 1|\n"},
        {"where a text must be, it goes into another table", "CREATE TABLE [p] ([n] String NOT NULL, [m] String)",
         "p(n|m):\np_2(PKEY|FKEY|n|m): 1|1|1| / 2|1||1\nr(PKEY|FKEY): 1|\np_2.FKEY -> r.PKEY\n"},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        MakeDatabase(run, jet::JetVersion::Jet4, c.design);
        {
            const auto database = jet::Connection::Open(run.Target());
            const jet::Property noEmptyText{"n", "AllowZeroLength", std::string(1, '\0')}; // as a Boolean, false
            database->SetProperties("p", {&noEmptyText, 1});
            database->Commit();
        }
        run.Options("-recreate_database +complete").Xml("<r><p><n>1</n><m/></p><p><n/><m>1</m></p></r>");
        EXPECT_FALSE(run.Run().failed) << run.Error();
        EXPECT_EQ(run.Said(", 0 lost"), 1) << run.Protocol();
        EXPECT_EQ(run.Content(), c.complete);
    }
}

TEST(Refusals, ToWidenAColumnNameTheIndexOrTheRelationAndChangeNothing)
{
    struct Case {
        const char* name;
        std::size_t characters;
        const char* table;
        const char* said; ///< "": the column can be widened
    };
    const Case cases[] = {
        {"an index of a text that becomes a memo", 300, "indexed", "3280 |'by name'|[indexed].[name]|//r/indexed/name"},
        {"an index of a text that grows", 200, "indexed", ""},
        {"a relation, referencing", 300, "child", "3303 |'link'|[child].[name]|300 characters"},
        {"a relation, referenced", 200, "parent", "3303 |'link'|[parent].[name]|200 characters"},
    };
    for (const jet::JetVersion version : {jet::JetVersion::Jet3, jet::JetVersion::Jet4}) {
        Conversions runs;
        for (const Case& c : cases) {
            SCOPED_TRACE(c.name);
            const char* const design =
                "CREATE TABLE indexed (name Text(20), other Text(20))|CREATE TABLE child (name Text(20))|"
                "CREATE TABLE parent (name Text(20))|CREATE INDEX [by name] ON indexed (other, name)|"
                "CREATE UNIQUE INDEX u ON parent (name)|"
                "ALTER TABLE child ADD CONSTRAINT link FOREIGN KEY (name) REFERENCES parent (name)";
            const std::string document =
                Element("r", Element(c.table, Element("name", std::string(c.characters, 'n'))));
            Conversion& run = runs.Next();
            MakeDatabase(run, version, design);
            run.Options("-recreate_database -relations").Xml(document);
            EXPECT_EQ(run.Run().failed, *c.said != '\0') << run.Error();
            ExpectParts(run, c.said);
            const auto database = jet::Connection::Open(run.Target());
            EXPECT_EQ(database->OpenTable(c.table).MaxCharacters(0), *c.said ? 20u : 255u);

            Conversion& complete = runs.Next();
            MakeDatabase(complete, version, design);
            complete.Options("-recreate_database -relations +complete").Xml(document);
            EXPECT_FALSE(complete.Run().failed) << complete.Error();
            const std::string value(c.characters, 'n');
            const std::string_view empty = c.table == std::string_view("indexed") ? "||" : "|";
            EXPECT_TRUE(complete.Dump(c.table).ends_with(*c.said ? std::string(empty).append(value).append("\n")
                                                                 : value + "|\n"))
                << complete.Dump(c.table);
        }
    }
}

} // namespace
} // namespace velmora::testing
