#include "platform/linux/renderer/Confinement.h"

#include <array>
#include <cerrno>
#include <cstdint>
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

// Refuses, by seccomp, the system calls with which a process reaches other processes, the network
// or the rest of the system. A filter sees numbers, but not what pointers point to. So calls that
// pass their flags in a structure fail with ENOSYS, and the C library uses the older ones.
void refuseSystemCalls() {
    const scmp_filter_ctx filter = ::seccomp_init(SCMP_ACT_ALLOW);
    if (filter == nullptr) {
        return;
    }
    const auto refuse = [filter](std::uint32_t action, std::initializer_list<int> calls) {
        for (const int call : calls) {
            ::seccomp_rule_add(filter, action, call, 0);
        }
    };
    refuse(SCMP_ACT_ERRNO(ENOSYS), {SCMP_SYS(clone3), SCMP_SYS(openat2), SCMP_SYS(io_uring_setup)});
    refuse(SCMP_ACT_ERRNO(EPERM),
           {// the network
            SCMP_SYS(socket), SCMP_SYS(socketpair), SCMP_SYS(connect), SCMP_SYS(bind),
            SCMP_SYS(listen), SCMP_SYS(accept), SCMP_SYS(accept4),
            // processes
            SCMP_SYS(execve), SCMP_SYS(execveat), SCMP_SYS(fork), SCMP_SYS(vfork), SCMP_SYS(kill),
            SCMP_SYS(tkill), SCMP_SYS(pidfd_send_signal), SCMP_SYS(ptrace),
            SCMP_SYS(process_vm_readv), SCMP_SYS(process_vm_writev), SCMP_SYS(pidfd_getfd),
            SCMP_SYS(setsid), SCMP_SYS(setpgid), SCMP_SYS(prlimit64), SCMP_SYS(setrlimit),
            // files
            SCMP_SYS(creat), SCMP_SYS(unlink), SCMP_SYS(unlinkat), SCMP_SYS(rename),
            SCMP_SYS(renameat), SCMP_SYS(renameat2), SCMP_SYS(mkdir), SCMP_SYS(mkdirat),
            SCMP_SYS(rmdir), SCMP_SYS(link), SCMP_SYS(linkat), SCMP_SYS(symlink),
            SCMP_SYS(symlinkat), SCMP_SYS(mknod), SCMP_SYS(mknodat), SCMP_SYS(truncate),
            SCMP_SYS(ftruncate), SCMP_SYS(chmod), SCMP_SYS(fchmod), SCMP_SYS(fchmodat),
            SCMP_SYS(chown), SCMP_SYS(fchown), SCMP_SYS(lchown), SCMP_SYS(fchownat),
            SCMP_SYS(utime), SCMP_SYS(utimes), SCMP_SYS(futimesat), SCMP_SYS(utimensat),
            SCMP_SYS(setxattr), SCMP_SYS(lsetxattr), SCMP_SYS(fsetxattr), SCMP_SYS(removexattr),
            SCMP_SYS(lremovexattr), SCMP_SYS(fremovexattr), SCMP_SYS(memfd_create),
            // the system
            SCMP_SYS(mount), SCMP_SYS(umount2), SCMP_SYS(unshare), SCMP_SYS(setns), SCMP_SYS(bpf),
            SCMP_SYS(keyctl), SCMP_SYS(add_key), SCMP_SYS(request_key), SCMP_SYS(perf_event_open),
            SCMP_SYS(userfaultfd), SCMP_SYS(shmget), SCMP_SYS(msgget), SCMP_SYS(semget)});
    // clone(2) may make threads: librsvg draws filters with several.
    ::seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), SCMP_SYS(clone), 1,
                       SCMP_A0(SCMP_CMP_MASKED_EQ, CLONE_THREAD, 0));
    for (const std::uint64_t flag : {O_WRONLY, O_RDWR, O_CREAT, O_TRUNC}) {
        ::seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), SCMP_SYS(open), 1,
                           SCMP_A1(SCMP_CMP_MASKED_EQ, flag, flag));
        ::seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), SCMP_SYS(openat), 1,
                           SCMP_A2(SCMP_CMP_MASKED_EQ, flag, flag));
    }
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
    refuseSystemCalls();
}

void setTimeLimit() {
    setTimer(1);
}

void clearTimeLimit() {
    setTimer(0);
}

}  // namespace tavo
