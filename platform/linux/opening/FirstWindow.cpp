#include "platform/linux/opening/FirstWindow.h"

#include <utility>

namespace tavo {
namespace {

constexpr int kQuickChecks = 20;
constexpr std::chrono::milliseconds kBetweenQuickChecks{100};
constexpr std::chrono::milliseconds kBetweenChecks{500};

}  // namespace

struct FirstWindow::Wait {
    RunningApplication application;
    std::shared_ptr<PendingLaunch> start;
    std::function<void()> seen;
    int checks = 0;
};

FirstWindow::FirstWindow(MainQueue* mainQueue, Shows shows)
    : source_(mainQueue != nullptr && shows
                  ? std::make_shared<const Source>(Source{mainQueue, std::move(shows)})
                  : nullptr) {}

void FirstWindow::await(const RunningApplication& application,
                        const std::shared_ptr<PendingLaunch>& start,
                        std::function<void()> seen) const {
    if (source_) {
        source_->mainQueue->async(
            [source = std::weak_ptr(source_), wait = Wait{application, start, std::move(seen)}] {
                check(source, wait);
            });
    }
}

void FirstWindow::check(const std::weak_ptr<const Source>& source, Wait wait) {
    const auto alive = source.lock();
    if (!alive || !wait.start->lasts()) {
        return;
    }
    if (alive->shows(wait.application)) {
        wait.start->over();
        wait.seen();
        return;
    }
    const auto pause = wait.checks++ < kQuickChecks ? kBetweenQuickChecks : kBetweenChecks;
    alive->mainQueue->asyncAfter(pause, [source, wait = std::move(wait)] { check(source, wait); });
}

}  // namespace tavo
