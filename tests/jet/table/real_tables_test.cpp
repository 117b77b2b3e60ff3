#include "jet/base/hex.h"
#include "support/process.h"
#include "support/shared.h"
#include "table_support.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace jet::testing {

namespace {

using velmora::testing::TempFolder;

struct RealTable {
    std::string name;
    PageNumber page;
};

/// The user tables of a database, as MSysObjects lists them.
std::vector<RealTable> UserTables(Pager& pager)
{
    Table objects(pager, kObjectsPage, "MSysObjects");
    const TableDef& def = objects.Definition();
    std::vector<RealTable> tables;
    for (const RowId row : AllRows(objects)) {
        const std::vector<Value> values = Values(objects, row);
        const auto number = [&](const char* column) {
            return std::get<std::int32_t>(values[def.ColumnIndex(column).value()]);
        };
        const std::string name = ToText(values[def.ColumnIndex("Name").value()]);
        if (number("Type") == 1 && number("Flags") == 0)
            tables.push_back({name, static_cast<PageNumber>(number("Id")) & 0xFFFFFF});
    }
    return tables;
}

std::unique_ptr<Pager> OpenCopy(const std::filesystem::path& from, const std::filesystem::path& to)
{
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing);
    return Pager::Open(OpenFile(to, OpenMode::ReadWrite));
}

bool IsCompared(const Column& column)
{
    return column.type == ColumnType::Text || column.type == ColumnType::Memo || column.type == ColumnType::Long ||
           column.type == ColumnType::Integer || column.type == ColumnType::Byte;
}

/// All rows, one line each: the fields that are texts or whole numbers, as the checker has them, in hex, since a text
/// may hold line ends.
std::vector<std::string> CheckerRows(const std::filesystem::path& shared, const std::filesystem::path& file,
                                     const Table& table)
{
    static constexpr char kScript[] = "import sys\n"
                                      "from jetcheck.reader import open_mdb\n"
                                      "for row in open_mdb(sys.argv[1]).table(sys.argv[2]).rows():\n"
                                      "    v = row.values\n"
                                      "    text = '|'.join('' if v[c] is None else str(v[c]) for c in sys.argv[3:])\n"
                                      "    print(text.encode('utf-8', 'surrogatepass').hex(' ').upper())\n";
    std::vector<std::string> arguments = {"python3", "-c", kScript, file.string(), table.Name()};
    for (const Column& column : table.Definition().columns) {
        if (IsCompared(column))
            arguments.push_back(column.name);
    }
    const auto result = velmora::testing::RunProcess(arguments, {}, shared / "tools");
    EXPECT_EQ(result.status, 0) << result.errors;
    std::vector<std::string> lines;
    for (std::size_t begin = 0, end; (end = result.output.find('\n', begin)) != std::string::npos; begin = end + 1)
        lines.push_back(result.output.substr(begin, end - begin));
    return lines;
}

std::vector<std::string> OurRows(const Table& table)
{
    std::vector<std::string> lines;
    for (const RowId row : AllRows(table)) {
        const std::vector<Value> values = Values(table, row);
        std::string line;
        bool first = true;
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (!IsCompared(table.Definition().columns[i]))
                continue;
            if (!first)
                line += '|';
            line += ToText(values[i]);
            first = false;
        }
        const auto* bytes = reinterpret_cast<const Byte*>(line.data());
        lines.push_back(Hex({bytes, line.size()}));
    }
    return lines;
}

} // namespace

TEST(RealTables, RowsReadAsTheCheckerReadsThem)
{
    REQUIRE_SHARED(shared);
    const TempFolder folder;
    std::size_t rows = 0;
    for (const char* name :
         {"testV1997.mdb", "overflowTestV2000.mdb", "delColTestV1997.mdb", "delColTestV2000.mdb",
          "testUnicodeCompV2003.mdb", "bigIndexTestV2000.mdb", "testIndexCodesV1997.mdb", "compIndexTestV1997.mdb"}) {
        const auto pager = OpenCopy(shared / "corpus" / "mdb" / name, folder / name);
        for (const RealTable& real : UserTables(*pager)) {
            SCOPED_TRACE(std::string(name) + ", " + real.name);
            const Table table(*pager, real.page, real.name);
            const std::vector<std::string> ours = OurRows(table);
            EXPECT_EQ(ours, CheckerRows(shared, folder / name, table));
            rows += ours.size();
        }
    }
    EXPECT_GT(rows, 100u);
}

} // namespace jet::testing
