#include <future>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/entries/PrefetchedApplicationSource.h"

namespace tavo {
namespace {

// What a RecordingSource reports to its test, which no longer owns it.
struct Record {
    std::vector<std::thread::id> threads;  // the thread of each call
    bool ended = false;
};

class RecordingSource final : public ApplicationSource {
public:
    RecordingSource(Record& record, std::shared_future<void> gate)
        : record_(record), gate_(std::move(gate)) {}
    ~RecordingSource() override { record_.ended = true; }

    RecordingSource(const RecordingSource&) = delete;
    RecordingSource& operator=(const RecordingSource&) = delete;

    std::vector<FoundApplication> applications() override {
        gate_.wait();
        record_.threads.push_back(std::this_thread::get_id());
        const std::string call = std::to_string(record_.threads.size());
        return {{"Call " + call, "/" + call}};
    }

private:
    Record& record_;
    std::shared_future<void> gate_;
};

class PrefetchedApplicationSourceTest : public testing::Test {
protected:
    std::unique_ptr<ApplicationSource> make() {
        return makePrefetchedApplicationSource(
            std::make_unique<RecordingSource>(record_, gate_.get_future().share()));
    }

    Record record_;
    std::promise<void> gate_;
};

TEST_F(PrefetchedApplicationSourceTest, the_first_call_gives_the_scan_that_began_before_it) {
    gate_.set_value();
    const auto source = make();
    EXPECT_THAT(source->applications(), testing::ElementsAre(FoundApplication{"Call 1", "/1"}));
    ASSERT_EQ(record_.threads.size(), 1U);
    EXPECT_NE(record_.threads[0], std::this_thread::get_id());
}

TEST_F(PrefetchedApplicationSourceTest, later_calls_scan_anew_on_the_callers_thread) {
    gate_.set_value();
    const auto source = make();
    EXPECT_EQ(source->applications().size(), 1U);
    EXPECT_THAT(source->applications(), testing::ElementsAre(FoundApplication{"Call 2", "/2"}));
    EXPECT_THAT(source->applications(), testing::ElementsAre(FoundApplication{"Call 3", "/3"}));
    ASSERT_EQ(record_.threads.size(), 3U);
    EXPECT_EQ(record_.threads[1], std::this_thread::get_id());
    EXPECT_EQ(record_.threads[2], std::this_thread::get_id());
}

TEST_F(PrefetchedApplicationSourceTest, does_not_make_its_owner_wait_before_the_first_call) {
    const auto source = make();
    // If make() waited for the scan, this line would not be reached.
    gate_.set_value();
    EXPECT_EQ(source->applications().size(), 1U);
}

TEST_F(PrefetchedApplicationSourceTest,
       its_destructor_waits_for_a_scan_whose_answer_was_not_taken) {
    auto source = make();
    gate_.set_value();
    source.reset();
    EXPECT_EQ(record_.threads.size(), 1U);
    EXPECT_TRUE(record_.ended);
}

}  // namespace
}  // namespace tavo
