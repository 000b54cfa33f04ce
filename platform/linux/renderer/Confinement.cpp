#include "platform/linux/renderer/Confinement.h"

#include <cerrno>
#include <initializer_list>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <linux/landlock.h>
#include <sched.h>
#include <seccomp.h>

namespace tavo {
namespace {

constexpr rlim_t kMostAddresses = rlim_t{512} << 20U;  // bytes
constexpr rlim_t kMostDescriptors = 64;

void limit(__rlimit_resource_t resource, rlim_t most) {
    const rlimit both = {most, most};
    ::setrlimit(resource, &both);
}

// Allows nothing but reading in the file system, by Landlock. The ruleset has no rule, so every
// access that it handles is refused everywhere. Without Landlock (Linux before 5.13, or switched
// off) this does nothing.
void refuseChangesOfFiles() {
    const long version =
        ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1) {
        return;
    }
    landlock_ruleset_attr attributes = {};
    attributes.handled_access_fs =
        LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
        LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
        LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_MAKE_SOCK |
        LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;
    const auto rules =
        static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0));
    if (rules >= 0) {
        ::syscall(SYS_landlock_restrict_self, rules, 0);
        ::close(rules);
    }
}

// Gives seccomp a list of the system calls that are allowed. All others fail as if the kernel did
// not know them, which makes the C library fall back to older ones. Calls that pass their flags in
// a structure (clone3, openat2) are not on it, because a seccomp filter sees numbers alone.
void allowSystemCalls() {
    const scmp_filter_ctx filter = ::seccomp_init(SCMP_ACT_ERRNO(ENOSYS));
    if (filter == nullptr) {
        return;
    }
    const auto allow = [filter](std::initializer_list<int> calls) {
        for (const int call : calls) {
            ::seccomp_rule_add(filter, SCMP_ACT_ALLOW, call, 0);
        }
    };
    const auto allowWhere = [filter](int call, const scmp_arg_cmp& condition) {
        ::seccomp_rule_add(filter, SCMP_ACT_ALLOW, call, 1, condition);
    };
    allow({// descriptors that are open
           SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(pread64), SCMP_SYS(write), SCMP_SYS(writev),
           SCMP_SYS(sendto), SCMP_SYS(recvfrom), SCMP_SYS(lseek), SCMP_SYS(poll), SCMP_SYS(ppoll),
           SCMP_SYS(fadvise64), SCMP_SYS(close), SCMP_SYS(close_range), SCMP_SYS(dup),
           SCMP_SYS(pipe2), SCMP_SYS(eventfd2),
           // looking at files
           SCMP_SYS(stat), SCMP_SYS(lstat), SCMP_SYS(fstat), SCMP_SYS(newfstatat), SCMP_SYS(statx),
           SCMP_SYS(statfs), SCMP_SYS(fstatfs), SCMP_SYS(access), SCMP_SYS(faccessat),
           SCMP_SYS(faccessat2), SCMP_SYS(readlink), SCMP_SYS(readlinkat), SCMP_SYS(getdents64),
           SCMP_SYS(getcwd),
           // memory and threads of the process itself
           SCMP_SYS(mmap), SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(mprotect),
           SCMP_SYS(madvise), SCMP_SYS(mincore), SCMP_SYS(brk), SCMP_SYS(futex),
           SCMP_SYS(membarrier), SCMP_SYS(rseq), SCMP_SYS(set_robust_list),
           SCMP_SYS(set_tid_address), SCMP_SYS(arch_prctl), SCMP_SYS(sched_yield),
           SCMP_SYS(sched_getaffinity), SCMP_SYS(exit), SCMP_SYS(exit_group),
           // signals and timers of the process itself
           SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn),
           SCMP_SYS(sigaltstack), SCMP_SYS(restart_syscall), SCMP_SYS(setitimer),
           SCMP_SYS(nanosleep), SCMP_SYS(clock_nanosleep),
           // facts
           SCMP_SYS(clock_gettime), SCMP_SYS(clock_getres), SCMP_SYS(gettimeofday), SCMP_SYS(time),
           SCMP_SYS(getrandom), SCMP_SYS(getpid), SCMP_SYS(getppid), SCMP_SYS(gettid),
           SCMP_SYS(getuid), SCMP_SYS(geteuid), SCMP_SYS(getgid), SCMP_SYS(getegid),
           SCMP_SYS(getrusage), SCMP_SYS(getrlimit), SCMP_SYS(sysinfo), SCMP_SYS(uname)});
    // Files may be opened for reading alone.
    constexpr scmp_datum_t kChanges = O_ACCMODE | O_CREAT | O_TRUNC;
    allowWhere(SCMP_SYS(open), SCMP_A1(SCMP_CMP_MASKED_EQ, kChanges, O_RDONLY));
    allowWhere(SCMP_SYS(openat), SCMP_A2(SCMP_CMP_MASKED_EQ, kChanges, O_RDONLY));
    for (const int command : {F_GETFD, F_SETFD, F_GETFL, F_DUPFD_CLOEXEC}) {
        allowWhere(SCMP_SYS(fcntl), SCMP_A1(SCMP_CMP_EQ, static_cast<scmp_datum_t>(command)));
    }
    // librsvg draws filters with several threads, which have names.
    allowWhere(SCMP_SYS(clone), SCMP_A0(SCMP_CMP_MASKED_EQ, CLONE_THREAD, CLONE_THREAD));
    allowWhere(SCMP_SYS(prctl), SCMP_A0(SCMP_CMP_EQ, PR_SET_NAME));
    // abort() sends a signal to its own process. Limits may be read, not set.
    allowWhere(SCMP_SYS(tgkill), SCMP_A0(SCMP_CMP_EQ, static_cast<scmp_datum_t>(::getpid())));
    allowWhere(SCMP_SYS(prlimit64), SCMP_A2(SCMP_CMP_EQ, 0));
    ::seccomp_load(filter);
    ::seccomp_release(filter);
}

void setTimer(time_t seconds) {
    const itimerval once = {{0, 0}, {seconds, 0}};
    ::setitimer(ITIMER_REAL, &once, nullptr);
}

}  // namespace

void confineRenderer() {
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_FSIZE, 0);
    limit(RLIMIT_NOFILE, kMostDescriptors);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    // Not with sanitizers, which reserve terabytes of addresses.
    limit(RLIMIT_AS, kMostAddresses);
#endif
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    refuseChangesOfFiles();
    allowSystemCalls();
}

void setTimeLimit() {
    setTimer(1);
}

void clearTimeLimit() {
    setTimer(0);
}

}  // namespace tavo
