#include <condition_variable>
#include <csignal>
#include <mutex>
#include <optional>

#include <gtest/gtest.h>

#include "platform/linux/dbus/SessionBus.h"
#include "tests/platform/linux/fixtures/PrivateBus.h"
#include "tests/platform/linux/fixtures/SilentSocket.h"

namespace tavo {
namespace {

using namespace std::chrono_literals;
using processes::kPatience;
using State = SessionBus::State;

// A value that the bus thread sets and the test awaits.
template<typename Value>
class Awaited {
public:
    void set(Value value) {
        const std::lock_guard lock(mutex_);
        value_ = value;
        changed_.notify_all();
    }

    // Waits for the value; nullopt when it does not come.
    std::optional<Value> take() {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, kPatience, [this] { return value_.has_value(); });
        return std::exchange(value_, std::nullopt);
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<Value> value_;
};

class SessionBusTest : public testing::Test {
protected:
    void make(const std::string& address) { sessionBus_.emplace(address); }
    void make() { make("unix:path=" + folder_.path("bus")); }

    ~SessionBusTest() override { stopFollowing(); }

    // Tells `connected_` whether there is a connection, now and whenever that changes.
    void follow() {
        sessionBus_->thread().postAndWait([this] {
            following_ = sessionBus_->follow(
                [this](GDBusConnection* connection) { connected_.set(connection != nullptr); });
        });
    }

    void stopFollowing() {
        if (sessionBus_) {
            sessionBus_->thread().postAndWait([this] { following_.end(); });
        }
    }

    std::optional<State> ask(std::chrono::milliseconds patience) {
        Awaited<State> state;
        sessionBus_->thread().post(
            [&, this] { sessionBus_->ask(patience, [&](State answer) { state.set(answer); }); });
        return state.take();
    }

    // Ends the bus. Returns how long that took.
    std::chrono::milliseconds end() {
        stopFollowing();
        const auto before = std::chrono::steady_clock::now();
        sessionBus_.reset();
        return std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now() - before);
    }

    processes::Folder folder_;
    Awaited<bool> connected_;
    Subscription following_;
    std::optional<SessionBus> sessionBus_;
};

TEST_F(SessionBusTest, tells_of_the_connection_and_of_each_loss_and_return) {
    make();
    follow();
    EXPECT_EQ(connected_.take(), false);
    for (int round = 0; round < 2; ++round) {
        processes::PrivateBus bus(folder_);
        EXPECT_EQ(connected_.take(), true);
        bus.end();
        EXPECT_EQ(connected_.take(), false);
        std::filesystem::remove(folder_.path("bus"));
    }
}

TEST_F(SessionBusTest, tells_those_who_follow_later_of_what_is_known) {
    const processes::PrivateBus bus(folder_);
    make();
    EXPECT_EQ(ask(kPatience), State::connected);
    follow();
    EXPECT_EQ(connected_.take(), true);
}

TEST_F(SessionBusTest, knows_at_once_that_there_is_none) {
    for (const char* const address : {"", "unix:path=/nonexistent", "nonsense"}) {
        SCOPED_TRACE(address);
        make(address);
        follow();
        EXPECT_EQ(connected_.take(), false);
        EXPECT_EQ(ask(kPatience), State::none);
        stopFollowing();
    }
}

TEST_F(SessionBusTest, looks_again_when_it_is_asked_for_a_bus_without_a_folder_to_watch) {
    make("unix:path=" + folder_.path("later/bus"));
    EXPECT_EQ(ask(kPatience), State::none);
    std::filesystem::create_directory(folder_.path("later"));
    const processes::PrivateBus bus(folder_);
    std::filesystem::create_symlink(folder_.path("bus"), folder_.path("later/bus"));
    EXPECT_EQ(ask(kPatience), State::connected);
}

TEST_F(SessionBusTest, a_bus_that_never_answers_is_silent_and_is_waited_for_once) {
    const processes::SilentSocket silent(folder_.path("bus"));
    make();
    EXPECT_EQ(ask(100ms), State::silent);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(ask(100ms), State::silent);
    EXPECT_LT(std::chrono::steady_clock::now() - before, 100ms);
}

TEST_F(SessionBusTest, a_bus_that_stops_is_silent_until_it_goes_on) {
    const processes::PrivateBus bus(folder_);
    make();
    EXPECT_EQ(ask(kPatience), State::connected);
    ::kill(bus.process(), SIGSTOP);
    EXPECT_EQ(ask(50ms), State::silent);
    EXPECT_EQ(ask(50ms), State::silent);
    ::kill(bus.process(), SIGCONT);
    EXPECT_EQ(ask(kPatience), State::connected);
}

TEST_F(SessionBusTest, a_bus_that_dies_while_it_is_asked_is_none) {
    processes::PrivateBus bus(folder_);
    make();
    EXPECT_EQ(ask(kPatience), State::connected);
    ::kill(bus.process(), SIGSTOP);
    Awaited<State> state;
    sessionBus_->thread().postAndWait(
        [&] { sessionBus_->ask(kPatience, [&](State answer) { state.set(answer); }); });
    bus.end();
    EXPECT_EQ(state.take(), State::none);
}

// Each of the two buses has a question under way when the SessionBus is destroyed.
TEST_F(SessionBusTest, ending_waits_for_no_bus_and_drops_what_is_under_way) {
    const processes::SilentSocket silent(folder_.path("silent"));
    const processes::PrivateBus bus(folder_);
    for (const char* const name : {"silent", "bus"}) {
        SCOPED_TRACE(name);
        make("unix:path=" + folder_.path(name));
        if (name == std::string("bus")) {
            EXPECT_EQ(ask(kPatience), State::connected);
            ::kill(bus.process(), SIGSTOP);
        }
        sessionBus_->thread().postAndWait(
            [&] { sessionBus_->ask(kPatience, [](State) { ADD_FAILURE() << "answered"; }); });
        EXPECT_LT(end(), 500ms);
    }
    ::kill(bus.process(), SIGCONT);
}

TEST_F(SessionBusTest, the_name_of_a_connection_that_ended_is_free) {
    const processes::PrivateBus bus(folder_);
    for (int round = 0; round < 2; ++round) {
        make();
        EXPECT_EQ(ask(kPatience), State::connected);
        Awaited<guint32> owner;
        BusCalls calls;
        sessionBus_->thread().postAndWait([&] {
            calls.call(sessionBus_->connection(), {kBusName, kBusPath, kBusName, "RequestName"},
                       g_variant_new("(su)", "org.example.Name", kDoNotQueue), "(u)",
                       [&](const Variant& reply, GError*) {
                           guint32 answer = 0;
                           g_variant_get(reply.get(), "(u)", &answer);
                           owner.set(answer);
                       });
        });
        EXPECT_EQ(owner.take(), 1U);
        end();
    }
}

TEST_F(SessionBusTest, calls_that_are_cancelled_are_not_answered) {
    const processes::PrivateBus bus(folder_);
    make();
    EXPECT_EQ(ask(kPatience), State::connected);
    ::kill(bus.process(), SIGSTOP);
    sessionBus_->thread().postAndWait([&] {
        BusCalls calls;
        calls.call(sessionBus_->connection(), {kBusName, kBusPath, kBusName, "GetId"}, nullptr,
                   nullptr, [](const Variant&, GError*) { ADD_FAILURE() << "answered"; });
    });
    ::kill(bus.process(), SIGCONT);
    EXPECT_EQ(ask(kPatience), State::connected);
}

}  // namespace
}  // namespace tavo
