// jetdump as a maintainer starts it: on files that the engine has made, and on the same files damaged.

#include "jet/face/database.h"

#include <gtest/gtest.h>
#include <random>
#include <sstream>

namespace jet::testing {
namespace {

using velmora::testing::ProcessResult;
using velmora::testing::ReadFile;
using velmora::testing::WriteFile;

std::size_t CountOf(std::string_view part, std::string_view text)
{
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string_view::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

/// A database, and what jetdump says of it once it is closed.
class JetDump : public Database {
public:
    explicit JetDump(JetVersion version) : Database(version), pageSize_(FormatOf(version).pageSize) {}

    void Close()
    {
        Database::Close();
        bytes_ = ReadFile(Path());
    }
    [[nodiscard]] ProcessResult Run(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), JETDUMP);
        arguments.push_back(Path());
        return velmora::testing::RunProcess(arguments);
    }
    [[nodiscard]] ProcessResult Page(std::size_t page) const { return Run({"--page", std::to_string(page)}); }
    /// The pages whose line in the list ends with `kind`.
    [[nodiscard]] std::vector<std::size_t> Pages(std::string_view kind) const
    {
        std::vector<std::size_t> pages;
        std::istringstream lines(Run({"--pages"}).output);
        for (std::string line; std::getline(lines, line);)
            if (line.ends_with(kind))
                pages.push_back(std::stoul(line));
        return pages;
    }
    [[nodiscard]] std::size_t TablePage(std::string_view table) const
    {
        const std::string text = Run({"--schema"}).output;
        const std::string start = "table " + std::string(table) + " (page ";
        return std::stoul(text.substr(text.find(start) + start.size()));
    }
    [[nodiscard]] std::size_t PageCount() const { return bytes_.size() / pageSize_; }

