#include "jet/catalog/bootstrap.h"
#include "jet/catalog/schema_rowsets.h"
#include "jet/relations/integrity.h"
#include "jet/sql/executor.h"
#include "jet/sql/parser.h"
#include "jet/store/memory_file.h"

#include <gtest/gtest.h>

namespace jet::testing {
namespace {

/// A database that has no more than a given number of pages left.
class FullDatabase {
public:
    FullDatabase() : pager_(NewPager(disk_, JetVersion::Jet3))
    {
        BuildEmptyDatabase(*pager_, DateTime{45'000});
        catalog_.emplace(*pager_);
        integrity_.emplace(*catalog_);
    }

    void Execute(std::string_view sql) { sql::Executor(*catalog_, *integrity_).Run(sql::ParseStatement(sql)); }
    void LeavePages(std::size_t count)
    {
        while (pager_->PageCount() < pager_->GetFormat().maxPages)
            taken_.push_back(pager_->Allocate().Number());
        for (std::size_t left = FreeCount(); left > 0; --left)
            taken_.push_back(pager_->Allocate().Number());
        for (; count > 0; --count) {
            pager_->Free(taken_.back());
            taken_.pop_back();
        }
    }
    [[nodiscard]] std::size_t FreeCount()
    {
        std::size_t count = 0;
        for (PageNumber page = 0; page < pager_->PageCount(); ++page)
            count += pager_->IsFree(page);
        return count;
    }
    [[nodiscard]] std::string Schema()
    {
        std::string text;
        for (const SchemaKind kind : {SchemaKind::Columns, SchemaKind::Indexes, SchemaKind::ForeignKeys})
            for (Rowset rows = QuerySchema(*catalog_, kind, {}); !rows.Eof(); rows.MoveNext())
                text += rows.Text(kind == SchemaKind::Columns   ? "COLUMN_NAME"
                                  : kind == SchemaKind::Indexes ? "INDEX_NAME"
                                                                : "FK_NAME") +
                        "\n";
        return text;
    }

private:
    MemoryDisk disk_;
    std::unique_ptr<Pager> pager_;
    std::vector<PageNumber> taken_;
    std::optional<Catalog> catalog_;
    std::optional<ReferentialIntegrity> integrity_;
};

TEST(FullDatabase, RefusesAStatementWithNothingChanged)
{
    FullDatabase database;
    for (const char* sql : {
             "CREATE TABLE parent (PKEY Counter NOT NULL)",
             "CREATE UNIQUE INDEX parent_PKEY ON parent (PKEY) WITH PRIMARY",
             "CREATE TABLE child (FKEY Long)",
         })
        database.Execute(sql);
    // Long names fill the pages of the system tables, so that now and then a statement needs further ones.
    std::vector<std::string> statements;
    for (char letter = 'a'; letter < 'k'; ++letter)
        statements.push_back("CREATE TABLE [" + std::string(64, letter) + "] (PKEY Counter NOT NULL, note Longtext)");
    for (char letter = 'k'; letter < 'p'; ++letter)
        statements.push_back("ALTER TABLE child ADD CONSTRAINT [" + std::string(64, letter) +
                             "] FOREIGN KEY (FKEY) REFERENCES parent (PKEY)");
    statements.push_back("ALTER TABLE child ADD COLUMN [" + std::string(64, 'n') + "] Longtext NOT NULL");
    statements.push_back("CREATE INDEX i ON child (FKEY)");
    int refused = 0;
    for (const std::string& sql : statements) {
        SCOPED_TRACE(sql);
        const std::string before = database.Schema();
        bool isDone = false;
        for (std::size_t pages = 0; !isDone; ++pages) {
            SCOPED_TRACE(std::to_string(pages) + " pages left");
            ASSERT_LT(pages, 10u);
            database.LeavePages(pages);
            try {
                database.Execute(sql);
                isDone = true;
            } catch (const Error& error) {
                ++refused;
                EXPECT_EQ(error.Number(), ErrorNumber::DatabaseFull);
                EXPECT_EQ(database.Schema(), before);
                EXPECT_EQ(database.FreeCount(), pages);
            }
        }
    }
    EXPECT_GE(refused, 20);
}

} // namespace
} // namespace jet::testing
