#include "jet/sql/ast.h"

#include "jet/base/error.h"
#include "jet/sql/lexer.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace jet::sql {

namespace {

/// Keywords are ASCII: the letters of other alphabets have no part in their comparison.
bool EqualIgnoringCase(std::string_view a, std::string_view upper) noexcept
{
    if (a.size() != upper.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const char c = a[i] >= 'a' && a[i] <= 'z' ? static_cast<char>(a[i] - 'a' + 'A') : a[i];
        if (c != upper[i])
            return false;
    }
    return true;
}

/// A type's name and what it stands for. A size, or of numerics digits, in parentheses may follow the ones that are
/// `sized`.
struct TypeName {
    std::string_view name;
    ColumnType type;
    bool sized = false;
    bool autonumber = false;
};

/// The names under which the engine of Access knows its types; NUMBER is a Double there, INTEGER has 32 bits.
constexpr TypeName kTypes[] = {
    {"COUNTER", ColumnType::Long, false, true},
    {"AUTOINCREMENT", ColumnType::Long, false, true},
    {"IDENTITY", ColumnType::Long, false, true},
    {"LONG", ColumnType::Long},
    {"INTEGER", ColumnType::Long},
    {"INT", ColumnType::Long},
    {"INTEGER4", ColumnType::Long},
    {"SHORT", ColumnType::Integer},
    {"SMALLINT", ColumnType::Integer},
    {"INTEGER2", ColumnType::Integer},
    {"BYTE", ColumnType::Byte},
    {"TINYINT", ColumnType::Byte},
    {"INTEGER1", ColumnType::Byte},
    {"STRING", ColumnType::Text, true},
    {"TEXT", ColumnType::Text, true},
    {"CHAR", ColumnType::Text, true},
    {"CHARACTER", ColumnType::Text, true},
    {"VARCHAR", ColumnType::Text, true},
    {"NVARCHAR", ColumnType::Text, true},
    {"ALPHANUMERIC", ColumnType::Text, true},
    {"LONGTEXT", ColumnType::Memo},
    {"LONGCHAR", ColumnType::Memo},
    {"MEMO", ColumnType::Memo},
    {"NOTE", ColumnType::Memo},
    {"NTEXT", ColumnType::Memo},
    {"YESNO", ColumnType::Boolean},
    {"BIT", ColumnType::Boolean},
    {"BOOLEAN", ColumnType::Boolean},
    {"LOGICAL", ColumnType::Boolean},
    {"CURRENCY", ColumnType::Currency},
    {"MONEY", ColumnType::Currency},
    {"SINGLE", ColumnType::Single},
    {"REAL", ColumnType::Single},
    {"FLOAT4", ColumnType::Single},
    {"DOUBLE", ColumnType::Double},
    {"FLOAT", ColumnType::Double},
    {"FLOAT8", ColumnType::Double},
    {"NUMBER", ColumnType::Double},
    {"DATETIME", ColumnType::DateTime},
    {"DATE", ColumnType::DateTime},
    {"TIME", ColumnType::DateTime},
    {"TIMESTAMP", ColumnType::DateTime},
    {"LONGBINARY", ColumnType::Ole},
    {"OLEOBJECT", ColumnType::Ole},
    {"IMAGE", ColumnType::Ole},
    {"GENERAL", ColumnType::Ole},
    {"DECIMAL", ColumnType::Numeric, true},
    {"NUMERIC", ColumnType::Numeric, true},
    {"DEC", ColumnType::Numeric, true},
    {"GUID", ColumnType::Guid},
    {"UNIQUEIDENTIFIER", ColumnType::Guid},
};

/// One function for each production, named after it. A statement that is wrong is refused with the number of its kind,
/// as the engine of Access does it: so `kind_` says at each place what is being read.
///
///   statement  = ( create | alter | drop | delete | update ) [ ";" ]
///   create     = "CREATE" "TABLE" name "(" column { "," column } ")"
///              | "CREATE" [ "UNIQUE" ] "INDEX" name "ON" name "(" part { "," part } ")" [ "WITH" "PRIMARY" ]
///   part       = name [ "ASC" | "DESC" ]
///   alter      = "ALTER" "TABLE" name change
///   change     = "ADD" "CONSTRAINT" foreign | "ADD" [ "COLUMN" ] column
///              | "ALTER" [ "COLUMN" ] column { "," column }
///              | "DROP" "CONSTRAINT" name | "DROP" [ "COLUMN" ] name
///   foreign    = name "FOREIGN" "KEY" names "REFERENCES" name names
///                { "ON" ( "UPDATE" | "DELETE" ) "CASCADE" }
///   drop       = "DROP" "TABLE" name | "DROP" "INDEX" name "ON" name
///   delete     = "DELETE" [ "*" ] "FROM" name
///   update     = "UPDATE" name "SET" name "=" name
///   column     = name type [ "(" number [ "," number ] ")" ] [ [ "NOT" ] "NULL" ]
///   names      = "(" name { "," name } ")"
class Parser {
public:
    explicit Parser(std::string_view sql) : sql_(sql), lexer_(sql), token_(lexer_.Next()) {}

