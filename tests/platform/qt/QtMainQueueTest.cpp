#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <memory>
#include <optional>

#include "platform/qt/QtMainQueue.h"
#include "tests/contracts/MainQueueContract.h"

namespace tavo {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Runs the event loop until the condition holds. Waits for events and does not poll.
bool loopUntil(const std::function<bool()>& condition) {
    const auto giveUp = Clock::now() + std::chrono::seconds(60);
    QTimer watchdog;
    watchdog.start(milliseconds(1000));
    while (!condition() && Clock::now() < giveUp) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return condition();
}

struct QtMainQueueRig {
    MainQueue& queue() { return *real; }
    void end() { real.reset(); }
    static bool runUntil(const std::function<bool()>& condition) { return loopUntil(condition); }

    static void settle() {
        for (int i = 0; i < 5; ++i) {
            QCoreApplication::processEvents();
        }
    }

    std::unique_ptr<MainQueue> real = makeQtMainQueue();
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, MainQueueContract, QtMainQueueRig);

TEST(QtMainQueue, a_delay_is_never_shorter_than_asked_for) {
    const auto queue = makeQtMainQueue();
    for (const int delay : {1, 7, 30}) {
        const auto start = Clock::now();
        std::optional<Clock::duration> took;
        queue->asyncAfter(milliseconds(delay), [&] { took = Clock::now() - start; });
        ASSERT_TRUE(loopUntil([&] { return took.has_value(); }));
        EXPECT_GE(*took, milliseconds(delay));
    }
}

TEST(QtMainQueue, a_shorter_delay_given_later_overtakes_a_longer_one_under_way) {
    const auto queue = makeQtMainQueue();
    bool late = false;
    bool early = false;
    queue->asyncAfter(std::chrono::hours(1), [&] { late = true; });
    QtMainQueueRig::settle();
    queue->asyncAfter(milliseconds(5), [&] { early = true; });
    EXPECT_TRUE(loopUntil([&] { return early; }));
    EXPECT_FALSE(late);
}

TEST(QtMainQueue, a_block_added_by_a_block_lets_other_events_come_first) {
    const auto queue = makeQtMainQueue();
    QObject receiver;
    int blocks = 0;
    int blocksBeforeEvent = -1;
    std::function<void()> again = [&] {
        if (++blocks < 1000) {
            queue->async(again);
        }
    };
    queue->async(again);
    QMetaObject::invokeMethod(
        &receiver, [&] { blocksBeforeEvent = blocks; }, Qt::QueuedConnection);
    ASSERT_TRUE(loopUntil([&] { return blocks == 1000; }));
    EXPECT_GE(blocksBeforeEvent, 0);
    EXPECT_LT(blocksBeforeEvent, 1000);
}

TEST(QtMainQueue, a_block_may_end_the_queue) {
    auto queue = makeQtMainQueue();
    bool ran = false;
    queue->async([&] { queue.reset(); });
    queue->async([&] { ran = true; });
    EXPECT_TRUE(loopUntil([&] { return queue == nullptr; }));
    QtMainQueueRig::settle();
    EXPECT_FALSE(ran);
}

TEST(QtMainQueue, a_delayed_block_may_end_the_queue) {
    auto queue = makeQtMainQueue();
    queue->asyncAfter(milliseconds(1), [&] { queue.reset(); });
    EXPECT_TRUE(loopUntil([&] { return queue == nullptr; }));
    QtMainQueueRig::settle();
}

TEST(QtMainQueue, blocks_go_on_while_one_of_them_waits_in_an_event_loop) {
    auto queue = makeQtMainQueue();
    std::vector<int> notes;
    queue->async([&] {
        QEventLoop inner;
        queue->async([&] {
            notes.push_back(1);
            inner.quit();
        });
        inner.exec();
        notes.push_back(2);
    });
    EXPECT_TRUE(loopUntil([&] { return notes.size() == 2; }));
    EXPECT_EQ(notes, (std::vector<int>{1, 2}));
}

TEST(QtMainQueue, the_queue_may_end_in_an_event_loop_that_a_block_runs) {
    auto queue = makeQtMainQueue();
    bool done = false;
    queue->async([&] {
        QEventLoop inner;
        queue->async([&] {
            queue.reset();
            inner.quit();
        });
        inner.exec();
        done = true;
    });
    EXPECT_TRUE(loopUntil([&] { return done; }));
}

}  // namespace
}  // namespace tavo
