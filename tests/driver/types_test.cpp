#include "driver/conversion.h"

#include "jet/base/value_text.h"
#include "jet/connection.h"

namespace velmora::testing {

namespace {

/// Of a table without its keys: "name:Type name:Type", and "value|value / value|value".
struct Shown {
    std::string types, records;

    Shown(const Conversion& run, const char* table)
    {
        const std::pair<jet::ColumnType, const char*> names[] = {
            {jet::ColumnType::Boolean, "YesNo"}, {jet::ColumnType::Long, "Long"}, {jet::ColumnType::Double, "Double"},
            {jet::ColumnType::DateTime, "Date"}, {jet::ColumnType::Text, "Text"}, {jet::ColumnType::Memo, "Memo"}};
        const auto connection = jet::Connection::OpenReadOnly(run.Target());
        jet::Recordset rows = connection->OpenTable(table);
        std::vector<std::size_t> fields;
        for (std::size_t field = 0; field < rows.FieldCount(); ++field)
            for (const auto& [type, name] : names)
                if (rows.Type(field) == type && !(rows.IsLong(field) && rows.FieldName(field).ends_with("KEY"))) {
                    fields.push_back(field);
                    types += (types.empty() ? "" : " ") + rows.FieldName(field) + ":" + name;
                }
        for (; !rows.Eof(); rows.MoveNext()) {
            records += records.empty() ? "" : " / ";
            for (const std::size_t field : fields)
                records += (field == fields.front() ? "" : "|") + jet::ToText(rows.Get(field));
        }
    }
};

struct Case {
    const char* name;
    std::vector<const char*> documents; ///< of one run
    std::string types;                  ///< of table p
    std::string records;                ///< of table p, without the keys
    const char* options = "";
    const char* then = ""; ///< document of a run without +types, into the same database
    std::vector<const char*> said{};
    const char* with = "both sets of rules"; ///< or the option with which only the case holds
};

const Case kCases[] = {
    {"each form",
     {"<r><p a='true' b='1'><c>1.50</c><d>2024-03-05</d><e>14:07:09</e><f>007</f></p>"
      "<p a='false' b='-2'><c>2</c><d>2024-03-05T01:02:03</d><e>00:00:00</e><f>8</f></p></r>"},
     "attr_a:YesNo attr_b:Long c:Double d:Date e:Date f:Text",
     "True|1|1.5|2024-03-05 00:00:00|1899-12-30 14:07:09|007 / "
     "False|-2|2|2024-03-05 01:02:03|1899-12-30 00:00:00|8"},
    {"a record without the value is Null, but Yes/No has none",
     {"<r><p b='1'><a>true</a><c/></p><p b=''><z>x</z></p><p><a/><c/></p></r>"},
     "attr_b:Long a:Text c:Text z:Text",
     "1|true|| / |||x / |||"},
    {"what does not fit turns columns into texts, values as they print",
     {"<r><p a='true' b='1'><c>1.50</c><d>2024-03-05</d><e>00:00:00</e><k>5</k></p></r>",
      "<r><p a='x' b='07'><c>1e5</c><d>2024-03-05Z</d><e>24:00:00</e><k>6</k></p><p><k>7</k></p></r>"},
     "attr_a:Text attr_b:Text c:Text d:Text e:Text k:Long",
     "true|1|1.5|2024-03-05|00:00:00|5 / x|07|1e5|2024-03-05Z|24:00:00|6 / |||||7",
     "",
     "",
     {"Column became a text: [p].[attr_b] was Long Integer, \"07\" at //r/p/attr_b does not fit"}},
    {"also in a later run, and for a record that lacks a Yes/No",
     {"<r><p a='true'><b>1</b></p><p a='false'><b>2</b></p></r>"},
     "attr_a:Text b:Long",
     "true|1 / false|2 / |3",
     "",
     "<r><p><b>3</b></p><q/></r>",
     {"Column became a text: [p].[attr_a] was Yes/No, a record at //r/p has no value"}},
    {"a new column of a table with records is no Yes/No",
     {"<r><p a='1'/></r>", "<r><p a='2' b='true' c='3'/></r>"},
     "attr_a:Long attr_b:Text attr_c:Long",
     "1|| / 2|true|3"},
    {"in Access 97",
     {"<r><p a='true' b='1' c='1.50' d='0100-01-01T23:59:59'/></r>", "<r><p a='false' b='2' c='2' d='x'/></r>"},
     "attr_a:YesNo attr_b:Long attr_c:Double attr_d:Text",
     "True|1|1.5|0100-01-01T23:59:59 / False|2|2|x",
     "ver=97"},
    {"elements that share a table share its columns",
     {"<r><a><p><v>1</v><w>true</w></p></a><b><p><v>x</v></p></b></r>"},
     "MASTER_TABLE:Text v:Text w:Text",
     "a|1|true / b|x|",
     "+one_table_per_element"},
    {"a column named like a key holds its values",
     {"<r><p a='1'><FKEY>7</FKEY></p></r>"},
     "attr_a:Long FKEY:Text",
     "1|7",
     "-relations",
     "",
     {"!Not imported"},
     "-complete"},
    {"the empty element is Null in a typed column, the empty text in a text",
     {"<r><p><v>1</v><w>x</w></p><p><v/><w/></p></r>", "<r><p><v>2</v><w/></p></r>"},
     "v:Long w:Text",
     "1|x / | / 2|",
     "",
     "",
     {"0 lost"},
     "+complete"},
};

TEST(Types, AColumnGetsTheNarrowestTypeOfItsValues)
{
    Conversions runs;
    for (const char* const rules : {"-complete", "+complete"})
        for (const Case& c : kCases) {
            if (*c.with != 'b' && std::string_view(c.with) != rules)
                continue;
            SCOPED_TRACE(std::string(c.name) + " " + rules);
            Conversion& run = runs.Next();
            run.Options("+types").Options(rules).Options(c.options);
            for (std::size_t i = 0; i < c.documents.size(); ++i)
                run.Xml(c.documents[i], std::string(1, static_cast<char>('a' + i)) + ".xml");
            EXPECT_FALSE(run.Run().failed) << run.Error();
            if (*c.then != '\0') {
                for (std::size_t i = 1; i < c.documents.size(); ++i)
                    std::filesystem::remove(run.Path(std::string(1, static_cast<char>('a' + i)) + ".xml"));
                EXPECT_FALSE(run.Options("-recreate_database -types").Xml(c.then).Run().failed) << run.Error();
            }
            for (const std::string_view line : c.said)
                EXPECT_EQ(run.Said(line.substr(line.starts_with('!'))) > 0, !line.starts_with('!')) << run.Protocol();
            const Shown shown(run, "p");
            EXPECT_EQ(shown.types, c.types);
            EXPECT_EQ(shown.records, c.records);
        }
}

TEST(Types, TheWayBackWritesValuesAsDocumentsDo)
{
    for (const char* const version : {"ver=2000", "ver=97"}) {
        Conversion run;
        run.Options("+types +complete").Options(version);
        run.Xml(
            "<r a='true'><n>-1.50</n><n>0.0000001</n><d>1812-06-24T05:06:07</d><e>2024-03-05</e><t>00:00:00</t></r>");
        ASSERT_FALSE(run.Run().failed) << run.Error();
        run.job.controls.txtFILE_XML.text.clear();
        run.job.controls.txtFILE_EXPORT.text = run.Path("back.out").string();
        ASSERT_FALSE(run.Run().failed) << run.Error() << run.Protocol();
        EXPECT_NE(ReadFile(run.Path("back.out"))
                      .find("<r a=\"true\">\r\n  <n>-1.5</n>\r\n  <n>0.0000001</n>\r\n"
                            "  <d>1812-06-24T05:06:07</d>\r\n  <e>2024-03-05</e>\r\n  <t>00:00:00</t>\r\n</r>"),
                  std::string::npos)
            << ReadFile(run.Path("back.out"));
    }
}

} // namespace

} // namespace velmora::testing