    Statement Parse()
    {
        Statement statement = ParseOne();
        Accept(";");
        if (token_.kind != TokenKind::End)
            Fail();
        return statement;
    }

private:
    Statement ParseOne()
    {
        if (AcceptWord("CREATE"))
            return ParseCreate();
        if (AcceptWord("ALTER"))
            return ParseAlter();
        if (AcceptWord("DROP"))
            return ParseDrop();
        if (AcceptWord("DELETE")) {
            kind_ = ErrorNumber::SyntaxErrorInFrom;
            Accept("*");
            ExpectWord("FROM");
            return DeleteRows{Name()};
        }
        if (AcceptWord("UPDATE")) {
            kind_ = ErrorNumber::SyntaxErrorInUpdate;
            CopyColumn copy;
            copy.table = Name();
            ExpectWord("SET");
            copy.target = Name();
            Expect("=");
            copy.source = Name();
            return copy;
        }
        Fail();
    }

    Statement ParseCreate()
    {
        if (AcceptWord("TABLE"))
            return ParseCreateTable();
        kind_ = ErrorNumber::SyntaxErrorInCreateIndex;
        CreateIndex create;
        create.index.unique = AcceptWord("UNIQUE");
        ExpectWord("INDEX");
        create.index.name = Name();
        ExpectWord("ON");
        create.table = Name();
        Expect("(");
        do {
            std::string column = Name();
            const bool descending = AcceptWord("DESC");
            if (!descending)
                AcceptWord("ASC");
            create.index.columns.emplace_back(std::move(column),
                                              descending ? SortOrder::Descending : SortOrder::Ascending);
        } while (Accept(","));
        Expect(")");
        if (AcceptWord("WITH")) {
            ExpectWord("PRIMARY");
            create.index.primary = true;
            create.index.unique = true;
        }
        return create;
    }

    Statement ParseCreateTable()
    {
        kind_ = ErrorNumber::SyntaxErrorInCreateTable;
        CreateTable create;
        create.table = Name();
        Expect("(");
        do {
            create.columns.push_back(Column());
            // What a column's definition called its faults is over with it.
            kind_ = ErrorNumber::SyntaxErrorInCreateTable;
        } while (Accept(","));
        Expect(")");
        return create;
    }

    Statement ParseAlter()
    {
        kind_ = ErrorNumber::SyntaxErrorInAlterTable;
        ExpectWord("TABLE");
        std::string table = Name();
        if (AcceptWord("ADD")) {
            if (AcceptWord("CONSTRAINT"))
                return ParseForeignKey(std::move(table));
            AcceptWord("COLUMN");
            return AddColumn{std::move(table), Column()};
        }
        if (AcceptWord("ALTER")) {
            AcceptWord("COLUMN");
            WidenColumns widen{std::move(table), {}};
            do
                widen.columns.push_back(Column());
            while (Accept(","));
            return widen;
        }
        ExpectWord("DROP");
        if (AcceptWord("CONSTRAINT"))
            return DropConstraint{std::move(table), Name()};
        AcceptWord("COLUMN");
        return DropColumn{std::move(table), Name()};
    }

    Statement ParseForeignKey(std::string table)
    {
        kind_ = ErrorNumber::SyntaxErrorInConstraint;
        RelationSpec relation;
        relation.table = std::move(table);
        relation.name = Name();
        ExpectWord("FOREIGN");
        ExpectWord("KEY");
        relation.columns = Names();
        ExpectWord("REFERENCES");
        relation.referencedTable = Name();
        relation.referencedColumns = Names();
        while (AcceptWord("ON")) {
            if (AcceptWord("UPDATE")) {
                ExpectWord("CASCADE");
                relation.cascadeUpdates = true;
            } else {
                ExpectWord("DELETE");
                ExpectWord("CASCADE");
                relation.onDelete = DeleteRule::Cascade;
            }
        }
        return AddForeignKey{std::move(relation)};
    }

