#include "jet/catalog/catalog.h"
#include "jet/face/database.h"

namespace jet {
namespace {

using testing::Database;
using testing::ErrorOf;
using testing::kVersions;

TEST(Statement, ARefusedOneHasChangedNothing)
{
    struct Case {
        std::string sql;
        ErrorNumber number;
    };
    std::string manyColumns = "CREATE TABLE wide (c0 Long";
    for (int i = 1; i < 256; ++i)
        manyColumns += ", c" + std::to_string(i) + " Long";
    const Case cases[] = {
        {"CREATE TABLE T (a Long)", ErrorNumber::TableExists},
        {"CREATE TABLE [] (a Long)", ErrorNumber::InvalidName},
        {"CREATE TABLE [a.b] (a Long)", ErrorNumber::InvalidName},
        {"CREATE TABLE [ a] (a Long)", ErrorNumber::InvalidName},
        {"CREATE TABLE [a\nb] (a Long)", ErrorNumber::InvalidName},
        {"CREATE TABLE [" + std::string(65, 'n') + "] (a Long)", ErrorNumber::InvalidName},
        {"CREATE TABLE n (a Long, [b!] Long)", ErrorNumber::InvalidName},
        {"CREATE TABLE n (a Long, A String)", ErrorNumber::FieldDefinedTwice},
        {"CREATE TABLE n (a Counter, b Counter)", ErrorNumber::TwoAutoNumbers},
        {"CREATE TABLE n (a Text(256))", ErrorNumber::SizeTooLong},
        {manyColumns + ")", ErrorNumber::TooManyFields},
        {"ALTER TABLE x ADD COLUMN a Long", ErrorNumber::NoSuchTable},
        {"ALTER TABLE t ADD COLUMN NAME Long", ErrorNumber::FieldExists},
        {"ALTER TABLE t ADD COLUMN a Counter", ErrorNumber::TwoAutoNumbers},
        {"ALTER TABLE t DROP COLUMN x", ErrorNumber::NoSuchField},
        {"ALTER TABLE t DROP COLUMN PKEY", ErrorNumber::FieldInIndex},
        {"CREATE INDEX t_pkey ON t (name)", ErrorNumber::IndexExists},
        {"CREATE UNIQUE INDEX p ON t (name) WITH PRIMARY", ErrorNumber::PrimaryKeyExists},
        {"CREATE UNIQUE INDEX u ON t (name)", ErrorNumber::DuplicateKey},
        {"ALTER TABLE x ALTER COLUMN a Memo", ErrorNumber::NoSuchTable},
        {"ALTER TABLE t ALTER COLUMN name Memo, x Memo", ErrorNumber::NoSuchField},
        {"ALTER TABLE t ALTER COLUMN name Text(20)", ErrorNumber::SyntaxErrorInFieldDefinition},
        {"ALTER TABLE t ALTER COLUMN note Text", ErrorNumber::SyntaxErrorInFieldDefinition},
        {"ALTER TABLE t ALTER COLUMN n Memo", ErrorNumber::SyntaxErrorInFieldDefinition},
        {"ALTER TABLE t ALTER COLUMN small Text(256)", ErrorNumber::SizeTooLong},
        {"ALTER TABLE t ALTER COLUMN PKEY Text", ErrorNumber::SyntaxErrorInFieldDefinition},
        {"ALTER TABLE t ALTER COLUMN long Text(3)", ErrorNumber::FieldTooSmall},
        {"ALTER TABLE t ALTER COLUMN name Memo, indexed Memo", ErrorNumber::FieldInIndex},
        {"ALTER TABLE t ALTER COLUMN related Memo", ErrorNumber::FieldInRelation},
        {"ALTER TABLE r ALTER COLUMN id Text(50)", ErrorNumber::FieldInRelation},
        {"ALTER TABLE t DROP COLUMN related", ErrorNumber::FieldInRelation},
        {"DROP INDEX r_id ON r", ErrorNumber::TableInRelation},
        {"DROP TABLE r", ErrorNumber::TableInRelation},
        {"ALTER TABLE t DROP CONSTRAINT x", ErrorNumber::NoSuchRelation},
        {"ALTER TABLE r DROP CONSTRAINT link", ErrorNumber::NoSuchRelation},
        {"ALTER TABLE x ADD CONSTRAINT n FOREIGN KEY (n) REFERENCES r (id)", ErrorNumber::NoSuchTableOrConstraint},
        {"ALTER TABLE t ADD CONSTRAINT n FOREIGN KEY (n) REFERENCES x (id)", ErrorNumber::NoSuchTableOrConstraint},
        {"ALTER TABLE t ADD CONSTRAINT n FOREIGN KEY (x) REFERENCES r (id)", ErrorNumber::NoSuchField},
        {"ALTER TABLE t ADD CONSTRAINT n FOREIGN KEY (n) REFERENCES r (id)", ErrorNumber::RelationTypesDiffer},
        {"ALTER TABLE t ADD CONSTRAINT n FOREIGN KEY (small, name) REFERENCES r (id)",
         ErrorNumber::RelationTypesDiffer},
        {"ALTER TABLE t ADD CONSTRAINT n FOREIGN KEY (n) REFERENCES t (n)", ErrorNumber::NotUniquelyIndexed},
        {"ALTER TABLE t ADD CONSTRAINT n FOREIGN KEY (n) REFERENCES keyless (a)", ErrorNumber::NoPrimaryKey},
        {"ALTER TABLE t ADD CONSTRAINT t_PKEY FOREIGN KEY (small) REFERENCES r (id)", ErrorNumber::IndexNameTaken},
        {"ALTER TABLE t ADD CONSTRAINT LINK FOREIGN KEY (small) REFERENCES r (id)", ErrorNumber::RelationExists},
        {"ALTER TABLE t ADD CONSTRAINT [a.b] FOREIGN KEY (small) REFERENCES r (id)", ErrorNumber::InvalidName},
        {"ALTER TABLE t ADD CONSTRAINT n FOREIGN KEY (small) REFERENCES r (id)", ErrorNumber::DataViolatesRelation},
        {"CREATE INDEX i ON t (x)", ErrorNumber::NoSuchField},
        {"CREATE INDEX i ON t (note)", ErrorNumber::WrongType},
        {"CREATE INDEX i ON x (a)", ErrorNumber::NoSuchTable},
        {"DROP INDEX x ON t", ErrorNumber::NoSuchIndex},
        {"DROP TABLE x", ErrorNumber::NoSuchTable},
        {"DROP TABLE MSysObjects", ErrorNumber::ReadOnly},
        {"DELETE * FROM x", ErrorNumber::TableNotFound},
        {"DELETE * FROM MSysACEs", ErrorNumber::ReadOnly},
        {"UPDATE t SET name = x", ErrorNumber::UnknownParameter},
        {"UPDATE t SET small = name", ErrorNumber::FieldTooSmall},
        {"UPDATE t SET n = name", ErrorNumber::WrongType},
    };
    for (const JetVersion version : kVersions) {
        Database database(version);
        database.Execute("CREATE TABLE t (PKEY Counter NOT NULL, name String, small Text(3), n Long, note Memo, "
                         "indexed Text(9), related Text(9), long Long)");
        database.Execute("CREATE UNIQUE INDEX t_PKEY ON t (PKEY) WITH PRIMARY");
        database.Execute("CREATE INDEX t_indexed ON t (indexed)");
        database.Execute("CREATE TABLE keyless (a Long)");
        database.Execute("CREATE TABLE r (id Text(9))");
        database.Execute("CREATE UNIQUE INDEX r_id ON r (id) WITH PRIMARY");
        database.Execute("ALTER TABLE t ADD CONSTRAINT link FOREIGN KEY (related) REFERENCES r (id)");
        for (const char* name : {"abc", "ABC", "longer"})
            database.Add("t", {{"name", name}, {"small", "x"}, {"n", "7"}, {"long", "1234"}});
        const auto state = [&] {
            return database.Rows("t") + database.Schema(SchemaKind::Columns, {}, {"TABLE_NAME", "COLUMN_NAME"}) +
                   database.Schema(SchemaKind::Indexes, {}, {"TABLE_NAME", "INDEX_NAME"}) +
                   database.Schema(SchemaKind::ForeignKeys, {}, {"FK_NAME"});
        };
        const std::string before = state();
        for (const Case& c : cases) {
            SCOPED_TRACE(c.sql);
            EXPECT_EQ(database.Try(c.sql), c.number);
            EXPECT_EQ(state(), before);
        }
        EXPECT_TRUE(database.AllSound());
    }
}

TEST(Statement, ATableInUseIsNotDroppedNorItsRelations)
{
    Database database(JetVersion::Jet4);
    database.Execute("CREATE TABLE t (a Long)");
    database.Execute("CREATE UNIQUE INDEX t_a ON t (a) WITH PRIMARY");
    database.Execute("CREATE TABLE c (a Long)");
    database.Execute("ALTER TABLE c ADD CONSTRAINT link FOREIGN KEY (a) REFERENCES t (a)");
    for (const char* table : {"t", "c"}) {
        const Recordset open = database.Open(table);
        EXPECT_EQ(database.Try("ALTER TABLE c DROP CONSTRAINT link"), ErrorNumber::TableLocked);
        EXPECT_EQ(database.Try(std::string("DROP TABLE ") + table), ErrorNumber::TableLocked);
    }
    EXPECT_EQ(database.Try("ALTER TABLE c DROP CONSTRAINT link"), std::nullopt);
    EXPECT_EQ(database.Try("DROP TABLE t"), std::nullopt);
}

TEST(Statement, AnIndexThatHasLostItsNameHoldsItsColumns)
{
    for (const JetVersion version : kVersions) {
        Database database(version);
        database.Execute("CREATE TABLE t (a Text(20), b Long)");
        database.Execute("CREATE INDEX i ON t (a)");
        database.Close();
        {
            const auto pager = Pager::Open(OpenFile(database.Path(), OpenMode::ReadWrite));
            TableDef def = ReadTableDef(*pager, static_cast<PageNumber>(Catalog(*pager).FindTable("t")->id));
            def.logicalIndexes.clear();
            WriteTableDef(*pager, def);
            pager->Commit();
        }
        const auto damaged = Connection::Open(database.Path());
        for (const char* statement : {"ALTER TABLE t DROP COLUMN a", "ALTER TABLE t ALTER COLUMN a Longtext"})
            EXPECT_EQ(ErrorOf([&] { damaged->Execute(statement); }), ErrorNumber::FieldInIndex) << statement;
        damaged->Execute("ALTER TABLE t DROP COLUMN b");
    }
}

TEST(Statement, AnIndexCountsItsDistinctKeys)
{
    Database database(JetVersion::Jet4);
    database.Execute("CREATE TABLE t (a Long)");
    for (const char* value : {"1", "2", "1", "3", "2"})
        database.Add("t", {{"a", value}});
    database.Execute("CREATE INDEX i ON t (a)");
    for (const char* value : {"3", "4"})
        database.Add("t", {{"a", value}});
    database.Reopen();
    EXPECT_EQ(database.Schema(SchemaKind::Indexes, {"", "", "i"}, {"CARDINALITY"}), "4\n");
}

TEST(Statement, DecimalColumnsHaveTheirDigits)
{
    Database database(JetVersion::Jet4);
    database.Execute("CREATE TABLE t (a Decimal(5, 2), b Numeric, c Dec(28,0))");
    EXPECT_EQ(database.Try("ALTER TABLE t ADD COLUMN d Decimal(29)"), ErrorNumber::SizeTooLong);
    EXPECT_EQ(database.Try("ALTER TABLE t ADD COLUMN d Decimal(2, 3)"), ErrorNumber::SizeTooLong);
    database.Add("t", {{"a", "-123.455"}, {"b", "1234567890123456.5"}, {"c", "1234567890123456789012345678"}});
    Recordset records = database.Open("t");
    records.AddNew();
    EXPECT_THROW(records.SetText(0, "1000"), Error);
    records.Close();
    database.Execute("CREATE INDEX i ON t (a, b DESC)");
    EXPECT_EQ(database.Rows("t"), "-123.46|1234567890123457|1234567890123456789012345678\n");
    EXPECT_TRUE(database.AllSound());
    EXPECT_EQ(Database(JetVersion::Jet3).Try("CREATE TABLE t (a Decimal)"), ErrorNumber::SyntaxErrorInFieldDefinition);
}

TEST(Statement, NumbersDatesAndBooleansBecomeTexts)
{
    struct Case {
        const char* type;
        std::vector<std::pair<std::string, std::string>> values; ///< as they are set, as they print
        const char* format = "";
    };
    const Case cases[] = {
        {"YesNo", {{"True", "true"}, {"False", "false"}, {"", "false"}}},
        {"Byte", {{"255", "255"}, {"", ""}, {"1", "1"}}},
        {"Short", {{"-32768", "-32768"}, {"", ""}, {"1", "1"}}},
        {"Long", {{"2147483647", "2147483647"}, {"", ""}, {"-1", "-1"}}},
        {"Single", {{"0.1", "0.1"}, {"", ""}, {"2", "2"}}},
        {"Double", {{"0.00000015", "0.00000015"}, {"", ""}, {"1e300", "1e+300"}}},
        {"Currency", {{"1.5", "1.5"}, {"", ""}, {"-2", "-2"}}},
        {"DateTime", {{"2024-03-05", "2024-03-05"}, {"", ""}, {"1812-06-24 05:06:07", "1812-06-24T05:06:07"}}},
        {"DateTime", {{"00:00", "1899-12-30"}, {"", ""}, {"14:07:09", "1899-12-30T14:07:09"}}},
        {"DateTime", {{"00:00", "00:00:00"}, {"", ""}, {"2024-03-05", "2024-03-05"}}, "Long Time"},
    };
    for (const JetVersion version : kVersions) {
        Database database(version);
        for (const Case& c : cases) {
            SCOPED_TRACE(c.type);
            database.Execute(std::string("CREATE TABLE t (a Text(9), v ").append(c.type).append(", b Long)"));
            const Property format{"v", "Format", c.format};
            database.Face().SetProperties("t", std::span(&format, *c.format == '\0' ? 0 : 1));
            for (const char* const index : {"INDEX i ON t (v)", "UNIQUE INDEX u ON t (b, v)"})
                database.Execute(std::string("CREATE ").append(index));
            std::string expected;
            for (int b = 0; const auto& [set, printed] : c.values) {
                const std::string number = std::to_string(++b);
                expected.append("x|").append(printed).append("|").append(number).append("\n");
                if (set.empty())
                    database.Add("t", {{"a", "x"}, {"b", number}});
                else
                    database.Add("t", {{"a", "x"}, {"v", set}, {"b", number}});
            }
            database.Execute("ALTER TABLE t ALTER COLUMN v TEXT(255)");
            EXPECT_EQ(database.Rows("t"), expected);
            database.Add("t", {{"a", "x"}, {"v", "any text"}, {"b", "1"}});
            EXPECT_TRUE(database.AllSound());
            database.Execute("DROP TABLE t");
        }
    }
}

TEST(Statement, NotNullIsAPropertyThatStays)
{
    for (const JetVersion version : kVersions) {
        Database database(version);
        database.Execute("CREATE TABLE t (a Long NOT NULL, b String NOT NULL, c Long)");
        database.Execute("ALTER TABLE t ADD COLUMN d Long NOT NULL");
        database.Execute("ALTER TABLE t DROP COLUMN b");
        database.Execute("ALTER TABLE t ADD COLUMN e Text(5) NOT NULL");
        database.Execute("ALTER TABLE t ALTER COLUMN e Longtext");
        database.Reopen();
        EXPECT_EQ(database.Schema(SchemaKind::Columns, {"", "", "t"}, {"COLUMN_NAME", "IS_NULLABLE"}),
                  "a|False\nc|True\nd|False\ne|False\n");
        Recordset records = database.Open("t");
        records.AddNew();
        records.SetLong(0, 1);
        EXPECT_THROW(records.Update(), Error);
        records.SetLong(2, 1);
        EXPECT_THROW(records.Update(), Error);
        records.SetText(3, std::string(9000, 'z'));
        records.Update();
        EXPECT_TRUE(database.AllSound());
    }
}

} // namespace
} // namespace jet
