#include "driver/conversion.h"

#include <algorithm>
#include <set>

namespace velmora::testing {

namespace {

/// Prepares a run over two files into a database of an earlier one.
void Prepare(Conversion& run, const char* options)
{
    run.Xml("<r><p><n>old</n></p></r>", "1.xml").Run();
    run.Xml("<r><p><n>1</n><t>a</t><t>b</t></p><q k=\"v\"/></r>", "1.xml");
    run.Xml("<r><p><n>2</n></p></r>", "2.xml").Options(options).Options("rename=%p%done/%f%.xml");
    run.job.controls.txtFILE_TXT.text = run.Path("out").string();
}

/// Runs and cancels at the n-th moment at which a cancel can arrive; false when there are fewer. Adds the protocol line
/// that was the last one then.
bool CancelAt(Conversion& run, int n, std::set<std::string>& stages)
{
    int events = 0;
    run.host.onEvents = [&] {
        if (++events != n)
            return;
        stages.insert(run.host.lines.empty() ? "" : run.host.lines.back().substr(0, 16));
        run.batch.btnQuit_Click();
    };
    const RunOutcome outcome = run.Run();
    EXPECT_FALSE(outcome.failed) << run.Error();
    EXPECT_EQ(outcome.cancelled, events >= n);
    return events >= n;
}

TEST(Cancel, IsSafeAtEveryMoment)
{
    struct Case {
        const char* options;
        std::set<std::string> stages;
    };
    const Case cases[] = {
        {"", {"Open XML", "Analyse XML", "Create tables", "Create relations", "Import XML: Appr", "Create database"}},
        {"-recreate_database +empty_tables",
         {"Deleting content", "Open XML", "Analyse XML", "Extend MDB struc", "Create relations", "Import XML: Appr",
          "Close tables"}},
    };
    for (const auto& [options, expectedStages] : cases) {
        SCOPED_TRACE(options);
        Conversions runs;
        std::set<std::string> stages;
        int n = 1;
        for (bool cancelled = true; cancelled; ++n) {
            SCOPED_TRACE("cancelled at event " + std::to_string(n));
            Conversion& run = runs.Next();
            Prepare(run, options);
            cancelled = CancelAt(run, n, stages);
            EXPECT_EQ(run.host.lines.back(), "Done");
            EXPECT_EQ(run.job.controls.btnConvertCaption, "Convert");
            EXPECT_EQ(run.Said("The run ended early"), cancelled ? 1 : 0);
            const std::string records = run.Dump("p");
            if (run.Said("nothing was saved") > 0) {
                EXPECT_EQ(records, "PKEY|FKEY|n\n1|1|old\n") << "no record is given up for none";
            } else if (records.find("|old\n") == records.npos) {
                const std::string roots = run.Dump("r");
                EXPECT_GT(std::count(roots.begin(), roots.end(), '\n'), 1) << "the old ones went for nothing";
            }
            // A file that was moved away has all its records in the database.
            for (const char* name : {"1", "2"})
                if (!std::filesystem::exists(run.Path(name + std::string(".xml")))) {
                    EXPECT_NE(records.find("|" + std::string(name) + "\n"), std::string::npos) << records;
                }
        }
        for (const std::string& stage : expectedStages)
            EXPECT_TRUE(stages.contains(stage)) << stage << ::testing::PrintToString(stages);
    }
}

} // namespace

} // namespace velmora::testing
