#include "jet/error.h"
#include "jet/sql/parser.h"

#include <gtest/gtest.h>
#include <string>
#include <variant>

namespace jet::sql {
namespace {

template <typename Part>
std::string Joined(const std::vector<Part>& parts, const auto& text)
{
    std::string joined;
    for (const Part& part : parts)
        joined += (joined.empty() ? "" : ", ") + text(part);
    return joined;
}

std::string Describe(const ColumnSpec& column)
{
    std::string text = column.name + ":" + std::to_string(static_cast<int>(column.type));
    if (column.type == ColumnType::Text)
        text += "(" + std::to_string(column.characters) + ")";
    return text + (column.autonumber ? " counter" : "") + (column.required ? " required" : "");
}

std::string Describe(const std::string& name)
{
    return name;
}

/// A statement in one line, so that a case is one line too.
struct Describer {
    std::string operator()(const CreateTable& s) const
    {
        return "table " + s.table + " {" + Joined(s.columns, [](const ColumnSpec& c) { return Describe(c); }) + "}";
    }
    std::string operator()(const DropTable& s) const { return "drop table " + s.table; }
    std::string operator()(const AddColumn& s) const { return s.table + " + " + Describe(s.column); }
    std::string operator()(const DropColumn& s) const { return s.table + " - " + s.column; }
    std::string operator()(const CreateIndex& s) const
    {
        const auto column = [](const std::pair<std::string, SortOrder>& c) {
            return c.first + (c.second == SortOrder::Descending ? " down" : "");
        };
        return s.table + " index " + s.index.name + " {" + Joined(s.index.columns, column) + "}" +
               (s.index.unique ? " unique" : "") + (s.index.primary ? " primary" : "");
    }
    std::string operator()(const DropIndex& s) const { return s.table + " - index " + s.index; }
    std::string operator()(const AddForeignKey& s) const
    {
        const auto name = [](const std::string& n) { return Describe(n); };
        return s.relation.table + " {" + Joined(s.relation.columns, name) + "} -> " + s.relation.referencedTable +
               " {" + Joined(s.relation.referencedColumns, name) + "} as " + s.relation.name +
               (s.relation.cascadeUpdates ? " update" : "") +
               (s.relation.onDelete == DeleteRule::Cascade ? " delete" : "");
    }
    std::string operator()(const DropConstraint& s) const { return s.table + " - constraint " + s.constraint; }
    std::string operator()(const DeleteRows& s) const { return "delete " + s.table; }
    std::string operator()(const CopyColumn& s) const { return s.table + "." + s.target + " = " + s.source; }
};

TEST(Parser, ReadsEveryStatement)
{
    struct Case {
        const char* sql;
        const char* meaning;
    };
    const Case cases[] = {
        {"CREATE TABLE [t] ([PKEY] Counter NOT NULL, [FKEY] Long, [MASTER_TABLE] String, [a b] Longtext);",
         "table t {PKEY:4 counter required, FKEY:4, MASTER_TABLE:10(255), a b:12}"},
        {"create table t(a text(80),b INTEGER null , c memo,d bit, e DateTime, f double)",
         "table t {a:10(80), b:4, c:12, d:1, e:8, f:7}"},
        {"CREATE TABLE [select] ([table] String)", "table select {table:10(255)}"},
        {"CREATE TABLE größe (straße String)", "table größe {straße:10(255)}"},
        {"CREATE UNIQUE INDEX [t_PKEY] ON [t] ([PKEY]) WITH PRIMARY;", "t index t_PKEY {PKEY} unique primary"},
        {"CREATE INDEX i ON t (a, b DESC, c ASC)", "t index i {a, b down, c}"},
        {"ALTER TABLE [t] ADD COLUMN [x] LONGTEXT;", "t + x:12"},
        {"ALTER TABLE t ADD x Long", "t + x:4"},
        {"ALTER TABLE [t] DROP COLUMN [x];", "t - x"},
        {"ALTER TABLE [child] ADD CONSTRAINT [c_LINK] FOREIGN KEY ([FKEY]) REFERENCES [parent] ([PKEY]) ON UPDATE "
         "CASCADE "
         "ON DELETE CASCADE;",
         "child {FKEY} -> parent {PKEY} as c_LINK update delete"},
        {"ALTER TABLE a ADD CONSTRAINT n FOREIGN KEY (x, y) REFERENCES b (p, q) ON DELETE CASCADE",
         "a {x, y} -> b {p, q} as n delete"},
        {"ALTER TABLE [t] DROP CONSTRAINT [n]", "t - constraint n"},
        {"DROP TABLE [t]", "drop table t"},
        {"DROP INDEX i ON t;", "t - index i"},
        {"DELETE * FROM [t]", "delete t"},
        {"  update\t[t]\r\nset [tmp_20240131235959] = [a]  ", "t.tmp_20240131235959 = a"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.sql);
        EXPECT_EQ(std::visit(Describer(), ParseStatement(c.sql)), c.meaning);
    }
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
        try {
            static_cast<void>(ParseStatement(c.sql));
            ADD_FAILURE() << "was accepted";
        } catch (const Error& error) {
            EXPECT_EQ(error.Number(), c.number);
            EXPECT_NE(std::string(error.what()).find(c.where), std::string::npos) << error.what();
        }
    }
}

} // namespace
} // namespace jet::sql
