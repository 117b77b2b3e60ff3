#include "driver/conversion.h"

namespace velmora::testing {

namespace {

/// What the tables of a small document must hold. Every expectation is worked out by hand from the mapping rules; the
/// documents of tests/corpus/by_hand hold the common ones.
struct Expectation {
    const char* table;
    const char* dump;
};

struct Case {
    const char* name;
    const char* options;
    const char* xml;
    const char* tables;
    std::vector<Expectation> expected;
    const char* relations;
};

const Case kCases[] = {
    {"a list beside nothing else is not looked for",
     "",
     "<r><t>a</t><t>b</t></r>",
     "r t ",
     {{"r", "PKEY|FKEY\n1|0\n"}, {"t", "PKEY|FKEY|t\n"}},
     "t.FKEY -> r.PKEY\n"},

    {"an attribute that meets a child of its name shares the column, and the child wins",
     "attr=",
     "<list><item id=\"1\"><id>one</id></item><item id=\"2\"><name>n</name></item></list>",
     "item list ",
     {{"item", "PKEY|FKEY|id|name\n1|1|one|\n2|1|2|n\n"}},
     "item.FKEY -> list.PKEY\n"},

    {"the current child sink is switched by a sibling with attributes",
     "",
     "<r><p><n>1</n><u k=\"a\"/><u k=\"b\"/><v>x</v><w k=\"c\">y</w></p></r>",
     "p r u w ",
     {{"p", "PKEY|FKEY|n|v|w\n1|1|1|x|y\n"},
      {"u", "PKEY|FKEY|u|attr_k\n1|1||a\n2|1||b\n"},
      {"w", "PKEY|FKEY|attr_k\n1|1|c\n"}},
     "p.FKEY -> r.PKEY\nu.FKEY -> p.PKEY\nw.FKEY -> p.PKEY\n"},

    {"leaves with nothing but attributes",
     "",
     "<r><c id=\"1\" name=\"x\"/><c id=\"2\" name=\"\"/></r>",
     "c r ",
     {{"c", "PKEY|FKEY|c|attr_id|attr_name\n1|1||1|x\n2|1||2|\n"}},
     "c.FKEY -> r.PKEY\n"},

    {"without attributes the same leaves have a table without records",
     "-attributes",
     "<r><n>1</n><c id=\"1\"/><c id=\"2\"/></r>",
     "c r ",
     {{"r", "PKEY|FKEY|n\n1|0|1\n"}, {"c", "PKEY|FKEY|c\n"}},
     "c.FKEY -> r.PKEY\n"},

    {"a wrapping element is passed through",
     "+skip_empty",
     "<r><n>7</n><g><item><x>1</x></item><item><x>2</x></item></g><h><t>a</t><t>b</t></h></r>",
     "item r t ",
     {{"r", "PKEY|FKEY|n\n1|0|7\n"}, {"item", "PKEY|FKEY|x\n1|1|1\n2|1|2\n"}, {"t", "PKEY|FKEY|t\n1|1|a\n2|1|b\n"}},
     "item.FKEY -> r.PKEY\nt.FKEY -> r.PKEY\n"},

    {"names of keys, prefix and suffix",
     "pkey=id fkey=parent attr=at_ table_prefix=x_ table_suffix=_y",
     "<r><p k=\"v\"><n>1</n></p></r>",
     "x_p_y x_r_y ",
     {{"x_p_y", "id|parent|at_k|n\n1|1|v|1\n"}},
     "x_p_y.parent -> x_r_y.id\n"},

    {"texts keep their white space, blank ones are no values",
     "",
     "<r><p><a> x </a><b>  </b><c.d>\n</c.d></p></r>",
     "p r ",
     {{"p", "PKEY|FKEY|a|b|c_d\n1|1| x ||\n"}},
     "p.FKEY -> r.PKEY\n"},
};

TEST(MappingRules, TablesAreAsWorkedOutByHand)
{
    Conversions runs;
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        const RunOutcome outcome = run.Options(c.options).Xml(c.xml).Run();
        EXPECT_FALSE(outcome.failed) << run.Error();
        EXPECT_EQ(outcome.convertedFiles, 1);
        EXPECT_EQ(run.Tables(), c.tables);
        for (const Expectation& e : c.expected)
            EXPECT_EQ(run.Dump(e.table), e.dump) << e.table;
        EXPECT_EQ(run.Relations(), c.relations);
    }
}

TEST(MappingRules, TagsAreMappedToTablesAndColumns)
{
    Conversion run;
    run.Map("p", "person").Map("n", "full.name").Map("n", "second").Map("attr_k", "key").Map("T", "x");
    run.Xml("<r><x:p k=\"v\"><n>Ann</n><t>1</t><t>2</t></x:p></r>").Run();
    EXPECT_EQ(run.Dump("person"), "PKEY|FKEY|key|full_name\n1|1|v|Ann\n");
    EXPECT_EQ(run.Relations(), "person.FKEY -> r.PKEY\nt.FKEY -> person.PKEY\n");
}

TEST(MappingRules, WhatCannotBecomeATableEndsWithPathReasonAndTheSwitchThatHelps)
{
    const std::string longName(70, 'n');
    std::string manyTables, manyColumns;
    for (int column = 0; column < 254; ++column)
        manyColumns += "<c" + std::to_string(column) + ">1</c" + std::to_string(column) + ">";
    for (int table = 0; table < 17'000; ++table) {
        const std::string tag = "t" + std::to_string(table);
        manyTables += "<" + tag + "><x/></" + tag + ">";
    }
    struct Refusal {
        const char* name;
        std::string options;
        std::string xml;
        std::vector<std::string> said;
    };
    const Refusal refusals[] = {
        {"columns that differ in case only",
         "",
         "<r><p><Name>1</Name><name>2</name></p></r>",
         {"3191 ", "[name] for //r/p/name, and [Name] for //r/p/Name", "t="}},
        {"columns that the sort order takes for one",
         "",
         "<r><p><gro\xC3\x9F>1</gro\xC3\x9F><x>1</x><GROSS>2</GROSS></p></r>",
         {"3191 ", "[GROSS] for //r/p/GROSS, and [gro\xC3\x9F] for //r/p/gro\xC3\x9F", "t="}},
        {"columns whose accented letters differ in case",
         "ver=97",
         "<r><p><\xC3\xA9>1</\xC3\xA9><x>1</x><\xC3\x89>2</\xC3\x89></p></r>",
         {"3191 ", "[\xC3\x89] for //r/p/\xC3\x89, and [\xC3\xA9] for //r/p/\xC3\xA9", "t="}},
        {"a column like a key",
         "",
         "<r><p><pkey>1</pkey></p></r>",
         {"3191 ", "//r/p/pkey, and the key column [PKEY]", "pkey="}},
        {"too many columns", "", "<r><p>" + manyColumns + "</p></r>", {"3190 ", "[p] for //r/p", "-attributes"}},
        {"an index's name too long",
         "",
         "<r><" + longName.substr(10) + "><x>1</x></" + longName.substr(10) + "></r>",
         {"3125 ", "index [" + longName.substr(10) + "_PKEY] for //r/n", "t=", "pkey="}},
        {"a column's name too long",
         "",
         "<r><p><" + longName + ">1</" + longName + "></p></r>",
         {"//r/p/" + longName, "[" + longName + "]", "t="}},
        {"a table's name too long",
         "",
         "<r><" + longName + "><x>1</x></" + longName + "></r>",
         {"//r/" + longName, "[" + longName + "]", "t="}},
        {"a key name that the database refuses", "pkey=a!b", "<r><p><x>1</x></p></r>", {"[a!b]", "pkey="}},
        {"more tables and relations than a database holds",
         "",
         "<r>" + manyTables + "</r>",
         {"17001 tables", "-relations"}},
        {"wrapping elements inside each other",
         "+skip_empty",
         "<r><n>1</n><g><h><p><x>1</x></p></h></g></r>",
         {"9 Subscript out of range", "//r/g/h", "//r/g;", "+skip_empty"}},
    };
    Conversions runs;
    for (const Refusal& refusal : refusals) {
        SCOPED_TRACE(refusal.name);
        Conversion& run = runs.Next();
        EXPECT_TRUE(run.Options(refusal.options).Xml(refusal.xml).Run().failed);
        for (const std::string& part : refusal.said)
            EXPECT_NE(run.Error().find(part), std::string::npos) << part << "\n in " << run.Error();
    }
}

TEST(MappingRules, RowsThatARelationRefusesEndTheRunWithBothPaths)
{
    // The last entry of the model shares its namesake's table, whose relation goes to another parent.
    const std::string group = "<g><n>x</n><item z=\"1\">p</item><item z=\"2\">q</item></g>";
    Conversion run;
    EXPECT_TRUE(run.Options("-attributes").Xml("<r><item><v>a</v></item>" + group + group + "</r>").Run().failed);
    for (const char* part : {"3201 ", "relation [item_LINK] of [item], FKEY = \"2\"; record 3 of //r/g/item",
                             "a record of //r/g,", "-relations"})
        EXPECT_NE(run.Error().find(part), std::string::npos) << part << "\n in " << run.Error();
    EXPECT_EQ(run.Dump("item"), "PKEY|FKEY|v|item\n1|1|a|\n2|1||p\n3|1||q\n");
    EXPECT_EQ(run.Dump("g"), "PKEY|FKEY|n\n1|1|x\n") << "the record whose list was refused is not there";

    Conversion without;
    EXPECT_FALSE(without.Options("-attributes -relations")
                     .Xml("<r><item><v>a</v></item>" + group + group + "</r>")
                     .Run()
                     .failed);
    EXPECT_EQ(without.Dump("item"), "v|item\na|\n|p\n|q\n|p\n|q\n");
}

} // namespace

} // namespace velmora::testing
