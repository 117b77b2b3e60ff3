#include "jet/c/velmora_jet.h"

#include "jet/base/value_text.h"
#include "jet/connection.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

struct vjet_database {
    std::unique_ptr<jet::Connection> connection;
    std::vector<std::string> tables; ///< as of the last count
};

struct vjet_table {
    vjet_table(jet::Connection& connection, std::string_view name) : records(connection.OpenTable(name)) {}

    jet::Recordset records;
    bool hasBegun = false; ///< the current row is one that was walked to
    std::string text;      ///< what was read last
    jet::Bytes bytes;
};

namespace {

/// Notes the error and gives its number. A text that is too long is cut at a whole character.
int Fail(vjet_error* error, int number, std::string_view text)
{
    if (error != nullptr) {
        std::size_t size = std::min(text.size(), sizeof error->text - 1);
        while (size < text.size() && size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
            --size;
        error->number = number;
        std::memcpy(error->text, text.data(), size);
        error->text[size] = '\0';
    }
    return number;
}

int BadArgument(vjet_error* error)
{
    return Fail(error, VJET_BAD_ARGUMENT, "A handle, a text or a place for the result is missing.");
}

/// Runs `work`, and turns what it throws into a number: no exception leaves the library.
template <class Work>
int Guarded(vjet_error* error, const Work& work) noexcept
{
    try {
        work();
        return error != nullptr ? Fail(error, 0, "") : 0;
    } catch (const jet::Error& failure) {
        return Fail(error, static_cast<int>(failure.Number()), failure.what());
    } catch (const std::bad_alloc&) {
        return Fail(error, VJET_OUT_OF_MEMORY, "Out of memory.");
    } catch (const std::exception& failure) {
        return Fail(error, VJET_OTHER_ERROR, failure.what());
    } catch (...) {
        return Fail(error, VJET_OTHER_ERROR, "Unknown error.");
    }
}

/// What `question` answers; `otherwise` when it throws.
template <class Answer, class Question>
Answer AnswerOr(Answer otherwise, const Question& question) noexcept
{
    try {
        return question();
    } catch (...) {
        return otherwise;
    }
}

std::filesystem::path PathOf(const char* utf8)
{
    return {std::u8string(utf8, utf8 + std::strlen(utf8))};
}

template <class Open>
int OpenDatabase(vjet_database** database, vjet_error* error, const Open& open)
{
    *database = nullptr;
    return Guarded(error, [&] {
        auto opened = std::make_unique<vjet_database>();
        opened->connection = open();
        *database = opened.release();
    });
}

/// There must be a row that was walked to, or a record that has been begun.
void RequireRecord(const vjet_table& table)
{
    if (!table.hasBegun && !table.records.IsPending())
        throw jet::Error(jet::ErrorNumber::NoCurrentRecord);
}

void RequireField(const vjet_table& table, std::size_t column)
{
    if (column >= table.records.FieldCount())
        throw jet::Error(jet::ErrorNumber::ItemNotFound);
    RequireRecord(table);
}

jet::Value ValueOf(vjet_table& table, std::size_t column)
{
    RequireField(table, column);
    return table.records.Get(column);
}

/// Checks what every change of a field needs, and makes it.
template <class Change>
int ChangeField(vjet_table* table, std::size_t column, vjet_error* error, const Change& change)
{
    if (table == nullptr)
        return BadArgument(error);
    return Guarded(error, [&] {
        RequireField(*table, column);
        change(table->records);
    });
}

[[noreturn]] void ThrowWrongType()
{
    throw jet::Error(jet::ErrorNumber::WrongType);
}

double NumberOf(const jet::Value& value)
{
    const auto number = [](const auto& held) -> double {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, jet::Null>)
            return 0;
        else if constexpr (std::is_arithmetic_v<Held>)
            return static_cast<double>(held);
        else if constexpr (std::is_same_v<Held, jet::Currency>)
            return static_cast<double>(held.tenThousandths) / 10000;
        else if constexpr (std::is_same_v<Held, jet::DateTime>)
            return held.days;
        else if constexpr (std::is_same_v<Held, jet::Numeric>)
            return std::stod(jet::ToText(held));
        else
            ThrowWrongType();
    };
    return std::visit(number, value);
}

/// A number in the form in which a column of `type` takes it. Whole numbers are not rounded: what is none is refused.
jet::Value ValueFor(jet::ColumnType type, double number)
{
    switch (type) {
    case jet::ColumnType::Boolean:
        return number != 0;
    case jet::ColumnType::Byte:
    case jet::ColumnType::Integer:
    case jet::ColumnType::Long:
        if (!(std::abs(number) <= std::numeric_limits<std::int32_t>::max()) || number != std::trunc(number))
            ThrowWrongType();
        return static_cast<std::int32_t>(number);
    case jet::ColumnType::DateTime:
        return jet::DateTime{number};
    case jet::ColumnType::Currency:
    case jet::ColumnType::Numeric: {
        std::array<char, 400> digits{};
        const auto end = std::to_chars(digits.begin(), digits.end(), number, std::chars_format::fixed).ptr;
        return std::string(digits.begin(), end);
    }
    default:
        return number;
    }
}

} // namespace