    /// The file as it was, with other bytes at `offset` of `page`.
    void Damage(std::size_t page, std::size_t offset, std::string_view bytes) const
    {
        std::string damaged = bytes_;
        damaged.replace(page * pageSize_ + offset, bytes.size(), bytes);
        WriteFile(Path(), damaged);
    }
    void CutTo(std::size_t size) const { WriteFile(Path(), std::string_view(bytes_).substr(0, size)); }

private:
    std::size_t pageSize_;
    std::string bytes_;
};

TEST(JetDump, ReadsKeysOfEveryTypeBackInBothDirections)
{
    struct Case {
        const char* type;
        std::vector<std::string> values;
        std::vector<std::string> shown; ///< where it differs from `values`
    };
    const Case cases[] = {
        {"BYTE", {"0", "255"}, {}},
        {"SHORT", {"-32768", "7"}, {}},
        {"LONG", {"-1", "2147483647"}, {}},
        {"CURRENCY", {"-0.0001", "12.5"}, {}},
        {"SINGLE", {"-1.5", "0.1"}, {}},
        {"DOUBLE", {"-1e+300", "0.25"}, {}},
        {"DATETIME", {"1850-03-05 14:07:09", "2024-03-05 00:00:00"}, {}},
        {"BIT", {"True", "False"}, {}},
        {"GUID", {"{00112233-4455-6677-8899-AABBCCDDEEFF}", "{FF000000-0000-0000-0000-000000000001}"}, {}},
        {"TEXT(50)", {"Ann 7", "\xC3\x89t\xC3\xA9 b"}, {"\"ANN 7\"", "\"ETE B\"..."}},
        {"DECIMAL(10, 2)", {"-12.34", "99999999.5"}, {}},
    };
    for (const JetVersion version : kVersions) {
        SCOPED_TRACE(static_cast<int>(version));
        JetDump dump(version);
        std::string columns;
        const std::size_t count = std::size(cases) - (version == JetVersion::Jet3 ? 1 : 0); // it has no decimals
        for (std::size_t i = 0; i < count; ++i)
            columns += (i ? ", V" : "V") + std::to_string(i) + "_ " + cases[i].type;
        dump.Execute("CREATE TABLE t (" + columns + ")");
        for (std::size_t i = 0; i < count; ++i) {
            const std::string n = std::to_string(i);
            dump.Execute("CREATE INDEX up" + n + " ON t (V" + n + "_)");
            dump.Execute("CREATE INDEX down" + n + " ON t (V" + n + "_ DESC)");
        }
        for (std::size_t row = 0; row < 3; ++row) { // the last one all Null
            Recordset records = dump.Open("t");
            records.AddNew();
            for (std::size_t i = 0; i < count && row < 2; ++i)
                records.SetText(i, cases[i].values[row]);
            records.Update();
        }
        dump.Close();

        std::string text;
        for (const std::size_t page : dump.Pages("index leaf of table " + std::to_string(dump.TablePage("t")))) {
            const ProcessResult shown = dump.Page(page);
            EXPECT_EQ(shown.status, 0) << shown.output;
            text += shown.output;
        }
        for (std::size_t i = 0; i < count; ++i) {
            SCOPED_TRACE(cases[i].type);
            std::vector<std::string> wanted = cases[i].shown.empty() ? cases[i].values : cases[i].shown;
            const bool isBoolean = std::string_view(cases[i].type) == "BIT";
            for (const std::string& value : wanted) {
                const std::size_t times = isBoolean && value == "False" ? 4 : 2;
                EXPECT_EQ(CountOf("V" + std::to_string(i) + "_ " + value + " -> page", text), times) << value << text;
            }
            EXPECT_EQ(CountOf("V" + std::to_string(i) + "_ Null -> page", text), isBoolean ? 0 : 2);
        }
    }
}

/// Nodes and leaves, and memos in the row, on a shared page and in a chain.
void FillWithEverything(JetDump& dump)
{
    dump.Execute("CREATE TABLE people (Id COUNTER, Name TEXT(100), Note MEMO, Born DATETIME, Member BIT)");
    dump.Execute("CREATE INDEX PrimaryKey ON people (Id) WITH PRIMARY");
    dump.Execute("CREATE INDEX ByName ON people (Name)");
    dump.Add("people", {{"Name", "Ann"}, {"Note", "short"}, {"Born", "2024-03-05 14:07:09"}, {"Member", "True"}});
    dump.Add("people", {{"Name", "Ben"}, {"Note", std::string(500, 'm')}});
    dump.Add("people", {{"Name", "Zoe"}, {"Note", std::string(9000, 'c')}});
    for (int i = 0; i < 700; ++i)
        dump.Add("people", {{"Name", "name " + std::to_string(i)}});
    dump.Close();
}

TEST(JetDump, ShowsEveryPageOfASoundFileWithoutComplaint)
{
    for (const JetVersion version : kVersions) {
        SCOPED_TRACE(static_cast<int>(version));
        JetDump dump(version);
        FillWithEverything(dump);
        std::string all;
        for (std::size_t page = 0; page < dump.PageCount(); ++page) {
            const ProcessResult shown = dump.Page(page);
            EXPECT_EQ(shown.status, 0) << shown.output << shown.errors;
            all += shown.output;
        }
        for (const char* wanted : {"Name = Ann", " bytes here: short", "000 bytes in a chain from page",
                                   "Born = 2024-03-05 14:07:09", "Member = True", "Note is Null", "long values, tag",
                                   "index ByName: number 1, tree 1", "index PrimaryKey: number 0, tree 0, primary key",
                                   "Id 700 -> page", "Name \"NAME 3\" -> page", "node of an index of the table",
                                   "counter of commits", "column Note: memo, 0 bytes, number 2, variable 1"}) {
            EXPECT_NE(all.find(wanted), std::string::npos) << wanted;
        }
    }
}

TEST(JetDump, SaysWhatIsWrongInItsPlaceAndGoesOn)
{
    JetDump dump(JetVersion::Jet4);
    FillWithEverything(dump);
    const std::string table = std::to_string(dump.TablePage("people"));
    const std::size_t rows = dump.Pages("rows of table " + table).front();
    std::size_t leaf = 0;
    for (const std::size_t page : dump.Pages("index leaf of table " + table))
        if (dump.Page(page).output.find("  Id 2 -> page") != std::string::npos)
            leaf = page;
    // The definition's own number: its chain comes back to it.
    const std::string circle{static_cast<char>(std::stoul(table)), '\0', '\0', '\0'};
    struct Case {
        const char* name;
        std::size_t page, offset;
        std::string bytes;
        const char* complaint;
        const char* stillShown;
    };
    const Case cases[] = {
        {"a slot that points nowhere", rows, 14, std::string("\xFF\x1F"), "! Page", "Name = Zoe"},
        {"more slots than fit", rows, 12, std::string("\xFF\xFF"), "slots overrun it", "rows of the table"},
        {"another free space", rows, 2, std::string("\x01\x00", 2), "between slots and rows are", "Name = Zoe"},
        {"an owner that is no table", rows, 4, std::string("\x01\x00\x00\x00", 4), "its type is 1", "slot 0 at"},
        {"an index page of nobody", leaf, 4, std::string("\xFF\xFF\xFF\x00", 4), "the file has only", "7F 80 00 00 01"},
        {"entries out of order", leaf, 484, std::string("\xFF"), "does not follow on the entry before", "Id 2 -> page"},
        {"a definition that goes round", std::stoul(table), 4, circle, "goes round in a circle", "goes on"},
        {"a count of columns beyond all", std::stoul(table), 45, std::string("\xFF\xFF"), "! not the beginning",
         "last page of its chain"},
        {"an unknown type", rows, 0, std::string("\x63"), "type 99", "page"},
        {"a write under way", 0, 4096 - 512, std::string("\x00\x00", 2), "a write was under way", "map of free pages"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        dump.Damage(c.page, c.offset, c.bytes);
        const ProcessResult shown = dump.Page(c.page);
        EXPECT_EQ(shown.status, 1);
        EXPECT_NE(shown.output.find(c.complaint), std::string::npos) << shown.output;
        EXPECT_NE(shown.output.find(c.stillShown), std::string::npos) << shown.output;
    }
    dump.CutTo(dump.PageCount() * 4096 - 100);
    EXPECT_EQ(dump.Page(dump.PageCount() - 1).output.substr(0, 5), "page ");
    EXPECT_EQ(dump.Page(dump.PageCount()).status, 1);
    EXPECT_EQ(dump.Run({"--page", "two"}).status, 2);
}

TEST(JetDump, NoDamageStopsIt)
{
    constexpr unsigned kSeed = 20240305;
    std::mt19937 random(kSeed);
    for (const JetVersion version : kVersions) {
        JetDump dump(version);
        FillWithEverything(dump);
        for (int round = 0; round < 100; ++round) {
            const std::size_t page = random() % dump.PageCount();
            const std::size_t offset = random() % (random() % 2 ? 64 : 1000);
            dump.Damage(page, offset, std::string(1 + random() % 3, static_cast<char>(random())));
            const ProcessResult shown = dump.Page(page);
            EXPECT_TRUE(shown.status == 0 || shown.status == 1)
                << "seed " << kSeed << ", round " << round << ", page " << page << ", offset " << offset << '\n'
                << shown.errors;
        }
    }
}

} // namespace
} // namespace jet::testing
