#include "driver/conversion.h"

#include <random>

namespace velmora::testing {

namespace {

/// What the protocol says of lost values, path by path.
std::string Reasons(const Conversion& run)
{
    std::string text;
    for (const std::string& line : run.host.lines)
        if (line.starts_with("  "))
            text += line + "\n";
    return text;
}

TEST(ValueLoss, IsCountedAndNamedOncePerFile)
{
    struct Case {
        const char* name;
        const char* options;
        const char* xml;
        const char* line;    ///< nullptr: nothing is lost
        const char* reasons; ///< a line each
    };
    const Case cases[] = {
        {"text beside children", "", "<r><p>t&#10;<n>1</n>u</p></r>", "Not imported: 1 of 2 values, the first at //r/p",
         "  //r/p: 1, text beside child elements, \"t u\"\n"},
        {"a list beside nothing else", "", "<r><n>1</n><p><t>a</t><t>b</t></p></r>",
         "Not imported: 2 of 3 values, the first at //r/p/t", "  //r/p/t: 2, no record is made at this place, \"a\"\n"},
        {"an attribute whose column a child took over", "attr=", "<r><p id=\"1\"><id>one</id><n>1</n></p></r>",
         "Not imported: 1 of 3 values, the first at //r/p/id",
         "  //r/p/id: 1, another value of the record took its column, \"1\"\n"},
        {"the first of two leaves that meet in one column, and a long one", "",
         "<r><p><a:n>0123456789012345678901234567890123\xC3\xA9\xC3\xA9 to the end</a:n><b:n>2</b:n></p>"
         "<p><a:n>3</a:n><b:n>4</b:n></p></r>",
         "Not imported: 2 of 4 values, the first at //r/p/a:n",
         "  //r/p/a:n: 2, another value of the record took its column, "
         "\"0123456789012345678901234567890123\xC3\xA9\xC3\xA9 ...\"\n"},
        {"an attribute for which a list took the column", "attr=",
         "<r><p t=\"x\"><t>1</t><t>2</t><n>3</n><m>4</m></p></r>", "Not imported: 1 of 5 values, the first at //r/p/t",
         "  //r/p/t: 1, its column was taken by an element of the same name, \"x\"\n"},
        {"attributes that nobody wants", "-attributes", "<r k=\"a\"><p k=\"b\" j=\"c\"><n>1</n></p></r>",
         "Not imported: 3 of 4 values, the first at //r/attr_k",
         "  //r/attr_k: 1, attributes are left out (-attributes), \"a\"\n"
         "  //r/p/attr_k: 1, attributes are left out (-attributes), \"b\"\n"
         "  //r/p/attr_j: 1, attributes are left out (-attributes), \"c\"\n"},
        {"blank texts and empty attributes are no values", "", "<r><p k=\"\"><n> </n></p></r>", nullptr, ""},
        {"a text that stands in its parent's column is there", "",
         "<r><p><n>1</n><u k=\"a\"/><u k=\"b\"/><w k=\"c\">y</w></p></r>", nullptr, ""},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        EXPECT_FALSE(run.Options(c.options).Xml(c.xml).Run().failed) << run.Error();
        EXPECT_EQ(run.Said("Not imported"), c.line ? 1 : 0);
        if (c.line) {
            EXPECT_EQ(run.Said(c.line), 1) << ::testing::PrintToString(run.host.lines);
        }
        EXPECT_EQ(Reasons(run), c.reasons);
    }
}

TEST(ValueLoss, KeysTakeNoValuesOfTheDocument)
{
    const char* const first = "<r><p><n>1</n><t>a</t><t>b</t></p><q><n>1</n></q></r>";
    const char* const second =
        "<r><p><PKEY>50</PKEY><FKEY>1</FKEY><n>2</n><t>c</t><t>d</t></p><q FKEY=\"7\"><n>2</n></q></r>";
    struct Case {
        const char* name;
        const char* options;
        const char* reasons;
        const char* p;
        const char* t;
    };
    const Case cases[] = {
        {"keys of a table that exists", "attr=",
         "  //r/p/PKEY: 1, its column is a key, which takes no values, \"50\"\n"
         "  //r/p/FKEY: 1, its column is a key, which takes no values, \"1\"\n"
         "  //r/q/FKEY: 1, its column is a key, which takes no values, \"7\"\n",
         "PKEY|FKEY|n\n1|1|1\n2|2|2\n", "PKEY|FKEY|t\n1|1|a\n2|1|b\n3|2|c\n4|2|d\n"},
        {"columns like any other in tables without keys", "attr=id_ -relations", "", "n|PKEY|FKEY\n1||\n2|50|1\n",
         "t\na\nb\nc\nd\n"},
    };
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        EXPECT_FALSE(run.Options(c.options).Xml(first).Run().failed) << run.Error();
        EXPECT_FALSE(run.Options("-recreate_database").Xml(second).Run().failed) << run.Error();
        EXPECT_EQ(Reasons(run), c.reasons);
        EXPECT_EQ(run.Dump("p"), c.p);
        EXPECT_EQ(run.Dump("t"), c.t);
    }

