#pragma once

#include "jet/base/value_text.h"
#include "jet/connection.h"
#include "jet/support.h"
#include "support/shared.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace jet::testing {

/// All rows of a table, one a line, in storage order.
[[nodiscard]] inline std::string RowsOf(Connection& connection, std::string_view table)
{
    std::string text;
    for (Recordset records = connection.OpenTable(table); !records.Eof(); records.MoveNext()) {
        for (std::size_t field = 0; field < records.FieldCount(); ++field)
            text += (field ? "|" : "") + ToText(records.Get(field));
        text += '\n';
    }
    return text;
}

/// The user's tables, in the order in which the catalog has them.
[[nodiscard]] inline std::vector<std::string> UserTables(Connection& connection)
{
    std::vector<std::string> names;
    for (Rowset rows = connection.OpenSchema(SchemaKind::Tables, {"", "", "", "TABLE"}); !rows.Eof(); rows.MoveNext())
        names.push_back(rows.Text("TABLE_NAME"));
    return names;
}

/// A database in a folder of its own, and the states of it that were kept for the checker.
class Database {
public:
    explicit Database(JetVersion version) : path_(folder_ / "test.mdb"), connection_(Connection::Create(path_, version))
    {
    }

    [[nodiscard]] const std::filesystem::path& Path() const { return path_; }
    [[nodiscard]] Connection& Face() { return *connection_; }
    void Execute(std::string_view sql) { connection_->Execute(sql); }
    [[nodiscard]] Recordset Open(std::string_view table) { return connection_->OpenTable(table); }
    /// The number of the error that the statement ends with; nullopt when it is carried out.
    [[nodiscard]] std::optional<ErrorNumber> Try(std::string_view sql)
    {
        return ErrorOf([&] { connection_->Execute(sql); });
    }
    void Close()
    {
        connection_->Commit();
        connection_.reset();
    }
    void Reopen()
    {
        Close();
        connection_ = Connection::Open(path_);
    }

    /// Adds a record; fields by name, text as a document would give it.
    void Add(std::string_view table, const std::vector<std::pair<std::string_view, std::string_view>>& fields)
    {
        Recordset records = Open(table);
        records.AddNew();
        for (const auto& [field, text] : fields)
            records.SetText(records.FieldIndex(field).value(), text);
        records.Update();
    }
    [[nodiscard]] std::string Rows(std::string_view table) { return RowsOf(*connection_, table); }
    [[nodiscard]] std::size_t Count(std::string_view table)
    {
        const std::string rows = Rows(table);
        return static_cast<std::size_t>(std::count(rows.begin(), rows.end(), '\n'));
    }
    /// The named fields of a schema rowset, one row a line.
    [[nodiscard]] std::string Schema(SchemaKind kind, const Restrictions& restrictions,
                                     const std::vector<std::string_view>& fields)
    {
        std::string text;
        for (Rowset rows = connection_->OpenSchema(kind, restrictions); !rows.Eof(); rows.MoveNext()) {
            for (std::size_t i = 0; i < fields.size(); ++i)
                text += (i ? "|" : "") + rows.Text(fields[i]);
            text += '\n';
        }
        return text;
    }

    /// Commits and keeps the file as it is now.
    void Keep()
    {
        connection_->Commit();
        kept_.push_back(folder_ / ("state" + std::to_string(kept_.size()) + ".mdb"));
        std::filesystem::copy_file(path_, kept_.back());
    }
    [[nodiscard]] ::testing::AssertionResult AllSound()
    {
        Keep();
        return velmora::testing::ExpectSound(kept_);
    }

private:
    velmora::testing::TempFolder folder_;
    std::filesystem::path path_;
    std::unique_ptr<Connection> connection_;
    std::vector<std::filesystem::path> kept_;
};

} // namespace jet::testing
