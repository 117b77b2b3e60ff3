#include "driver/conversion.h"

namespace velmora::testing {

namespace {

/// What the tables of a small document must hold. Every expectation is worked out by hand from the mapping rules.
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
    {"a list beside a leaf fills a table of its own",
     "",
     "<people><person><name>Ann</name><phone>1</phone><phone>2</phone></person></people>",
     "people person phone ",
     {{"people", "PKEY|FKEY\n1|0\n"},
      {"person", "PKEY|FKEY|name\n1|1|Ann\n"},
      {"phone", "PKEY|FKEY|phone\n1|1|1\n2|1|2\n"}},
     "person.FKEY -> people.PKEY\nphone.FKEY -> person.PKEY\n"},

    {"a list beside nothing else is not looked for",
     "",
     "<r><t>a</t><t>b</t></r>",
     "r t ",
     {{"r", "PKEY|FKEY\n1|0\n"}, {"t", "PKEY|FKEY|t\n"}},
     "t.FKEY -> r.PKEY\n"},

    {"a leaf first single, then repeated, is a list from the start",
     "",
     "<r><p><n>1</n><t>one</t></p><p><n>2</n><t>two</t><t>three</t></p></r>",
     "p r t ",
     {{"p", "PKEY|FKEY|n\n1|1|1\n2|1|2\n"}, {"t", "PKEY|FKEY|t\n1|1|one\n2|2|two\n3|2|three\n"}},
     "p.FKEY -> r.PKEY\nt.FKEY -> p.PKEY\n"},

    {"an attribute that meets a child of its name shares the column, and the child wins",
     "attr=",
     "<list><item id=\"1\"><id>one</id></item><item id=\"2\"><name>n</name></item></list>",
     "item list ",
     {{"item", "PKEY|FKEY|id|name\n1|1|one|\n2|1|2|n\n"}},
     "item.FKEY -> list.PKEY\n"},

    {"prefixes are stripped, and tables that meet by it are one",
     "",
     "<r><a:item><x>1</x></a:item><b:item><y>2</y></b:item></r>",
     "item r ",
     {{"item", "PKEY|FKEY|x|y\n1|1|1|\n2|1||2\n"}},
     "item.FKEY -> r.PKEY\n"},

    {"the current child sink is switched by a sibling with attributes",
     "",
     "<r><p><n>1</n><u k=\"a\"/><u k=\"b\"/><v>x</v><w k=\"c\">y</w></p></r>",
     "p r u w ",
     {{"p", "PKEY|FKEY|n|v|w\n1|1|1|x|y\n"},
      {"u", "PKEY|FKEY|u|attr_k\n1|1||a\n2|1||b\n"},
      {"w", "PKEY|FKEY|attr_k\n1|1|c\n"}},
     "p.FKEY -> r.PKEY\nu.FKEY -> p.PKEY\nw.FKEY -> p.PKEY\n"},

    {"a repeated leaf with text and attributes is met twice",
     "",
     "<r><p><n>1</n><u k=\"a\">s</u><u k=\"b\">t</u></p></r>",
     "p r u ",
     {{"u", "PKEY|FKEY|u|attr_k\n1|1|s|\n2|1|t|\n3|1||a\n4|1|t|b\n"}},
     "p.FKEY -> r.PKEY\nu.FKEY -> p.PKEY\n"},

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

    {"below a wrapping document element keys refer to nothing",
     "+skip_empty",
     "<r><item><x>1</x></item><item><x>2</x></item></r>",
     "item ",
     {{"item", "PKEY|FKEY|x\n1|0|1\n2|0|2\n"}},
     ""},

    {"elements of one name are told apart by suffixes",
     "",
     "<r><a><item><x>1</x></item></a><b><item><x>2</x></item></b><z>e</z></r>",
     "a b item_L1 item_L2 r ",
     {{"item_L1", "PKEY|FKEY|x\n1|1|1\n"}, {"item_L2", "PKEY|FKEY|x\n1|1|2\n"}, {"r", "PKEY|FKEY|z\n1|0|e\n"}},
     "a.FKEY -> r.PKEY\nb.FKEY -> r.PKEY\nitem_L1.FKEY -> a.PKEY\nitem_L2.FKEY -> b.PKEY\n"},

