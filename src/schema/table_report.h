#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace velmora {

/// What happened to one database table in a run.
struct TableReport {
    std::string table;
    std::int64_t records = 0;
    std::int64_t newColumns = 0; ///< added to a table that was there already
    std::int64_t widenedColumns = 0;
    std::map<std::string, std::size_t> longest = {}; ///< characters of the longest value, by column; of a preview
    std::set<std::string> columnsWithoutZone = {};   ///< that were given times with a time zone; each was told of
};

} // namespace velmora
