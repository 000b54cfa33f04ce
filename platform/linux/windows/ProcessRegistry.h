// The processes that were told to somebody by their number, and what is known of them.
//
// A number may mean another process by the time it comes back; the start time tells.
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

// One thread at a time. Processes that have ended are forgotten when their number comes again, and
// when there are many (256).
class ProcessRegistry {
public:
    // What tells processes of one number apart; absent when there is none.
    using StartTime = std::function<std::optional<std::uint64_t>(pid_t)>;

    explicit ProcessRegistry(StartTime startTime = processStartTime)
        : startTime_(std::move(startTime)) {}

    // Remembers which process has the number now. What was known of an earlier one goes.
    void remember(pid_t process) { now(process); }

    // Remembers that it was started as this application, unless it is known as something already.
    void rememberStart(pid_t process, const std::string& identifier);

    // False when the number has come to mean another process than the remembered one.
    [[nodiscard]] bool isSame(pid_t process) const;

    // Whether it is remembered, and the number still means that process.
    [[nodiscard]] bool isKnown(pid_t process) const {
        return known_.contains(process) && isSame(process);
    }

    // The program it runs; absent when the number has come to mean another process.
    [[nodiscard]] std::optional<std::string> executable(pid_t process) const;

    // The application as which it was started; empty when nobody told.
    [[nodiscard]] std::string startedAs(pid_t process) const;

private:
    struct Known {
        std::uint64_t startTime = 0;
        std::string startedAs;
    };

    // Null when there is no such process.
    Known* now(pid_t process);

    StartTime startTime_;
    std::unordered_map<pid_t, Known> known_;
};

// As which applications processes were started, for one look at many of them. What it is made with
// outlives it.
class ProcessStarts {
public:
    ProcessStarts(const ProcessRegistry& processes, const WindowMatcher& matcher)
        : processes_(processes), matcher_(matcher) {}

    // As it was told, else the listed entry that GIO started the process from. Of a process about
    // which neither is known, the same of the leader of its session, when that only wraps it
    // (Exec=sh -c "prog; true"): whatever is started from an entry gets a session of its own, so
    // does the shell in a terminal, and what is started by hand there is not the entry's. Empty
    // when not known.
    [[nodiscard]] std::string of(pid_t process);

private:
    [[nodiscard]] std::string ofItself(pid_t process) const;

    const ProcessRegistry& processes_;
    const WindowMatcher& matcher_;
    std::unordered_map<pid_t, std::string> leaders_;  // most processes share a few
};

}  // namespace tavo
