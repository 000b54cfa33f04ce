// What the system tells of a running process, from /proc (proc(5)). Any thread.
//
// Processes end at any time and their numbers come again: what is absent may never have been, and
// only the start time tells two processes of one number apart.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <sys/types.h>

namespace tavo {

// Ticks since the system started; absent when there is no such process, or it has ended and only
// waits for its parent.
std::optional<std::uint64_t> processStartTime(pid_t process);

// The process that started it, or took it over; 0 when there is no such process.
pid_t processParent(pid_t process);

// Whether the process belongs to the user of this one.
[[nodiscard]] bool isOwnProcess(pid_t process);

// The program it runs, also when its file was replaced or removed meanwhile. Absent for processes
// of other users and of the system.
std::optional<std::string> processExecutable(pid_t process);

// The desktop entry that GIO started it from: GIO_LAUNCHED_DESKTOP_FILE, when
// GIO_LAUNCHED_DESKTOP_FILE_PID says that this very process was meant, and not one that inherited
// the variables. Empty when not known.
std::string processDesktopFile(pid_t process);

// The process that began its session; 0 when there is no such process.
pid_t sessionLeader(pid_t process);

// Whether `wrapper` was started in order to run the process: it and everything between the two are
// shells and others that only run a program and wait for it. Not so for what a program with windows
// of its own starts, nor once the wrapper has ended.
[[nodiscard]] bool isWrappedBy(pid_t process, pid_t wrapper);

}  // namespace tavo
