// Stores of earlier versions, which used SQLite's write-ahead log (WAL): nothing is lost, and the
// first opening gives them a rollback journal instead.
#include <gtest/gtest.h>

#include "tests/platform/linux/fixtures/ChildProgram.h"
#include "tests/platform/linux/store/RawSqlite.h"
#include "tests/platform/linux/store/StoreFileFixture.h"

namespace tavo {
namespace {

class WalStore : public StoreFileFixture {
protected:
    // A process of an earlier version that has written "stored" under "key", half of it to the file
    // and the rest to the WAL.
    [[nodiscard]] ChildProgram earlierVersion() const {
        return holding(
            {"CREATE TABLE defaults (key TEXT PRIMARY KEY NOT NULL, type TEXT NOT NULL, "
             "value NOT NULL) WITHOUT ROWID",
             "PRAGMA journal_mode = WAL", "INSERT INTO defaults VALUES ('key', 'data', x'00')",
             "PRAGMA wal_checkpoint(TRUNCATE)",
             "UPDATE defaults SET value = CAST('stored' AS BLOB)"});
    }

    [[nodiscard]] std::string journalMode() const {
        return RawSqlite(file_).run("PRAGMA journal_mode");
    }

    [[nodiscard]] std::ptrdiff_t files() const {
        const std::filesystem::directory_iterator all(folder_.path());
        return std::distance(begin(all), end(all));
    }
};

TEST_F(WalStore, of_a_process_that_ended_is_converted_by_the_first_read) {
    {
        ChildProgram other = earlierVersion();
        ASSERT_EQ(other.readLine(), "held");
        other.closeInput();
        other.wait();
    }
    ASSERT_EQ(journalMode(), "wal");
    EXPECT_EQ(open()->data("key"), "stored");
    EXPECT_EQ(files(), 1);
    EXPECT_EQ(journalMode(), "delete");
}

TEST_F(WalStore, of_a_killed_process_is_recovered_by_the_first_read) {
    {
        ChildProgram other = earlierVersion();
        ASSERT_EQ(other.readLine(), "held");
        other.kill();
        other.wait();
    }
    ASSERT_GT(std::filesystem::file_size(file_ + "-wal"), 0U);
    EXPECT_EQ(open()->data("key"), "stored");
    EXPECT_EQ(files(), 1);
    EXPECT_EQ(journalMode(), "delete");
}

TEST_F(WalStore, of_a_killed_process_is_recovered_by_the_first_write) {
    {
        ChildProgram other = earlierVersion();
        ASSERT_EQ(other.readLine(), "held");
        other.kill();
        other.wait();
    }
    open()->set("other", Data{"new"});
    EXPECT_EQ(files(), 1);
    EXPECT_EQ(journalMode(), "delete");
    EXPECT_EQ(open()->data("key"), "stored");
    EXPECT_EQ(open()->data("other"), "new");
}

TEST_F(WalStore, that_another_process_uses_is_shared_with_it_and_converted_later) {
    ChildProgram other = earlierVersion();
    ASSERT_EQ(other.readLine(), "held");
    {
        const auto store = open();
        EXPECT_EQ(store->data("key"), "stored");
        store->set("key", Data{"new"});
        EXPECT_EQ(RawSqlite(file_).run("SELECT value FROM defaults"), "new");
    }
    EXPECT_EQ(journalMode(), "wal");
    other.closeInput();
    other.wait();
    EXPECT_EQ(open()->data("key"), "new");
    EXPECT_EQ(files(), 1);
    EXPECT_EQ(journalMode(), "delete");
}

}  // namespace
}  // namespace tavo
