#include "schema/loaded_sources.h"

#include "platform/clock.h"
#include "schema/database_session.h"
#include "schema/engine_errors.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <limits>

namespace velmora {

namespace {

enum Field : std::size_t { kLoaded, kSource, kHash, kRecords, kFields };
constexpr std::array<std::string_view, kFields> kNames{"loaded", "source", "sha256", "records"};

std::optional<std::string> FindLoadedTable(DatabaseSession& session)
{
    const std::vector<std::string> tables = session.UserTables();
    const auto found = std::ranges::find_if(tables, [&](const auto& table) { return IsLoadedTable(session, table); });
    return found == tables.end() ? std::nullopt : std::optional(*found);
}

bool IsList(const Recordset& records)
{
    bool same = records.FieldCount() == kNames.size();
    for (std::size_t field = 0; same && field < kNames.size(); ++field)
        same = records.FieldName(field) == kNames[field];
    return same;
}

} // namespace

bool IsLoadedTable(const DatabaseSession& session, std::string_view table)
{
    const auto key = session.Names().key;
    return key(table) == key(kLoadedTable);
}

bool HasLoadedTable(DatabaseSession& session)
{
    const std::optional<std::string> table = FindLoadedTable(session);
    return table && IsList(session.OpenTable(*table));
}

void LoadedSources::Read(DatabaseSession& session)
{
    times_.clear();
    const std::optional<std::string> table = FindLoadedTable(session);
    hasTable_ = table.has_value();
    if (!table)
        return;
    Recordset records = session.OpenTable(*table);
    if (!IsList(records))
        throw RuntimeError(engine_errors::kTableExists,
                           "Table '" + *table +
                               "' is not the list that +once keeps of what was loaded; give it another name");
    for (; !records.Eof(); records.MoveNext()) {
        std::string hash;
        std::string time;
        records.AppendText(kHash, hash);
        records.AppendText(kLoaded, time);
        times_.emplace(std::move(hash), std::move(time));
    }
    records.Close();
}

std::optional<std::string> LoadedSources::WhenLoaded(const std::string& hash) const
{
    const auto found = times_.find(hash);
    return found == times_.end() ? std::nullopt : std::optional(found->second);
}

void LoadedSources::Add(DatabaseSession& session, const std::string& hash, const std::string& source,
                        std::int64_t records)
{
    const std::string name(kLoadedTable);
    if (!hasTable_)
        session.ExecuteSql("CREATE TABLE [" + name +
                           "] ([loaded] DateTime, [source] LongText, [sha256] Text(64), [records] Long)");
    hasTable_ = true;
    const std::string now = TimeStamp(std::time(nullptr));
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    Recordset lines = session.OpenTable(name);
    lines.AddNew();
    lines.SetText(kLoaded, now);
    lines.SetText(kSource, source);
    lines.SetText(kHash, hash);
    lines.SetLong(kRecords, static_cast<std::int32_t>(std::min(records, kMost)));
    lines.Update();
    lines.Close();
    times_.emplace(hash, now);
}

} // namespace velmora
