#include "console/closing_table.h"

#include "platform/terminal.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace velmora {

namespace {

using Row = std::array<std::string, 4>;

constexpr std::string_view kGap = "  ";

Row RowOf(const TableReport& report)
{
    return {Printable(report.table), std::to_string(report.records), std::to_string(report.newColumns),
            std::to_string(report.widenedColumns)};
}

TableReport Total(std::span<const TableReport> tables)
{
    TableReport total;
    total.table = "Total (" + std::to_string(tables.size()) + " tables)";
    for (const TableReport& report : tables) {
        total.records += report.records;
        total.newColumns += report.newColumns;
        total.widenedColumns += report.widenedColumns;
    }
    return total;
}

/// The name to the left, numbers to the right.
std::string Line(const Row& row, const std::array<std::size_t, 4>& widths)
{
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string padding(widths[i] - CountCharacters(row[i]), ' ');
        line += i == 0 ? row[i] + padding : std::string(kGap) + padding + row[i];
    }
    return line + '\n';
}

} // namespace

std::string ClosingTable(std::span<const TableReport> tables)
{
    if (tables.empty())
        return {};
    std::vector<Row> rows{{"Table", "Records", "New columns", "Columns widened"}};
    for (const TableReport& report : tables)
        rows.push_back(RowOf(report));
    if (tables.size() > 1)
        rows.push_back(RowOf(Total(tables)));

    std::array<std::size_t, 4> widths{};
    for (const Row& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], CountCharacters(row[i]));

    std::size_t ruleWidth = kGap.size() * (widths.size() - 1);
    for (const std::size_t width : widths)
        ruleWidth += width;
    const std::string rule = std::string(ruleWidth, '-') + '\n';

    std::string text = Line(rows.front(), widths) + rule;
    for (std::size_t i = 1; i <= tables.size(); ++i)
        text += Line(rows[i], widths);
    if (tables.size() > 1)
        text += rule + Line(rows.back(), widths);
    return text;
}

} // namespace velmora
