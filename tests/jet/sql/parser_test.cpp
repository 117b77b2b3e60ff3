#include "jet/face/database.h"
#include "jet/sql/ast.h"

namespace jet::sql {
namespace {

TEST(Parser, ReadsEverySpelling)
{
    testing::Database database(JetVersion::Jet4);
    for (const char* sql : {
             "create table t(a text(80),b INTEGER null , c memo,d bit, e DateTime, f double)",
             "CREATE TABLE größe ([table] String)",
             "ALTER TABLE t ADD g Long",
             "alter table t alter column a text(90), c longtext;",
             "CREATE INDEX i ON t (a, b DESC, f ASC)",
             "CREATE UNIQUE INDEX k ON t (b, g) WITH PRIMARY;",
             "ALTER TABLE [größe] ADD x Long",
             "ALTER TABLE [größe] ADD COLUMN [a b] LONG;",
             "ALTER TABLE größe ADD CONSTRAINT n FOREIGN KEY (x, [a b]) REFERENCES t (b, g) ON DELETE CASCADE",
             "  update\t[t]\r\nset [f] = [b]  ",
         }) {
        SCOPED_TRACE(sql);
        EXPECT_EQ(database.Try(sql), std::nullopt);
    }
    EXPECT_EQ(
        database.Schema(SchemaKind::Columns, {"", "", "t"}, {"COLUMN_NAME", "DATA_TYPE", "CHARACTER_MAXIMUM_LENGTH"}),
        "a|130|90\nb|3|\nc|130|0\nd|11|\ne|7|\nf|5|\ng|3|\n");
    EXPECT_EQ(database.Schema(SchemaKind::Indexes, {"", "", "", "", "t"},
                              {"INDEX_NAME", "COLUMN_NAME", "COLLATION", "PRIMARY_KEY"}),
              "i|a|1|False\ni|b|2|False\ni|f|1|False\nk|b|1|True\nk|g|1|True\n");
    EXPECT_EQ(database.Schema(SchemaKind::ForeignKeys, {},
                              {"FK_TABLE_NAME", "FK_COLUMN_NAME", "PK_COLUMN_NAME", "UPDATE_RULE", "DELETE_RULE"}),
              "größe|x|b|NO ACTION|CASCADE\ngröße|a b|g|NO ACTION|CASCADE\n");
    EXPECT_TRUE(database.AllSound());
}

TEST(Parser, SaysWhichStatementIsWrongAndWhere)
{
    struct Case {
        const char* sql;
        ErrorNumber number;
        const char* where;
    };
    const Case cases[] = {
        {"", ErrorNumber::SyntaxErrorInQuery, "offset 0"},
        {"SELECT * FROM t", ErrorNumber::SyntaxErrorInQuery, "\"SELECT\" at offset 0"},
        {"CREATE TABLE t", ErrorNumber::SyntaxErrorInCreateTable, "too early, at offset 14"},
        {"CREATE TABLE t ()", ErrorNumber::SyntaxErrorInFieldDefinition, "\")\" at offset 16"},
        {"CREATE TABLE t (a Lang)", ErrorNumber::SyntaxErrorInFieldDefinition, "\"Lang\" at offset 18"},
        {"CREATE TABLE t (a Text(0))", ErrorNumber::SyntaxErrorInFieldDefinition, "\"0\" at offset 23"},
        {"CREATE TABLE t (a Long b Long)", ErrorNumber::SyntaxErrorInCreateTable, "\"b\" at offset 23"},
        {"CREATE TABLE [t (a Long)", ErrorNumber::SyntaxErrorInCreateTable, "offset 13"},
        {"CREATE INDEX i ON t (a) WITH IGNORE NULL", ErrorNumber::SyntaxErrorInCreateIndex, "\"IGNORE\" at offset 29"},
        {"ALTER TABLE t CHANGE a", ErrorNumber::SyntaxErrorInAlterTable, "\"CHANGE\" at offset 14"},
        {"ALTER TABLE t ADD CONSTRAINT n CHECK", ErrorNumber::SyntaxErrorInConstraint, "\"CHECK\" at offset 31"},
        {"DELETE * t", ErrorNumber::SyntaxErrorInFrom, "\"t\" at offset 9"},
        {"UPDATE t SET a = 'x'", ErrorNumber::SyntaxErrorInUpdate, "offset 17"},
        {"DROP INDEX i", ErrorNumber::SyntaxErrorInDropIndex, "too early, at offset 12"},
        {"DROP TABLE t; DROP TABLE u", ErrorNumber::SyntaxErrorInDrop, "\"DROP\" at offset 14"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.sql);
        const auto parse = [&] { static_cast<void>(ParseStatement(c.sql)); };
        EXPECT_EQ(testing::ErrorOf(parse), c.number);
        const std::string message = testing::MessageOf(parse);
        EXPECT_NE(message.find(c.where), std::string::npos) << message;
    }
}

} // namespace
} // namespace jet::sql
