// SPDX-License-Identifier: Apache-2.0
#include "desk_fixture.h"

#include "support/commit_watch.h"

#include <sqlite3.h>

namespace
{

/** A database in write-ahead mode, with a connection that has read. */
class CommitWatch : public DeskTest
{
  public:
    CommitWatch()
    {
        EXPECT_EQ(sqlite3_open(database.c_str(), &own), SQLITE_OK);
        EXPECT_EQ(sqlite3_open(database.c_str(), &other), SQLITE_OK);
        run(own, "PRAGMA journal_mode=WAL");
        run(own, "CREATE TABLE IF NOT EXISTS t(x)");
    }
    ~CommitWatch() override
    {
        sqlite3_close(other);
        sqlite3_close(own);
    }
    static void run(sqlite3 *connection, const char *sql)
    {
        EXPECT_EQ(sqlite3_exec(connection, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    }

    const std::string database = directory + "/watched.db";
    sqlite3 *own = nullptr;
    sqlite3 *other = nullptr;
};

TEST_F(CommitWatch, IsSeenToBeCommittedToByAnyConnection)
{
    desk::CommitWatch watch(own);
    ASSERT_TRUE(watch.works());
    watch.note();
    EXPECT_FALSE(watch.saw());
    run(other, "BEGIN");
    run(other, "INSERT INTO t VALUES(1)");
    EXPECT_FALSE(watch.saw());
    run(other, "COMMIT");
    EXPECT_TRUE(watch.saw());
    EXPECT_TRUE(watch.saw());
    watch.note();
    EXPECT_FALSE(watch.saw());
    run(own, "INSERT INTO t VALUES(2)");
    EXPECT_TRUE(watch.saw());
}

TEST_F(CommitWatch, IsNotCommittedToByWhoReadsOrTakesBack)
{
    desk::CommitWatch watch(own);
    watch.note();
    run(other, "SELECT * FROM t");
    run(other, "BEGIN IMMEDIATE");
    run(other, "INSERT INTO t VALUES(1)");
    run(other, "ROLLBACK");
    EXPECT_FALSE(watch.saw());
}

TEST_F(CommitWatch, IsSeenAfterItsLogBeganAnew)
{
    desk::CommitWatch watch(own);
    run(other, "INSERT INTO t VALUES(1)");
    watch.note();
    run(other, "PRAGMA wal_checkpoint(TRUNCATE)");
    watch.note();
    for (int i = 0; i < 3; ++i) {
        run(other, "INSERT INTO t VALUES(1)");
        EXPECT_TRUE(watch.saw());
        watch.note();
    }
}

} // namespace
