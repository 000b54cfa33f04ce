// Facts about a running process, from /proc (proc(5)). Any thread.
//
// A process may end between two calls, and its PID may be given to another one: only the start time
// tells the two apart. Every function answers "none" for a PID that is not in use.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <sys/types.h>

namespace tavo {

// In clock ticks since boot; absent also for a zombie.
std::optional<std::uint64_t> processStartTime(pid_t process);

// The PID of its parent; 0: none.
pid_t processParent(pid_t process);

// Whether its user is the one that this process runs as.
[[nodiscard]] bool isOwnProcess(pid_t process);

// The path of the program that it runs, or ran before the file was replaced or removed. Absent for
// processes of other users and of the kernel.
std::optional<std::string> processExecutable(pid_t process);

// The path of the desktop entry that it was started from: GIO_LAUNCHED_DESKTOP_FILE in its
// environment, if GIO_LAUNCHED_DESKTOP_FILE_PID is its own PID. With another PID it has only
// inherited the variables. "": not known.
std::string processDesktopFile(pid_t process);

// The PID of its session leader (setsid(2)); 0: none.
pid_t sessionLeader(pid_t process);

// Whether `wrapper` is an ancestor of `process` that only runs it and waits for it. So are shells,
// timeout(1) and the like; they, and nothing else, may stand between the two. False once the
// wrapper has ended.
[[nodiscard]] bool isWrappedBy(pid_t process, pid_t wrapper);

}  // namespace tavo
