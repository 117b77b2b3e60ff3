#include "driver/conversion.h"

#include "jet/base/value_text.h"
#include "jet/connection.h"
#include "schema/database_session.h"
#include "xml/document_loader.h"

#include <map>
#include <random>

namespace velmora::testing {

namespace {

TEST(Complete, WideElementsGoOnInFurtherTables)
{
    std::string xml = "<r>";
    for (const char* const value : {"x", "y"}) {
        xml += "<p>";
        for (int i = 0; i < 520; ++i)
            xml += "<c" + std::to_string(i) + ">" + std::string(i == 519 ? 1 : 300, *value) + "</c" +
                   std::to_string(i) + ">";
        xml += "</p>";
    }
    for (const char* const options : {"", "ver=97", "-relations"}) {
        SCOPED_TRACE(options);
        Conversion run;
        run.Options("+complete").Options(options).Xml(xml + "</r>");
        ASSERT_FALSE(run.Run().failed) << run.Error();
        EXPECT_EQ(run.Said("Values: 1040 offered, 1040 stored, 0 lost"), 1) << run.Protocol();
        const bool is97 = std::string_view(options) == "ver=97";
        EXPECT_EQ(run.Tables(), is97 ? "p p_2 p_3 p_4 r " : *options == '-' ? "p p_2 p_3 " : "p p_2 p_3 r ");
        const std::string last = is97 ? "p_4" : "p_3";
        EXPECT_EQ(run.Dump(last).substr(0, 5), "PKEY|");
        EXPECT_NE(run.Dump(last).find("|x\n2|"), std::string::npos);
        EXPECT_EQ(run.Said("in spite of -relations") > 0, *options == '-');
    }
}

/// A document whose elements have a value each, all different, under names that clash.
class ClashingDocument {
public:
    explicit ClashingDocument(unsigned seed) : random_(seed) { Element(0, 0); }

    std::string text;
    std::vector<std::string> values;
    std::vector<std::size_t> parents; ///< by value: the value of the element around

private:
    std::size_t Below(std::size_t limit) { return random_() % limit; }
    void Element(int depth, std::size_t parent)
    {
        static const std::vector<std::string> kTags = {"a",
                                                       "A",
                                                       "a.b",
                                                       "a_b",
                                                       "x:a",
                                                       "PKEY",
                                                       "FKEY",
                                                       "MASTER_TABLE",
                                                       "ss",
                                                       "\xC3\x9F",
                                                       "\xC3\xA9",
                                                       "\xC3\x89",
                                                       std::string(70, 'n'),
                                                       std::string(71, 'n')};
        const std::string& tag = depth == 0 ? kTags[0] : kTags[Below(kTags.size())];
        const std::size_t own = values.size();
        values.push_back("v" + std::to_string(own) + "v" + std::string(Below(20) == 0 ? 300 : 0, 'l'));
        parents.push_back(parent);
        text += "<" + tag;
        const bool inAttribute = Below(3) == 0;
        if (inAttribute)
            text += (Below(2) == 0 ? " k='" : " x:k='") + values[own] + "'";
        const std::size_t split = inAttribute ? 0 : Below(3) == 0 ? 1 : values[own].size();
        text += ">" + values[own].substr(0, split);
        for (std::size_t child = depth < 5 ? Below(5) : 0; child > 0; --child)
            Element(depth + 1, own);
        if (depth < 5 && Below(5) == 0)
            text += "<" + kTags[Below(kTags.size())] + "/>";
        text += (inAttribute ? "" : values[own].substr(split)) + "</" + tag + ">";
    }