    {"or share one table, which says where their parents are",
     "+one_table_per_element",
     "<r><a><item><x>1</x></item></a><b><item><x>2</x></item></b><z>e</z></r>",
     "a b item r ",
     {{"item", "PKEY|FKEY|MASTER_TABLE|x\n1|1|a|1\n2|1|b|2\n"}, {"r", "PKEY|FKEY|z\n1|0|e\n"}},
     "a.FKEY -> r.PKEY\nb.FKEY -> r.PKEY\n"},

    {"a list's table with a suffix keeps the suffixed column beside the one that is filled",
     "",
     "<r><p><n>1</n><t>a</t><t>b</t></p><q><n>2</n><t>c</t><t>d</t></q><z>e</z></r>",
     "p q r t_L1 t_L2 ",
     {{"t_L1", "PKEY|FKEY|t_L1|t\n1|1||a\n2|1||b\n"}, {"t_L2", "PKEY|FKEY|t_L2|t\n1|1||c\n2|1||d\n"}},
     "p.FKEY -> r.PKEY\nq.FKEY -> r.PKEY\nt_L1.FKEY -> p.PKEY\nt_L2.FKEY -> q.PKEY\n"},

    {"the model's last entry gets no suffix and falls into the table of its namesake",
     "-attributes",
     "<r><item><v>a</v></item><g><n>x</n><item z=\"1\">p</item><item z=\"2\">q</item></g></r>",
     "g item r ",
     {{"item", "PKEY|FKEY|v|item\n1|1|a|\n2|1||p\n3|1||q\n"}},
     "g.FKEY -> r.PKEY\nitem.FKEY -> r.PKEY\n"},

    {"names of keys, prefix and suffix",
     "pkey=id fkey=parent attr=at_ table_prefix=x_ table_suffix=_y",
     "<r><p k=\"v\"><n>1</n></p></r>",
     "x_p_y x_r_y ",
     {{"x_p_y", "id|parent|at_k|n\n1|1|v|1\n"}},
     "x_p_y.parent -> x_r_y.id\n"},

    {"without relations there are no keys, and tables without columns are not made",
     "-relations",
     "<r><g><p><n>1</n><t>a</t><t>b</t></p></g></r>",
     "p t ",
     {{"p", "n\n1\n"}, {"t", "t\na\nb\n"}},
     ""},

    {"a document element with text alone has no table", "", "<doc>text</doc>", "", {}, ""},

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
    run.Map("p", "person").Map("n", "name").Map("attr_k", "key");
    run.Xml("<r><x:p k=\"v\"><n>Ann</n><t>1</t><t>2</t></x:p></r>").Run();
    EXPECT_EQ(run.Dump("person"), "PKEY|FKEY|key|name\n1|1|v|Ann\n");
    EXPECT_EQ(run.Relations(), "person.FKEY -> r.PKEY\nt.FKEY -> person.PKEY\n");
}

TEST(MappingRules, WhatCannotBecomeATableEndsWithPathReasonAndTheSwitchThatHelps)
{
    const std::string longName(70, 'n');
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
         {"3191 ", "//r/p/name", "[name]", "t="}},
        {"a column like a key", "", "<r><p><pkey>1</pkey></p></r>", {"3191 ", "//r/p/pkey", "pkey="}},
        {"a column's name too long",
         "",
         "<r><p><" + longName + ">1</" + longName + "></p></r>",
         {"//r/p/" + longName, "[" + longName + "]", "t="}},
        {"a table's name too long",
         "",
         "<r><" + longName + "><x>1</x></" + longName + "></r>",
         {"//r/" + longName, "[" + longName + "]", "t="}},
        {"a key name that the database refuses", "pkey=a!b", "<r><p><x>1</x></p></r>", {"[a!b]", "pkey="}},
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
    for (const char* part : {"3201 ", "//r/g/item ", "//r/g,", "-relations"})
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
