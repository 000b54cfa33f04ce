// Remembers PIDs with the start times of their processes, so that a recycled PID is never taken for
// the old process.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

#include <sys/types.h>

#include "platform/linux/system/ProcessInfo.h"
#include "platform/linux/windows/WindowMatcher.h"

namespace tavo {

// One thread at a time. What is known of a process that has ended is dropped when its PID is next
// remembered.
class ProcessRegistry {
public:
    // The start time of the process that has the PID; absent when there is none.
    using StartTime = std::function<std::optional<std::uint64_t>(pid_t)>;

    explicit ProcessRegistry(StartTime startTime = processStartTime)
        : startTime_(std::move(startTime)) {}

    // Remembers the process that has the PID now, instead of any earlier one.
    void remember(pid_t process) { now(process); }

    // Like remember(), and also stores that the process was started as the application
    // `identifier`, unless that is known already.
    void rememberStart(pid_t process, const std::string& identifier);

    // False when the PID was remembered and now belongs to another process.
    [[nodiscard]] bool isSame(pid_t process) const;

    // Whether the PID is remembered and still belongs to that process.
    [[nodiscard]] bool isKnown(pid_t process) const {
        return known_.contains(process) && isSame(process);
    }

    // The path of the program that the process runs; absent unless isSame().
    [[nodiscard]] std::optional<std::string> executable(pid_t process) const;

    // The identifier that rememberStart() stored for `process`. Empty when none was stored, or when
    // the PID now belongs to another process.
    [[nodiscard]] std::string startedAs(pid_t process) const;

private:
    struct Known {
        std::uint64_t startTime = 0;
        std::string startedAs;
    };

    // The record of the process that has the PID now, made if need be; null when there is no such
    // process.
    Known* now(pid_t process);

    StartTime startTime_;
    std::unordered_map<pid_t, Known> known_;
};

// Finds the applications that processes were started as. Keeps what it learns of session leaders,
// so make a new one for each pass over the windows. The constructor's arguments must outlive it.
class ProcessStarts {
public:
    ProcessStarts(const ProcessRegistry& processes, const WindowMatcher& matcher)
        : processes_(processes), matcher_(matcher) {}

    // The identifier that rememberStart() stored, else that of the listed entry that GIO started
    // the process from (GIO_LAUNCHED_DESKTOP_FILE). Where both are missing, the identifier of the
    // process's session leader, if the leader only wraps the process (Exec=sh -c "prog; true"). The
    // leader is asked because a program that is started from an entry has a session of its own. So
    // has the shell in a terminal, so that programs started there by hand are not taken for the
    // terminal's entry. Empty when not known.
    [[nodiscard]] std::string of(pid_t process);

private:
    [[nodiscard]] std::string ofItself(pid_t process) const;

    const ProcessRegistry& processes_;
    const WindowMatcher& matcher_;
    std::unordered_map<pid_t, std::string> leaders_;  // few, shared by most processes
};

}  // namespace tavo
