#include "platform/linux/compositors/BusCompositorWindows.h"

#include <QGuiApplication>
#include <QWindow>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "platform/linux/dbus/SessionBus.h"

namespace tavo {
namespace {

// A question that the main thread waits for and the bus thread answers.
class Question {
public:
    void answer(std::optional<BusWindows> answer) {
        const std::lock_guard lock(mutex_);
        answer_ = std::move(answer);
        answered_ = true;
        change_.notify_one();
    }

    std::optional<BusWindows> wait(std::chrono::milliseconds patience) {
        std::unique_lock lock(mutex_);
        change_.wait_for(lock, patience, [this] { return answered_; });
        return std::exchange(answer_, std::nullopt);
    }

private:
    std::mutex mutex_;
    std::condition_variable change_;
    std::optional<BusWindows> answer_;  // under the mutex, as is the next
    bool answered_ = false;
};

// The part that lives on the bus thread, until the last job there has let go of it.
struct Listers {
    std::vector<std::unique_ptr<BusWindowLister>> all;
    BusCalls calls;

    void ask(std::size_t index, SessionBus& bus, const std::shared_ptr<Question>& question) {
        if (index == all.size() || bus.connection() == nullptr) {
            question->answer(std::nullopt);
            return;
        }
        all[index]->list(bus.connection(), calls,
                         [this, index, &bus, question](std::optional<BusWindows> windows) {
                             if (windows) {
                                 latest = index;
                                 question->answer(std::move(windows));
                             } else {
                                 ask(index + 1, bus, question);
                             }
                         });
    }

    std::size_t latest = 0;  // the one that has answered last
};

class BusCompositorWindows final : public CompositorWindows {
public:
    BusCompositorWindows(SessionBus& bus, std::vector<std::unique_ptr<BusWindowLister>> listers,
                         std::chrono::milliseconds patience)
        : bus_(bus), patience_(patience), listers_(std::make_unique<Listers>()) {
        listers_->all = std::move(listers);
    }
    BusCompositorWindows(const BusCompositorWindows&) = delete;
    BusCompositorWindows& operator=(const BusCompositorWindows&) = delete;
    ~BusCompositorWindows() override {
        bus_.thread().postAndWait([this] { listers_.reset(); });
    }

    std::unique_ptr<CompositorWindowList> list() override {
        const auto question = std::make_shared<Question>();
        bus_.thread().post([this, question] {
            // Answers to an earlier question are too late.
            listers_->calls.cancel();
            listers_->ask(0, bus_, question);
        });
        std::optional<BusWindows> windows = question->wait(patience_);
        return windows ? std::make_unique<List>(*this, *std::move(windows)) : nullptr;
    }

    Subscription onChanged(std::function<void()> changed) override {
        auto receiver = std::make_shared<QObject>();
        QObject::connect(
            qGuiApp, &QGuiApplication::focusWindowChanged, receiver.get(),
            [changed = std::move(changed),
             before = QGuiApplication::focusWindow() != nullptr](const QWindow* now) mutable {
                // Not from one of our windows to another, as to a menu.
                if (std::exchange(before, now != nullptr) != (now != nullptr)) {
                    changed();
                }
            });
        return Subscription(std::move(receiver));
    }

private:
    class List final : public CompositorWindowList {
    public:
        List(BusCompositorWindows& owner, BusWindows windows)
            : owner_(owner), windows_(std::move(windows)) {}

        std::vector<const CompositorWindow*> windows() const override {
            std::vector<const CompositorWindow*> all;
            for (const BusWindow& window : windows_.windows) {
                all.push_back(&window);
            }
            return all;
        }

        bool knowsActive() const override { return windows_.knowsActive || ownIsActive_; }

        void front(const std::vector<const CompositorWindow*>& windows) override {
            std::vector<std::string> ids;
            for (const CompositorWindow* const window : windows) {
                ids.push_back(static_cast<const BusWindow*>(window)->id);
            }
            owner_.front(std::move(ids));
        }

    private:
        BusCompositorWindows& owner_;
        const BusWindows windows_;
        const bool ownIsActive_ = QGuiApplication::focusWindow() != nullptr;
    };

    void front(std::vector<std::string> ids) {
        bus_.thread().post([this, ids = std::move(ids)] {
            if (bus_.connection() != nullptr) {
                listers_->all[listers_->latest]->front(bus_.connection(), listers_->calls, ids);
            }
        });
    }

    SessionBus& bus_;
    const std::chrono::milliseconds patience_;
    std::unique_ptr<Listers> listers_;  // used on the bus thread only
};

}  // namespace

std::unique_ptr<CompositorWindows> makeBusCompositorWindows(
    SessionBus& bus, std::vector<std::unique_ptr<BusWindowLister>> listers,
    std::chrono::milliseconds patience) {
    return std::make_unique<BusCompositorWindows>(bus, std::move(listers), patience);
}

}  // namespace tavo
