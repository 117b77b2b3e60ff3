#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace velmora {

class DatabaseSession;

/// The name of the table that holds the list below. No document's records get into it: an element that would have a
/// table of this name is refused.
inline constexpr std::string_view kLoadedTable = "velmora_log";

/// Is `table` this name to the database, whatever its letter case?
[[nodiscard]] bool IsLoadedTable(const DatabaseSession& session, std::string_view table);
/// Has the database such a list?
[[nodiscard]] bool HasLoadedTable(DatabaseSession& session);

/// The sources that were loaded into a database, listed in a table of its own: when, from where, the SHA-256 of what
/// the file held, and how many records came of it. A line is committed with its records.
class LoadedSources {
public:
    /// Reads the list of the open database, if it has one. Throws RuntimeError when a table of the name is another one.
    void Read(DatabaseSession& session);
    /// When a source of this content was loaded; nullopt when none was.
    [[nodiscard]] std::optional<std::string> WhenLoaded(const std::string& hash) const;
    /// Adds a line; the table is made for the first one.
    void Add(DatabaseSession& session, const std::string& hash, const std::string& source, std::int64_t records);

private:
    bool hasTable_ = false;
    std::unordered_map<std::string, std::string> times_; ///< by hash
};

} // namespace velmora
