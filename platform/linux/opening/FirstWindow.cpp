#include "platform/linux/opening/FirstWindow.h"

#include <utility>
#include <vector>

namespace tavo {
namespace {

constexpr std::chrono::seconds kBetweenUntoldChecks{5};

}  // namespace

// Main thread, but for the weak pointers to it.
class FirstWindow::Waiting : public std::enable_shared_from_this<Waiting> {
public:
    struct Wait {
        RunningApplication application;
        std::shared_ptr<PendingLaunch> start;
        std::function<void()> seen;
    };

    Waiting(MainQueue& mainQueue, RunningApplications& running)
        : mainQueue_(mainQueue), running_(running) {}

    MainQueue& mainQueue() { return mainQueue_; }

    void add(Wait wait) {
        if (waits_.empty()) {
            changes_ = running_.onWindowsChanged([this] { checkSoon(); });
        }
        waits_.push_back(std::move(wait));
        check();
        checkLater();
    }

private:
    // One check for all that the window system tells at once.
    void checkSoon() {
        if (!std::exchange(checksSoon_, true)) {
            mainQueue_.async([self = weak_from_this()] {
                if (const auto alive = self.lock()) {
                    alive->checksSoon_ = false;
                    alive->check();
                }
            });
        }
    }

    void checkLater() {
        if (!waits_.empty() && !std::exchange(checksLater_, true)) {
            mainQueue_.asyncAfter(kBetweenUntoldChecks, [self = weak_from_this()] {
                if (const auto alive = self.lock()) {
                    alive->checksLater_ = false;
                    alive->check();
                    alive->checkLater();
                }
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

    MainQueue& mainQueue_;
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
        waiting_->mainQueue().async([waiting = std::weak_ptr(waiting_),
                                     wait = Waiting::Wait{application, start, std::move(seen)}] {
            if (const auto alive = waiting.lock()) {
                alive->add(wait);
            }
        });
    }
}

}  // namespace tavo
