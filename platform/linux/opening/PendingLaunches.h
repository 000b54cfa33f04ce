// Applications that have been started and show no window yet.
//
// Users click again on an application that takes seconds to show itself, and a second start would
// make two of it. So each start is remembered for as long as the application counts as starting.
#pragma once

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <string>

namespace tavo {

// One start of an application. Any thread.
class PendingLaunch {
public:
    using Clock = std::chrono::steady_clock;

    explicit PendingLaunch(Clock::time_point end) : end_(end) {}

    // Call when the application shows a window, has ended, or could not start.
    void over() { over_ = true; }

    // Suspends the time limit until answered() or over() is called, while an activation over the
    // bus is in flight.
    void awaitAnswer() { awaited_ = true; }

    // Ends the suspension; the time limit has run on meanwhile.
    void answered() { awaited_ = false; }

    [[nodiscard]] bool lasts() const { return !over_ && (awaited_ || Clock::now() < end_); }

private:
    const Clock::time_point end_;
    std::atomic<bool> over_ = false;
    std::atomic<bool> awaited_ = false;
};

// The starts of one workspace's applications. Use on one thread only.
class PendingLaunches {
public:
    // `time`: how long a start lasts unless over() is called before.
    explicit PendingLaunches(std::chrono::milliseconds time) : time_(time) {}

    // A new start of the application at `path`; null while an earlier one lasts. A start that does
    // not `last` is over at once, but for the time in which it awaits an answer.
    [[nodiscard]] std::shared_ptr<PendingLaunch> begin(const std::string& path, bool last = true);

    // A start that does not prevent others of the same application.
    [[nodiscard]] std::shared_ptr<PendingLaunch> beginUnnoticed() const;

private:
    const std::chrono::milliseconds time_;
    std::map<std::string, std::shared_ptr<const PendingLaunch>> starts_;
};

}  // namespace tavo
