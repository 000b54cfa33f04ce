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

// The answer to one opening, which several events can give: the first one counts. On the
// bus thread.
class OpenAnswer {
public:
    OpenAnswer(OpenCompletion completion, std::shared_ptr<PendingLaunch> start)
        : completion_(std::move(completion)), start_(std::move(start)) {}

    void succeed(const std::optional<RunningApplication>& running) { answer(running, {}); }

    // A failure ends the start, too.
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

    // Calls the callback of whenOver(), though the start itself may go on until a service answers.
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
    std::string searchPath;  // PATH as children have it
    std::string display;     // of an X11 session, else empty
    bool wayland = false;
    std::chrono::milliseconds patience{0};      // for an early end
    std::chrono::milliseconds busPatience{0};   // for an activation's answer
    std::chrono::milliseconds startingTime{0};  // for the first window
    std::function<bool()> seesWindows;          // called on any thread; may be empty
};

struct ApplicationStart {
    std::shared_ptr<const StartConditions> conditions;
    ApplicationFile file;
    std::string address;                   // for the application to open; may be empty
    std::string identifier;                // of the entry, or the name of the bundle's folder
    std::string home;                      // a folder that exists
    std::vector<std::string> environment;  // of the program, complete
    std::string startupId;                 // also in the environment; may be empty
    std::string activationToken;           // likewise
    std::shared_ptr<OpenAnswer> answer;
    std::function<void(const RunningApplication&)> began;  // called when it has begun
};

// Any thread; returns at once. What may wait happens in the background of `thread`, all else on it.
//
// A bundle's program and an entry's command are started, the latter in a terminal if the entry
// wants one. An entry that can be activated over the session bus is activated instead, and fails
// when the bus does not answer: its command might start a second instance.
void startApplication(OpeningThread& thread, const std::shared_ptr<const ApplicationStart>& start);

}  // namespace tavo
