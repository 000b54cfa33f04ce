// What a reader was told is not there, because the file would not answer, is not lost by what the
// reader writes next; each with the real failure.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/linux/store/SqliteStoreFile.h"
#include "tests/platform/linux/fixtures/StandardError.h"
#include "tests/platform/linux/store/RawSqlite.h"
#include "tests/platform/linux/store/StoreFileFixture.h"

namespace tavo {
namespace {

const StringArray kStored = {"a", "b", "c", "d", "e"};

// As whoever keeps no copy of the value does it.
void add(DefaultsStore& store, const std::string& name) {
    StringArray names = store.stringArray("names").value_or(StringArray());
    names.push_back(name);
    store.set("names", names);
}

class UnreadStore : public StoreFileFixture {
protected:
    void SetUp() override {
        const auto store = open();
        store->set("names", kStored);
        store->set("others", kStored);
    }

    // Nobody else can even read.
    [[nodiscard]] ChildProgram lockedOut() const {
        return holding({"PRAGMA locking_mode = EXCLUSIVE", "BEGIN EXCLUSIVE",
                        "UPDATE defaults SET type = type"});
    }

    static void release(ChildProgram& other) {
        other.closeInput();
        other.wait();
    }

    // One whole copy, for the owner alone, which one line told of.
    void expectOneCopy(const StandardError& said, const std::string& why) const {
        ASSERT_EQ(unreadCopies().size(), 1U);
        const std::string copy = unreadCopies().front();
        EXPECT_EQ(said.text(),
                  "tavolauncher: kept a copy of " + file_ + " as " + copy +
                      ": a value about to be replaced could not be read before: " + why + "\n");
        struct stat status {};
        ASSERT_EQ(stat(copy.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0600U);
        EXPECT_TRUE(copy.starts_with(file_ + ".unread-")) << copy;
        const auto kept = makeSqliteDefaultsStore(copy);
        EXPECT_EQ(kept->stringArray("names"), kStored);
        EXPECT_EQ(kept->stringArray("others"), kStored);
    }
};

constexpr const char* kLocked = "another process has locked it";

TEST_F(UnreadStore, is_kept_when_the_lock_ends_before_the_write) {
    const auto store = open();
    ChildProgram other = lockedOut();
    ASSERT_EQ(other.readLine(), "held");
    ASSERT_EQ(store->stringArray("names"), std::nullopt);
    release(other);
    const StandardError said;
    store->set("names", StringArray{"new"});
    expectOneCopy(said, kLocked);
    EXPECT_EQ(open()->stringArray("names"), StringArray{"new"});
}

TEST_F(UnreadStore, is_kept_when_the_lock_ends_while_the_write_waits) {
    const auto store = open();
    ChildProgram other = lockedOut();
    ASSERT_EQ(other.readLine(), "held");
    ASSERT_EQ(store->stringArray("names"), std::nullopt);
    std::thread later([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        other.closeInput();
    });
    const StandardError said;
    store->set("names", StringArray{"new"});
    later.join();
    expectOneCopy(said, kLocked);
    EXPECT_EQ(open()->stringArray("names"), StringArray{"new"});
}

TEST_F(UnreadStore, is_kept_when_the_write_came_in_vain_and_is_done_with_a_later_one) {
    const auto store = open();
    ChildProgram other = lockedOut();
    ASSERT_EQ(other.readLine(), "held");
    {
        const StandardError said;
        add(*store, "x");
        EXPECT_NE(said.text().find("cannot write"), std::string::npos) << said.text();
    }
    EXPECT_TRUE(unreadCopies().empty());
    release(other);
    const StandardError said;
    store->set("third", Data{"later"});
    expectOneCopy(said, kLocked);
    EXPECT_EQ(open()->stringArray("names"), StringArray{"x"});
    EXPECT_EQ(open()->data("third"), "later");
}

TEST_F(UnreadStore, is_kept_when_the_file_could_not_be_read_for_a_while) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "root may read everything";
    }
    const auto store = open();
    ASSERT_EQ(store->stringArray("names"), kStored);
    ASSERT_EQ(chmod(file_.c_str(), 0), 0);
    {
        const StandardError refused;
        add(*store, "x");
    }
    EXPECT_TRUE(unreadCopies().empty());
    ASSERT_EQ(chmod(file_.c_str(), 0600), 0);
    const StandardError said;
    add(*store, "y");
    expectOneCopy(said, "unable to open database file (Permission denied)");
    EXPECT_EQ(open()->stringArray("names"), (StringArray{"x", "y"}));
}

TEST_F(UnreadStore, is_kept_when_only_its_log_could_not_be_read) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "root may read everything";
    }
    // A log that its writer did not live to move on: it holds the names, the file others.
    RawSqlite keepsLog(file_);
    keepsLog.run("UPDATE defaults SET value = '[\"old\"]' WHERE key = 'names'");
    keepsLog.run("PRAGMA wal_checkpoint(TRUNCATE)");
    keepsLog.run(
        "UPDATE defaults SET value = '[\"a\",\"b\",\"c\",\"d\",\"e\"]' "
        "WHERE key = 'names'");
    std::filesystem::create_directory(folder_ / "copy");
    for (const char* const suffix : {"", "-wal"}) {
        std::filesystem::copy_file(file_ + suffix, folder_ / "copy/defaults.sqlite" + suffix);
    }
    file_ = folder_ / "copy/defaults.sqlite";
    const auto store = open();
    ASSERT_EQ(chmod((file_ + "-wal").c_str(), 0), 0);
    ASSERT_EQ(store->stringArray("names"), StringArray{"old"});
    ASSERT_EQ(chmod((file_ + "-wal").c_str(), 0600), 0);
    const StandardError said;
    store->set("names", StringArray{"old", "x"});
    const std::string text = said.text();
    const std::string before = "kept a copy of " + file_ + " as ";
    const std::size_t at = text.find(before);
    ASSERT_NE(at, std::string::npos) << text;
    const std::string copy =
        text.substr(at + before.size(), text.find(": ", at) - at - before.size());
    EXPECT_EQ(makeSqliteDefaultsStore(copy)->stringArray("names"), kStored);
    EXPECT_EQ(open()->stringArray("names"), (StringArray{"old", "x"}));
}