    Conversion& shared = runs.Next();
    shared.Options("+one_table_per_element").Xml("<r><a><p><n>1</n></p></a><b><p><n>2</n></p></b></r>").Run();
    shared.Options("-recreate_database")
        .Xml("<r><a><p><MASTER_TABLE>x</MASTER_TABLE><n>3</n></p></a><b><p><n>4</n>"
             "</p></b></r>");
    EXPECT_FALSE(shared.Run().failed) << shared.Error();
    EXPECT_EQ(Reasons(shared), "  //r/a/p/MASTER_TABLE: 1, its column is a key, which takes no values, \"x\"\n");
    EXPECT_EQ(shared.Dump("p"), "PKEY|FKEY|MASTER_TABLE|n\n1|1|a|1\n2|1|b|2\n3|2|a|3\n4|2|b|4\n");
}

TEST(ValueLoss, OnlyTheFirstGroupsAreListed)
{
    std::string xml = "<r>";
    for (int tag = 10; tag < 35; ++tag)
        xml += "<p" + std::to_string(tag) + ">a<n/>b</p" + std::to_string(tag) + ">";
    Conversion run;
    EXPECT_FALSE(run.Xml(xml + "</r>").Run().failed) << run.Error();
    EXPECT_EQ(run.Said("  //r/p"), 20);
    EXPECT_EQ(run.Said("  //r/p29: 1,"), 1);
    EXPECT_EQ(run.Said("  and 5 more in 5 further groups"), 1);
}

/// A document in which every value is another one, so that it can be looked for in the tables.
class RandomDocument {
public:
    explicit RandomDocument(unsigned seed) : random_(seed) { Element(0); }

    std::string text;
    std::vector<std::string> values;

private:
    std::size_t Below(std::size_t limit) { return random_() % limit; }
    std::string Value()
    {
        values.push_back("v" + std::to_string(values.size()) + "v");
        return values.back();
    }
    void Element(int depth)
    {
        static const char* const kTags[] = {"a", "b", "c", "x:a", "y:b", "d"};
        static const char* const kAttributes[] = {"k", "c", "d"};
        const std::string tag = depth == 0 ? "root" : kTags[Below(std::size(kTags))];
        text += "<" + tag;
        for (const char* attribute : kAttributes)
            if (Below(4) == 0)
                text += " " + std::string(attribute) + "=\"" + (Below(5) == 0 ? "" : Value()) + "\"";
        text += ">";
        if (Below(depth < 4 ? 6 : 1) == 0 && depth > 0) {
            text += Below(4) == 0 ? " " : Value();
        } else if (depth < 4) {
            if (Below(8) == 0)
                text += Value();
            for (std::size_t child = 0, count = 1 + Below(5); child < count; ++child)
                Element(depth + 1);
        }
        text += "</" + tag + ">";
    }

    std::mt19937 random_;
};

TEST(ValueLoss, AgreesWithWhatIsFoundInTheTables)
{
    const char* const options[] = {"-relations",
                                   "",
                                   "-relations attr=",
                                   "-relations -attributes",
                                   "-relations +one_table_per_element",
                                   "-relations +skip_empty"};
    int compared = 0;
    Conversions runs;
    for (unsigned seed = 1; seed <= 36; ++seed) {
        const char* const words = options[seed % std::size(options)];
        SCOPED_TRACE("seed " + std::to_string(seed) + " " + words);
        const RandomDocument document(seed);
        Conversion& run = runs.Next();
        if (run.Options(words).Xml(document.text).Run().failed)
            continue; // rows that a relation refuses, wrapping elements inside each other
        std::string stored;
        std::string tables = run.Tables();
        for (std::size_t begin = 0, end; (end = tables.find(' ', begin)) != tables.npos; begin = end + 1)
            stored += run.Dump(std::string_view(tables).substr(begin, end - begin));
        std::size_t lost = 0;
        for (const std::string& value : document.values)
            lost += stored.find(value) == stored.npos ? 1 : 0;
        ++compared;
        if (lost == 0)
            EXPECT_EQ(run.Said("Not imported"), 0);
        else
            EXPECT_EQ(run.Said("Not imported: " + std::to_string(lost) + " of " +
                               std::to_string(document.values.size()) + " values"),
                      1)
                << document.text << ::testing::PrintToString(run.host.lines);
        // Each line counts its group, and the last one what was cut.
        std::size_t told = 0;
        for (const std::string& line : run.host.lines)
            if (line.starts_with("  "))
                told += std::stoul(line.starts_with("  and ") ? line.substr(6) : line.substr(line.find(": ") + 2));
        EXPECT_EQ(told, lost) << document.text << ::testing::PrintToString(run.host.lines);
    }
    EXPECT_GT(compared, 18);
}

} // namespace

} // namespace velmora::testing