    std::mt19937 random_;
};

/// Where a value stands: the record, the parts of one taken together.
struct Place {
    std::string table, key, parentTable, parentKey;
};

std::map<std::string, std::vector<Place>> PlacesOfValues(const std::filesystem::path& target)
{
    std::map<std::string, std::string> parentOf, firstOf;
    std::vector<std::string> tables;
    {
        DatabaseSession session;
        session.Open(target);
        tables = session.UserTables();
        for (const std::string& table : tables) {
            const Origins origins = session.OriginsOf(table);
            firstOf[table] = origins.table && !origins.table->continues.empty() ? origins.table->continues : table;
        }
    }
    const auto connection = jet::Connection::Open(target);
    for (auto rows = connection->OpenSchema(jet::SchemaKind::ForeignKeys); !rows.Eof(); rows.MoveNext())
        parentOf[rows.Text("FK_TABLE_NAME")] = rows.Text("PK_TABLE_NAME");
    std::map<std::string, std::vector<Place>> places;
    for (const std::string& table : tables) {
        jet::Recordset records = connection->OpenTable(table);
        const auto text = [&](std::string_view column) {
            const auto field = records.FieldIndex(column);
            return field ? jet::ToText(records.Get(*field)) : std::string();
        };
        for (records.MoveFirst(); !records.Eof(); records.MoveNext()) {
            const std::string master = text("MASTER_TABLE");
            const Place place{firstOf[table], text("PKEY"), master.empty() ? parentOf[table] : master, text("FKEY")};
            for (std::size_t field = 0; field < records.FieldCount(); ++field)
                if (const std::string value = jet::ToText(records.Get(field)); value.starts_with('v'))
                    places[value].push_back(place);
        }
    }
    return places;
}

/// An element as text that is the same for two that the way back need not tell apart: the joined text comes first, and
/// differently named children in any order.
std::string Canonical(const Document& document, ElementId element)
{
    std::map<std::string, std::string> attributes;
    for (std::uint32_t i = 0; i < document.AttributeCount(element); ++i)
        attributes.emplace(document.NameText(document.AttributeName(element, i)), document.AttributeValue(element, i));
    std::map<std::string, std::string> children;
    for (ElementId child = document.FirstChild(element); child != kNoElement; child = document.NextSibling(child))
        children[std::string(document.NameText(document.Name(child)))] += Canonical(document, child);
    std::string text("<");
    text.append(document.NameText(document.Name(element)));
    for (const auto& [name, value] : attributes)
        text.append(" ").append(name).append("='").append(value).append("'");
    const std::string_view content = document.Content(element);
    text.append(">").append(IsBlank(content) ? std::string_view() : content);
    for (const auto& [name, elements] : children)
        text += elements;
    return text.append("</>");
}

std::string Canonical(const std::filesystem::path& file)
{
    const LoadResult loaded = LoadDocument(
        file.string(), [](std::int64_t) {}, MemoryBudget(kDocumentMemoryBudgetBytes), Blanks::KeptBesideText);
    return loaded.document.IsEmpty() ? loaded.problem : Canonical(loaded.document, loaded.document.Root());
}

/// The file that the way back has written.
std::filesystem::path WriteBack(Conversion& run)
{
    std::filesystem::path file = run.Path("back.out");
    run.job.controls.txtFILE_XML.text.clear();
    run.job.controls.txtFILE_EXPORT.text = file.string();
    EXPECT_FALSE(run.Run().failed) << run.Error() << run.Protocol();
    return file;
}

TEST(Complete, DocumentsComeBackLetterForLetter)
{
    Conversions runs;
    for (const auto& entry : std::filesystem::directory_iterator(BACK)) {
        SCOPED_TRACE(entry.path());
        const std::string document = ReadFile(entry.path());
        for (const char* const options : {"", "ver=97"}) {
            Conversion& run = runs.Next();
            ASSERT_FALSE(run.Options("+complete").Options(options).Xml(document).Run().failed) << run.Error();
            std::string back = ReadFile(WriteBack(run));
            std::erase(back, '\r');
            EXPECT_EQ(back, document);
        }
    }
}

TEST(Complete, EveryValueOfARandomDocumentStandsInOneCellOfTheRightRecordAndComesBack)
{
    const char* const options[] = {"", "+one_table_per_element", "+skip_empty", "ver=97",
                                   "ver=97 +one_table_per_element +skip_empty"};
    Conversions runs;
    for (unsigned seed = 1; seed <= 10; ++seed) {
        const char* const words = options[seed % std::size(options)];
        SCOPED_TRACE("seed " + std::to_string(seed) + " " + words);
        const ClashingDocument document(seed);
        Conversion& run = runs.Next();
        ASSERT_FALSE(run.Options("+complete").Options(words).Xml(document.text).Run().failed) << run.Error();
        const auto places = PlacesOfValues(run.Target());
        ASSERT_EQ(places.size(), document.values.size()) << document.text;
        for (std::size_t i = 0; i < document.values.size(); ++i) {
            const std::vector<Place>& found = places.at(document.values[i]);
            ASSERT_EQ(found.size(), 1u) << document.values[i];
            const Place& own = found.front();
            const Place& around = places.at(document.values[document.parents[i]]).front();
            const bool isSameRecord = own.table == around.table && own.key == around.key;
            const bool isChild = own.parentTable == around.table && own.parentKey == around.key;
            EXPECT_TRUE(isSameRecord || isChild)
                << document.values[i] << " in [" << own.table << "] " << own.key << "\n"
                << document.text << run.Content();
        }
        EXPECT_EQ(Canonical(WriteBack(run)), Canonical(run.Path("a.xml"))) << run.Protocol();
    }
}

} // namespace

} // namespace velmora::testing
