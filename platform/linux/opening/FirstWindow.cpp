#include "platform/linux/opening/FirstWindow.h"

#include <utility>
#include <vector>

#include "platform/MainThreadPoster.h"

namespace tavo {
namespace {

constexpr std::chrono::seconds kBetweenUntoldChecks{5};

}  // namespace

// Main thread, but for addSoon().
class FirstWindow::Waiting {
public:
    struct Wait {
        RunningApplication application;
        std::shared_ptr<PendingLaunch> start;
        std::function<void()> seen;
    };

    Waiting(MainQueue& mainQueue, RunningApplications& running)
        : mainThread_(mainQueue), running_(running) {}

    // Any thread.
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
    // One check for all that the window system tells at once.
    void checkSoon() {
        if (!std::exchange(checksSoon_, true)) {
            mainThread_.post([this] {
                checksSoon_ = false;
                check();
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

    void check() {
        std::vector<Wait> seen;
        std::erase_if(waits_, [&](Wait& wait) {
            const bool ends = !wait.start->lasts();
            const bool shows = !ends && running_.showsWindow(wait.application);
            if (shows) {
                seen.push_back(std::move(wait));
            }
            return ends || shows;
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