const char* vjet_version(void)
{
    return VELMORA_VERSION;
}

int vjet_create(const char* path, vjet_format format, vjet_database** database, vjet_error* error)
{
    if (path == nullptr || database == nullptr || (format != VJET_ACCESS_97 && format != VJET_ACCESS_2000))
        return BadArgument(error);
    return OpenDatabase(database, error, [&] {
        return jet::Connection::Create(PathOf(path),
                                       format == VJET_ACCESS_97 ? jet::JetVersion::Jet3 : jet::JetVersion::Jet4);
    });
}

int vjet_open(const char* path, vjet_database** database, vjet_error* error)
{
    if (path == nullptr || database == nullptr)
        return BadArgument(error);
    return OpenDatabase(database, error, [&] { return jet::Connection::Open(PathOf(path)); });
}

int vjet_open_read_only(const char* path, vjet_database** database, vjet_error* error)
{
    if (path == nullptr || database == nullptr)
        return BadArgument(error);
    return OpenDatabase(database, error, [&] { return jet::Connection::OpenReadOnly(PathOf(path)); });
}

int vjet_commit(vjet_database* database, vjet_error* error)
{
    if (database == nullptr)
        return BadArgument(error);
    return Guarded(error, [&] { database->connection->Commit(); });
}

void vjet_close(vjet_database* database)
{
    delete database;
}

int vjet_execute(vjet_database* database, const char* sql, vjet_error* error)
{
    if (database == nullptr || sql == nullptr)
        return BadArgument(error);
    return Guarded(error, [&] { database->connection->Execute(sql); });
}

int vjet_count_tables(vjet_database* database, size_t* count, vjet_error* error)
{
    if (database == nullptr || count == nullptr)
        return BadArgument(error);
    return Guarded(error, [&] {
        std::vector<std::string> names;
        jet::Rowset rows = database->connection->OpenSchema(jet::SchemaKind::Tables, {"", "", "", "TABLE"});
        for (; !rows.Eof(); rows.MoveNext())
            names.push_back(rows.Text("TABLE_NAME"));
        database->tables = std::move(names);
        *count = database->tables.size();
    });
}

const char* vjet_table_name(const vjet_database* database, size_t index)
{
    return database != nullptr && index < database->tables.size() ? database->tables[index].c_str() : nullptr;
}

int vjet_open_table(vjet_database* database, const char* name, vjet_table** table, vjet_error* error)
{
    if (database == nullptr || name == nullptr || table == nullptr)
        return BadArgument(error);
    *table = nullptr;
    return Guarded(error, [&] { *table = new vjet_table(*database->connection, name); });
}

void vjet_close_table(vjet_table* table)
{
    delete table;
}

size_t vjet_column_count(const vjet_table* table)
{
    return table == nullptr ? 0 : AnswerOr(std::size_t{0}, [&] { return table->records.FieldCount(); });
}

const char* vjet_column_name(const vjet_table* table, size_t column)
{
    if (column >= vjet_column_count(table))
        return nullptr;
    return AnswerOr<const char*>(nullptr, [&] { return table->records.FieldName(column).c_str(); });
}

vjet_type vjet_column_type(const vjet_table* table, size_t column)
{
    if (column >= vjet_column_count(table))
        return VJET_NO_TYPE;
    return AnswerOr(VJET_NO_TYPE, [&] { return static_cast<vjet_type>(table->records.Type(column)); });
}

int vjet_is_autonumber(const vjet_table* table, size_t column)
{
    if (column >= vjet_column_count(table))
        return 0;
    return AnswerOr(0, [&] { return table->records.IsAutonumber(column) ? 1 : 0; });
}

