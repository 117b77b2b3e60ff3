#include "driver/conversion.h"
#include "jet/connection.h"

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

/// `count` elements c10, c11 ... that hold `text`.
std::string Columns(int count, const std::string& text)
{
    std::string xml;
    for (int column = 10; column < 10 + count; ++column) {
        const std::string tag = "c" + std::to_string(column);
        xml.append("<").append(tag).append(">").append(text).append("</").append(tag).append(">");
    }
    return xml;
}

std::string Repeated(std::string_view letter, int count)
{
    std::string text;
    while (count-- > 0)
        text += letter;
    return text;
}

TEST(Widening, RecordsTooLargeForAPageKeepAllTheirValues)
{
    struct Case {
        const char* name;
        const char* options;
        std::string record;
        int widened;
        std::string firstLine;
    };
    const Case cases[] = {
        {"Latin letters, Access 97", "ver=97", Columns(60, std::string(40, 'a')), 17,
         "Column widened: [p].[c10], 40 characters at //r/p/c10"},
        {"Cyrillic letters", "", Columns(100, Repeated("\xD1\x8F", 33)), 52,
         "Column widened: [p].[c10], 33 characters at //r/p/c10"},
        {"CJK letters", "", Columns(100, Repeated("\xE4\xB8\xAD", 24)), 27,
         "Column widened: [p].[c10], 24 characters at //r/p/c10"},
        {"the longest goes first, and alone", "",
         Columns(17, Repeated("\xE4\xB8\xAD", 117)) + "<d>" + Repeated("\xE4\xB8\xAD", 118) + "</d>", 1,
         "Column widened: [p].[d], 118 characters at //r/p/d"},
        {"as many columns as a table can have", "", Columns(253, kLong), 0, ""},
        {"all of them widened one by one", "", Columns(253, "abc") + "</p><p>" + Columns(253, kLong), 253,
         "Column widened: [p].[c10], 300 characters at //r/p/c10"},
        {"short texts in that many memos", "", Columns(253, kLong) + "</p><p>" + Columns(253, "abc"), 0, ""},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        const RunOutcome outcome = run.Options(c.options).Xml("<r><p>" + c.record + "</p></r>").Run();
        EXPECT_FALSE(outcome.failed) << run.Error();
        EXPECT_EQ(run.Said("Not imported"), 0);
        ASSERT_EQ(outcome.tables.size(), 2u);
        EXPECT_EQ(outcome.tables[0].widenedColumns, c.widened);
        EXPECT_EQ(run.Said("Column widened: [p].["), c.widened);
        EXPECT_EQ(run.Said(c.firstLine) > 0, true);
    }
}

TEST(Widening, WhatDoesNotFitEvenSoLeavesNothingBehind)
{
    Conversion run;
    run.Options("ver=97 txt=" + run.Path("texts").string() + " delimiter=;");
    std::filesystem::create_directory(run.Path("texts"));
    run.Xml("<r><p><c10>1</c10><t>a</t><t>b</t></p><p>" + Columns(252, kLong) + "<t>c</t><t>d</t></p></r>");
    EXPECT_TRUE(run.Run().failed);
    const std::string error = run.Error();
    for (const char* part : {"3047 ", "//r/p", "[p]", "254 columns", "-attributes", "t=", "ver=2000"})
        EXPECT_NE(error.find(part), error.npos) << part << " in " << error;
    EXPECT_EQ(run.Said("Column widened"), 0) << "nothing is widened for nothing";
    EXPECT_EQ(run.Dump("p").substr(run.Dump("p").find('\n')).substr(0, 6), "\n1|1|1");
    EXPECT_EQ(run.Dump("t"), "PKEY|FKEY|t\n1|1|a\n2|1|b\n");
    EXPECT_EQ(ReadFile(run.Path("texts/t.txt")), "PKEY;FKEY;t\r\n1;1;a\r\n2;1;b\r\n");
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

TEST(Widening, AColumnThatAccessMadeShorterGrowsInItsPlaceFirst)
{
    REQUIRE_SHARED(shared);
    for (const char* file : {"delColTestV1997.mdb", "delColTestV2000.mdb"}) {
        SCOPED_TRACE(file);
        Conversion run;
        std::filesystem::copy_file(shared / "corpus/mdb" / file, run.Target());
        std::filesystem::permissions(run.Target(), std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::add);
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

TEST(Widening, AnIndexOrARelationThatForbidsItIsNamedAndNothingChanges)
{
    struct Case {
        const char* name;
        std::size_t characters;
        const char* table;
        std::vector<const char*> reasons; ///< none: the column can be widened
    };
    const Case cases[] = {
        {"an index of a text that becomes a memo",
         300,
         "indexed",
         {"3280 ", "'by name'", "[indexed].[name]", "//r/indexed/name"}},
        {"an index of a text that grows", 200, "indexed", {}},
        {"a relation, referencing", 300, "child", {"3303 ", "'link'", "[child].[name]", "300 characters"}},
        {"a relation, referenced", 200, "parent", {"3303 ", "'link'", "[parent].[name]", "200 characters"}},
    };
    for (const jet::JetVersion version : {jet::JetVersion::Jet3, jet::JetVersion::Jet4}) {
        Conversions runs;
        for (const Case& c : cases) {
            SCOPED_TRACE(c.name);
            Conversion& run = runs.Next();
            {
                const auto made = jet::Connection::Create(run.Target(), version);
                for (const char* table : {"indexed", "child", "parent"})
                    made->Execute(std::string("CREATE TABLE ") + table + " (name Text(20), other Text(20))");
                made->Execute("CREATE INDEX [by name] ON indexed (other, name)");
                made->Execute("CREATE UNIQUE INDEX u ON parent (name)");
                made->Execute("ALTER TABLE child ADD CONSTRAINT link FOREIGN KEY (name) REFERENCES parent (name)");
                made->Commit();
            }
            const std::string table = c.table;
            run.Options("-recreate_database -relations");
            run.Xml("<r><" + table + "><other>1</other></" + table + "><" + table + "><name>" +
                    std::string(c.characters, 'n') + "</name></" + table + "></r>");
            EXPECT_EQ(run.Run().failed, !c.reasons.empty()) << run.Error();
            for (const char* reason : c.reasons)
                EXPECT_NE(run.Error().find(reason), std::string::npos) << reason << " in " << run.Error();
            EXPECT_EQ(TextColumns(run.Target(), table),
                      c.reasons.empty() ? "name(255) other(20) " : "name(20) other(20) ");
        }
    }
}

} // namespace

} // namespace velmora::testing
