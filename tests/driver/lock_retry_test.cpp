#include "driver/conversion.h"

#include "jet/base/error.h"

#include <algorithm>
#include <regex>

namespace velmora::testing {

namespace {

/// A conversion in which somebody else holds locks. Its time goes on only where the program waits.
class LockedConversion : public Conversion {
public:
    LockedConversion()
    {
        Text();
        // The repeated leaf has records of its own, which are saved before that of the element around it.
        Xml("<r><p><n>1</n><t>a</t><t>b</t></p><p><n>2</n><t>c</t><t>d</t></p></r>");
        batch.SetLocks({.now = [this] { return time; },
                        .pause = [this](std::chrono::milliseconds pause) { time += pause; },
                        .onWrite = [this] { MeetLock(); }});
    }
    /// Of the writes during the import, those from `first` on are refused, `count` of them.
    void Lock(int first, int count)
    {
        first_ = first;
        end_ = first + count;
    }
    std::chrono::milliseconds time{0};

private:
    void MeetLock()
    {
        if (Said("Import XML: Approx.") == 0)
            return;
        const int write = ++writes_;
        if (write >= first_ && write < end_)
            throw jet::Error(jet::ErrorNumber::TableLocked, {"p"});
    }

    int writes_ = 0;
    int first_ = 0, end_ = 0;
};

TEST(LockRetry, ARecordIsBuiltAgainUntilTheLockIsGone)
{
    // Keys are not given twice: those of the attempts that failed are left out.
    const auto withoutKeys = [](const std::string& text) {
        return std::regex_replace(text, std::regex("[^\\n]*\\|"), "");
    };
    // Before anything of a record is saved, between two leaves of it, when all of them are, behind another record.
    for (const auto& [write, record] : {std::pair(2, "1"), {3, "1"}, {4, "1"}, {7, "2"}}) {
        SCOPED_TRACE(write);
        LockedConversion run;
        run.Lock(write, 1);
        const RunOutcome outcome = run.Run();
        EXPECT_FALSE(outcome.failed) << run.Error();
        EXPECT_EQ(run.Said("E_FAIL"), 1);
        EXPECT_EQ(run.Said(std::string("E_FAIL on table [p], record ") + record), 1) << run.Protocol();
        EXPECT_EQ(run.Said("Not imported"), 0);
        EXPECT_EQ(withoutKeys(run.Dump("p")), "n\n1\n2\n");
        EXPECT_EQ(withoutKeys(run.Dump("t")), "t\na\nb\nc\nd\n");
        const std::string leaves = run.TextFile("t");
        EXPECT_EQ(std::ranges::count(leaves, '~'), 5) << leaves;
        EXPECT_EQ(run.time, std::chrono::milliseconds(100));
    }
}

TEST(LockRetry, ALockThatStaysEndsTheRunAfterTenSeconds)
{
    LockedConversion run;
    run.Lock(4, 1000);
    EXPECT_TRUE(run.Run().failed);
    EXPECT_EQ(run.Said("E_FAIL on table [p], record 1"), 100);
    EXPECT_EQ(run.time, std::chrono::seconds(10));
    ASSERT_EQ(run.host.errors.size(), 1u);
    EXPECT_EQ(run.host.errors[0].first, 3211);
    EXPECT_EQ(run.Said("Error: velImportNode: Import all columns into table [p]"), 1) << run.Protocol();
    EXPECT_EQ(run.Said("what was saved until then stays"), 1);
    EXPECT_EQ(run.Dump("p"), "PKEY|FKEY|n\n");
    EXPECT_EQ(run.Dump("t"), "PKEY|FKEY|t\n") << "rows of a record that was never saved";
}

TEST(LockRetry, TheUserNeedNotWait)
{
    LockedConversion run;
    run.Lock(4, 1000);
    run.host.onEvents = [&] {
        if (run.Said("E_FAIL") == 3)
            run.batch.btnQuit_Click();
    };
    const RunOutcome outcome = run.Run();
    EXPECT_TRUE(outcome.cancelled);
    EXPECT_FALSE(outcome.failed) << run.Error();
    EXPECT_EQ(run.Said("E_FAIL"), 3);
    EXPECT_EQ(run.Dump("t"), "PKEY|FKEY|t\n");
}

} // namespace

} // namespace velmora::testing
