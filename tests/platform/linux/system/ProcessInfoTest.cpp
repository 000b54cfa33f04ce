#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/linux/system/ProcessInfo.h"
#include "platform/linux/windows/ProcessRegistry.h"
#include "tests/platform/linux/fixtures/ChildProgram.h"
#include "tests/platform/linux/fixtures/ProcessFixture.h"

namespace tavo {
namespace {

using processes::Folder;

// A shell command that prints its PID and then becomes `program`, which ends with its input.
std::vector<std::string> shell(const std::vector<std::string>& variables,
                               const std::string& program = "/bin/cat") {
    std::vector<std::string> words = {"/usr/bin/env"};
    words.insert(words.end(), variables.begin(), variables.end());
    words.insert(words.end(), {"/bin/sh", "-c", "echo $$; exec \"$0\"", program});
    return words;
}

bool hasArguments(pid_t process) {
    std::ifstream arguments("/proc/" + std::to_string(process) + "/cmdline");
    return arguments.peek() != std::ifstream::traits_type::eof();
}

// Waits until the started program really runs `program`; returns its PID. During execve(2) the
// kernel names the new program a moment before it has its arguments and environment.
pid_t settled(ChildProgram& child, const std::string& program) {
    const pid_t process = std::stoi(child.readLine().value_or("0"));
    EXPECT_TRUE(processes::becomesTrue([&] {
        return processExecutable(process) == std::filesystem::canonical(program).string() &&
               hasArguments(process);
    }));
    return process;
}

TEST(ProcessInfo, a_start_time_stays_and_goes_with_the_process) {
    ChildProgram child(shell({}));
    const pid_t process = settled(child, "/bin/cat");
    const auto start = processStartTime(process);
    ASSERT_TRUE(start);
    EXPECT_EQ(processStartTime(process), start);
    EXPECT_NE(*start, 0U);
    child.closeInput();
    // The process is a zombie now, which has no start time.
    EXPECT_TRUE(processes::becomesTrue([&] { return !processStartTime(process); }));
    child.wait();
    EXPECT_EQ(processStartTime(process), std::nullopt);
}

TEST(ProcessInfo, a_program_named_like_the_end_of_a_field_hides_nothing) {
    const Folder folder;
    const std::string program = folder.path("a) R 1 (b");
    std::filesystem::copy_file("/bin/cat", program);
    ChildProgram child(shell({}, program));
    const pid_t process = settled(child, program);
    const auto start = processStartTime(process);
    ASSERT_TRUE(start);
    EXPECT_GE(*start, *processStartTime(::getpid()));
}

TEST(ProcessInfo, a_program_has_the_parent_that_started_it) {
    ChildProgram child(shell({}));
    EXPECT_EQ(processParent(settled(child, "/bin/cat")), ::getpid());
    EXPECT_EQ(processParent(0), 0);
    EXPECT_EQ(processParent(0x7fffffff), 0);
}

TEST(ProcessInfo, what_is_no_process_has_no_facts) {
    for (const pid_t process : {0, -1, -7, 0x7fffffff}) {
        EXPECT_EQ(processStartTime(process), std::nullopt);
        EXPECT_EQ(processExecutable(process), std::nullopt);
        EXPECT_EQ(processDesktopFile(process), "");
        EXPECT_EQ(processParent(process), 0);
        EXPECT_EQ(sessionLeader(process), 0);
        EXPECT_FALSE(isWrappedBy(process, process));
        EXPECT_FALSE(isOwnProcess(process));
    }
    EXPECT_TRUE(isOwnProcess(::getpid()));
}

TEST(ProcessInfo, a_removed_program_keeps_its_path) {
    const Folder folder;
    const std::string program = folder.path("Python");
    std::filesystem::copy_file("/bin/cat", program);
    ChildProgram child(shell({}, program));
    const pid_t process = settled(child, program);
    std::filesystem::remove(program);
    EXPECT_EQ(processExecutable(process), program);
}

TEST(ProcessInfo, a_program_that_is_really_called_deleted_keeps_its_name) {
    const Folder folder;
    const std::string program = folder.path("tool (deleted)");
    std::filesystem::copy_file("/bin/cat", program);
    ChildProgram child(shell({}, program));
    EXPECT_EQ(processExecutable(settled(child, program)), program);
}

TEST(ProcessInfo, the_entry_counts_for_the_very_process_it_was_meant_for) {
    ChildProgram child({"/bin/sh", "-c",
                        "echo $$; exec env GIO_LAUNCHED_DESKTOP_FILE=/a/x.desktop "
                        "GIO_LAUNCHED_DESKTOP_FILE_PID=$$ /bin/cat"});
    EXPECT_EQ(processDesktopFile(settled(child, "/bin/cat")), "/a/x.desktop");

    ChildProgram heir(
        shell({"GIO_LAUNCHED_DESKTOP_FILE=/a/x.desktop", "GIO_LAUNCHED_DESKTOP_FILE_PID=1"}));
    EXPECT_EQ(processDesktopFile(settled(heir, "/bin/cat")), "");

    ChildProgram unmarked(shell({"GIO_LAUNCHED_DESKTOP_FILE=/a/x.desktop"}));
    EXPECT_EQ(processDesktopFile(settled(unmarked, "/bin/cat")), "");
}

TEST(ProcessInfo, a_large_environment_is_searched_to_its_end) {
    ChildProgram child({"/bin/sh", "-c",
                        "echo $$; exec env FILLER=" + std::string(100'000, 'x') +
                            " GIO_LAUNCHED_DESKTOP_FILE_PID=$$ "
                            "GIO_LAUNCHED_DESKTOP_FILE=/a/x.desktop /bin/cat"});
    EXPECT_EQ(processDesktopFile(settled(child, "/bin/cat")), "/a/x.desktop");
}

TEST(ProcessInfo, a_wrapped_program_has_a_wrapper_as_long_as_that_waits) {
    ChildProgram child(
        {"/usr/bin/setsid", "/bin/sh", "-c", "sh -c 'echo $$; exec sleep 1000' & echo $$; wait"});
    std::vector<pid_t> said = {std::stoi(child.readLine().value_or("0")),
                               std::stoi(child.readLine().value_or("0"))};
    const bool firstIsLeader = ::getsid(said[0]) == said[0];
    const pid_t leader = said[firstIsLeader ? 0 : 1];
    const pid_t program = said[firstIsLeader ? 1 : 0];
    ASSERT_EQ(::getsid(program), leader);
    EXPECT_EQ(processParent(program), leader);
    EXPECT_EQ(sessionLeader(program), leader);
    EXPECT_TRUE(isWrappedBy(program, leader));
    EXPECT_FALSE(isWrappedBy(leader, leader));
    EXPECT_FALSE(isWrappedBy(program, ::getpid()));
    ::kill(leader, SIGKILL);
    EXPECT_TRUE(processes::becomesTrue([&] { return !processStartTime(leader); }));
    EXPECT_FALSE(isWrappedBy(program, leader));
    ::kill(program, SIGKILL);
}

TEST(ProcessRegistry, a_number_that_comes_again_means_another_process) {
    const pid_t process = ::getpid();
    std::optional<std::uint64_t> startTime = 100;
    ProcessRegistry known([&](pid_t) { return startTime; });
    known.rememberStart(process, "a.desktop");
    EXPECT_TRUE(known.isSame(process));
    EXPECT_EQ(known.startedAs(process), "a.desktop");
    EXPECT_TRUE(known.executable(process));

    startTime = 200;
    EXPECT_FALSE(known.isSame(process));
    EXPECT_EQ(known.startedAs(process), "");
    EXPECT_EQ(known.executable(process), std::nullopt);

    known.remember(process);
    EXPECT_TRUE(known.isSame(process));
    EXPECT_EQ(known.startedAs(process), "");
    known.rememberStart(process, "b.desktop");
    EXPECT_EQ(known.startedAs(process), "b.desktop");

    startTime.reset();
    EXPECT_FALSE(known.isSame(process));
    known.remember(process);
    EXPECT_FALSE(known.isKnown(process));
}

TEST(ProcessRegistry, a_process_is_the_same_until_it_ends) {
    ProcessRegistry known;
    ChildProgram child(shell({}));
    const pid_t process = settled(child, "/bin/cat");
    EXPECT_TRUE(known.isSame(process));
    known.remember(process);
    EXPECT_TRUE(known.isSame(process));
    child.closeInput();
    child.wait();
    EXPECT_FALSE(known.isSame(process));
}

TEST(ProcessRegistry, the_first_start_told_of_a_process_holds) {
    ProcessRegistry known;
    EXPECT_EQ(known.startedAs(::getpid()), "");
    known.rememberStart(::getpid(), "a.desktop");
    known.rememberStart(::getpid(), "b.desktop");
    known.remember(::getpid());
    EXPECT_EQ(known.startedAs(::getpid()), "a.desktop");
    known.rememberStart(0x7fffffff, "a.desktop");
    EXPECT_EQ(known.startedAs(0x7fffffff), "");
    EXPECT_FALSE(known.isKnown(0x7fffffff));
}

}  // namespace
}  // namespace tavo
