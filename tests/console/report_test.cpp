#include "console/console_host.h"
#include "console/report.h"

#include "app/exit_status.h"
#include "console/terminal_lines.h"
#include "platform/terminal.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <memory>

namespace velmora {
namespace {

TEST(ProgressLine, ShowsWhatIsKnownInTheWidthThereIs)
{
    struct Case {
        const char* name;
        ProgressState state;
        std::size_t columns;
        const char* line;
    };
    const ProgressState half{.files = 1, .records = 500, .recordsTotal = 1000, .importMilliseconds = 2000};
    ProgressState young = half;
    young.importMilliseconds = 100;
    const Case cases[] = {
        {"reading", {.files = 1, .recordsTotal = 100, .fileMilliseconds = 3700}, 80, "reading, 0:03"},
        {"reading the second of three",
         {.files = 3, .filesDone = 1, .bytes = 50, .bytesTotal = 200, .fileMilliseconds = 61000},
         80,
         "2 of 3  reading, 25%, 1:01"},
        {"half", half, 80, "[#############              ]   50%  500 of about 1000 records, 250/s, 0:02 left"},
        {"no rate yet", young, 80, "[###############               ]   50%  500 of about 1000 records"},
        {"narrow", half, 60, "[###    ]   50%  500 of about 1000 records, 250/s, 0:02 left"},
        {"too narrow for a bar", half, 20, "50%  500 of about 10"},
        {"more than estimated",
         {.files = 1, .records = 300, .recordsTotal = 200, .importMilliseconds = 1000},
         60,
         "[########]  100%  300 of about 200 records, 300/s, 0:00 left"},
        {"hours left",
         {.files = 2, .filesDone = 1, .records = 1, .recordsTotal = 3724, .importMilliseconds = 1000},
         70,
         "2 of 2  [          ]    0%  1 of about 3724 records, 1/s, 1:02:03 left"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string line = ProgressLine(c.state, c.columns);
        EXPECT_LE(line.size(), c.columns);
        EXPECT_EQ(line, c.line);
    }
}

TEST(ClosingTable, AlignsNamesLeftAndNumbersRight)
{
    EXPECT_EQ(ClosingTable({}), "");
    const TableReport reports[] = {{"stra\xC3\x9F"
                                    "e",
                                    12, 3, 0},
                                   {"a\x1B[31m", 1000, 0, 1}};
    EXPECT_EQ(ClosingTable(std::span(reports, 1)), "Table   Records  New columns  Columns widened\n"
                                                   "---------------------------------------------\n"
                                                   "stra\xC3\x9F"
                                                   "e       12            3                0\n");
    EXPECT_EQ(ClosingTable(reports), "Table             Records  New columns  Columns widened\n"
                                     "-------------------------------------------------------\n"
                                     "stra\xC3\x9F"
                                     "e                 12            3                0\n"
                                     "a?[31m               1000            0                1\n"
                                     "-------------------------------------------------------\n"
                                     "Total (2 tables)     1012            3                1\n");
}

TEST(ClosingTable, FitsIntoTheTerminal)
{
    const TableReport reports[] = {{"a_rather_long_name_of_a_table_1", 1, 0, 0}, {"caf\xC3\xA9_2", 2, 3, 4}};
    struct Case {
        std::size_t columns;
        const char* heading;
        const char* first;
    };
    const Case cases[] = {
        {80, "Table                            Records  New columns  Columns widened\n",
         "a_rather_long_name_of_a_table_1 "},
        {60, "Table                            Records  New  Widened\n", "a_rather_long_name_of_a_table_1 "},
        {40, "Table              Records  New  Widened\n", "a_rather..table_1 "},
        {1, "Table     Records  New  Widened\n", "a_r..e_1 "},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.columns);
        const std::string table = ClosingTable(reports, c.columns);
        EXPECT_EQ(table.substr(0, table.find('\n') + 1), c.heading);
        EXPECT_NE(table.find(c.first), table.npos) << table;
        EXPECT_NE(table.find("\ncaf\xC3\xA9_2 "), table.npos) << table;
    }
}

TEST(Printable, KeepsTextAndDropsWhatSteersATerminal)
{
    EXPECT_EQ(Printable("a\tb\r\nc \xC3\xA4\xE2\x82\xAC"), "a\tb\nc \xC3\xA4\xE2\x82\xAC");
    EXPECT_EQ(Printable("\x1B]0;x\x07\r\x7F\xC2\x9B"), "?]0;x????");
}

/// A host whose person has typed `text`.
struct Typist {
    explicit Typist(const char* text)
    {
        std::fputs(text, input.get());
        std::rewind(input.get());
        host.TakeAnswersFrom(input.get());
        ::testing::internal::CaptureStderr();
    }
    std::string Shown() { return ::testing::internal::GetCapturedStderr(); }

