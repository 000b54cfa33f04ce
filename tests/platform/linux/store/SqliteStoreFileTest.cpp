// What the store does about a file that is no store, is replaced, or goes away.
#include <algorithm>
#include <chrono>
#include <set>

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "platform/linux/store/SqliteStoreFile.h"
#include "tests/platform/linux/fixtures/ChildProgram.h"
#include "tests/platform/linux/fixtures/StandardError.h"
#include "tests/platform/linux/store/RawSqlite.h"
#include "tests/platform/linux/store/StoreFileFixture.h"

namespace tavo {
namespace {

class StoreFile : public StoreFileFixture {
protected:
    // Makes a store in another file, with "other" under "key.0" to "key.19" and a large value;
    // returns its path.
    [[nodiscard]] std::string otherStore() const {
        const std::string file = folder_ / "other.sqlite";
        const auto store = makeSqliteDefaultsStore(file);
        store->set("large", Data{std::string(50'000, 'o')});
        for (int i = 0; i < 20; ++i) {
            store->set("key." + std::to_string(i), Data{"other"});
        }
        return file;
    }

    // Checks that reads find nothing and change nothing, and that the first write moves the file
    // aside with all its bytes.
    void expectPutAsideAtTheFirstWrite() {
        const std::string before = contents(file_);
        const auto store = open();
        EXPECT_EQ(store->data("key"), std::nullopt);
        EXPECT_EQ(store->stringArray("key"), std::nullopt);
        EXPECT_EQ(contents(file_), before);
        EXPECT_TRUE(putAside().empty());

        const StandardError said;
        store->set("key", Data{"new"});
        EXPECT_EQ(store->data("key"), "new");
        EXPECT_EQ(open()->data("key"), "new");
        ASSERT_EQ(putAside().size(), 1U);
        EXPECT_EQ(contents(putAside().front()), before);
        const std::string text = said.text();
        EXPECT_TRUE(text.starts_with("tavolauncher: put aside " + file_ + " as " +
                                     putAside().front() + ": "))
            << text;
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
    }
};

TEST_F(StoreFile, garbage_is_put_aside) {
    overwrite(file_, std::string(5000, 'g'));
    expectPutAsideAtTheFirstWrite();
}

TEST_F(StoreFile, a_few_bytes_are_put_aside) {
    overwrite(file_, "x");
    expectPutAsideAtTheFirstWrite();
}

TEST_F(StoreFile, a_file_that_only_begins_like_a_database_is_put_aside) {
    overwrite(file_, std::string("SQLite format 3\0", 16) + std::string(8176, '\x11'));
    expectPutAsideAtTheFirstWrite();
}

TEST_F(StoreFile, another_programs_database_is_put_aside) {
    RawSqlite(file_).run("CREATE TABLE notes (id INTEGER PRIMARY KEY, text)");
    ASSERT_NO_FATAL_FAILURE(expectPutAsideAtTheFirstWrite());
    EXPECT_EQ(RawSqlite(putAside().front()).run("SELECT name FROM sqlite_master"), "notes");
}

TEST_F(StoreFile, a_table_of_the_same_name_with_other_columns_is_put_aside) {
    RawSqlite(file_).run("CREATE TABLE defaults (name TEXT PRIMARY KEY, value)");
    expectPutAsideAtTheFirstWrite();
}

TEST_F(StoreFile, a_table_without_unique_keys_is_put_aside) {
    RawSqlite(file_).run("CREATE TABLE defaults (key, type, value)");
    expectPutAsideAtTheFirstWrite();
}

TEST_F(StoreFile, a_table_that_would_run_code_is_put_aside_and_runs_none) {
    const char* const table = "CREATE TABLE defaults (key TEXT PRIMARY KEY, type TEXT, value);";
    const std::vector<std::string> schemas = {
        "CREATE TABLE rows (key TEXT PRIMARY KEY, type, value);"
        "CREATE VIEW defaults AS SELECT key, type, value FROM rows",
        std::string(table) +
            "CREATE TABLE log (text);"
            "CREATE TRIGGER spy AFTER INSERT ON defaults BEGIN "
            "INSERT INTO log VALUES (new.key); END",
        std::string(table) + "CREATE VIRTUAL TABLE words USING fts5(text)",
    };
    for (const std::string& schema : schemas) {
        SCOPED_TRACE(schema);
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
            std::filesystem::remove(entry);
        }
        RawSqlite(file_).run(schema);
        expectPutAsideAtTheFirstWrite();
    }
}

TEST_F(StoreFile, a_sound_store_in_utf16_is_a_store) {
    RawSqlite(file_).run(
        "PRAGMA encoding = 'UTF-16';"
        "CREATE TABLE defaults (key TEXT PRIMARY KEY NOT NULL, type TEXT NOT NULL, value NOT NULL) "
        "WITHOUT ROWID; INSERT INTO defaults VALUES ('array', 'array', '[\"Créativité\"]'), "
        "('data', 'data', x'00ff')");
    const auto store = open();
    EXPECT_EQ(store->stringArray("array"), StringArray{"Créativité"});
    EXPECT_EQ(store->data("data"), std::string("\0\xff", 2));
    store->set("key", StringArray{"日本語"});
    EXPECT_EQ(open()->stringArray("key"), StringArray{"日本語"});
    EXPECT_TRUE(putAside().empty());
}

// A store that opened the pipe with open(2) would wait for its other end, and this test would never
// end.
TEST_F(StoreFile, a_pipe_in_its_place_is_put_aside) {
    ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
    const auto store = open();
    EXPECT_EQ(store->data("key"), std::nullopt);
    const StandardError quiet;
    store->set("key", Data{"new"});
    EXPECT_EQ(open()->data("key"), "new");
    ASSERT_EQ(putAside().size(), 1U);
    EXPECT_TRUE(std::filesystem::is_fifo(putAside().front()));
}

TEST_F(StoreFile, a_pipe_in_place_of_its_journal_is_not_waited_for) {
    open()->set("key", Data{"stored"});
    ASSERT_EQ(mkfifo((file_ + "-journal").c_str(), 0600), 0);
    const auto store = open();
    EXPECT_EQ(store->data("key"), std::nullopt);
    const StandardError quiet;
    store->set("other", Data{"kept"});
    EXPECT_EQ(store->data("other"), "kept");
    std::filesystem::remove(file_ + "-journal");
    EXPECT_EQ(store->data("key"), "stored");
    EXPECT_TRUE(putAside().empty());
}

TEST_F(StoreFile, a_store_cut_short_anywhere_is_put_aside) {
    open()->set("long", Data{std::string(9000, 'l')});
    const std::string whole = contents(file_);
    for (const std::size_t size :
         {std::size_t{1}, std::size_t{99}, std::size_t{100}, std::size_t{4096}, whole.size() / 2,
          whole.size() - 4096, whole.size() - 100, whole.size() - 1}) {
        SCOPED_TRACE("cut to " + std::to_string(size) + " of " + std::to_string(whole.size()));
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
            std::filesystem::remove(entry);
        }
        overwrite(file_, whole.substr(0, size));
        expectPutAsideAtTheFirstWrite();
    }
}

TEST_F(StoreFile, a_store_with_one_damaged_page_is_put_aside_whole) {
    {
        const auto store = open();
        for (int i = 0; i < 30; ++i) {
            store->set("key " + std::to_string(i), Data{std::string(900, 'v')});
        }
    }
    std::string bytes = contents(file_);
    constexpr std::size_t kPage = 4096;
    ASSERT_GT(bytes.size(), 5 * kPage);
    bytes.replace(3 * kPage, kPage, std::string(kPage, '\x55'));
    overwrite(file_, bytes);
    expectPutAsideAtTheFirstWrite();
}

TEST_F(StoreFile, a_folder_in_its_place_is_put_aside_with_what_is_in_it) {
    std::filesystem::create_directory(file_);
    overwrite(file_ + "/inside", "kept");
    const auto store = open();
    EXPECT_EQ(store->data("key"), std::nullopt);
    const StandardError quiet;
    store->set("key", Data{"new"});
    EXPECT_EQ(open()->data("key"), "new");
    ASSERT_EQ(putAside().size(), 1U);
    EXPECT_EQ(contents(putAside().front() + "/inside"), "kept");
}

TEST_F(StoreFile, an_empty_file_is_an_empty_store) {
    overwrite(file_, "");
    const auto store = open();
    EXPECT_EQ(store->data("key"), std::nullopt);
    EXPECT_EQ(std::filesystem::file_size(file_), 0U);
    store->set("key", Data{"new"});
    EXPECT_EQ(open()->data("key"), "new");
    EXPECT_TRUE(putAside().empty());
}

TEST_F(StoreFile, a_database_without_tables_is_an_empty_store) {
    RawSqlite(file_).run("PRAGMA user_version = 1");
    ASSERT_GT(std::filesystem::file_size(file_), 0U);
    const auto store = open();
    EXPECT_EQ(store->data("key"), std::nullopt);
    store->set("key", Data{"new"});
    EXPECT_EQ(open()->data("key"), "new");
    EXPECT_TRUE(putAside().empty());
}

TEST_F(StoreFile, what_was_put_aside_before_is_never_overwritten) {
    const StandardError quiet;
    for (int i = 0; i < 5; ++i) {
        overwrite(file_, "garbage number " + std::to_string(i));
        open()->set("key", Data{"new"});
    }
    std::set<std::string> found;
    for (const std::string& name : putAside()) {
        found.insert(contents(name));
    }
    EXPECT_EQ(found.size(), 5U);
}

TEST_F(StoreFile, of_two_processes_that_find_the_same_ruin_both_keep_their_writes) {
    const StandardError quiet;
    for (int round = 0; round < 10; ++round) {
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
            std::filesystem::remove(entry);
        }
        overwrite(file_, std::string(5000, 'g'));
        const auto writer = [this](const char* prefix) {
            return std::vector<std::string>{TAVO_TEST_PROGRAMS "/tavo_store_writer", "keys", file_,
                                            prefix, "3"};
        };
        ChildProgram a(writer("a"));
        ChildProgram b(writer("b"));
        EXPECT_EQ(a.wait(), 0);
        EXPECT_EQ(b.wait(), 0);
        EXPECT_EQ(putAside().size(), 1U);
        for (const char* const key : {"a.0", "a.2", "b.0", "b.2"}) {
            EXPECT_NE(open()->data(key), std::nullopt) << key << " in round " << round;
        }
    }
}

TEST_F(StoreFile, a_deleted_file_is_noticed_and_made_anew) {
    const auto store = open();
    const auto another = open();
    store->set("key", Data{"old"});
    EXPECT_EQ(another->data("key"), "old");
    std::filesystem::remove(file_);
    EXPECT_EQ(another->data("key"), std::nullopt);
    store->set("other", Data{"new"});
    EXPECT_EQ(store->data("key"), std::nullopt);
    EXPECT_EQ(another->data("other"), "new");
    another->set("third", Data{"newer"});
    EXPECT_EQ(open()->data("third"), "newer");
}

TEST_F(StoreFile, a_deleted_folder_is_noticed_and_made_anew) {
    const std::string file = folder_ / "a/b/defaults.sqlite";
    const auto store = makeSqliteDefaultsStore(file);
    store->set("key", Data{"old"});
    std::filesystem::remove_all(folder_ / "a");
    EXPECT_EQ(store->data("key"), std::nullopt);
    store->set("other", Data{"new"});
    EXPECT_EQ(makeSqliteDefaultsStore(file)->data("other"), "new");
}

TEST_F(StoreFile, a_file_put_in_its_place_is_noticed) {
    const std::string other = otherStore();
    const auto store = open();
    store->set("key.1", Data{"own"});
    EXPECT_EQ(store->data("key.1"), "own");
    std::filesystem::rename(other, file_);
    EXPECT_EQ(store->data("key.1"), "other");
    store->set("key.2", Data{"changed"});
    EXPECT_EQ(open()->data("key.2"), "changed");
    EXPECT_EQ(open()->data("key.19"), "other");
}

TEST_F(StoreFile, a_file_put_in_its_place_is_good_though_another_process_has_the_old_one_open) {
    const std::string other = otherStore();
    ChildProgram process({TAVO_TEST_PROGRAMS "/tavo_store_writer", "serve", file_});
    EXPECT_EQ(process.ask("set key.1 own"), "set");
    std::filesystem::rename(other, file_);
    const auto store = open();
    EXPECT_EQ(store->data("key.1"), "other");
    EXPECT_EQ(store->data("key.19"), "other");
    store->set("key.1", Data{"changed"});
    EXPECT_EQ(process.ask("get key.1"), "changed");
    EXPECT_EQ(process.ask("set key.2 there"), "set");
    EXPECT_EQ(store->data("key.2"), "there");
    EXPECT_EQ(open()->data("key.19"), "other");
    EXPECT_TRUE(putAside().empty());
}

TEST_F(StoreFile, a_file_overwritten_in_place_is_noticed) {
    const std::string other = otherStore();
    const auto store = open();
    store->set("key.1", Data{"own"});
    EXPECT_EQ(store->data("key.1"), "own");
    overwrite(file_, contents(other));
    EXPECT_EQ(store->data("key.1"), "other");
    store->set("key.2", Data{"changed"});
    EXPECT_EQ(open()->data("key.2"), "changed");
    EXPECT_EQ(open()->data("key.19"), "other");
    EXPECT_TRUE(putAside().empty());
}

TEST_F(StoreFile, a_file_overwritten_in_place_by_one_of_its_size_is_noticed) {
    const std::string other = folder_ / "other.sqlite";
    makeSqliteDefaultsStore(other)->set("key", Data{"two"});
    const auto store = open();
    store->set("key", Data{"one"});
    EXPECT_EQ(store->data("key"), "one");
    ASSERT_EQ(std::filesystem::file_size(file_), std::filesystem::file_size(other));
    overwrite(file_, contents(other));
    // Moves the modification time on: two changes within one tick of the file system's clock would
    // have the same one.
    std::filesystem::last_write_time(
        file_, std::filesystem::last_write_time(file_) + std::chrono::seconds(1));
    EXPECT_EQ(store->data("key"), "two");
}

TEST_F(StoreFile, a_link_to_a_store_elsewhere_is_followed) {
    std::filesystem::create_directory(folder_ / "elsewhere");
    std::filesystem::create_symlink(folder_ / "elsewhere/real.sqlite", file_);
    const auto store = open();
    EXPECT_EQ(store->data("key"), std::nullopt);
    store->set("key", Data{"value"});
    EXPECT_TRUE(std::filesystem::is_symlink(file_));
    EXPECT_EQ(makeSqliteDefaultsStore(folder_ / "elsewhere/real.sqlite")->data("key"), "value");
}

// The start of the program reads six values before the window shows, and must not wait for each.
TEST_F(StoreFile, of_several_reads_of_a_locked_file_only_the_first_waits) {
    open()->set("key", Data{"old"});
    ChildProgram other = holding({"BEGIN EXCLUSIVE"});
    ASSERT_EQ(other.readLine(), "held");
    const auto store = open();
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(store->data("key"), std::nullopt);
    }
    const auto reading = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(reading, SqliteStoreFile::kPatience);
    EXPECT_LT(reading, 10 * SqliteStoreFile::kPatience);
    other.closeInput();
    other.wait();
    EXPECT_EQ(store->data("key"), "old");
}

}  // namespace
}  // namespace tavo