TEST_F(UnreadStore, is_copied_once_for_all_keys_that_were_not_read) {
    const auto store = open();
    ChildProgram other = lockedOut();
    ASSERT_EQ(other.readLine(), "held");
    ASSERT_EQ(store->stringArray("names"), std::nullopt);
    ASSERT_EQ(store->stringArray("others"), std::nullopt);
    release(other);
    const StandardError said;
    store->set("names", StringArray{"x"});
    store->set("others", StringArray{"y"});
    store->set("names", StringArray{"z"});
    expectOneCopy(said, kLocked);
    EXPECT_EQ(open()->stringArray("names"), StringArray{"z"});
    EXPECT_EQ(open()->stringArray("others"), StringArray{"y"});
}

TEST_F(UnreadStore, is_copied_again_under_another_name_the_next_time) {
    for (int i = 1; i <= 2; ++i) {
        ChildProgram other = lockedOut();
        ASSERT_EQ(other.readLine(), "held");
        const auto store = open();
        ASSERT_EQ(store->stringArray("names"), std::nullopt);
        release(other);
        store->set("names", StringArray{std::to_string(i)});
        EXPECT_EQ(unreadCopies().size(), static_cast<std::size_t>(i));
    }
    std::vector<StringArray> kept;
    for (const std::string& copy : unreadCopies()) {
        kept.push_back(makeSqliteDefaultsStore(copy)->stringArray("names").value_or(StringArray()));
    }
    std::sort(kept.begin(), kept.end());
    EXPECT_EQ(kept, (std::vector<StringArray>{{"1"}, kStored}));
}