    Statement ParseDrop()
    {
        if (AcceptWord("TABLE")) {
            kind_ = ErrorNumber::SyntaxErrorInDrop;
            return DropTable{Name()};
        }
        kind_ = ErrorNumber::SyntaxErrorInDropIndex;
        ExpectWord("INDEX");
        DropIndex drop;
        drop.index = Name();
        ExpectWord("ON");
        drop.table = Name();
        return drop;
    }

    ColumnSpec Column()
    {
        kind_ = ErrorNumber::SyntaxErrorInFieldDefinition;
        ColumnSpec column;
        column.name = Name();
        const TypeName& type = Type();
        column.type = type.type;
        column.autonumber = type.autonumber;
        if (type.sized && Accept("(")) {
            if (type.type == ColumnType::Numeric)
                Digits(column);
            else
                column.characters = Number();
            Expect(")");
        }
        if (AcceptWord("NOT")) {
            ExpectWord("NULL");
            column.required = true;
        } else {
            AcceptWord("NULL");
        }
        return column;
    }

    const TypeName& Type()
    {
        if (token_.kind == TokenKind::Word)
            for (const TypeName& type : kTypes)
                if (AcceptWord(type.name))
                    return type;
        Fail();
    }

    /// Precision and perhaps scale of a numeric column; what is out of range is not for the parser to refuse.
    void Digits(ColumnSpec& column)
    {
        const auto small = [](std::size_t number) { return static_cast<std::uint8_t>(std::min(number, kMaxColumns)); };
        column.precision = small(Number());
        if (Accept(","))
            column.scale = small(token_.text == "0" ? (Advance(), 0) : Number());
    }

    /// A number of at least 1; what is out of any range comes back as a very large one.
    std::size_t Number()
    {
        if (token_.kind != TokenKind::Number)
            Fail();
        std::size_t value = 0;
        const auto [end, failure] = std::from_chars(token_.text.data(), token_.text.data() + token_.text.size(), value);
        if (failure == std::errc::result_out_of_range)
            value = ~std::size_t{0};
        if (value == 0)
            Fail();
        Advance();
        return value;
    }

    /// A name, in brackets or bare. A keyword may be one too: what is a keyword depends on its place alone.
    std::string Name()
    {
        if (token_.kind != TokenKind::Name && token_.kind != TokenKind::Word)
            Fail();
        std::string name(token_.text);
        Advance();
        return name;
    }

    std::vector<std::string> Names()
    {
        std::vector<std::string> names;
        Expect("(");
        do
            names.push_back(Name());
        while (Accept(","));
        Expect(")");
        return names;
    }

    void Advance() noexcept { token_ = lexer_.Next(); }

    bool AcceptWord(std::string_view upper) noexcept
    {
        if (token_.kind != TokenKind::Word || !EqualIgnoringCase(token_.text, upper))
            return false;
        Advance();
        return true;
    }

    bool Accept(std::string_view symbol) noexcept
    {
        if (token_.kind != TokenKind::Symbol || token_.text != symbol)
            return false;
        Advance();
        return true;
    }

    void ExpectWord(std::string_view upper)
    {
        if (!AcceptWord(upper))
            Fail();
    }

    void Expect(std::string_view symbol)
    {
        if (!Accept(symbol))
            Fail();
    }

    /// Names the token that does not fit and where it stands, then the whole statement: whoever reads the message did
    /// not write the statement by hand.
    [[noreturn]] void Fail() const
    {
        const std::string where = token_.kind == TokenKind::End
                                      ? "the statement ends too early, at offset "
                                      : "unexpected \"" + std::string(token_.text) + "\" at offset ";
        throw Error(kind_, {sql_}, where + std::to_string(token_.offset) + ": " + std::string(sql_));
    }

    std::string_view sql_;
    Lexer lexer_;
    Token token_;
    ErrorNumber kind_ = ErrorNumber::SyntaxErrorInQuery; ///< what a failure at this place is called
};

} // namespace

Statement ParseStatement(std::string_view sql)
{
    return Parser(sql).Parse();
}

} // namespace jet::sql
