#include "schema/origin.h"

#include "schema/database_session.h"
#include "support/shared.h"

namespace velmora::testing {

namespace {

using Kind = ColumnOrigin::Kind;

/// A text that is shortened on the way, or damaged by somebody's hand, is another part of what the database knows.
TEST(Origin, TheDatabaseKnowsWhatItsTablesAndColumnsAre)
{
    std::string deep = "/";
    for (int i = 0; i < 9'000; ++i)
        deep += "/\u017Fch\u00F6n";
    const Origins known[] = {
        {TableOrigin{{{"//doc/items/item", {2, 0}}}, {}},
         {{"PKEY", {Kind::Key}},
          {"FKEY", {Kind::Parent}},
          {"attr_id", {Kind::Attribute, "x:id", 1}},
          {"item", {Kind::Text}},
          {"name", {Kind::Child, "name", 12}},
          {"name_text", {Kind::Overflow, "name"}}},
         {{"item", ColumnType::Time}, {"name", ColumnType::YesNo}}},
        {TableOrigin{{{"//doc", {0}}, {"doc/a b", {0}}, {"\u0416/\U0001F600", {}}}, {}},
         {{"MASTER_TABLE", {Kind::Master}}}},
        {TableOrigin{{}, "wide table"}, {}},
        {TableOrigin{{{deep, {7}}}, {}}, {}},
    };
    for (const jet::JetVersion version : {jet::JetVersion::Jet3, jet::JetVersion::Jet4}) {
        const TempFolder folder;
        DatabaseSession session;
        session.Create(folder / "out.mdb", version, jet::Existing::Refuse);
        for (const Origins& origins : known) {
            const std::string table = "t" + std::to_string(session.UserTables().size());
            std::string columns = "[nobody] Long";
            for (const NamedColumnOrigin& column : origins.columns)
                columns += ", [" + column.column + "] Long";
            session.ExecuteSql("CREATE TABLE [" + table + "] (" + columns + ")");
            EXPECT_FALSE(session.OriginsOf(table).table);
            session.SetOrigins(table, origins);
            EXPECT_EQ(session.OriginsOf(table).table, origins.table);
            EXPECT_EQ(session.OriginsOf(table).columns, origins.columns);
            EXPECT_EQ(session.OriginsOf(table).types, origins.types);
        }
        session.SetOrigins("t3", known[2]);
        EXPECT_EQ(session.OriginsOf("t3").table, known[2].table) << "a shorter text in the place of a longer one";
        session.Commit();
        session.Close();
        EXPECT_SOUND(folder / "out.mdb");
    }
    EXPECT_EQ(ReadColumnOrigin("colour red\r\nchild a\r\nplace x"), (ColumnOrigin{Kind::Child, "a", 0}));
    EXPECT_EQ(ReadTableOrigin("velmora 1\nplace 1\npath"), (TableOrigin{{{"", {}}}, {}}));
    EXPECT_EQ(ReadTableOrigin("text"), std::nullopt);
}

} // namespace

} // namespace velmora::testing
