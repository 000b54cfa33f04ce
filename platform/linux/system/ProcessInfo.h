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

// When the process started, in clock ticks since boot; absent also for a zombie.
std::optional<std::uint64_t> processStartTime(pid_t process);

// The PID of the process's parent; 0: none.
pid_t processParent(pid_t process);

// Whether `process` belongs to the effective user of this process.
[[nodiscard]] bool isOwnProcess(pid_t process);

// The path of the program that `process` runs; where the file has been replaced or removed since,
// the path that it had. Absent for processes of other users and of the kernel.
std::optional<std::string> processExecutable(pid_t process);

// The path of the desktop entry that `process` was started from: GIO_LAUNCHED_DESKTOP_FILE in its
// environment, if GIO_LAUNCHED_DESKTOP_FILE_PID is its own PID. With another PID the process has
// only inherited the variables. "": not known.
std::string processDesktopFile(pid_t process);

// The PID of the process's session leader (setsid(2)); 0: none.
pid_t sessionLeader(pid_t process);

// Whether `wrapper` is an ancestor of `process` that only runs it and waits for it, as shells and
// timeout(1) do. Every process between the two must be such a wrapper, too. False once `wrapper`
// has ended.
[[nodiscard]] bool isWrappedBy(pid_t process, pid_t wrapper);

}  // namespace tavo
