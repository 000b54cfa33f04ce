#include "platform/qt/QtMainQueue.h"

#include <QBasicTimer>
#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <algorithm>
#include <limits>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

namespace tavo {
namespace {

using Clock = std::chrono::steady_clock;
using Block = std::function<void()>;

// When a block is due, and its place among those that are due at the same moment.
using Moment = std::pair<Clock::time_point, std::uint64_t>;

// The blocks that wait. Any thread. std::mutex, because the thread sanitizer does not see how Qt's
// mutex hands a block from one thread to another.
class WaitingBlocks {
public:
    // True when no event is on its way to the main thread: the caller must then send one.
    bool add(Clock::time_point when, Block block) {
        const std::lock_guard lock(mutex_);
        blocks_.emplace(Moment(when, nextTurn_++), std::move(block));
        return !std::exchange(eventPosted_, true);
    }

    // Begins a turn of the event loop. Pass the answer to takeDue(), which leaves blocks added from
    // now on to the next turn.
    std::uint64_t beginTurn() {
        const std::lock_guard lock(mutex_);
        eventPosted_ = false;
        return nextTurn_;
    }

    // The first block due at `now` among those added before `turn`.
    Block takeDue(Clock::time_point now, std::uint64_t turn) {
        const std::lock_guard lock(mutex_);
        for (auto next = blocks_.begin(); next != blocks_.end() && next->first.first <= now;
             ++next) {
            if (next->first.second < turn) {
                Block block = std::move(next->second);
                blocks_.erase(next);
                return block;
            }
        }
        return {};
    }

    std::optional<Clock::time_point> firstMoment() {
        const std::lock_guard lock(mutex_);
        return blocks_.empty() ? std::nullopt : std::optional(blocks_.begin()->first.first);
    }

    // Drops all blocks.
    void end() {
        std::map<Moment, Block> dropped;  // what they hold is released outside the lock
        const std::lock_guard lock(mutex_);
        ended_ = true;
        dropped.swap(blocks_);
    }

    bool ended() {
        const std::lock_guard lock(mutex_);
        return ended_;
    }

private:
    std::mutex mutex_;
    std::map<Moment, Block> blocks_;
    std::uint64_t nextTurn_ = 0;
    bool eventPosted_ = false;  // posted and not delivered yet
    bool ended_ = false;
};

class Runner final : public QObject {
public:
    explicit Runner(std::shared_ptr<WaitingBlocks> waiting) : waiting_(std::move(waiting)) {}

    void wake() { QCoreApplication::postEvent(this, new QEvent(QEvent::User)); }

protected:
    void customEvent(QEvent* /*event*/) override { runDue(); }
    void timerEvent(QTimerEvent* /*event*/) override { runDue(); }

private:
    // A block may run an event loop of its own, which runs the other blocks, and may destroy the
    // queue with this runner: after a block no member is used until the queue is known to live.
    void runDue() {
        const std::shared_ptr<WaitingBlocks> waiting = waiting_;
        const Clock::time_point now = Clock::now();
        const std::uint64_t turn = waiting->beginTurn();
        while (const Block block = waiting->takeDue(now, turn)) {
            block();
        }
        if (!waiting->ended()) {
            waitForNext();
        }
    }

    void waitForNext() {
        if (const auto next = waiting_->firstMoment()) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(*next - Clock::now());
            timer_.start(static_cast<int>(std::clamp<std::int64_t>(
                             left.count(), 0, std::numeric_limits<int>::max())),
                         Qt::PreciseTimer, this);
        } else {
            timer_.stop();
        }
    }

    std::shared_ptr<WaitingBlocks> waiting_;
    QBasicTimer timer_;
};

class QtMainQueue final : public MainQueue {
public:
    QtMainQueue() : waiting_(std::make_shared<WaitingBlocks>()), runner_(waiting_) {}
    QtMainQueue(const QtMainQueue&) = delete;
    QtMainQueue& operator=(const QtMainQueue&) = delete;
    ~QtMainQueue() override { waiting_->end(); }

    void async(Block block) override { asyncAfter(std::chrono::milliseconds(0), std::move(block)); }

    void asyncAfter(std::chrono::milliseconds delay, Block block) override {
        const auto wait = std::max(delay, std::chrono::milliseconds(0));
        if (waiting_->add(Clock::now() + wait, std::move(block))) {
            runner_.wake();
        }
    }

private:
    std::shared_ptr<WaitingBlocks> waiting_;
    Runner runner_;
};

}  // namespace

std::unique_ptr<MainQueue> makeQtMainQueue() {
    return std::make_unique<QtMainQueue>();
}

}  // namespace tavo
