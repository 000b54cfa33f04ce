#include <cstdlib>
#include <fstream>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/linux/store/SqliteDefaultsStore.h"
#include "tests/TemporaryFolder.h"
#include "tests/contracts/DefaultsStoreContract.h"
#include "tests/platform/linux/fixtures/ChildProgram.h"
#include "tests/platform/linux/fixtures/StandardError.h"
#include "tests/platform/linux/store/RawSqlite.h"

namespace tavo {
namespace {

class SqliteWorld {
public:
    DefaultsStore& store() { return *store_; }
    DefaultsStore& another() { return *another_; }

    void holdMixedArray(const std::string& key) { hold(key, "array", "'[\"text\",7]'"); }
    void holdMixedDictionary(const std::string& key) {
        hold(key, "dictionary", "'{\"name\":\"text\",\"number\":7}'");
    }
    void holdNumber(const std::string& key) { hold(key, "data", "7"); }

private:
    void hold(const std::string& key, const std::string& type, const std::string& value) {
        store_->set("made", Data{});
        RawSqlite(file_).run("INSERT INTO defaults (key, type, value) VALUES ('" + key + "', '" +
                             type + "', " + value + ")");
    }

    TemporaryFolder folder_;
    std::string file_ = folder_ / "defaults.sqlite";
    std::unique_ptr<DefaultsStore> store_ = makeSqliteDefaultsStore(file_);
    std::unique_ptr<DefaultsStore> another_ = makeSqliteDefaultsStore(file_);
};

INSTANTIATE_TYPED_TEST_SUITE_P(Sqlite, DefaultsStoreContract, SqliteWorld);

class SqliteDefaultsStore : public testing::Test {
protected:
    [[nodiscard]] std::unique_ptr<DefaultsStore> open() const {
        return makeSqliteDefaultsStore(file_);
    }
    // The permission bits of a file; 0 where there is no file.
    static unsigned permissions(const std::string& path) {
        struct stat status {};
        return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
    }

