#include "jet/c/velmora_jet.h"
#include "jet/c/velmora_jet.hpp"

#include "support/shared.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

using velmora::testing::TempFolder;
using velmora_jet::Database;
using velmora_jet::Table;

TEST(CFace, GivesBackWhatWasStoredInEveryType)
{
    struct Case {
        const char* type;
        const char* text;               ///< what is set
        const char* read;               ///< what is read as a text
        std::optional<double> number{}; ///< and as a number
    };
    const Case cases[] = {
        {"BIT", "true", "True", 1},
        {"BYTE", "255", "255", 255},
        {"SHORT", "-3", "-3", -3},
        {"LONG", "70000", "70000", 70000},
        {"CURRENCY", "1.25", "1.25", 1.25},
        {"SINGLE", "0.5", "0.5", 0.5},
        {"DOUBLE", "1e20", "1e+20", 1e20},
        {"DATETIME", "1899-12-31T12:00:00", "1899-12-31 12:00:00", 1.5},
        {"TEXT(20)", "Ä", "Ä"},
        {"LONGTEXT", "", ""},
        {"LONGBINARY", "00FF", "00FF"},
    };
    for (const vjet_format format : {VJET_ACCESS_97, VJET_ACCESS_2000})
        for (const Case& c : cases) {
            SCOPED_TRACE(c.type);
            TempFolder folder;
            const std::string path = folder / "a.mdb";
            {
                Database database = Database::Create(path, format);
                database.Execute(std::string("CREATE TABLE t (k COUNTER, v ") + c.type + ", n LONG)");
                Table table = database.OpenTable("t");
                table.Add();
                table.Set(1, c.text);
                table.Save();
                EXPECT_EQ(table.LastAutonumber(), 1);
                if (c.number) { // and once more as a number, which changes the row that was saved
                    table.Set(1, *c.number);
                    table.Save();
                }
                database.Commit();
            }
            Database database = Database::OpenReadOnly(path);
            EXPECT_EQ(database.Tables(), std::vector<std::string>{"t"});
            Table table = database.OpenTable("t");
            ASSERT_TRUE(table.Next());
            EXPECT_EQ(table.Text(1), c.read);
            if (c.number) {
                EXPECT_EQ(table.Number(1), c.number);
            }
            EXPECT_EQ(table.Text(2), std::nullopt);
            EXPECT_EQ(table.Number(2), std::nullopt);
            EXPECT_FALSE(table.Next());
            EXPECT_FALSE(table.Next());
        }
}

/// A database with a table of three rows, and what is done with it.
struct Prepared {
    TempFolder folder;
    Database database = Database::Create(folder / "a.mdb");
    Table table = Make();

    Table Make()
    {
        database.Execute("CREATE TABLE t (k COUNTER, n BYTE, s TEXT(3), o LONGBINARY)");
        Table made = database.OpenTable("t");
        for (const double n : {10, 20, 30}) {
            made.Add();
            made.Set(1, n);
            made.Save();
        }
        made.Rewind();
        return made;
    }
};

TEST(CFace, TellsEveryFailureByItsNumber)
{
    struct Case {
        const char* name;
        int number;
        std::function<void(Prepared&)> act;
    };
    const Case cases[] = {
        {"no such file", 3024, [](Prepared& p) { (void)Database::Open(p.folder / "none.mdb"); }},
        {"in use", 3045, [](Prepared& p) { p.database.Commit(), (void)Database::Open(p.folder / "a.mdb"); }},
        {"no such table", 3078, [](Prepared& p) { (void)p.database.OpenTable("u"); }},
        {"syntax", 3290, [](Prepared& p) { p.database.Execute("CREATE TABLE"); }},
        {"no row yet", 3021, [](Prepared& p) { (void)p.table.Text(1); }},
        {"no row to change", 3021, [](Prepared& p) { p.table.Set(1, 1.0); }},
        {"no row to delete", 3021, [](Prepared& p) { p.table.Delete(); }},
        {"no such column", 3265, [](Prepared& p) { p.table.Next(), (void)p.table.Text(4); }},
        {"text too long", 3163, [](Prepared& p) { p.table.Next(), p.table.Set(2, "long"); }},
        {"no whole number", 3421, [](Prepared& p) { p.table.Next(), p.table.Set(1, 1.5); }},
        {"number too great", 3421, [](Prepared& p) { p.table.Next(), p.table.Set(1, 256.0); }},
        {"no number", 3421, [](Prepared& p) { p.table.Next(), p.table.Set(1, "x"); }},
        {"no bytes", 3421, [](Prepared& p) { p.table.Next(), (void)p.table.Bytes(1); }},
        {"no handle", VJET_BAD_ARGUMENT, [](Prepared&) { velmora_jet::Call(vjet_commit, nullptr); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Prepared prepared;
        try {
            c.act(prepared);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const velmora_jet::Error& error) {
            EXPECT_EQ(error.Number(), c.number) << error.what();
            EXPECT_STRNE(error.what(), "");
        }
    }
}

TEST(CFace, ChangesAndDeletesTheRowsItWalksOver)
{
    Prepared prepared;
    Table& table = prepared.table;
    while (table.Next()) {
        if (table.Number(1) == 20)
            table.Delete();
        else {
            table.Set(3, std::vector<std::uint8_t>{1, 0, 2});
            table.SetNull(1);
            table.Save();
        }
    }
    prepared.database.Commit();
    table.Rewind();
    std::string rows;
    while (table.Next()) {
        EXPECT_EQ(table.Bytes(3), (std::vector<std::uint8_t>{1, 0, 2}));
        rows += *table.Text(0) + (table.Number(1) ? "?" : " Null ");
    }
    EXPECT_EQ(rows, "1 Null 3 Null ");
}

TEST(CFace, ShowsItsColumnsAndNothingBehindThem)
{
    Prepared prepared;
    const Table& table = prepared.table;
    EXPECT_EQ(table.ColumnCount(), 4u);
    EXPECT_EQ(table.ColumnName(2), "s");
    EXPECT_EQ(table.ColumnType(1), VJET_BYTE);
    EXPECT_TRUE(table.IsAutonumber(0));
    EXPECT_FALSE(table.IsAutonumber(1));
    EXPECT_EQ(table.FindColumn("o"), 3u);
    EXPECT_EQ(table.FindColumn("none"), std::nullopt);
    EXPECT_EQ(table.ColumnName(4), "");
    EXPECT_EQ(table.ColumnType(4), VJET_NO_TYPE);
    EXPECT_EQ(vjet_table_name(nullptr, 0), nullptr);
}

} // namespace