TEST_F(UnreadStore, is_not_copied_for_what_is_read_before_it_is_written) {
    const auto store = open();
    ChildProgram other = lockedOut();
    ASSERT_EQ(other.readLine(), "held");
    ASSERT_EQ(store->stringArray("names"), std::nullopt);
    release(other);
    const StandardError said;
    add(*store, "f");
    EXPECT_EQ(open()->stringArray("names"), (StringArray{"a", "b", "c", "d", "e", "f"}));
    EXPECT_TRUE(unreadCopies().empty());
    EXPECT_EQ(said.text(), "");
}

TEST_F(UnreadStore, is_not_copied_for_what_was_not_there_or_stays_as_it_was) {
    const auto store = open();
    ChildProgram other = lockedOut();
    ASSERT_EQ(other.readLine(), "held");
    ASSERT_EQ(store->stringArray("names"), std::nullopt);
    ASSERT_EQ(store->data("third"), std::nullopt);
    release(other);
    const StandardError said;
    store->set("names", kStored);
    store->set("third", Data{"first of its key"});
    EXPECT_TRUE(unreadCopies().empty());
    EXPECT_EQ(said.text(), "");
    EXPECT_EQ(open()->data("third"), "first of its key");
}

TEST_F(UnreadStore, is_not_overwritten_while_no_copy_of_it_can_be_made) {
    open()->set("large", Data{std::string(300'000, 'l')});
    const auto store = open();
    {
        ChildProgram other = lockedOut();
        ASSERT_EQ(other.readLine(), "held");
        ASSERT_EQ(store->stringArray("names"), std::nullopt);
        release(other);
    }
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto signal = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{100'000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    {
        const StandardError said;
        store->set("names", StringArray{"x"});
        EXPECT_NE(said.text().find("a copy of what could not be read cannot be made"),
                  std::string::npos)
            << said.text();
        EXPECT_EQ(std::ranges::count(said.text(), '\n'), 1) << said.text();
    }
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, signal);
    EXPECT_TRUE(unreadCopies().empty());
    EXPECT_EQ(store->stringArray("names"), StringArray{"x"});
    EXPECT_EQ(open()->stringArray("names"), kStored);
    const StandardError said;
    store->set("third", Data{"later"});
    expectOneCopy(said, kLocked);
    EXPECT_EQ(open()->stringArray("names"), StringArray{"x"});
}

TEST_F(UnreadStore, keeps_a_reader_waiting_less_long_than_a_writer) {
    static_assert(SqliteStoreFile::kReadPatience * 10 < SqliteStoreFile::kWritePatience);
    using Clock = std::chrono::steady_clock;
    ChildProgram other = lockedOut();
    ASSERT_EQ(other.readLine(), "held");
    // The shortest of several: a busy machine may hold up any one of them.
    Clock::duration reading = Clock::duration::max();
    for (int i = 0; i < 4; ++i) {
        const auto store = open();
        const auto begin = Clock::now();
        ASSERT_EQ(store->stringArray("names"), std::nullopt);
        reading = std::min(reading, Clock::now() - begin);
    }
    const StandardError said;
    const auto begin = Clock::now();
    open()->set("third", Data{"in vain"});
    const Clock::duration writing = Clock::now() - begin;
    EXPECT_GE(reading, SqliteStoreFile::kReadPatience);
    EXPECT_GE(writing, SqliteStoreFile::kWritePatience);
    EXPECT_LT(reading, SqliteStoreFile::kWritePatience);
}

TEST_F(UnreadStore, is_not_what_a_path_with_two_slashes_in_front_leads_to) {
    SqliteTable table;
    const Deadline now = std::chrono::steady_clock::now();
    const SqliteOutcome outcome = table.open("/" + file_, SqliteTable::Access::Immutable, now);
    EXPECT_TRUE(outcome.done()) << outcome.reason;
}

}  // namespace
}  // namespace tavo
