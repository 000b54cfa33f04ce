// A pipe with two ends that close themselves.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/FileDescriptor.h"

namespace tavo {

// Both ends are invalid when the system has no more descriptors.
struct Pipe {
    FileDescriptor reading;
    FileDescriptor writing;
};

// Both ends are closed on exec. Made without pipe2(2), which macOS lacks: a child that another
// thread starts at the same moment may inherit them, unless spawnProgram starts it. Any thread.
inline Pipe makePipe() {
    int ends[2];
    if (::pipe(ends) != 0) {
        return {};
    }
    ::fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    ::fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

}  // namespace tavo
