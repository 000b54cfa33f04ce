#include <QCoreApplication>
#include <csignal>

#include <gtest/gtest.h>

#include "platform/qt/TerminationSignals.h"

namespace tavo {
namespace {

class EachSignal : public testing::TestWithParam<int> {};

TEST_P(EachSignal, is_heard_in_the_event_loop_and_has_its_usual_effect_the_second_time) {
    int asked = 0;
    const auto listening = listenForTermination([&asked] { ++asked; });
    ::raise(GetParam());
    EXPECT_EQ(asked, 0);
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_EQ(asked, 1);
    struct sigaction now = {};
    ::sigaction(GetParam(), nullptr, &now);
    EXPECT_EQ(now.sa_handler, SIG_DFL);
}

TEST_P(EachSignal, that_was_ignored_stays_ignored) {
    struct sigaction before = {};
    struct sigaction ignored = {};
    ignored.sa_handler = SIG_IGN;
    ::sigaction(GetParam(), &ignored, &before);
    {
        const auto listening = listenForTermination([] {});
        struct sigaction now = {};
        ::sigaction(GetParam(), nullptr, &now);
        EXPECT_EQ(now.sa_handler, SIG_IGN);
    }
    ::sigaction(GetParam(), &before, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Signals, EachSignal, testing::Values(SIGTERM, SIGINT, SIGHUP));

}  // namespace
}  // namespace tavo
