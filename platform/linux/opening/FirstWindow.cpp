#include "platform/linux/opening/FirstWindow.h"

#include <utility>
#include <vector>

#include "platform/MainThreadPoster.h"

namespace tavo {
namespace {

constexpr std::chrono::seconds kBetweenUntoldChecks{5};

}  // namespace

// The applications whose first window is awaited. Use on the main thread only; addSoon() may be
// called on any thread.
class FirstWindow::Waiting {
public:
    struct Wait {
        RunningApplication application;
        std::shared_ptr<PendingLaunch> start;
        std::function<void()> seen;
    };

    Waiting(MainQueue& mainQueue, RunningApplications& running)
        : mainThread_(mainQueue), running_(running) {}

    // Adds `wait`, later, on the main thread. May be called on any thread.
    void addSoon(Wait wait) {
        mainThread_.post([this, wait = std::move(wait)] {
            if (waits_.empty()) {
                changes_ = running_.onWindowsChanged([this] { checkSoon(); });
            }
            waits_.push_back(wait);
            check();
            checkLater();
        });
    }

private:
    // Makes one check for all changes that the window system reports together.
    void checkSoon() {
        if (!std::exchange(checksSoon_, true)) {
            mainThread_.post([this] {
                checksSoon_ = false;
                check(true);
            });
        }
    }

    void checkLater() {
        if (!waits_.empty() && !std::exchange(checksLater_, true)) {
            mainThread_.postAfter(kBetweenUntoldChecks, [this] {
                checksLater_ = false;
                check();
                checkLater();
            });
        }
    }

    // `changed`: the window system has reported a change.
    void check(bool changed = false) {
        std::vector<Wait> seen;
        std::erase_if(waits_, [&](Wait& wait) {
            if (!wait.start->lasts()) {
                return true;
            }
            if (running_.showsWindow(wait.application)) {
                seen.push_back(std::move(wait));
                return true;
            }
            if (changed && !running_.listsWindows()) {
                wait.start->over();
                return true;
            }
            return false;
        });
        if (waits_.empty()) {
            changes_.end();
        }
        for (const Wait& wait : seen) {
            wait.start->over();
            wait.seen();
        }
    }

    MainThreadPoster mainThread_;
    RunningApplications& running_;
    std::vector<Wait> waits_;
    Subscription changes_;  // while there are waits
    bool checksSoon_ = false;
    bool checksLater_ = false;
};

FirstWindow::FirstWindow(MainQueue& mainQueue, RunningApplications* running)
    : waiting_(running != nullptr ? std::make_shared<Waiting>(mainQueue, *running) : nullptr) {}

void FirstWindow::await(const RunningApplication& application,
                        const std::shared_ptr<PendingLaunch>& start,
                        std::function<void()> seen) const {
    if (waiting_) {
        waiting_->addSoon({application, start, std::move(seen)});
    }
}

}  // namespace tavo
