// A write that fails is kept and answers reads, is reported once on standard error, and is tried
// again. Each test makes the failure really happen.
#include <algorithm>
#include <csignal>
#include <functional>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <sched.h>

#include "tests/fakes/ManualMainQueue.h"
#include "tests/platform/linux/fixtures/ChildProgram.h"
#include "tests/platform/linux/fixtures/StandardError.h"
#include "tests/platform/linux/store/RawSqlite.h"
#include "tests/platform/linux/store/StoreFileFixture.h"

namespace tavo {
namespace {

class RefusedWrite : public StoreFileFixture {
protected:
    // Checks that one line was printed, with the file's name and `reason` in it.
    void expectSaidOnce(const StandardError& said, const std::string& reason) const {
        const std::string text = said.text();
        EXPECT_TRUE(text.starts_with("tavolauncher: cannot write " + file_ + ": ")) << text;
        EXPECT_NE(text.find(reason), std::string::npos) << text;
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
    }

    // Makes two writes that are refused for `reason`, then `heal`, then one more write.
    void expectKeptAndWrittenLater(const std::string& reason, const std::function<void()>& heal) {
        const auto store = open();
        {
            const StandardError said;
            store->set("key", StringArray{"kept"});
            store->set("second", Data{"kept too"});
            EXPECT_EQ(store->stringArray("key"), StringArray{"kept"});
            EXPECT_EQ(store->data("key"), std::nullopt);
            EXPECT_EQ(store->data("second"), "kept too");
            expectSaidOnce(said, reason);
        }
        EXPECT_TRUE(putAside().empty());
        heal();
        EXPECT_EQ(open()->stringArray("key"), std::nullopt);
        const StandardError said;
        store->set("third", Data{"in time"});
        EXPECT_EQ(said.text(), "");
        const auto next = open();
        EXPECT_EQ(next->stringArray("key"), StringArray{"kept"});
        EXPECT_EQ(next->data("second"), "kept too");
        EXPECT_EQ(next->data("third"), "in time");
        EXPECT_TRUE(putAside().empty());
    }
};

TEST_F(RefusedWrite, is_kept_while_another_process_is_about_to_write) {
    open()->set("key", Data{"old"});
    ChildProgram other = holding({"BEGIN IMMEDIATE"});
    ASSERT_EQ(other.readLine(), "held");
    EXPECT_EQ(open()->data("key"), "old");
    expectKeptAndWrittenLater("another process has locked it", [&] {
        other.closeInput();
        other.wait();
    });
}

TEST_F(RefusedWrite, is_kept_while_another_process_locks_out_readers_too) {
    open()->set("key", Data{"old"});
    ChildProgram other = holding({"BEGIN EXCLUSIVE"});
    ASSERT_EQ(other.readLine(), "held");
    EXPECT_EQ(open()->data("key"), std::nullopt);
    expectKeptAndWrittenLater("another process has locked it", [&] {
        other.closeInput();
        other.wait();
    });
}

// The program could not read the old values and took them for absent. When it then writes, it
// overwrites them: the copy is all that is left of them.
TEST_F(RefusedWrite, of_a_key_that_could_not_be_read_keeps_a_copy_of_the_store) {
    open()->set("key", Data{"old"});
    open()->set("second", Data{"old too"});
    const auto store = open();
    const StandardError quiet;
    {
        ChildProgram other = holding({"BEGIN EXCLUSIVE"});
        ASSERT_EQ(other.readLine(), "held");
        EXPECT_EQ(store->data("key"), std::nullopt);
        EXPECT_EQ(store->data("second"), std::nullopt);
        other.closeInput();
        other.wait();
    }
    store->set("key", Data{"new"});
    store->set("second", Data{"new too"});
    EXPECT_EQ(open()->data("key"), "new");
    ASSERT_EQ(copies().size(), 1U);
    const auto copy = makeSqliteDefaultsStore(copies().front());
    EXPECT_EQ(copy->data("key"), "old");
    EXPECT_EQ(copy->data("second"), "old too");
    const auto mode = std::filesystem::status(copies().front()).permissions();
    EXPECT_EQ(mode, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(RefusedWrite, of_a_key_that_was_read_since_keeps_no_copy) {
    open()->set("key", Data{"old"});
    const auto store = open();
    {
        ChildProgram other = holding({"BEGIN EXCLUSIVE"});
        ASSERT_EQ(other.readLine(), "held");
        EXPECT_EQ(store->data("key"), std::nullopt);
        other.closeInput();
        other.wait();
    }
    EXPECT_EQ(store->data("key"), "old");
    store->set("key", Data{"new"});
    EXPECT_TRUE(copies().empty());
    EXPECT_EQ(open()->data("key"), "new");
}

TEST_F(RefusedWrite, is_tried_again_by_a_timer) {
    open()->set("key", Data{"old"});
    ChildProgram other = holding({"BEGIN IMMEDIATE"});
    ASSERT_EQ(other.readLine(), "held");
    ManualMainQueue queue;
    const auto store = makeSqliteDefaultsStore(file_, &queue);
    const StandardError said;
    store->set("key", Data{"new"});
    store->set("second", Data{"new too"});
    EXPECT_EQ(queue.waiting(), 1U);
    queue.advance(std::chrono::minutes(1));
    EXPECT_EQ(open()->data("key"), "old");
    other.closeInput();
    other.wait();
    queue.advance(std::chrono::minutes(1));
    EXPECT_EQ(open()->data("key"), "new");
    EXPECT_EQ(open()->data("second"), "new too");
    EXPECT_EQ(queue.waiting(), 0U);
    expectSaidOnce(said, "another process has locked it");
}

TEST_F(RefusedWrite, is_tried_again_when_the_store_ends) {
    open()->set("key", Data{"old"});
    ManualMainQueue queue;
    auto store = makeSqliteDefaultsStore(file_, &queue);
    {
        ChildProgram other = holding({"BEGIN IMMEDIATE"});
        ASSERT_EQ(other.readLine(), "held");
        const StandardError quiet;
        store->set("key", Data{"new"});
    }
    EXPECT_EQ(open()->data("key"), "old");
    store.reset();
    EXPECT_EQ(open()->data("key"), "new");
    queue.advance(std::chrono::hours(1));
}

TEST_F(RefusedWrite, makes_no_timer_when_no_later_try_can_succeed) {
    ManualMainQueue queue;
    const StandardError quiet;
    makeSqliteDefaultsStore("", &queue)->set("key", Data{"kept"});
    makeSqliteDefaultsStore(file_, &queue)->set("key", StringArray{"\xff"});
    EXPECT_EQ(queue.waiting(), 0U);
}

TEST_F(RefusedWrite, is_kept_while_another_process_makes_or_moves_the_file) {
    overwrite(file_, std::string(5000, 'g'));
    const int folder = ::open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(flock(folder, LOCK_EX), 0);
    const auto store = open();
    {
        const StandardError said;
        store->set("key", Data{"kept"});
        EXPECT_EQ(store->data("key"), "kept");
        expectSaidOnce(said, "another process has locked its folder");
    }
    EXPECT_EQ(contents(file_), std::string(5000, 'g'));
    close(folder);
    const StandardError quiet;
    store->set("second", Data{"in time"});
    EXPECT_EQ(open()->data("key"), "kept");
    EXPECT_EQ(putAside().size(), 1U);
}

TEST_F(RefusedWrite, waits_for_a_lock_that_is_soon_given_up) {
    open()->set("key", Data{"old"});
    ChildProgram other = holding({"BEGIN EXCLUSIVE"});
    ASSERT_EQ(other.readLine(), "held");
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        other.closeInput();
    });
    const StandardError said;
    open()->set("key", Data{"new"});
    release.join();
    EXPECT_EQ(said.text(), "");
    EXPECT_EQ(open()->data("key"), "new");
}

// These tests are skipped for root, whom file permissions do not bind.
class RefusedByRights : public RefusedWrite {
protected:
    void SetUp() override {
        if (geteuid() == 0) {
            GTEST_SKIP() << "root may read and write everything";
        }
        open()->set("key", Data{"old"});
    }
};

TEST_F(RefusedByRights, is_kept_while_the_file_may_not_be_written) {
    ASSERT_EQ(chmod(file_.c_str(), 0400), 0);
    EXPECT_EQ(open()->data("key"), "old");
    expectKeptAndWrittenLater("readonly", [&] { ASSERT_EQ(chmod(file_.c_str(), 0600), 0); });
}

TEST_F(RefusedByRights, is_kept_while_the_file_may_not_even_be_read) {
    ASSERT_EQ(chmod(file_.c_str(), 0), 0);
    EXPECT_EQ(open()->data("key"), std::nullopt);
    expectKeptAndWrittenLater("Permission denied",
                              [&] { ASSERT_EQ(chmod(file_.c_str(), 0600), 0); });
}

TEST_F(RefusedByRights, is_kept_while_the_folder_may_not_be_written) {
    ASSERT_EQ(chmod(folder_.path().c_str(), 0500), 0);
    const auto store = open();
    EXPECT_EQ(store->data("key"), "old");
    EXPECT_EQ(store->data("key"), "old");
    expectKeptAndWrittenLater("readonly",
                              [&] { ASSERT_EQ(chmod(folder_.path().c_str(), 0700), 0); });
}

TEST_F(RefusedByRights, is_over_as_soon_as_the_folder_may_be_written_again) {
    ASSERT_EQ(chmod(folder_.path().c_str(), 0500), 0);
    const auto store = open();
    EXPECT_EQ(store->data("key"), "old");
    ASSERT_EQ(chmod(folder_.path().c_str(), 0700), 0);
    const StandardError said;
    store->set("key", Data{"new"});
    EXPECT_EQ(said.text(), "");
    EXPECT_EQ(open()->data("key"), "new");
}

TEST_F(RefusedByRights, of_a_damaged_file_in_a_folder_that_may_not_be_written_harms_nothing) {
    overwrite(file_, std::string(5000, 'g'));
    ASSERT_EQ(chmod(folder_.path().c_str(), 0500), 0);
    const auto store = open();
    EXPECT_EQ(store->data("key"), std::nullopt);
    const StandardError said;
    store->set("key", Data{"kept"});
    store->set("key", Data{"kept again"});
    EXPECT_EQ(store->data("key"), "kept again");
    expectSaidOnce(said, "Permission denied");
    EXPECT_EQ(contents(file_), std::string(5000, 'g'));
}

TEST_F(RefusedWrite, is_kept_where_no_folder_can_be_made) {
    file_ = "/proc/none/tavolauncher/defaults.sqlite";
    const auto store = open();
    EXPECT_EQ(store->data("key"), std::nullopt);
    const StandardError said;
    store->set("key", Data{"kept"});
    store->set("second", Data{"kept too"});
    EXPECT_EQ(store->data("key"), "kept");
    EXPECT_EQ(store->data("second"), "kept too");
    expectSaidOnce(said, "its folder cannot be made");
}

TEST_F(RefusedWrite, is_kept_where_a_file_is_in_the_place_of_the_folder) {
    overwrite(folder_ / "file", "");
    file_ = folder_ / "file/defaults.sqlite";
    const auto store = open();
    const StandardError said;
    store->set("key", Data{"kept"});
    EXPECT_EQ(store->data("key"), "kept");
    expectSaidOnce(said, "Not a directory");
}

TEST_F(RefusedWrite, is_kept_where_there_is_no_home_folder) {
    const auto store = makeSqliteDefaultsStore("");
    EXPECT_EQ(store->data("key"), std::nullopt);
    const StandardError said;
    store->set("key", Data{"kept"});
    store->set("key", Data{"kept again"});
    EXPECT_EQ(store->data("key"), "kept again");
    EXPECT_EQ(said.text(),
              "tavolauncher: cannot write the settings: there is no home folder; kept until a "
              "later write\n");
}

TEST_F(RefusedWrite, is_said_again_when_writes_had_succeeded_in_between) {
    open()->set("key", Data{"old"});
    const auto store = open();
    for (int i = 0; i < 2; ++i) {
        std::filesystem::rename(folder_.path(), folder_.path().string() + ".away");
        overwrite(folder_.path(), "");
        {
            const StandardError said;
            store->set("key", Data{"kept"});
            store->set("key", Data{"kept"});
            expectSaidOnce(said, "Not a directory");
        }
        std::filesystem::remove(folder_.path());
        std::filesystem::rename(folder_.path().string() + ".away", folder_.path());
        store->set("key", Data{"written"});
        EXPECT_EQ(open()->data("key"), "written");
    }
}

// While an object lives, no file of this process grows beyond `bytes`: a write fails halfway, as on
// a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : signal_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, signal_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*signal_)(int);
    rlimit before_{};
};

TEST_F(RefusedWrite, is_kept_when_the_file_cannot_grow_and_harms_nothing_that_was_there) {
    open()->set("key", Data{"old"});
    const auto store = open();
    const std::string large(500'000, 'l');
    {
        const FileSizeLimit limit(100'000);
        const StandardError said;
        store->set("large", Data{large});
        EXPECT_EQ(store->data("large"), large);
        expectSaidOnce(said, "disk I/O error");
        EXPECT_EQ(open()->data("key"), "old");
        EXPECT_EQ(open()->data("large"), std::nullopt);
        // The small value has room, and is written although the large one could not be.
        store->set("small", Data{"written"});
        EXPECT_EQ(open()->data("small"), "written");
        expectSaidOnce(said, "disk I/O error");
    }
    store->set("key", Data{"new"});
    const auto next = open();
    EXPECT_EQ(next->data("large"), large);
    EXPECT_EQ(next->data("key"), "new");
    EXPECT_EQ(next->data("small"), "written");
    EXPECT_TRUE(putAside().empty());
}

TEST_F(RefusedWrite, is_kept_when_there_is_no_room_to_make_the_file) {
    const auto store = open();
    for (const rlim_t room : {0, 1, 100, 4096, 5000, 10'000, 32'768}) {
        SCOPED_TRACE("room for " + std::to_string(room) + " bytes");
        const FileSizeLimit limit(room);
        const std::string large(100'000, 'l');
        store->set("key", Data{large});
        EXPECT_EQ(store->data("key"), large);
        EXPECT_EQ(open()->data("key"), std::nullopt);
    }
    store->set("second", Data{"in time"});
    EXPECT_EQ(open()->data("key"), std::string(100'000, 'l'));
    EXPECT_EQ(open()->data("second"), "in time");
    EXPECT_TRUE(putAside().empty());
}

// Fills a disk of 256 KiB while a store writes to it. Returns what went wrong, "" when all is well.
std::string troubleOnAFullDisk(const std::string& disk) {
    const std::string file = disk + "/tavolauncher/defaults.sqlite";
    const auto store = makeSqliteDefaultsStore(file);
    store->set("key", Data{"old"});
    {
        std::ofstream filler(disk + "/filler");
        while (filler << std::string(4096, 'f') << std::flush) {
        }
    }
    const StandardError said;
    const std::string value(20'000, 'v');
    store->set("key", Data{value});
    store->set("second", Data{value});
    if (store->data("key") != value || store->data("second") != value) {
        return "the kept values are not answered";
    }
    if (makeSqliteDefaultsStore(file)->data("key") != "old") {
        return "the old value is gone";
    }
    const std::string text = said.text();
    if (text.find("full") == std::string::npos || std::count(text.begin(), text.end(), '\n') != 1) {
        return "said: " + text;
    }
    std::filesystem::remove(disk + "/filler");
    store->set("third", Data{"in time"});
    const auto next = makeSqliteDefaultsStore(file);
    if (next->data("key") != value || next->data("second") != value ||
        next->data("third") != "in time") {
        return "the kept values did not reach the disk";
    }
    return "";
}

// Moves this process into a mount namespace of its own, so that other processes do not see its
// mounts.
bool leaveForMountsOfItsOwn() {
    if (geteuid() == 0) {
        return unshare(CLONE_NEWNS) == 0;
    }
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
        return false;
    }
    overwrite("/proc/self/setgroups", "deny");
    overwrite("/proc/self/uid_map", user + " " + user + " 1");
    overwrite("/proc/self/gid_map", group + " " + group + " 1");
    return true;
}

TEST_F(RefusedWrite, is_kept_while_the_disk_is_full) {
    const std::string disk = folder_ / "disk";
    std::filesystem::create_directory(disk);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (!leaveForMountsOfItsOwn() ||
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=256k,mode=0700") != 0) {
            _exit(77);
        }
        const std::string trouble = troubleOnAFullDisk(disk);
        std::fprintf(stderr, "%s", trouble.c_str());
        _exit(trouble.empty() ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 77) {
        GTEST_SKIP() << "no small disk can be mounted here";
    }
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

}  // namespace
}  // namespace tavo
