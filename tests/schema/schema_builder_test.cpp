#include "schema/schema_builder.h"

#include "support/scripted_host.h"
#include "support/shared.h"
#include "xml/structure_analysis.h"

namespace velmora::testing {

namespace {

/// A document and the database that is made for it.
class Schema {
public:
    Schema()
    {
        job.settings.blQuiet = true;
        job.settings.blImportAttributes = true;
        session.Create(folder_ / "out.mdb", jet::JetVersion::Jet4, jet::Existing::Refuse);
    }

    void Analyse(const std::string& xml)
    {
        WriteFile(folder_ / "a.xml", xml);
        document_ = velLoadXML(job, (folder_ / "a.xml").string()).document;
        velAnalyseXML(job, document_, model);
    }
    void Build(int pass) { velCreateDatabase(job, session, document_, model, map_, pass); }
    [[nodiscard]] std::size_t TableCount()
    {
        std::size_t count = 0;
        for (auto rows = session.OpenSchema(jet::SchemaKind::Tables, {"", "", "", "TABLE"}); !rows.Eof();
             rows.MoveNext())
            ++count;
        return count;
    }

    ScriptedHost host;
    Job job{host};
    DatabaseSession session;
    StructureModel model;

private:
    TempFolder folder_;
    Document document_;
    TagMap map_;
};

TEST(SchemaBuilder, AnyOtherPassIsNotSupported)
{
    Schema schema;
    schema.Analyse("<r><n>1</n></r>");
    schema.Build(3);
    EXPECT_EQ(schema.host.lines.back(), "Not supported option");
    EXPECT_EQ(schema.TableCount(), 0u);
}

TEST(SchemaBuilder, TextsOfMoreThan255CharactersAreMemos)
{
    Schema schema;
    schema.Analyse("<r><a>" + std::string(255, 'x') + "</a><b>" + std::string(256, 'x') + "</b><c>" +
                   std::string(300, '1') + "</c></r>");
    schema.Build(schema_pass::kCreateTables);
    Recordset records = schema.session.OpenTable("r");
    EXPECT_FALSE(records.IsMemo(0));
    EXPECT_TRUE(records.IsMemo(1));
    EXPECT_FALSE(records.IsMemo(2)) << "digits count as a number, whose size is no length";
    EXPECT_EQ(schema.model.Element(1).lngColumns, 3);
}

TEST(SchemaBuilder, ADocumentThatNeedsMoreObjectsThanAFileCanHoldIsRefusedBeforeTheFirstTable)
{
    constexpr int kTables = 17000; // and as many relations
    std::string xml = "<r>";
    for (int table = 0; table < kTables; ++table) {
        const std::string tag = "t" + std::to_string(table);
        xml += "<" + tag + "><x/></" + tag + ">";
    }
    Schema schema;
    schema.job.settings.blCreateTableRelations = true;
    schema.Analyse(xml + "</r>");
    schema.Build(schema_pass::kCreateTables);
    ASSERT_EQ(schema.host.errors.size(), 1u);
    EXPECT_NE(schema.host.errors[0].second.find("17001 tables"), std::string::npos) << schema.host.errors[0].second;
    EXPECT_NE(schema.host.errors[0].second.find("-relations"), std::string::npos);
    EXPECT_EQ(schema.TableCount(), 0u);
}

} // namespace

} // namespace velmora::testing
