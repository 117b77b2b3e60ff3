#include "log/procedure.h"
#include "platform/temporary_file.h"

#include "support/scripted_host.h"
#include "support/shared.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

class ProcedureTest : public ::testing::Test {
protected:
    testing::TempFolder folder;
    testing::ScriptedHost host;
    RunFlags flags{.blAbort = false, .blQuiet = true, .blDebug = false};
    ProtocolLog log{flags, host, [] { return std::string(); }};
};

TEST_F(ProcedureTest, ReportsTheStepThatWasReached)
{
    struct Case {
        const char* name;
        std::function<void(Step&)> body;
        const char* line;
        std::pair<int, std::string> error;
    };
    const std::string table = "person";
    const Case cases[] = {
        {"no step",
         [](Step&) { throw RuntimeError(9, "Subscript out of range"); },
         "Error: velTest: argument",
         {9, "Subscript out of range"}},
        {"a text",
         [](Step& step) {
             step("Open");
             step("Open table [" + std::string("order") + "]");
             throw RuntimeError(3163, "The field is too small");
         },
         "Error: velTest: Open table [order]",
         {3163, "The field is too small"}},
        {"a text that is built only now",
         [&](Step& step) {
             step("before");
             int number = 7;
             step([&table, number] { return "Row " + std::to_string(number) + " of " + table; });
             throw std::runtime_error("odd");
         },
         "Error: velTest: Row 7 of person",
         {513, "odd"}},
        {"a literal after a callable",
         [](Step& step) {
             step([] { return std::string("built"); });
             step("Save");
             throw std::bad_alloc();
         },
         "Error: velTest: Save",
         {7, "Out of memory"}},
        {"a disk that stands for memory",
         [](Step&) { throw TemporaryFileFull(); },
         "Error: velTest: argument",
         {7, TemporaryFileFull().what()}},
        {"the innermost procedure's",
         [&](Step& step) {
             step("outer");
             try {
                 Procedure(log, "velInner", "", [](Step& inner) {
                     inner("inner");
                     throw RuntimeError(3021, "No current record");
                 });
             } catch (const RuntimeError& error) {
                 EXPECT_EQ(error.Number(), 3021);
                 throw;
             }
         },
         "Error: velInner: inner",
         {3021, "No current record"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        flags.blAbort = false;
        host.lines.clear();
        host.errors.clear();
        EXPECT_FALSE(Guarded(log, [&] { Procedure(log, "velTest", "argument", c.body); }));
        EXPECT_TRUE(flags.blAbort);
        EXPECT_EQ(host.lines, std::vector<std::string>{c.line});
        EXPECT_EQ(host.errors, std::vector{c.error});
    }
}

TEST_F(ProcedureTest, GoesNoFurtherInAnAbortedRun)
{
    int ran = 0;
    const auto run = [&](bool cancels) {
        return Guarded(log, [&] {
            Procedure(log, "velTest", "", [&](Step&) {
                ++ran;
                if (cancels)
                    throw Aborted();
            });
        });
    };
    EXPECT_TRUE(run(false));
    EXPECT_FALSE(run(true));
    EXPECT_TRUE(flags.blAbort);
    EXPECT_FALSE(run(false));
    EXPECT_EQ(ran, 2);
    EXPECT_TRUE(host.errors.empty()) << "the user knows";
    EXPECT_THROW(Guarded(log, [] { throw RuntimeError(9, "met in no procedure"); }), RuntimeError);
}

} // namespace
} // namespace velmora
