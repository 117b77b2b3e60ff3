#include "app/foretold.h"
#include "app/preview_text.h"
#include "driver/database_size.h"
#include "plan/analyse_xml.h"
#include "schema/database_session.h"
#include "xml/load_xml.h"

namespace velmora::testing {
namespace {

class PreviewTest : public ::testing::Test {
protected:
    PreviewTest()
    {
        WriteFile(folder / "1.xml",
                  "<shop><order no='7'><item>" + std::string(300, 'x') + "</item><item>y</item></order>lost</shop>");
        WriteFile(folder / "2.xml", "<shop><order no='8'><odd/><item>z</item></order></shop>");
        WriteFile(folder / "3.xml", "<shop><order>");
        WriteFile(folder / "refused.xml", "<doc><w><l><i><n>2</n></i></l></w></doc>");
        DatabaseSession session;
        session.Create(folder / "old.mdb", jet::JetVersion::Jet4, jet::Existing::Refuse);
        session.ExecuteSql("CREATE TABLE [order] ([PKEY] Counter NOT NULL, [attr_no] Text(1))");
        session.ExecuteSql("CREATE TABLE [velmora_log] ([a] Long)");
        session.Commit();
    }

    TempFolder folder;
    const std::string in = folder.Path().string() + "/";
};

TEST_F(PreviewTest, ForetellsWhateverMayGoWrong)
{
    std::filesystem::create_directories(folder / "taken" / "item.txt");
    WriteFile(folder / "file", "x");
    DatabaseSession somebodyElse;
    somebodyElse.Create(folder / "in-use.mdb", jet::JetVersion::Jet4, jet::Existing::Refuse);
    somebodyElse.Commit();
    struct Case {
        std::string options;
        int status;
    };
    const Case cases[] = {
        {"xml=" + in + "?.xml mdb=" + in + "a.mdb", 3},
        {"xml=" + in + "1.xml mdb=" + in + "old.mdb -recreate_database -complete", 3},
        {"xml=" + in + "2.xml mdb=" + in + "old.mdb -recreate_database +empty_tables", 0},
        {"xml=" + in + "1.xml mdb=" + in + "old.mdb", 3},
        {"xml=" + in + "1.xml", 1},
        {"export=" + in + "x.xml mdb=" + in + "old.mdb", 2},
        {"xml=none.xml mdb=" + in + "b.mdb", 2},
        {"xml=" + in + "1.xml mdb=" + in + "none/b.mdb", 1},
        {"xml=" + in + "1.xml mdb=" + in + "file", 2},
        {"xml=" + in + "1.xml mdb=" + in + "in-use.mdb", 1},
        {"xml=" + in + "1.xml mdb=" + in + "b.mdb log=" + in + "none/b.log", 1},
        {"xml=" + in + "1.xml mdb=" + in + "b.mdb txt=" + in + "taken", 1},
        {"xml=" + in + "1.xml mdb=" + in + "b.mdb txt=" + in + "none/out", 1},
        {"xml=" + in + "1.xml mdb=" + in + "b.mdb txt=" + in + "file", 1},
        {"xml=" + in + "1.xml mdb=" + in + "c.mdb txt=" + in + "out/", 3},
        {"xml=" + in + "refused.xml mdb=" + in + "d.mdb +skip_empty", 1},
        {"xml=" + in + "*.xml mdb=" + in + "e.mdb +skip_empty +continue", 1},
        {"xml=" + in + "1.xml mdb=" + in + "e.mdb rename=%p%file", 2},
        {"xml=" + in + "1.xml mdb=" + in + "e.mdb tags=" + in + "none.tsv", 2},
        {"xml=" + in + "?.xml mdb=" + in + "e.mdb rename=%p%%f%.done", 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.options);
        const std::string done = ExpectForetold(c.options, folder.Path());
        EXPECT_NE(done.find("\"status\": " + std::to_string(c.status) + ","), std::string::npos) << done;
    }
}

TEST_F(PreviewTest, ShowsTablesColumnsLossesAndErrors)
{
    ScriptedHost host;
    Application application(host);
    application.Form_Load("xml=" + in + "?.xml txt=" + in + "out preview");
    const RunOutcome outcome = application.Convert();
    const ConversionSettings& settings = application.GetJob().settings;
    EXPECT_EQ(PreviewText(outcome, settings, StatusOf(outcome, true, false)),
              "\nshop, new: 2 records\n"
              "  PKEY  Long Integer\n"
              "  FKEY  Long Integer\n"
              "\norder, new: 2 records, belongs to shop\n"
              "  PKEY     Long Integer\n"
              "  FKEY     Long Integer\n"
              "  attr_no  Text (255)    longest 1\n"
              "  odd      Text (255)\n"
              "  item     Text (255)    longest 1\n"
              "\nitem, new: 0 records, belongs to order\n"
              "  PKEY  Long Integer\n"
              "  FKEY  Long Integer\n"
              "  item  Memo\n"
              "\nTo know:\n"
              "  No delimiter: all values of a line run together (delimiter= names one)\n"
              "\nLeft behind:\n  " +
                  in +
                  "3.xml: line 1, column 14: the file ends inside of <order>\n"
                  "  //shop: 1 value, text beside child elements, \"lost\"; +complete imports them\n"
                  "  //shop/order/item: 2 values, no record is made at this place, \"" +
                  std::string(37, 'x') +
                  "...\"; +complete imports them\n"
                  "\nThe database would have 124 KB\n"
                  "\nA run would leave something behind. Nothing was written.\n");
    EXPECT_EQ(host.messages, std::vector<std::string>());
    EXPECT_EQ(application.GetJob().controls.txtFILE_MDB.text, "");

    RunOutcome ended{.failed = true};
    ended.preview.emplace().findings.errors.push_back({.number = 3190, .text = "Too\x1B many"});
    EXPECT_EQ(
        PreviewText(ended, settings, StatusOf(ended, true, false)),
        "\nWhat would end the run:\n  Error 3190: Too? many\n\nA run would end in an error. Nothing was written.\n");
}

TEST_F(PreviewTest, TheSizeThatARunForetellsIsAboutTheOneThatItMakes)
{
    std::string document = "<list>";
    for (int i = 0; i < 3000; ++i)
        document.append("<entry no='")
            .append(std::to_string(i))
            .append("'><text>")
            .append(std::string(static_cast<std::size_t>(i % 90), 'x'))
            .append("</text></entry>");
    WriteFile(folder / "list.xml", document + "</list>");
    ScriptedHost host;
    Job job(host);
    StructureModel model;
    MappingPlan plan;
    ReadSettingsFromForm(job.controls, job.settings, [] { return false; });
    LoadedXml xml = velLoadXML(job, Source(in + "list.xml"));
    velAnalyseXML(job, xml.document, TagMap(), model, plan);
    (void)SummaryOf("xml=" + in + "list.xml mdb=" + in + "list.mdb");
    constexpr std::uint64_t kEmpty = 98'304;
    const double made = static_cast<double>(std::filesystem::file_size(folder / "list.mdb") - kEmpty);
    const double ratio = static_cast<double>(EstimatedGrowth(xml.document, plan)) / made;
    EXPECT_GT(ratio, 0.75);
    EXPECT_LT(ratio, 1.25);
}

TEST(DatabaseSize, IsWarnedOfBeforeItsLimit)
{
    constexpr std::uint64_t kGigabyte = std::uint64_t{1} << 30;
    EXPECT_EQ(SizeWarning(kGigabyte * 3 / 2, 2 * kGigabyte), std::nullopt);
    EXPECT_EQ(SizeWarning(kGigabyte * 3 / 2, kGigabyte).value_or("").substr(0, 57),
              "The database will have about 1.5 GB, and 1 GB is all that");
    EXPECT_TRUE(SizeWarning(kGigabyte * 17 / 10, 2 * kGigabyte).has_value());
}

} // namespace
} // namespace velmora::testing
