#pragma once

#include <cstdint>
#include <set>
#include <string>

namespace velmora {

/// What happened to one database table in a run.
struct TableReport {
    std::string table;
    std::int64_t records = 0;
    std::int64_t newColumns = 0; ///< added to a table that was there already
    std::int64_t widenedColumns = 0;
    std::set<std::string> columnsWithoutZone = {}; ///< that were given times with a time zone; each was told of
};

} // namespace velmora
