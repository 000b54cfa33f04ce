// Which applications are on their way up.
//
// An application that takes seconds to show itself gets clicked again; starting it once more would
// make two of it. This remembers what was started, for as long as it counts as starting.
#pragma once

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <string>

namespace tavo {

// One start. Any thread.
class PendingLaunch {
public:
    using Clock = std::chrono::steady_clock;

    explicit PendingLaunch(Clock::time_point end) : end_(end) {}

    // Its window is there, or it has ended or failed.
    void over() { over_ = true; }

    // From now on its time has no end of its own: somebody is sure to call answered() or
    // over().
    void awaitAnswer() { awaited_ = true; }

    // It is there: what is left of its time counts again.
    void answered() { awaited_ = false; }

    [[nodiscard]] bool lasts() const { return !over_ && (awaited_ || Clock::now() < end_); }

private:
    const Clock::time_point end_;
    std::atomic<bool> over_ = false;
    std::atomic<bool> awaited_ = false;
};

// One thread.
class PendingLaunches {
public:
    // `time`: how long a start lasts when nothing is heard of it.
    explicit PendingLaunches(std::chrono::milliseconds time) : time_(time) {}

    // A new start of the application at `path`; none while an earlier one lasts.
    [[nodiscard]] std::shared_ptr<PendingLaunch> begin(const std::string& path);

    // A start that keeps no other from beginning.
    [[nodiscard]] std::shared_ptr<PendingLaunch> beginUnnoticed() const;

private:
    const std::chrono::milliseconds time_;
    std::map<std::string, std::shared_ptr<const PendingLaunch>> starts_;
};

}  // namespace tavo