    TemporaryFolder folder_;
    std::string file_ = folder_ / "new/tavolauncher/defaults.sqlite";
};

TEST_F(SqliteDefaultsStore, values_are_there_for_the_next_process) {
    open()->set("key", StringArray{"a", "b"});
    EXPECT_EQ(open()->stringArray("key"), (StringArray{"a", "b"}));
}

TEST_F(SqliteDefaultsStore, reading_makes_neither_folder_nor_file) {
    const auto store = open();
    EXPECT_EQ(store->data("key"), std::nullopt);
    EXPECT_EQ(store->stringArray("key"), std::nullopt);
    EXPECT_EQ(store->stringDictionary("key"), std::nullopt);
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

TEST_F(SqliteDefaultsStore, reading_in_a_folder_that_is_there_makes_no_file) {
    std::filesystem::create_directories(std::filesystem::path(file_).parent_path());
    EXPECT_EQ(open()->data("key"), std::nullopt);
    EXPECT_TRUE(std::filesystem::is_empty(std::filesystem::path(file_).parent_path()));
}

TEST_F(SqliteDefaultsStore, a_store_that_appears_is_seen_by_a_reader_that_was_there_first) {
    const auto reader = open();
    EXPECT_EQ(reader->data("key"), std::nullopt);
    open()->set("key", Data{"value"});
    EXPECT_EQ(reader->data("key"), "value");
}

TEST_F(SqliteDefaultsStore, folders_and_files_are_for_the_owner_alone_whatever_the_umask) {
    const mode_t before = umask(0);
    const auto store = open();
    store->set("key", Data{"value"});
    umask(before);
    EXPECT_EQ(permissions(folder_ / "new"), 0700U);
    EXPECT_EQ(permissions(folder_ / "new/tavolauncher"), 0700U);
    EXPECT_EQ(permissions(file_), 0600U);
}

TEST_F(SqliteDefaultsStore, the_folder_holds_one_file_between_two_writes) {
    const auto store = open();
    const auto another = open();
    for (int i = 0; i < 3; ++i) {
        store->set("key", Data{std::string(100'000, 'x')});
        EXPECT_EQ(another->data("key"), std::string(100'000, 'x'));
        another->set("another", Data{std::to_string(i)});
        const std::filesystem::directory_iterator files(folder_ / "new/tavolauncher");
        EXPECT_EQ(std::distance(begin(files), end(files)), 1);
    }
}

TEST_F(SqliteDefaultsStore, the_file_is_one_table_with_a_rollback_journal) {
    const auto store = open();
    store->set("array", StringArray{"a \"b\""});
    store->set("data", Data{"\x01\x02"});
    store->set("dictionary", StringDictionary{{"k", "v"}});
    RawSqlite database(file_);
    EXPECT_EQ(database.run("PRAGMA journal_mode"), "delete");
    EXPECT_EQ(database.run("SELECT group_concat(key || ' ' || type || ' ' || typeof(value), ', ')"
                           " FROM (SELECT * FROM defaults ORDER BY key)"),
              "array array text, data data blob, dictionary dictionary text");
    EXPECT_EQ(database.run("SELECT value FROM defaults WHERE key = 'array'"), "[\"a \\\"b\\\"\"]");
    EXPECT_EQ(database.run("SELECT value FROM defaults WHERE key = 'dictionary'"), "{\"k\":\"v\"}");
}

TEST_F(SqliteDefaultsStore, an_unreadable_value_stays_until_its_key_is_written) {
    open()->set("made", Data{});
    RawSqlite(file_).run("INSERT INTO defaults VALUES ('key', 'array', '[\"a\", 1]')");
    const auto store = open();
    EXPECT_EQ(store->stringArray("key"), std::nullopt);
    store->set("another", Data{});
    EXPECT_EQ(RawSqlite(file_).run("SELECT value FROM defaults WHERE key = 'key'"), "[\"a\", 1]");
    store->set("key", StringArray{"b"});
    EXPECT_EQ(RawSqlite(file_).run("SELECT value FROM defaults WHERE key = 'key'"), "[\"b\"]");
}

struct ForeignRow {
    const char* name;
    const char* type;   // an SQL expression for the type of the row
    const char* value;  // an SQL expression for the value of the row
};

TEST_F(SqliteDefaultsStore, rows_that_this_program_would_not_write_read_as_absent) {
    const std::vector<ForeignRow> rows = {
        {"data as text", "'data'", "'text'"},
        {"data as a number", "'data'", "1.5"},
        {"an array in a blob", "'array'", "x'5b5d'"},
        {"an array that is an object", "'array'", "'{}'"},
        {"an array cut short", "'array'", "'[\"a\"'"},
        {"an array with more after it", "'array'", "'[\"a\"] x'"},
        {"an array nested without end", "'array'", "replace(hex(zeroblob(50000)), '0', '[')"},
        {"a dictionary that is an array", "'dictionary'", "'[]'"},
        {"a dictionary of arrays", "'dictionary'", "'{\"a\":[\"b\"]}'"},
        {"a dictionary with null", "'dictionary'", "'{\"a\":null}'"},
        {"a type of another version", "'number'", "'7'"},
        {"a type that is a number", "7", "'[]'"},
        {"text that is not UTF-8", "'array'", "CAST(x'5b22ff225d' AS TEXT)"},
        {"an empty text", "'array'", "''"},
    };
    open()->set("made", Data{});
    for (const ForeignRow& row : rows) {
        SCOPED_TRACE(row.name);
        RawSqlite(file_).run(std::string("INSERT OR REPLACE INTO defaults VALUES ('key', ") +
                             row.type + ", " + row.value + ")");
        const auto store = open();
        EXPECT_EQ(store->data("key"), std::nullopt);
        EXPECT_EQ(store->stringArray("key"), std::nullopt);
        EXPECT_EQ(store->stringDictionary("key"), std::nullopt);
    }
}

TEST_F(SqliteDefaultsStore, large_values_come_back_whole) {
    std::string bytes(10'000'000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 31 + i / 4096);
    }
    StringArray array;
    StringDictionary dictionary;
    for (int i = 0; i < 100'000; ++i) {
        array.push_back("/opt/application number " + std::to_string(i));
        dictionary.emplace(array.back(), "keyword");
    }
    {
        const auto store = open();
        store->set("data", Data{bytes});
        store->set("array", array);
        store->set("dictionary", dictionary);
    }
    const auto store = open();
    EXPECT_TRUE(store->data("data") == bytes);
    EXPECT_TRUE(store->stringArray("array") == array);
    EXPECT_TRUE(store->stringDictionary("dictionary") == dictionary);
}

TEST_F(SqliteDefaultsStore,
       text_that_is_not_utf8_stays_in_memory_and_the_file_keeps_the_old_value) {
    const auto store = open();
    store->set("key", StringArray{"good"});
    {
        const StandardError said;
        store->set("key", StringArray{"\xff"});
        store->set("another", Data{"value"});
        EXPECT_EQ(said.text(), "tavolauncher: cannot write " + file_ +
                                   ": a value has text that is not UTF-8; kept until a later "
                                   "write\n");
    }
    EXPECT_EQ(store->stringArray("key"), StringArray{"\xff"});
    EXPECT_EQ(open()->stringArray("key"), StringArray{"good"});
    EXPECT_EQ(open()->data("another"), "value");
    store->set("key", StringArray{"better"});
    EXPECT_EQ(open()->stringArray("key"), StringArray{"better"});
}

TEST_F(SqliteDefaultsStore, names_that_mean_something_in_a_uri_are_just_names) {
    for (const char* const name : {"a?immutable=1", "b%20c", "d#e", "f g"}) {
        SCOPED_TRACE(name);
        const std::string file = folder_ / name + std::string("/defaults.sqlite");
        makeSqliteDefaultsStore(file)->set("key", Data{"value"});
        EXPECT_TRUE(std::filesystem::is_regular_file(file));
        EXPECT_EQ(makeSqliteDefaultsStore(file)->data("key"), "value");
    }
}

TEST_F(SqliteDefaultsStore, another_process_sees_a_write_at_its_next_read_and_the_other_way_round) {
    const auto store = open();
    ChildProgram other({TAVO_TEST_PROGRAMS "/tavo_store_writer", "serve", file_});
    EXPECT_EQ(other.ask("get key"), "(absent)");
    for (int i = 0; i < 20; ++i) {
        const std::string text = std::to_string(i);
        store->set("key", Data{"here" + text});
        EXPECT_EQ(other.ask("get key"), "here" + text);
        EXPECT_EQ(other.ask("set key there" + text), "set");
        EXPECT_EQ(store->data("key"), "there" + text);
    }
}

TEST_F(SqliteDefaultsStore, two_processes_that_write_at_once_lose_nothing) {
    const auto writer = [this](const char* prefix) {
        return std::vector<std::string>{TAVO_TEST_PROGRAMS "/tavo_store_writer", "keys", file_,
                                        prefix, "300"};
    };
    // Both writers begin without a file: only one of them may make it.
    ChildProgram a(writer("a"));
    ChildProgram b(writer("b"));
    EXPECT_EQ(a.wait(), 0);
    EXPECT_EQ(b.wait(), 0);
    const auto store = open();
    for (int i = 0; i < 300; ++i) {
        EXPECT_EQ(store->data("a." + std::to_string(i)), std::to_string(i));
        EXPECT_EQ(store->data("b." + std::to_string(i)), std::to_string(i));
    }
}

// Sets environment variables; the destructor restores the former values. "" unsets a variable.
class Environment {
public:
    explicit Environment(std::initializer_list<std::pair<const char*, const char*>> variables) {
        for (const auto& [name, value] : variables) {
            const char* const before = std::getenv(name);
            before_.emplace_back(name, before != nullptr ? before : "");
            set(name, value);
        }
    }
    ~Environment() {
        for (const auto& [name, value] : before_) {
            set(name.c_str(), value.c_str());
        }
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    static void set(const char* name, const char* value) {
        if (*value != '\0') {
            setenv(name, value, 1);
        } else {
            unsetenv(name);
        }
    }
    std::vector<std::pair<std::string, std::string>> before_;
};

TEST(DefaultStoreFile, is_in_the_data_folder_of_the_user) {
    const Environment environment({{"XDG_DATA_HOME", "/some/data"}, {"HOME", "/home/u"}});
    EXPECT_EQ(defaultStoreFile(), "/some/data/tavolauncher/defaults.sqlite");
}

TEST(DefaultStoreFile, is_in_the_home_folder_without_a_data_folder) {
    const Environment environment({{"XDG_DATA_HOME", ""}, {"HOME", "/home/u"}});
    EXPECT_EQ(defaultStoreFile(), "/home/u/.local/share/tavolauncher/defaults.sqlite");
}

TEST(DefaultStoreFile, takes_no_notice_of_a_data_folder_that_is_not_absolute) {
    const Environment environment({{"XDG_DATA_HOME", "some/data"}, {"HOME", "/home/u"}});
    EXPECT_EQ(defaultStoreFile(), "/home/u/.local/share/tavolauncher/defaults.sqlite");
}

TEST(DefaultStoreFile, is_in_the_home_folder_of_the_password_database_without_a_variable) {
    const Environment environment({{"XDG_DATA_HOME", ""}, {"HOME", ""}});
    const passwd* const user = getpwuid(getuid());
    if (user == nullptr) {
        GTEST_SKIP() << "this user is not in the password database";
    }
    EXPECT_EQ(defaultStoreFile(),
              std::string(user->pw_dir) + "/.local/share/tavolauncher/defaults.sqlite");
}

}  // namespace
}  // namespace tavo
