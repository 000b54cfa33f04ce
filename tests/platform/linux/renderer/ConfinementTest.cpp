#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <functional>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/shm.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/linux/renderer/Confinement.h"
#include "tests/TemporaryFolder.h"

namespace tavo {
namespace {

// Runs `body` in a confined child process. Returns its exit status, or 128 + the signal that ended
// it.
int statusOf(const std::function<int()>& body) {
    const pid_t child = ::fork();
    if (child == 0) {
        confineRenderer();
        ::_exit(body());
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

bool refused(long result) {
    return result < 0 && (errno == EPERM || errno == EACCES || errno == ENOSYS);
}

TEST(Confinement, what_reaches_beyond_the_process_is_refused) {
    const TemporaryFolder folder;
    const std::string file = folder / "file";
    ASSERT_EQ(::close(::open(file.c_str(), O_WRONLY | O_CREAT, 0600)), 0);
    const std::string other = folder / "other";
    struct Case {
        const char* name;
        std::function<long()> call;
    };
    const Case cases[] = {
        {"an internet socket", [] { return ::socket(AF_INET, SOCK_STREAM, 0); }},
        {"a local socket", [] { return ::socket(AF_UNIX, SOCK_STREAM, 0); }},
        {"a file opened for writing", [&] { return ::open(file.c_str(), O_WRONLY); }},
        {"a file opened for both", [&] { return ::open(file.c_str(), O_RDWR); }},
        {"a new file", [&] { return ::open(other.c_str(), O_RDONLY | O_CREAT, 0600); }},
        {"a file removed", [&] { return ::unlink(file.c_str()); }},
        {"a file renamed", [&] { return ::rename(file.c_str(), other.c_str()); }},
        {"a folder", [&] { return ::mkdir(other.c_str(), 0700); }},
        {"a link", [&] { return ::symlink(file.c_str(), other.c_str()); }},
        {"other rights", [&] { return ::chmod(file.c_str(), 0777); }},
        {"another process", [] { return ::fork(); }},
        {"another program", [] { return ::execl("/bin/true", "true", nullptr); }},
        {"a signal", [] { return ::kill(::getppid(), SIGUSR2); }},
        {"a signal to a thread",
         [] { return ::syscall(SYS_tgkill, ::getppid(), ::getppid(), SIGUSR2); }},
        {"a queued signal",
         [] {
             siginfo_t info = {};
             return ::syscall(SYS_rt_sigqueueinfo, ::getppid(), SIGUSR2, &info);
         }},
        {"other rights, by the call of Linux 6.6",
         [&] {
             constexpr long kFchmodat2 = 452;
             return ::syscall(kFchmodat2, AT_FDCWD, file.c_str(), 0777, 0);
         }},
        {"the memory of others",
         [] { return reinterpret_cast<std::intptr_t>(::shmat(0, nullptr, 0)); }},
        {"the priority of others", [] { return ::setpriority(PRIO_PROCESS, ::getppid(), 19); }},
        {"a limit",
         [] {
             const rlimit less = {1, 1};
             return ::setrlimit(RLIMIT_NOFILE, &less);
         }},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(statusOf([&] { return refused(row.call()) ? 7 : 8; }), 7);
    }
    EXPECT_EQ(statusOf([&] { return ::open(file.c_str(), O_RDONLY) >= 0 ? 7 : 8; }), 7);
}

TEST(Confinement, the_kernel_ends_what_takes_longer_than_a_second) {
    const auto start = std::chrono::steady_clock::now();
    const auto endless = [] {
        setTimeLimit();
        while (::getppid() != 0) {
        }
        return 0;
    };
    EXPECT_EQ(statusOf(endless), 128 + SIGALRM);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(900));
}

TEST(Confinement, what_is_done_in_time_goes_on) {
    const auto quick = [] {
        setTimeLimit();
        clearTimeLimit();
        ::usleep(1'200'000);
        return 7;
    };
    EXPECT_EQ(statusOf(quick), 7);
}

}  // namespace
}  // namespace tavo
