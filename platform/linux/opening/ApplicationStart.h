// One start of one application, an entry or a bundle, from the click to its first window.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Workspace.h"
#include "platform/linux/opening/ApplicationFile.h"
#include "platform/linux/opening/OpeningThread.h"
#include "platform/linux/opening/PendingLaunches.h"

namespace tavo {

// The answer to one call of openApplication(). Several events can give it; the first counts. Use it
// on the bus thread.
class OpenAnswer {
public:
    OpenAnswer(OpenCompletion completion, std::shared_ptr<PendingLaunch> start)
        : completion_(std::move(completion)), start_(std::move(start)) {}

    void succeed(const std::optional<RunningApplication>& running) { answer(running, {}); }

    // Ends the start, and answers with an error.
    void fail(Error error) {
        over();
        answer({}, std::move(error));
    }

    // Ends the start, because the application shows a window or has ended: it may be started
    // again, and the callback of whenOver() is called.
    void over() {
        start_->over();
        timeIsUp();
    }

    // The start took too long to count as under way: calls the callback of whenOver(). The object
    // lives on until a service that is being activated over D-Bus has answered.
    void timeIsUp() {
        time_.end();
        if (const auto told = std::exchange(whenOver_, nullptr)) {
            told();
        }
    }

    // `told` is called once, by over() or timeIsUp(). `time`: the timer that calls timeIsUp().
    void whenOver(std::function<void()> told, ScopedSource time) {
        whenOver_ = std::move(told);
        time_ = std::move(time);
    }

    [[nodiscard]] const std::shared_ptr<PendingLaunch>& start() { return start_; }

private:
    void answer(const std::optional<RunningApplication>& running, std::optional<Error> error) {
        if (const OpenCompletion completion = std::exchange(completion_, nullptr)) {
            completion(running, std::move(error));
        }
    }

    OpenCompletion completion_;
    std::function<void()> whenOver_;
    ScopedSource time_;
    const std::shared_ptr<PendingLaunch> start_;
};

// What all starts of one workspace have in common.
struct StartConditions {
    std::string searchPath;  // PATH of started programs
    std::string display;     // DISPLAY of an X11 session, else empty
    bool wayland = false;
    std::chrono::milliseconds patience{0};      // how long an early end is watched for
    std::chrono::milliseconds busPatience{0};   // how long a service may take to answer
    std::chrono::milliseconds startingTime{0};  // how long the first window may take
};

struct ApplicationStart {
    std::shared_ptr<const StartConditions> conditions;
    ApplicationFile file;
    std::string address;                   // for the application to open; may be empty
    std::string identifier;                // of the entry, or the name of the bundle's folder
    std::string home;                      // a folder that exists
    std::vector<std::string> environment;  // of the program, complete
    std::string startupId;                 // also in the environment; may be empty
    std::string activationToken;           // also in the environment; may be empty
    bool seesWindows = false;              // whether its first window can be seen
    std::shared_ptr<OpenAnswer> answer;
    std::function<void(const RunningApplication&)> began;  // called when the program runs
};

// Starts the application. Any thread; returns at once. What may block runs in the background of
// `thread`, everything else on the bus thread.
void startApplication(OpeningThread& thread, const std::shared_ptr<const ApplicationStart>& start);

}  // namespace tavo