    std::unique_ptr<std::FILE, int (*)(std::FILE*)> input{std::tmpfile(), &std::fclose};
    ConsoleHost host;
};

TEST(ConsoleHost, AsksALineAndTakesTheEndOfTheInputForACancel)
{
    struct Case {
        const char* name;
        const char* typed;
        Buttons buttons;
        Answer defaultAnswer;
        Answer answer;
    };
    const Case cases[] = {
        {"letter", "r\n", Buttons::RetryCancel, Answer::Retry, Answer::Retry},
        {"word", "  CANCEL \r\n", Buttons::RetryCancel, Answer::Retry, Answer::Cancel},
        {"Return is the default", "\n", Buttons::YesNoCancel, Answer::No, Answer::No},
        {"asked until it is a button", "maybe\nx\ny\n", Buttons::YesNoCancel, Answer::No, Answer::Yes},
        {"line without an end", "o", Buttons::OkCancel, Answer::Cancel, Answer::Ok},
        {"end of the input", "", Buttons::RetryCancel, Answer::Retry, Answer::Cancel},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Typist typist(c.typed);
        EXPECT_EQ(typist.host.Ask("Go\r\non?", "", c.buttons, Icon::Question, c.defaultAnswer), c.answer);
        EXPECT_TRUE(typist.Shown().starts_with("Go\non?\n" + ButtonLine(c.buttons, c.defaultAnswer)));
    }
    EXPECT_EQ(ButtonLine(Buttons::YesNoCancel, Answer::No), "[Y]es, [N]o or [C]ancel (Return: No)? ");
}

TEST(ConsoleHost, TakesALineForAnInputBoxAndAsksNobodyInAQuietRun)
{
    Typist typist("\\t\r\n\n");
    EXPECT_EQ(typist.host.InputBox("Delimiter", "None"), "\\t");
    EXPECT_EQ(typist.host.InputBox("Delimiter", "None"), "");
    EXPECT_EQ(typist.host.InputBox("Delimiter", "None"), std::nullopt);
    EXPECT_TRUE(typist.Shown().starts_with("None\nDelimiter: "));

    ConsoleHost quiet;
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(quiet.InputBox("Delimiter", "None"), std::nullopt);
    EXPECT_EQ(quiet.Ask("?", "", Buttons::RetryCancel, Icon::Question, Answer::Retry), Answer::Cancel);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "velmora: ?\n");
}

TEST(Help, LaysOutEveryOptionWithinEightyColumns)
{
    const std::string help = HelpText();
    for (const char* lines : {"\nTarget\n  mdb=FILE  m=            the database\n",
                              "\n  ver=2000|97  v=         the format of a new database: Access 2000 to 2003, or\n"
                              "                          Access 97 (default 2000)\n",
                              "\n  +empty_tables  empty_tables  +e  e\n"
                              "                          with -recreate_database: delete the records of all\n"
                              "                          tables first, those that velmora did not make\n"
                              "                          included\n"
                              "  -empty_tables  -e       keep them (default)\n"})
        EXPECT_NE(help.find(lines), std::string::npos) << lines;
    for (std::size_t begin = 0, end; (end = help.find('\n', begin)) != std::string::npos; begin = end + 1)
        EXPECT_LE(end - begin, 80U) << help.substr(begin, end - begin);
}

TEST(ExitStatus, IsTheGravestOfWhatHappened)
{
    struct Case {
        const char* name;
        RunOutcome outcome;
        bool mappingLoaded;
        int status;
        int strictStatus;
    };
    const Case cases[] = {
        {"converted", {.convertedFiles = 2}, true, 0, 0},
        {"error", {.failed = true, .unreadableFiles = 1}, true, 1, 1},
        {"nothing to do", {.nothingToDo = true}, false, 2, 2},
        {"unreadable", {.unreadableFiles = 1, .convertedFiles = 2}, true, 3, 3},
        {"no mapping", {.convertedFiles = 1}, false, 3, 3},
        {"values left out", {.leftOut = {1, {}}}, true, 0, 3},
        {"records without text", {.recordsWithoutText = 1}, true, 0, 3},
        {"cancelled", {.failed = true, .cancelled = true}, true, 130, 130},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(static_cast<int>(StatusOf(c.outcome, c.mappingLoaded, false)), c.status) << c.name;
        EXPECT_EQ(static_cast<int>(StatusOf(c.outcome, c.mappingLoaded, true)), c.strictStatus) << c.name;
    }
}

} // namespace
} // namespace velmora
