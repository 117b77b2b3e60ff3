#include "schema/database_view.h"

#include "jet/connection.h"
#include "platform/paths.h"
#include "schema/engine_errors.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>

namespace velmora {

namespace {

/// A value is shown up to here: a memo may hold a book.
constexpr std::size_t kMaxShownBytes = 65536;

template <class Body>
auto WithoutEngineErrors(Body&& body)
{
    try {
        return body();
    } catch (const jet::Error& error) {
        throw EngineError(error);
    }
}

std::string StateOf(const std::string& path)
{
    std::error_code error;
    const std::filesystem::path file = PathFromUtf8(path);
    const auto size = std::filesystem::file_size(file, error);
    const auto time = std::filesystem::last_write_time(file, error);
    return error ? std::string() : std::to_string(size) + ' ' + std::to_string(time.time_since_epoch().count());
}

/// OLE DB's numbers of types, in the words of Access.
std::string TypeName(const jet::Rowset& column)
{
    const std::string type = column.Text("DATA_TYPE");
    const std::string size = column.Text("CHARACTER_MAXIMUM_LENGTH");
    const bool isLong = size == "0";
    static const std::map<std::string, std::string> kNames = {
        {"11", "Yes/No"}, {"17", "Byte"},  {"2", "Integer"},   {"3", "Long Integer"},    {"6", "Currency"},
        {"4", "Single"},  {"5", "Double"}, {"7", "Date/Time"}, {"72", "Replication ID"}, {"131", "Decimal"}};
    if (type == "130")
        return isLong ? "Memo" : "Text (" + size + ")";
    if (type == "128")
        return isLong ? "OLE Object" : "Binary (" + size + ")";
    const auto name = kNames.find(type);
    return name == kNames.end() ? type : name->second;
}

std::string Shown(const jet::Value& value, std::string text)
{
    if (const auto* bytes = std::get_if<jet::Bytes>(&value))
        return "(" + std::to_string(bytes->size()) + " bytes)";
    if (text.size() > kMaxShownBytes) {
        std::size_t end = kMaxShownBytes;
        while ((static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) // in the midst of a character
            --end;
        text.resize(end);
        text += "…";
    }
    return text;
}

std::string Lower(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

using ColumnNames = std::set<std::pair<std::string, std::string>>; ///< table, column

ColumnNames PrimaryKeys(jet::Connection& connection)
{
    ColumnNames keys;
    for (jet::Rowset rows = connection.OpenSchema(jet::SchemaKind::Indexes); !rows.Eof(); rows.MoveNext())
        if (rows.Field("PRIMARY_KEY") == jet::Value(true))
            keys.emplace(rows.Text("TABLE_NAME"), rows.Text("COLUMN_NAME"));
    return keys;
}

std::vector<DatabaseContents::Relation> Relations(jet::Connection& connection)
{
    std::vector<DatabaseContents::Relation> relations;
    for (jet::Rowset rows = connection.OpenSchema(jet::SchemaKind::ForeignKeys); !rows.Eof(); rows.MoveNext()) {
        const std::string name = rows.Text("FK_NAME");
        if (relations.empty() || relations.back().name != name)
            relations.push_back({name, rows.Text("FK_TABLE_NAME"), rows.Text("PK_TABLE_NAME")});
        relations.back().columns.emplace_back(rows.Text("FK_COLUMN_NAME"), rows.Text("PK_COLUMN_NAME"));
    }
    return relations;
}

std::vector<DatabaseContents::Column> Columns(jet::Connection& connection, const std::string& table,
                                              const ColumnNames& primary, const ColumnNames& foreign)
{
    std::vector<DatabaseContents::Column> columns;
    for (jet::Rowset rows = connection.OpenSchema(jet::SchemaKind::Columns, {"", "", table}); !rows.Eof();
         rows.MoveNext()) {
        const std::string name = rows.Text("COLUMN_NAME");
        columns.push_back({name, TypeName(rows), rows.Field("IS_NULLABLE") == jet::Value(false),
                           primary.contains({table, name}), foreign.contains({table, name})});
    }
    return columns;
}

} // namespace

DatabaseContents ContentsOf(jet::Connection& connection)
{
    DatabaseContents contents;
    contents.format = connection.Version() == jet::JetVersion::Jet3 ? "Access 97" : "Access 2000";
    contents.relations = Relations(connection);
    const ColumnNames primary = PrimaryKeys(connection);
    ColumnNames foreign;
    for (const DatabaseContents::Relation& relation : contents.relations)
        for (const auto& [column, referenced] : relation.columns)
            foreign.emplace(relation.table, column);
    for (jet::Rowset rows = connection.OpenSchema(jet::SchemaKind::Tables); !rows.Eof(); rows.MoveNext()) {
        const std::string type = rows.Text("TABLE_TYPE");
        const bool isLinked = type == "LINK" || type == "PASS-THROUGH";
        if (type != "TABLE" && !isLinked)
            continue;
        DatabaseContents::Table& table = contents.tables.emplace_back();
        table.name = rows.Text("TABLE_NAME");
        table.isLinked = isLinked;
        if (isLinked)
            continue;
        table.rows = connection.OpenTable(table.name).RecordCount();
        table.columns = Columns(connection, table.name, primary, foreign);
    }
    return contents;
}

/// One way through a table. It begins at the last page before `row` whose position is known, and notes those that it
/// passes.
class DatabaseView::Walk {
public:
    Walk(DatabaseView& view, const std::string& table, std::uint64_t row)
        : connection_(jet::Connection::OpenReadOnly(PathFromUtf8(view.path_))), records_(connection_->OpenTable(table)),
          starts_(view.pageStarts_[table])
    {
        records_.MoveFirst();
        if (starts_.empty())
            return;
        const std::uint64_t page = std::min<std::uint64_t>(row / kPageRows, starts_.size() - 1);
        records_.MoveTo(starts_[page]);
        row_ = page * kPageRows;
    }

    /// False at the table's end, and when `goesOn` says so.
    bool AdvanceTo(std::uint64_t row, const GoesOn& goesOn)
    {
        while (!records_.Eof()) {
            Note();
            if (row_ >= row)
                return true;
            records_.MoveNext();
            ++row_;
            if (row_ % kPageRows == 0 && goesOn && !goesOn())
                return false;
        }
        return false;
    }
    [[nodiscard]] std::uint64_t RowNumber() const noexcept { return row_; }
    [[nodiscard]] Row Values()
    {
        Row row;
        for (std::size_t field = 0; field < records_.FieldCount(); ++field) {
            auto text = records_.GetText(field);
            row.push_back(text ? std::optional(Shown(records_.Get(field), std::move(*text))) : std::nullopt);
        }
        return row;
    }
    [[nodiscard]] bool Holds(const std::string& lowerText)
    {
        for (std::size_t field = 0; field < records_.FieldCount(); ++field)
            if (const auto text = records_.GetText(field); text && Lower(*text).find(lowerText) != std::string::npos)
                return true;
        return false;
    }

private:
    void Note()
    {
        if (row_ % kPageRows == 0 && row_ / kPageRows == starts_.size())
            starts_.push_back(records_.Position());
    }

    std::unique_ptr<jet::Connection> connection_;
    jet::Recordset records_;
    std::vector<std::uint64_t>& starts_;
    std::uint64_t row_ = 0;
};

void DatabaseView::CheckUnchanged() const
{
    if (StateOf(path_) != state_)
        throw RuntimeError(runtime_errors::kApplicationDefined,
                           "The database " + path_ + " has changed: read it again");
}

DatabaseContents DatabaseView::Read()
{
    return WithoutEngineErrors([this] {
        pageStarts_.clear();
        state_ = StateOf(path_);
        return ContentsOf(*jet::Connection::OpenReadOnly(PathFromUtf8(path_)));
    });
}

std::vector<DatabaseView::Row> DatabaseView::ReadPage(const std::string& table, std::uint64_t page,
                                                      const GoesOn& goesOn)
{
    return WithoutEngineErrors([&] {
        CheckUnchanged();
        const std::uint64_t first = page * kPageRows;
        Walk walk(*this, table, first);
        std::vector<Row> rows;
        while (rows.size() < kPageRows && walk.AdvanceTo(first + rows.size(), goesOn))
            rows.push_back(walk.Values());
        return rows;
    });
}

std::optional<std::uint64_t> DatabaseView::Find(const std::string& table, const std::string& text,
                                                std::uint64_t firstRow, const GoesOn& goesOn)
{
    return WithoutEngineErrors([&]() -> std::optional<std::uint64_t> {
        CheckUnchanged();
        const std::string wanted = Lower(text);
        Walk walk(*this, table, firstRow);
        for (std::uint64_t row = firstRow; walk.AdvanceTo(row, goesOn); ++row)
            if (walk.Holds(wanted))
                return walk.RowNumber();
        return std::nullopt;
    });
}

} // namespace velmora
