#include "schema/catalog_queries.h"

#include "support/scripted_host.h"
#include "support/shared.h"

namespace velmora::testing {

namespace {

class CatalogQueries : public ::testing::Test {
protected:
    CatalogQueries()
    {
        job.settings.blQuiet = true;
        session.Create(folder / "out.mdb", jet::JetVersion::Jet4, jet::Existing::Refuse);
        for (const char* sql : {"CREATE TABLE [parent] ([PKEY] Counter NOT NULL, [Name] String);",
                                "CREATE UNIQUE INDEX [parent_PKEY] ON [parent] ([PKEY]) WITH PRIMARY;",
                                "CREATE TABLE [child] ([PKEY] Counter NOT NULL, [FKEY] Long, [Name] String);",
                                "CREATE INDEX [child_FKEY] ON [child] ([FKEY]);", "CREATE TABLE [other] ([FKEY] Long);",
                                "ALTER TABLE [child] ADD CONSTRAINT [child_LINK] FOREIGN KEY ([FKEY]) REFERENCES "
                                "[parent] ([PKEY]) ON UPDATE CASCADE ON DELETE CASCADE;"})
            session.ExecuteSql(sql);
    }

    TempFolder folder;
    ScriptedHost host;
    Job job{host};
    DatabaseSession session;
};

TEST_F(CatalogQueries, AnyForeignKeyCountsAndATakenNameIsReplacedOnce)
{
    std::string name = "anything";
    EXPECT_TRUE(velCheckExistsRelation(job, session, "other", "child", name)) << "whichever table it refers to";
    EXPECT_EQ(name, "anything");

    EXPECT_FALSE(velCheckExistsRelation(job, session, "parent", "other", name));
    EXPECT_EQ(name, "anything");
    name = "child_LINK";
    EXPECT_FALSE(velCheckExistsRelation(job, session, "parent", "other", name));
    EXPECT_EQ(name, "other_LINK_0");
    EXPECT_EQ(job.log.ErrorCount(), 0);
}

TEST_F(CatalogQueries, AnyIndexOnTheColumnCountsAndATakenNameIsReplacedOnce)
{
    std::string name = "child_FKEY";
    EXPECT_TRUE(velCheckExistsIndex(job, session, "child", "FKEY", name));
    EXPECT_TRUE(velCheckExistsIndex(job, session, "parent", "PKEY", name)) << "the primary one too";
    EXPECT_FALSE(velCheckExistsIndex(job, session, "other", "FKEY", name));
    EXPECT_EQ(name, "other_FKEY_0");
    EXPECT_EQ(job.log.ErrorCount(), 0);

    session.ExecuteSql("CREATE TABLE [third] ([FKEY] Long);");
    session.ExecuteSql("CREATE INDEX [other_FKEY_0] ON [third] ([FKEY]);");
    name = "child_FKEY";
    EXPECT_FALSE(
        Guarded(job.log, [&] { static_cast<void>(velCheckExistsIndex(job, session, "other", "FKEY", name)); }));
    ASSERT_EQ(host.errors.size(), 1u);
    EXPECT_NE(host.errors[0].second.find("[other_FKEY_0]"), std::string::npos) << "is taken too";
    EXPECT_EQ(host.lines.back(), "Error: velCheckExistsIndex: Check if index named [other_FKEY_0] exists");
}

} // namespace

} // namespace velmora::testing
