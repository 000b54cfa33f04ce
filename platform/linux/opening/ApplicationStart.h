// One start of one application, an entry or a bundle, from the click to its first window.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

#include "platform/Workspace.h"
#include "platform/linux/dbus/GLibThread.h"
#include "platform/linux/opening/GioLaunchContext.h"
#include "platform/linux/opening/PendingLaunches.h"

namespace tavo {

// A completion that can be answered from several sides; the first answer is the one that counts.
// On the workspace's thread.
class OpenAnswer {
public:
    OpenAnswer(OpenCompletion completion, std::shared_ptr<PendingLaunch> start)
        : completion_(std::move(completion)), start_(std::move(start)) {}

    void succeed(const std::optional<RunningApplication>& running) { answer(running, {}); }
    // The start is over with it.
    void fail(Error error) {
        over();
        answer({}, std::move(error));
    }

    // The application shows a window, or has ended: it may be started again, and whoever waits for
    // that by whenOver() is told.
    void over() {
        start_->over();
        timeIsUp();
    }

    // Whoever waits by whenOver() is told, also when the start itself goes on because its answer
    // is still to come.
    void timeIsUp() {
        time_.end();
        if (const auto told = std::exchange(whenOver_, nullptr)) {
            told();
        }
    }

    // `told` is called once, by over() or timeIsUp(); `time` is what will call the latter.
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
    std::string searchPath;              // PATH as children have it
    std::vector<std::string> languages;  // of entries' names, the preferred one first
    std::string display;                 // of an X11 session, else empty
    bool wayland = false;
    std::chrono::milliseconds patience{0};      // for an early end
    std::chrono::milliseconds busPatience{0};   // for an activation's answer
    std::chrono::milliseconds startingTime{0};  // for the first window
    std::function<bool()> seesWindows;          // called on the workspace's thread; may be empty
};

struct ApplicationStart {
    std::shared_ptr<const StartConditions> conditions;
    std::string path;
    std::string identifier;
    std::string home;                      // a folder that exists
    std::vector<std::string> environment;  // of the program, whole
    LaunchContext context;                 // the same for GIO
    std::string startupId;                 // in the environment; may be empty
    std::string activationToken;           // likewise
    std::shared_ptr<OpenAnswer> answer;
    std::function<void(const RunningApplication&)> began;  // called when it has begun
};

// On `thread`: what there is to do about the program of `start` while it runs. `ended` is called as
// GLibThread::watchChild says.
void superviseProgram(GLibThread& thread, const ApplicationStart& start,
                      const RunningApplication& running,
                      std::function<void(std::optional<int>)> ended);

}  // namespace tavo
