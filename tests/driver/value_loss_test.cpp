#include "driver/conversion.h"

#include <random>

namespace velmora::testing {

namespace {

TEST(ValueLoss, IsCountedAndNamedOncePerFile)
{
    struct Case {
        const char* name;
        const char* options;
        const char* xml;
        const char* line; ///< nullptr: nothing is lost
    };
    const Case cases[] = {
        {"text beside children", "", "<r><p>t<n>1</n>u</p></r>", "Not imported: 1 of 2 values, the first at //r/p"},
        {"a list beside nothing else", "", "<r><n>1</n><p><t>a</t><t>b</t></p></r>",
         "Not imported: 2 of 3 values, the first at //r/p/t"},
        {"an attribute whose column a child took over", "attr=", "<r><p id=\"1\"><id>one</id><n>1</n></p></r>",
         "Not imported: 1 of 3 values, the first at //r/p/id"},
        {"the first of two leaves that meet in one column", "", "<r><p><a:n>1</a:n><b:n>2</b:n></p></r>",
         "Not imported: 1 of 2 values, the first at //r/p/a:n"},
        {"an attribute for which a list took the column", "attr=",
         "<r><p t=\"x\"><t>1</t><t>2</t><n>3</n><m>4</m></p></r>", "Not imported: 1 of 5 values, the first at //r/p/t"},
        {"blank texts and empty attributes are no values", "", "<r><p k=\"\"><n> </n></p></r>", nullptr},
        {"a text that stands in its parent's column is there", "",
         "<r><p><n>1</n><u k=\"a\"/><u k=\"b\"/><w k=\"c\">y</w></p></r>", nullptr},
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
    }
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
    }
    EXPECT_GT(compared, 18);
}

} // namespace

} // namespace velmora::testing
