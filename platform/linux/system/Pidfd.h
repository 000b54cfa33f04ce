// pidfds: descriptors that stand for a process.
#pragma once

#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include "platform/posix/FileDescriptor.h"

namespace tavo {

// A descriptor that becomes readable when `process`, a child that has not been reaped, ends. Closed
// on exec. Invalid where the kernel refuses one (Linux before 5.3, a sandbox, too many
// descriptors). Calls the system call by its number because the declaration in glibc 2.36 cannot be
// used from C++.
inline FileDescriptor openPidfd(pid_t process) {
    return FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
}

}  // namespace tavo
