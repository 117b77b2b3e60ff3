#include "jet/table/row_fit.h"

#include "jet/base/error.h"

#include <algorithm>
#include <utility>

namespace jet {

std::optional<std::vector<std::size_t>> ShrinkToFit(const RowLayout& layout, const Format& format,
                                                    std::vector<std::size_t> candidates, std::span<RowField> fields)
{
    const auto size = [fields](std::size_t column) { return fields[column].Size(); };
    std::erase_if(candidates, [size](std::size_t column) { return size(column) <= kLongValueHeaderSize; });
    std::ranges::stable_sort(candidates, std::ranges::greater(), size);
    std::vector<std::size_t> shrunk;
    for (const std::size_t column : candidates) {
        if (layout.Measure(fields) <= format.maxRecordSize)
            return shrunk;
        fields[column].Shrink();
        shrunk.push_back(column);
    }
    return layout.Measure(fields) <= format.maxRecordSize ? std::optional(std::move(shrunk)) : std::nullopt;
}

std::vector<std::size_t> LongValuesToMoveOut(const RowLayout& layout, const TableDef& def, std::span<RowField> fields)
{
    std::vector<std::size_t> candidates;
    for (std::size_t i = 0; i < def.columns.size(); ++i) {
        if (IsLongValue(def.columns[i].type) && fields[i].isSet)
            candidates.push_back(i);
    }
    std::optional<std::vector<std::size_t>> moved = ShrinkToFit(layout, *def.format, std::move(candidates), fields);
    if (!moved)
        throw Error(ErrorNumber::RecordTooLarge);
    return *std::move(moved);
}

} // namespace jet
