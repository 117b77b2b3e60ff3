#include "jet/base/value_text.h"
#include "jet/face/database.h"

namespace jet {
namespace {

using testing::Database;
using testing::ErrorOf;
using testing::kVersions;

void MakeTable(Database& database)
{
    database.Execute("CREATE TABLE t (PKEY Counter NOT NULL, a Text(5), b Longtext, n Long)");
    database.Execute("CREATE UNIQUE INDEX t_PKEY ON t (PKEY) WITH PRIMARY");
}

TEST(Recordset, AFieldThatDoesNotFitKeepsItsValue)
{
    for (const JetVersion version : kVersions) {
        Database database(version);
        MakeTable(database);
        Recordset records = database.Open("t");
        records.AddNew();
        records.SetText(1, "åäö€");
        EXPECT_EQ(ErrorOf([&] { records.SetText(1, "123456"); }), ErrorNumber::FieldTooSmall);
        EXPECT_EQ(ErrorOf([&] { records.SetText(1, "äöüäöü"); }), ErrorNumber::FieldTooSmall);
        EXPECT_EQ(ErrorOf([&] { records.SetText(3, "12 apples"); }), ErrorNumber::WrongType);
        records.SetText(3, " -12 ");
        EXPECT_EQ(records.Get(1), Value("åäö€"));
        records.SetText(1, "€€€€€");
        records.Update();
        EXPECT_EQ(database.Rows("t"), "1|€€€€€||-12\n");
        EXPECT_EQ(records.ReplacedCharacters(), 0u);
        EXPECT_TRUE(database.AllSound());
    }
}

TEST(Recordset, AnAutonumberIsGivenOnceAndTakenBack)
{
    Database database(JetVersion::Jet4);
    MakeTable(database);
    Recordset records = database.Open("t");
    Recordset other = database.Open("t");
    records.AddNew();
    EXPECT_EQ(records.Get(0), Value(1));
    records.CancelUpdate();
    records.AddNew();
    records.Update();
    EXPECT_EQ(records.LastAutonumber(), 1) << "the number was given back";

    // Begun anew with its own number, a record keeps it even if others are added before it is saved.
    records.AddNew();
    EXPECT_EQ(records.Get(0), Value(2));
    records.CancelUpdate();
    records.AddNew();
    records.SetLong(0, 2);
    other.AddNew();
    other.Update();
    EXPECT_EQ(other.LastAutonumber(), 3);
    records.Update();
    EXPECT_EQ(records.LastAutonumber(), 2);
    records.AddNew();
    records.SetLong(0, 2);
    EXPECT_EQ(ErrorOf([&] { records.Update(); }), ErrorNumber::DuplicateKey);
    EXPECT_TRUE(records.IsPending());
    records.SetLong(0, 4);
    records.Update();
    EXPECT_EQ(database.Rows("t"), "1|||\n3|||\n2|||\n4|||\n");
    EXPECT_TRUE(database.AllSound());
}

TEST(Recordset, WhatWasCountedStaysCountedWhenARecordIsTakenBack)
{
    Database database(JetVersion::Jet4);
    database.Execute("CREATE TABLE t (PKEY Counter NOT NULL, n Long, a Text, b Text, c Text, d Text, e Text, f Text, "
                     "g Text, h Text)");
    for (const char* index : {"UNIQUE INDEX t_PKEY ON t (PKEY) WITH PRIMARY", "INDEX t_n ON t (n)",
                              "INDEX t_texts ON t (a, b, c, d, e, f, g, h)"})
        database.Execute(std::string("CREATE ") + index);
    database.Execute("CREATE TABLE other (n Long)");
    Recordset records = database.Open("t");
    Recordset other = database.Open("other");
    const auto add = [&records](int n) {
        records.AddNew();
        records.SetLong(1, n);
        records.Update();
    };
    for (int i = 0; i < 40; ++i) {
        add(i / 2);
        other.AddNew();
        other.Update();
    }
    // That a key is too long shows when the row stands already, with an entry in the indexes before.
    records.AddNew();
    records.SetLong(1, 100);
    for (std::size_t field = 2; field < 10; ++field)
        records.SetText(field, std::string(255, 'x'));
    EXPECT_EQ(ErrorOf([&] { records.Update(); }), ErrorNumber::RecordTooLarge);
    records.CancelUpdate();
    EXPECT_EQ(records.RecordCount(), 40u);
    add(20);
    records.Close();
    other.Close();
    database.Reopen();
    EXPECT_TRUE(database.AllSound());
    EXPECT_EQ(database.Open("t").RecordCount(), 41u);
    EXPECT_EQ(database.Open("other").RecordCount(), 40u);
    EXPECT_EQ(database.Schema(SchemaKind::Indexes, {"", "", "t_n"}, {"CARDINALITY"}), "21\n");
    Recordset again = database.Open("t");
    again.AddNew();
    EXPECT_EQ(again.Get(0), Value(42));
}

TEST(Recordset, AutonumbersGoOnBehindThoseThatAreThere)
{
    Database database(JetVersion::Jet4);
    database.Execute("CREATE TABLE t (name String)");
    for (const char* name : {"a", "b"})
        database.Add("t", {{"name", name}});
    database.Execute("ALTER TABLE t ADD COLUMN id Counter");
    database.Add("t", {{"name", "c"}});
    database.Add("t", {{"name", "d"}, {"id", "41"}});
    database.Add("t", {{"name", "e"}, {"id", "7"}});
    database.Reopen();
    database.Add("t", {{"name", "f"}});
    EXPECT_EQ(database.Rows("t"), "a|1\nb|2\nc|3\nd|41\ne|7\nf|42\n");
}

TEST(Recordset, FollowsColumnsThatChangeUnderIt)
{
    for (const JetVersion version : kVersions) {
        Database database(version);
        MakeTable(database);
        Recordset records = database.Open("t");
        records.AddNew();
        records.SetText(1, "text");
        records.SetText(2, "memo");
        records.SetLong(3, 7);
        const std::uint64_t generation = records.Generation();
        database.Execute("ALTER TABLE t ADD COLUMN a2 Longtext");
        database.Execute("ALTER TABLE t DROP COLUMN a");
        database.Execute("ALTER TABLE t ADD COLUMN a Longtext");
        database.Execute("ALTER TABLE t DROP COLUMN n");
        EXPECT_NE(records.Generation(), generation);
        EXPECT_EQ(records.FieldCount(), 4u);
        EXPECT_EQ(records.FieldIndex("a"), 3u);
        EXPECT_EQ(records.FieldIndex("A"), std::nullopt) << "letter case counts";
        EXPECT_TRUE(records.IsMemo(3));
        EXPECT_FALSE(records.IsMemo(0));
        records.SetText(2, "new");
        records.Update();
        EXPECT_EQ(database.Rows("t"), "1|memo|new|text\n") << "a text stays with its column while that is widened";

        records.AddNew();
        records.SetText(3, "kept");
        database.Execute("ALTER TABLE t DROP COLUMN b");
        records.Update();
        EXPECT_EQ(database.Rows("t"), "1|new|text\n2||kept\n");
        EXPECT_TRUE(database.AllSound());
    }
}

TEST(Recordset, WalksAndDeletes)
{
    Database database(JetVersion::Jet4);
    MakeTable(database);
    EXPECT_TRUE(database.Open("t").Eof());
    Recordset records = database.Open("t");
    std::uint64_t bookmark = 0;
    for (int i = 0; i < 5; ++i) {
        records.AddNew();
        records.SetLong(3, i);
        records.Update();
        if (i == 3)
            bookmark = records.Bookmark();
    }
    records.DeleteBookmark(bookmark);
    EXPECT_EQ(ErrorOf([&] { records.DeleteBookmark(bookmark); }), ErrorNumber::RecordDeleted);
    records.MoveFirst();
    records.MoveNext();
    records.Delete();
    EXPECT_EQ(ErrorOf([&] { static_cast<void>(records.Get(0)); }), ErrorNumber::RecordDeleted);
    records.MoveNext();
    EXPECT_EQ(records.Get(3), Value(2));
    EXPECT_EQ(database.Rows("t"), "1|||0\n3|||2\n5|||4\n");
    records.MoveNext();
    records.MoveNext();
    EXPECT_TRUE(records.Eof());
    EXPECT_EQ(ErrorOf([&] { records.MoveNext(); }), ErrorNumber::NoCurrentRecord);
    EXPECT_EQ(ErrorOf([&] { records.SetLong(3, 1); }), ErrorNumber::NoCurrentRecord);
    records.Close();
    EXPECT_EQ(records.GetState(), Recordset::State::Closed);
    EXPECT_EQ(records.Source(), "t");
    EXPECT_EQ(ErrorOf([&] { records.AddNew(); }), ErrorNumber::NoCurrentRecord);
    EXPECT_EQ(ErrorOf([&] { database.Open("MSysObjects").AddNew(); }), ErrorNumber::ReadOnly);
}

TEST(Recordset, KeepsTheRulesOfColumnsThatAccessMade)
{
    REQUIRE_SHARED(shared);
    const velmora::testing::TempFolder folder;
    const auto open = [&](const char* name) {
        return Connection::Open(velmora::testing::CopyOf(shared / "corpus/mdb" / name, folder / name));
    };
    const auto numbers = open("compIndexTestV1997.mdb");
    const auto guids = open("testV2000.mdb");
    Recordset numbered = numbers->OpenTable("Table1");
    numbered.AddNew();
    EXPECT_EQ(numbered.Get(0), Value(0)) << "its default value";
    EXPECT_TRUE(IsNull(numbered.Get(1)));

    Recordset records = guids->OpenTable("Table4");
    const std::size_t name = records.FieldIndex("name").value();
    const std::size_t data = records.FieldIndex("data").value();
    records.AddNew();
    EXPECT_EQ(ErrorOf([&] { records.SetText(name, ""); }), ErrorNumber::EmptyTextRefused);
    records.SetText(name, "x");
    EXPECT_EQ(ErrorOf([&] { records.SetText(name, ""); }), ErrorNumber::EmptyTextRefused);
    EXPECT_EQ(records.Get(name), Value("x"));
    const Value first = records.Get(data);
    EXPECT_EQ(ToText(first).at(15), '4') << ToText(first) << " is no random GUID";
    records.Update();
    records.AddNew();
    EXPECT_NE(records.Get(data), first);
}

TEST(Recordset, BookmarksOutliveRowsWrittenAnew)
{
    for (const JetVersion version : kVersions) {
        Database database(version);
        database.Execute("CREATE TABLE t (n Long, flag Bit)");
        database.Execute("CREATE INDEX i ON t (n)");
        Recordset records = database.Open("t");
        std::vector<std::uint64_t> bookmarks;
        for (int i = 0; i < 400; ++i) {
            records.AddNew();
            records.SetLong(0, i);
            records.SetText(1, i % 2 == 0 ? "True" : "False");
            records.Update();
            bookmarks.push_back(records.Bookmark());
        }
        records.DeleteBookmark(bookmarks[0]);
        database.Execute("ALTER TABLE t ADD COLUMN s String"); // the first variable column: all rows are written anew
        EXPECT_EQ(records.Get(0), Value(399)) << "the current record stays";
        records.DeleteBookmark(bookmarks[2]);
        EXPECT_EQ(ErrorOf([&] { records.DeleteBookmark(bookmarks[0]); }), ErrorNumber::RecordDeleted);
        EXPECT_TRUE(database.Rows("t").starts_with("1|False|\n3|False|\n4|True|\n"));
        EXPECT_EQ(database.Count("t"), 398u);
        records.Close();
        database.Face().Commit();
        Recordset later = database.Open("t");
        EXPECT_EQ(ErrorOf([&] { later.DeleteBookmark(bookmarks[4]); }), ErrorNumber::RecordDeleted)
            << "from before a commit that found the table closed";
        EXPECT_TRUE(database.AllSound());
    }
}

/// The field of all records from the current one on.
std::string RestOf(Recordset& records, std::size_t field)
{
    std::string text;
    for (; !records.Eof(); records.MoveNext())
        text += ToText(records.Get(field)) + ' ';
    return text;
}

TEST(Recordset, RecordsComeInTheOrderOfAnIndex)
{
    for (const JetVersion version : kVersions) {
        SCOPED_TRACE(static_cast<int>(version));
        Database database(version);
        database.Execute("CREATE TABLE t (name String, k Long, id Counter NOT NULL)");
        database.Execute("CREATE UNIQUE INDEX t_id ON t (id) WITH PRIMARY");
        database.Execute("CREATE INDEX t_k ON t (k)");
        constexpr int kRecords = 2000; // several leaves
        for (Recordset records = database.Open("t"); records.LastAutonumber().value_or(0) < kRecords;) {
            records.AddNew();
            const int number = records.LastAutonumber().value_or(0) + 1;
            records.SetLong(1, number * 7 % 20);
            records.SetText(0, std::string(30, 'x'));
            records.Update();
        }
        Recordset records = database.Open("t");
        EXPECT_FALSE(records.WalkBy(0));
        ASSERT_TRUE(records.WalkBy(2));
        EXPECT_TRUE(records.IsInStorageOrder());
        ASSERT_TRUE(records.WalkBy(1));
        EXPECT_FALSE(records.IsInStorageOrder());
        records.Seek(std::int32_t{19});
        EXPECT_EQ(records.Get(2), Value(std::int32_t{17}));
        const std::uint64_t first = records.Position();
        const std::string all = RestOf(records, 2);
        EXPECT_EQ(std::ranges::count(all, ' '), kRecords / 20);
        EXPECT_TRUE(all.starts_with("17 37 57 ")) << all;
        records.MoveTo(first);
        EXPECT_EQ(RestOf(records, 2), all);
        records.Seek(std::int32_t{20});
        EXPECT_TRUE(records.Eof());

        // It goes on where it is: behind what is taken away, back, moved or written anew meanwhile.
        Recordset other = database.Open("t");
        ASSERT_TRUE(other.WalkBy(2));
        records.MoveTo(first);
        records.Delete();
        other.Seek(std::int32_t{37});
        other.SetLong(1, 5);
        other.Update();
        records.MoveNext();
        EXPECT_EQ(records.Get(2), Value(std::int32_t{57}));
        database.Execute("ALTER TABLE t ALTER COLUMN name LONGTEXT");
        EXPECT_TRUE(RestOf(records, 1).starts_with("57 77 "));
        EXPECT_EQ(ErrorOf([&] { database.Open("t").Seek(std::int32_t{1}); }), ErrorNumber::NoSuchIndex);
    }
}

} // namespace
} // namespace jet
