#include "jet/face/database.h"
#include "support/process.h"

namespace jet {
namespace {

namespace fs = std::filesystem;
using testing::Database;
using testing::ErrorOf;
using testing::kVersions;
using velmora::testing::TempFolder;

TEST(Connection, ANewFileTakesItsPlaceAtTheFirstCommit)
{
    const TempFolder folder;
    const fs::path target = folder / "new.mdb";
    {
        const auto connection = Connection::Create(target, JetVersion::Jet4);
        EXPECT_FALSE(fs::exists(target));
    }
    EXPECT_TRUE(fs::is_empty(folder.Path())) << "dropped without a commit";
    {
        const auto connection = Connection::Create(target, JetVersion::Jet4);
        connection->Execute("CREATE TABLE t (a Long)");
        connection->Commit();
        EXPECT_TRUE(fs::exists(target));
        connection->Execute("CREATE TABLE u (a Long)");
        connection->Commit();
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 1);
    EXPECT_SOUND(target);
    EXPECT_EQ(ErrorOf([&] { static_cast<void>(Connection::Create(target, JetVersion::Jet4)); }),
              ErrorNumber::DatabaseExists);
}

TEST(Connection, WhatCannotBeOpenedIsLeftAlone)
{
    REQUIRE_SHARED(shared);
    const TempFolder folder;
    for (const auto& [name, number] : {std::pair("V2000_with-password.mdb", ErrorNumber::NotAValidPassword),
                                       std::pair("README.md", ErrorNumber::NotADatabase)}) {
        SCOPED_TRACE(name);
        const std::string content = velmora::testing::ReadFile(shared / "corpus/mdb" / name);
        const std::filesystem::path copy = folder / name;
        velmora::testing::WriteFile(copy, content);
        EXPECT_EQ(ErrorOf([&] { static_cast<void>(Connection::Open(copy)); }), number);
        EXPECT_TRUE(velmora::testing::ReadFile(copy) == content) << "the file was touched";
    }
}

/// With names so long, the index that finds objects by name has three levels in the pages of Access 97.
TEST(Connection, EachOfManyTablesIsFoundByItsName)
{
    constexpr std::size_t kTables = 800;
    Database database(JetVersion::Jet3);
    std::vector<std::string> names;
    for (std::size_t i = 0; i < kTables; ++i) {
        const std::string number = std::to_string(1000 + i * 337 % kTables); // in no order
        names.push_back(number + std::string(60 - number.size(), 'n'));
        database.Execute("CREATE TABLE [" + names.back() + "] (a Long)");
    }
    EXPECT_EQ(database.Face().ObjectsLeft(), 32'768u - 8 - kTables);
    database.Reopen();
    for (const std::string& name : names)
        EXPECT_EQ(ErrorOf([&] { static_cast<void>(database.Open(name)); }), std::nullopt) << name;
    EXPECT_TRUE(database.AllSound());

    std::string expected;
    for (const std::string& name : names)
        expected += name + "\n";
    const auto listed = velmora::testing::RunProcess({"mdb-tables", "-1", database.Path().string()});
    if (listed.status != 127) { // without the second judge
        EXPECT_EQ(listed.output, expected);
    }
}

/// Two to each of many columns are more than a page.
TEST(Connection, TablesAndColumnsHaveProperties)
{
    constexpr int kColumns = 250;
    for (const JetVersion version : kVersions) {
        SCOPED_TRACE(static_cast<int>(version));
        Database database(version);
        std::string columns = "PKEY Counter NOT NULL";
        std::vector<Property> properties{{"", "Description", "Element //r\u00e4t", ColumnType::Text}};
        for (int i = 0; i < kColumns; ++i) {
            const std::string column = "c" + std::to_string(i);
            columns += ", " + column + (i % 2 ? " String" : " Longtext");
            properties.push_back({column, "velmora_source", "child " + column + "\nplace 7", ColumnType::Memo});
            properties.push_back({column, "Description", "Element " + column, ColumnType::Text});
        }
        database.Execute("CREATE TABLE t (" + columns + ")");
        database.Face().SetProperties("T", properties);
        database.Keep();
        EXPECT_EQ(database.Face().Properties("t"), properties);
        const auto shown = velmora::testing::RunProcess({"mdb-prop", database.Path().string(), "t"});
        if (shown.status != 127) { // without the second judge
            EXPECT_NE(shown.output.find("velmora_source: child c249"), std::string::npos) << shown.output;
        }

        // One call, one statement: nothing of it stays when a part is refused.
        const std::vector<Property> unknown{{"c0", "Description", "x"}, {"missing", "Description", "x"}};
        EXPECT_EQ(ErrorOf([&] { database.Face().SetProperties("t", unknown); }), ErrorNumber::NoSuchField);
        const std::vector<Property> large{{"c0", "velmora_source", std::string(65'600, 'x'), ColumnType::Memo}};
        EXPECT_EQ(ErrorOf([&] { database.Face().SetProperties("t", large); }), ErrorNumber::SizeTooLong);
        EXPECT_EQ(database.Face().Properties("t"), properties);

        database.Execute("ALTER TABLE t DROP COLUMN c0");
        database.Execute("ALTER TABLE t ALTER COLUMN c1 LONGTEXT");
        database.Face().SetProperties("t", std::vector<Property>{{"C1", "Description", ""}});
        database.Reopen();
        std::erase_if(properties, [](const Property& property) { return property.column == "c0"; });
        properties[2].value = "";
        EXPECT_EQ(database.Face().Properties("t"), properties);
        database.Add("t", {{"c2", "a value"}});
        EXPECT_EQ(ErrorOf([&] { static_cast<void>(database.Face().Properties("u")); }), ErrorNumber::TableNotFound);
        EXPECT_EQ(ErrorOf([&] { database.Face().SetProperties("MSysObjects", properties); }), ErrorNumber::ReadOnly);
        EXPECT_TRUE(database.AllSound());
    }
}

} // namespace
} // namespace jet
