// The same for C++: what closes handles by itself, throws what fails, and takes and gives the standard library's texts.
// All of it stands in this header; the library has the functions of velmora_jet.h only.
#pragma once

#include "velmora_jet.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace velmora_jet {

class Error : public std::runtime_error {
public:
    explicit Error(const vjet_error& error) : std::runtime_error(error.text), number_(error.number) {}
    [[nodiscard]] int Number() const noexcept { return number_; }

private:
    int number_;
};

/// Calls a function of the C face with `arguments` and a place for its error; throws that.
template <class Function, class... Arguments>
void Call(Function function, Arguments... arguments)
{
    vjet_error error{};
    if (function(arguments..., &error) != 0)
        throw Error(error);
}

/// The records of one table. Must not outlive its database.
class Table {
public:
    [[nodiscard]] std::size_t ColumnCount() const { return vjet_column_count(table_.get()); }
    [[nodiscard]] std::string ColumnName(std::size_t column) const
    {
        const char* name = vjet_column_name(table_.get(), column);
        return name != nullptr ? name : std::string();
    }
    [[nodiscard]] vjet_type ColumnType(std::size_t column) const { return vjet_column_type(table_.get(), column); }
    [[nodiscard]] bool IsAutonumber(std::size_t column) const { return vjet_is_autonumber(table_.get(), column) != 0; }
    [[nodiscard]] std::optional<std::size_t> FindColumn(const std::string& name) const
    {
        const std::size_t column = vjet_find_column(table_.get(), name.c_str());
        return column < ColumnCount() ? std::optional(column) : std::nullopt;
    }

    /// To the first row, then to the next one; false behind the last.
    bool Next()
    {
        int found = 0;
        Call(vjet_next, table_.get(), &found);
        return found != 0;
    }
    void Rewind() { vjet_rewind(table_.get()); }

    // Values of the current row; nullopt for Null.
    [[nodiscard]] std::optional<std::string> Text(std::size_t column)
    {
        const char* text = nullptr;
        std::size_t size = 0;
        Call(vjet_text, table_.get(), column, &text, &size);
        return text != nullptr ? std::optional(std::string(text, size)) : std::nullopt;
    }
    [[nodiscard]] std::optional<double> Number(std::size_t column)
    {
        int isNull = 0;
        double number = 0;
        Call(vjet_is_null, table_.get(), column, &isNull);
        Call(vjet_number, table_.get(), column, &number);
        return isNull == 0 ? std::optional(number) : std::nullopt;
    }
    [[nodiscard]] std::optional<std::vector<std::uint8_t>> Bytes(std::size_t column)
    {
        const void* bytes = nullptr;
        std::size_t size = 0;
        Call(vjet_bytes, table_.get(), column, &bytes, &size);
        if (bytes == nullptr)
            return std::nullopt;
        const auto* begin = static_cast<const std::uint8_t*>(bytes);
        return std::vector<std::uint8_t>(begin, begin + size);
    }

    /// Begins a new record; without it, the current row is changed.
    void Add() { Call(vjet_add, table_.get()); }
    void SetNull(std::size_t column) { Call(vjet_set_null, table_.get(), column); }
    void Set(std::size_t column, std::string_view text)
    {
        Call(vjet_set_text, table_.get(), column, text.data() != nullptr ? text.data() : "", text.size());
    }
    void Set(std::size_t column, double number) { Call(vjet_set_number, table_.get(), column, number); }
    void Set(std::size_t column, const std::vector<std::uint8_t>& bytes)
    {
        Call(vjet_set_bytes, table_.get(), column, bytes.data(), bytes.size());
    }
    void Save() { Call(vjet_save, table_.get()); }
    void Drop() { vjet_drop(table_.get()); }
    void Delete() { Call(vjet_delete, table_.get()); }
    [[nodiscard]] std::int32_t LastAutonumber() const { return vjet_last_autonumber(table_.get()); }

private:
    friend class Database;
    struct Close {
        void operator()(vjet_table* table) const { vjet_close_table(table); }
    };
    explicit Table(vjet_table* table) : table_(table) {}
    std::unique_ptr<vjet_table, Close> table_;
};

/// An open database. What was not committed is dropped in the end.
class Database {
public:
    [[nodiscard]] static Database Create(const std::string& path, vjet_format format = VJET_ACCESS_2000)
    {
        vjet_database* database = nullptr;
        Call(vjet_create, path.c_str(), format, &database);
        return Database(database);
    }
    [[nodiscard]] static Database Open(const std::string& path) { return OpenBy(vjet_open, path); }
    [[nodiscard]] static Database OpenReadOnly(const std::string& path) { return OpenBy(vjet_open_read_only, path); }

    void Execute(const std::string& sql) { Call(vjet_execute, database_.get(), sql.c_str()); }
    void Commit() { Call(vjet_commit, database_.get()); }
    [[nodiscard]] std::vector<std::string> Tables()
    {
        std::size_t count = 0;
        Call(vjet_count_tables, database_.get(), &count);
        std::vector<std::string> names;
        for (std::size_t i = 0; i < count; ++i)
            names.emplace_back(vjet_table_name(database_.get(), i));
        return names;
    }
    [[nodiscard]] Table OpenTable(const std::string& name)
    {
        vjet_table* table = nullptr;
        Call(vjet_open_table, database_.get(), name.c_str(), &table);
        return Table(table);
    }

private:
    struct Close {
        void operator()(vjet_database* database) const { vjet_close(database); }
    };
    explicit Database(vjet_database* database) : database_(database) {}
    template <class Function>
    [[nodiscard]] static Database OpenBy(Function open, const std::string& path)
    {
        vjet_database* database = nullptr;
        Call(open, path.c_str(), &database);
        return Database(database);
    }
    std::unique_ptr<vjet_database, Close> database_;
};

} // namespace velmora_jet
