#include "driver/database_size.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace velmora {

std::string SizeText(std::uint64_t bytes)
{
    constexpr std::array<std::string_view, 4> kUnits{" bytes", " KB", " MB", " GB"};
    std::size_t unit = 0;
    std::uint64_t tenths = bytes * 10;
    for (; tenths >= 10'240 && unit + 1 < kUnits.size(); ++unit)
        tenths /= 1024;
    std::string text = std::to_string(tenths / 10);
    if (tenths % 10 != 0 && unit > 0)
        text.append(".").append(std::to_string(tenths % 10));
    return text.append(kUnits[unit]);
}

std::optional<std::string> SizeWarning(std::uint64_t bytes, std::uint64_t maxBytes)
{
    if (bytes < maxBytes / 5 * 4)
        return std::nullopt;
    return "The database will have about " + SizeText(bytes) + ", and " + SizeText(maxBytes) +
           " is all that its format allows: spread the files over several databases";
}

std::uint64_t EstimatedGrowth(const Document& document, const MappingPlan& plan)
{
    constexpr std::uint64_t kBytesOfRecord = 40; // keys, head and slot of the row, entries in two indexes
    constexpr std::uint64_t kBytesOfValue = 3;   // its place in the row
    const auto records = static_cast<std::uint64_t>(std::max(plan.recordEstimate, 0));
    return records * kBytesOfRecord + document.ElementCount() * kBytesOfValue + document.TextBytes();
}

} // namespace velmora
