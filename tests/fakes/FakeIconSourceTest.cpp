#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "tests/contracts/IconSourceContract.h"
#include "tests/fakes/FakeIconSource.h"

namespace tavo {
namespace {

class FakeWorld {
public:
    FakeWorld() { source_.haveNoIcon(applicationWithoutIcon()); }

    IconSource& source() { return source_; }
    std::string application(int number) { return "/opt/" + std::to_string(number) + ".app"; }
    std::string applicationWithoutIcon() { return "/opt/none.app"; }

private:
    FakeIconSource source_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, IconSourceContract, FakeWorld);

TEST(FakeIconSource, remembers_requests_in_order) {
    FakeIconSource source;
    (void)source.icon("/a", 68, 1);
    (void)source.icon("/b", 16, 2);
    const std::vector<FakeIconSource::Request> expected = {{"/a", 68, 1}, {"/b", 16, 2}};
    EXPECT_EQ(source.requests(), expected);
}

TEST(FakeIconSource, holds_answers_back_until_told) {
    FakeIconSource source;
    source.hold();
    std::atomic<int> answers = 0;
    {
        std::jthread first([&] { answers += source.icon("/a", 8, 1).side; });
        std::jthread second([&] { answers += source.icon("/b", 8, 1).side; });
        EXPECT_TRUE(source.awaitRequests(2));
        EXPECT_EQ(answers, 0);
        source.release(1);
        source.release(1);
    }
    EXPECT_EQ(answers, 16);
    source.releaseAll();
    EXPECT_EQ(source.icon("/c", 8, 1).side, 8);
}

}  // namespace
}  // namespace tavo
