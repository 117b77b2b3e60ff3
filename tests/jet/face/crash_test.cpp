#include "jet/face/database.h"
#include "jet/store/crash_file_system.h"

namespace jet::testing {
namespace {

TEST(Crash, ANewDatabaseIsWholeOrNotThere)
{
    for (const JetVersion version : kVersions)
        for (std::uint64_t stop = 1;; ++stop) {
            SCOPED_TRACE("operation " + std::to_string(stop));
            CrashFileSystem fs(static_cast<unsigned>(stop));
            fs.StopAt(stop);
            bool isDone = false;
            try {
                const auto connection = Connection::Create("a.mdb", version, Existing::Refuse, fs);
                connection->Execute("CREATE TABLE t (a Long)");
                connection->Commit();
                isDone = true;
                fs.PowerOff();
            } catch (const Error&) {
                EXPECT_TRUE(fs.IsOff());
            }
            fs.Crash();
            if (isDone || fs.Exists("a.mdb"))
                static_cast<void>(Connection::Open("a.mdb", fs)->OpenTable("t"));
            if (isDone)
                break;
        }
}

} // namespace
} // namespace jet::testing