size_t vjet_find_column(const vjet_table* table, const char* name)
{
    const std::size_t none = vjet_column_count(table);
    if (none == 0 || name == nullptr)
        return none;
    return AnswerOr(none, [&] { return table->records.FieldIndex(name).value_or(none); });
}

int vjet_next(vjet_table* table, int* found, vjet_error* error)
{
    if (table == nullptr || found == nullptr)
        return BadArgument(error);
    *found = 0;
    return Guarded(error, [&] {
        if (!table->hasBegun)
            table->records.MoveFirst();
        else if (!table->records.Eof())
            table->records.MoveNext();
        table->hasBegun = true;
        *found = table->records.Eof() ? 0 : 1;
    });
}

void vjet_rewind(vjet_table* table)
{
    if (table != nullptr)
        table->hasBegun = false;
}

int vjet_is_null(vjet_table* table, size_t column, int* is_null, vjet_error* error)
{
    if (table == nullptr || is_null == nullptr)
        return BadArgument(error);
    return Guarded(error, [&] { *is_null = jet::IsNull(ValueOf(*table, column)) ? 1 : 0; });
}

int vjet_text(vjet_table* table, size_t column, const char** text, size_t* size, vjet_error* error)
{
    if (table == nullptr || text == nullptr)
        return BadArgument(error);
    return Guarded(error, [&] {
        const jet::Value value = ValueOf(*table, column);
        table->text = jet::ToText(value);
        *text = jet::IsNull(value) ? nullptr : table->text.c_str();
        if (size != nullptr)
            *size = table->text.size();
    });
}

int vjet_number(vjet_table* table, size_t column, double* number, vjet_error* error)
{
    if (table == nullptr || number == nullptr)
        return BadArgument(error);
    return Guarded(error, [&] { *number = NumberOf(ValueOf(*table, column)); });
}

int vjet_bytes(vjet_table* table, size_t column, const void** bytes, size_t* size, vjet_error* error)
{
    if (table == nullptr || bytes == nullptr || size == nullptr)
        return BadArgument(error);
    return Guarded(error, [&] {
        jet::Value value = ValueOf(*table, column);
        const bool isNull = jet::IsNull(value);
        if (!isNull && !std::holds_alternative<jet::Bytes>(value))
            ThrowWrongType();
        table->bytes = isNull ? jet::Bytes() : std::get<jet::Bytes>(std::move(value));
        *bytes = isNull ? nullptr : table->bytes.data();
        *size = table->bytes.size();
    });
}

int vjet_add(vjet_table* table, vjet_error* error)
{
    if (table == nullptr)
        return BadArgument(error);
    return Guarded(error, [&] { table->records.AddNew(); });
}

int vjet_set_null(vjet_table* table, size_t column, vjet_error* error)
{
    return ChangeField(table, column, error, [&](jet::Recordset& records) { records.Set(column, jet::Null()); });
}

int vjet_set_text(vjet_table* table, size_t column, const char* text, size_t size, vjet_error* error)
{
    if (text == nullptr)
        return BadArgument(error);
    return ChangeField(table, column, error,
                       [&](jet::Recordset& records) { records.SetText(column, std::string_view(text, size)); });
}

int vjet_set_number(vjet_table* table, size_t column, double number, vjet_error* error)
{
    return ChangeField(table, column, error,
                       [&](jet::Recordset& records) { records.Set(column, ValueFor(records.Type(column), number)); });
}

int vjet_set_bytes(vjet_table* table, size_t column, const void* bytes, size_t size, vjet_error* error)
{
    if (bytes == nullptr && size > 0)
        return BadArgument(error);
    const auto* begin = static_cast<const jet::Byte*>(bytes);
    return ChangeField(table, column, error,
                       [&](jet::Recordset& records) { records.Set(column, jet::Bytes(begin, begin + size)); });
}

int vjet_save(vjet_table* table, vjet_error* error)
{
    if (table == nullptr)
        return BadArgument(error);
    return Guarded(error, [&] {
        table->records.Update();
        table->hasBegun = true;
    });
}

void vjet_drop(vjet_table* table)
{
    if (table != nullptr)
        table->records.CancelUpdate();
}

int vjet_delete(vjet_table* table, vjet_error* error)
{
    if (table == nullptr)
        return BadArgument(error);
    return Guarded(error, [&] {
        RequireRecord(*table);
        table->records.Delete();
    });
}

int32_t vjet_last_autonumber(const vjet_table* table)
{
    return table == nullptr ? 0 : table->records.LastAutonumber().value_or(0);
}
