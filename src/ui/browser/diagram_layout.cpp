#include "ui/browser/diagram_layout.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <numeric>
#include <string>

namespace velmora {

namespace {

constexpr int kSweeps = 8; // more hardly ever mend a crossing

using Numbers = std::vector<std::size_t>;

/// Which tables each refers to, and which refer to it; no loops.
struct Links {
    std::vector<Numbers> up, down;

    explicit Links(const DatabaseContents& contents) : up(contents.tables.size()), down(contents.tables.size())
    {
        std::map<std::string, std::size_t> numbers;
        for (std::size_t i = 0; i < contents.tables.size(); ++i)
            numbers.emplace(contents.tables[i].name, i);
        for (const DatabaseContents::Relation& relation : contents.relations) {
            const auto from = numbers.find(relation.table);
            const auto to = numbers.find(relation.referencedTable);
            if (from == numbers.end() || to == numbers.end() || from == to)
                continue;
            up[from->second].push_back(to->second);
            down[to->second].push_back(from->second);
        }
    }
};

/// Breadth first from the tables that refer to none, so that a ring ends where it began.
std::vector<std::size_t> Levels(const Links& links)
{
    constexpr std::size_t kNone = ~std::size_t{0};
    std::vector<std::size_t> level(links.up.size(), kNone);
    Numbers queue;
    const auto begin = [&](std::size_t table) {
        level[table] = 0;
        queue.push_back(table);
    };
    for (std::size_t i = 0; i < level.size(); ++i)
        if (links.up[i].empty())
            begin(i);
    std::size_t next = 0;
    for (std::size_t i = 0; i <= level.size(); ++i) {
        for (; next < queue.size(); ++next)
            for (const std::size_t below : links.down[queue[next]])
                if (level[below] == kNone) {
                    level[below] = level[queue[next]] + 1;
                    queue.push_back(below);
                }
        if (i < level.size() && level[i] == kNone) // only rings are left
            begin(i);
    }
    return level;
}

/// Sorts a column by the middle of what its tables are linked to in the column beside it.
void SortByNeighbours(Numbers& column, const std::vector<Numbers>& neighbours, const std::vector<double>& place)
{
    std::map<std::size_t, double> wanted;
    for (const std::size_t table : column) {
        double sum = 0;
        for (const std::size_t other : neighbours[table])
            sum += place[other];
        wanted[table] = neighbours[table].empty() ? place[table] : sum / static_cast<double>(neighbours[table].size());
    }
    std::stable_sort(column.begin(), column.end(), [&](std::size_t a, std::size_t b) { return wanted[a] < wanted[b]; });
}

void NotePlaces(const Numbers& column, std::vector<double>& place)
{
    for (std::size_t i = 0; i < column.size(); ++i)
        place[column[i]] = (static_cast<double>(i) + 0.5) / static_cast<double>(column.size());
}

/// Tables without any relation fill a block below the others, about as wide as it is high.
Numbers TakeLonely(Numbers& column, const Links& links)
{
    Numbers lonely;
    const auto isLonely = [&](std::size_t table) { return links.up[table].empty() && links.down[table].empty(); };
    std::copy_if(column.begin(), column.end(), std::back_inserter(lonely), isLonely);
    std::erase_if(column, isLonely);
    return lonely;
}

} // namespace

std::vector<QRectF> LayOutDiagram(const DatabaseContents& contents,
                                  const std::function<QSizeF(std::size_t table)>& sizeOf, double gap)
{
    const std::size_t count = contents.tables.size();
    if (count == 0)
        return {};
    const Links links(contents);
    const std::vector<std::size_t> level = Levels(links);
    std::vector<Numbers> columns(*std::max_element(level.begin(), level.end()) + 1);
    for (std::size_t i = 0; i < count; ++i)
        columns[level[i]].push_back(i);
    const Numbers lonely = TakeLonely(columns.front(), links);

    std::vector<double> place(count, 0);
    for (const Numbers& column : columns)
        NotePlaces(column, place);
    for (int sweep = 0; sweep < kSweeps; ++sweep) {
        const bool forwards = sweep % 2 == 0;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            Numbers& column = columns[forwards ? i : columns.size() - 1 - i];
            SortByNeighbours(column, forwards ? links.up : links.down, place);
            NotePlaces(column, place);
        }
    }

    std::vector<QRectF> boxes(count);
    std::vector<double> heights;
    heights.reserve(columns.size());
    for (const Numbers& column : columns)
        heights.push_back(std::accumulate(column.begin(), column.end(), -gap, [&](double sum, std::size_t table) {
            return sum + sizeOf(table).height() + gap;
        }));
    const double tallest = std::max(0.0, *std::max_element(heights.begin(), heights.end()));
    double x = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        double y = (tallest - heights[i]) / 2;
        double width = 0;
        for (const std::size_t table : columns[i]) {
            boxes[table] = QRectF(QPointF(x, y), sizeOf(table));
            y += boxes[table].height() + gap;
            width = std::max(width, boxes[table].width());
        }
        x += columns[i].empty() ? 0 : width + 3 * gap; // room for the lines
    }

    const auto perRow = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(lonely.size()))));
    double rowTop = tallest > 0 ? tallest + gap : 0;
    double rowHeight = 0;
    double left = 0;
    for (std::size_t i = 0; i < lonely.size(); ++i) {
        if (i > 0 && i % perRow == 0) {
            rowTop += rowHeight + gap;
            left = rowHeight = 0;
        }
        boxes[lonely[i]] = QRectF(QPointF(left, rowTop), sizeOf(lonely[i]));
        left += boxes[lonely[i]].width() + gap;
        rowHeight = std::max(rowHeight, boxes[lonely[i]].height());
    }
    return boxes;
}

} // namespace velmora
