// A descriptor that stands for a process.
#pragma once

#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include "platform/posix/FileDescriptor.h"

namespace tavo {

// Readable once `process`, a child not reaped yet, has ended; closed on exec. None where the
// system refuses it (Linux before 5.3, a sandbox, too many descriptors). Called by its number
// because the declaration in glibc 2.36 cannot be used from C++.
inline FileDescriptor openPidfd(pid_t process) {
    return FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
}

}  // namespace tavo
