#include <algorithm>
#include <atomic>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <gtest/gtest.h>

#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/instance/InstanceSocket.h"
#include "platform/linux/instance/SingleInstance.h"
#include "tests/platform/linux/fixtures/AwaitedMainQueue.h"
#include "tests/platform/linux/fixtures/PrivateBus.h"
#include "tests/platform/linux/fixtures/ProcessFixture.h"
#include "tests/platform/linux/fixtures/SilentSocket.h"

namespace tavo {
namespace {

using processes::AwaitedMainQueue;

const StartRequest kRequest = {.startupId = "panel-1_TIME42", .activationToken = "token"};

// Long enough that a busy first process is not taken for a stopped one.
constexpr InstancePatience kPatient = {.answer = std::chrono::milliseconds(1000)};

InstanceClaimed claim(const InstancePlaces& places, const StartRequest& request = {}) {
    return claimInstance(places, request, kPatient);
}

// A start that is not sure to show its window yet.
struct Beginning {
    Beginning(const InstancePlaces& places, const std::string& address,
              const StartRequest& request = {})
        : bus(address), instance(bus, claim(places, request).socket, request) {}

    SessionBus bus;
    SingleInstance instance;
};

// A start that shows its window, and the events that it heard.
struct Process : Beginning {
    Process(const InstancePlaces& places, const std::string& address,
            const StartRequest& request = {})
        : Beginning(places, address, request) {
        instance.serve(queue, {.activated = [this](const StartRequest& r) { asked = r; },
                               .superseded = [this] { superseded = true; }});
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process() { instance.stopServing(); }

    bool awaitReachable() {
        return processes::becomesTrue([this] { return instance.reachable(); });
    }
    bool awaitRequest(const StartRequest& request) {
        return queue.runUntil([&] { return asked == request; });
    }

    AwaitedMainQueue queue;
    std::optional<StartRequest> asked;
    bool superseded = false;
};

class SingleInstanceTest : public testing::Test {
protected:
    SingleInstanceTest() {
        for (const char* const name : {"one", "other"}) {
            std::filesystem::create_directory(folder_.path(name));
        }
    }

    InstancePlaces in(const std::string& name) const {
        return {.runtimeFolder = folder_.path(name), .temporaryFolder = folder_.path("none")};
    }

    std::string address() const { return "unix:path=" + folder_.path("bus"); }

    processes::Folder folder_;
};

TEST_F(SingleInstanceTest, a_start_is_confirmed_before_its_request_is_served) {
    Process first(in("one"), "");
    EXPECT_EQ(claim(in("one"), kRequest).claim, InstanceClaim::HandedOver);
    EXPECT_TRUE(first.awaitRequest(kRequest));
}

// For conditions that must not come true: waits a little longer than a start waits for an answer.
bool becomesTrueSoon(const std::function<bool()>& condition) {
    constexpr std::chrono::milliseconds kLonger{200};
    const auto end = std::chrono::steady_clock::now() + kPatient.answer + kLonger;
    while (!condition() && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return condition();
}

// A start of the program on a thread of its own, where it waits for its answer.
struct WaitingStart {
    explicit WaitingStart(const InstancePlaces& places)
        : thread([this, places] {
              claimed = claim(places, kRequest);
              over = true;
          }) {}
    WaitingStart(const WaitingStart&) = delete;
    WaitingStart& operator=(const WaitingStart&) = delete;
    ~WaitingStart() { await(); }

    [[nodiscard]] bool endsSoon() const {
        return becomesTrueSoon([this] { return over.load(); });
    }

    InstanceClaim await() {
        if (thread.joinable()) {
            thread.join();
        }
        return claimed.claim;
    }

    std::atomic<bool> over = false;
    InstanceClaimed claimed;
    std::thread thread;
};

TEST_F(SingleInstanceTest, a_start_waits_until_it_is_sure_that_the_first_shows_its_window) {
    Beginning first(in("one"), "");
    WaitingStart second(in("one"));
    EXPECT_FALSE(second.endsSoon());
    AwaitedMainQueue queue;
    std::optional<StartRequest> asked;
    first.instance.serve(queue, {.activated = [&](const StartRequest& request) { asked = request; },
                                 .superseded = [] {}});
    EXPECT_EQ(second.await(), InstanceClaim::HandedOver);
    EXPECT_TRUE(queue.runUntil([&] { return asked == kRequest; }));
    first.instance.stopServing();
}

TEST_F(SingleInstanceTest, a_start_that_waited_for_one_which_failed_takes_its_place) {
    auto first = std::make_unique<Beginning>(in("one"), "");
    WaitingStart second(in("one"));
    EXPECT_FALSE(second.endsSoon());
    first.reset();
    EXPECT_EQ(second.await(), InstanceClaim::First);
}

TEST_F(SingleInstanceTest, a_start_by_the_bus_that_waited_for_one_which_failed_has_the_name) {
    const processes::PrivateBus bus(folder_);
    auto first = std::make_unique<Beginning>(in("none"), address());
    ASSERT_TRUE(processes::becomesTrue([&] { return first->instance.reachable(); }));
    Process second(in("none"), address());
    EXPECT_FALSE(becomesTrueSoon([&] { return second.instance.superseded(); }));
    first.reset();
    EXPECT_TRUE(second.awaitReachable());
    EXPECT_FALSE(second.instance.superseded());
}

TEST_F(SingleInstanceTest, a_process_that_a_start_waits_for_does_not_end) {
    Process first(in("one"), "");
    ASSERT_EQ(claim(in("one"), kRequest).claim, InstanceClaim::HandedOver);
    EXPECT_FALSE(first.instance.endUnlessAsked());
}

// While an object lives, the process can open no file descriptor.
class NoDescriptors {
public:
    NoDescriptors() {
        EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &before_), 0);
        const FileDescriptor firstFree(::dup(STDIN_FILENO));
        rlimit none = before_;
        none.rlim_cur = static_cast<rlim_t>(firstFree.get());
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;
    ~NoDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }

private:
    rlimit before_ = {};
};

std::chrono::nanoseconds processorTime() {
    timespec used = {};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

TEST_F(SingleInstanceTest, a_start_that_finds_no_descriptor_left_waits_without_work_for_one) {
    Process first(in("one"), "");
    // A start before the descriptors run out, for what opens descriptors only the first time.
    EXPECT_EQ(claim(in("one"), {}).claim, InstanceClaim::HandedOver);
    EXPECT_TRUE(first.awaitRequest({}));
    const FileDescriptor start(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    sockaddr_un place = {};
    place.sun_family = AF_UNIX;
    const std::string file = folder_.path("one/tavolauncher.socket");
    std::copy(file.begin(), file.end(), place.sun_path);
    {
        const NoDescriptors none;
        ASSERT_EQ(::connect(start.get(), reinterpret_cast<const sockaddr*>(&place), sizeof place),
                  0);
        constexpr char kMessage[] = "panel-1_TIME42\0token";
        ASSERT_EQ(::send(start.get(), kMessage, sizeof kMessage, 0), ssize_t{sizeof kMessage});
        const auto before = processorTime();
        EXPECT_FALSE(becomesTrueSoon(
            [&] { return processorTime() - before > std::chrono::milliseconds(400); }));
    }
    EXPECT_TRUE(first.awaitRequest(kRequest));
    char answer = 0;
    EXPECT_EQ(::recv(start.get(), &answer, 1, 0), 1);
}

TEST_F(SingleInstanceTest, after_it_has_ended_the_next_start_is_the_first) {
    Process first(in("one"), "");
    EXPECT_TRUE(first.instance.endUnlessAsked());
    EXPECT_EQ(claim(in("one")).claim, InstanceClaim::First);
}

TEST_F(SingleInstanceTest, a_start_that_shares_only_the_bus_hands_over_by_it) {
    const processes::PrivateBus bus(folder_);
    Process first(in("none"), address());
    ASSERT_TRUE(first.awaitReachable());
    Process second(in("other"), address(), kRequest);
    EXPECT_TRUE(second.queue.runUntil([&] { return second.superseded; }));
    EXPECT_TRUE(second.instance.superseded());
    EXPECT_TRUE(first.awaitRequest(kRequest));
    EXPECT_FALSE(first.superseded);
}

TEST_F(SingleInstanceTest, of_starts_that_share_only_the_bus_exactly_one_goes_on) {
    const processes::PrivateBus bus(folder_);
    Process one(in("one"), address());
    Process other(in("other"), address());
    // Each start learns what becomes of it: it is superseded, or is asked to show its window.
    EXPECT_TRUE(one.queue.runUntil([&] { return one.superseded || one.asked.has_value(); }));
    EXPECT_TRUE(other.queue.runUntil([&] { return other.superseded || other.asked.has_value(); }));
    EXPECT_NE(one.superseded, other.superseded);
}

TEST_F(SingleInstanceTest, the_name_is_claimed_when_the_bus_comes_and_again_when_it_returns) {
    // Without an instance socket, so that reachable() tells of the bus name alone.
    Process first({.runtimeFolder = "", .temporaryFolder = folder_.path("none")}, address());
    EXPECT_FALSE(first.instance.reachable());
    for (int round = 0; round < 2; ++round) {
        processes::PrivateBus bus(folder_);
        EXPECT_TRUE(first.awaitReachable());
        bus.end();
        EXPECT_TRUE(processes::becomesTrue([&] { return !first.instance.reachable(); }));
        std::filesystem::remove(folder_.path("bus"));
    }
}

TEST_F(SingleInstanceTest, a_bus_that_never_answers_stops_nothing) {
    const processes::SilentSocket silent(folder_.path("bus"));
    Process first(in("one"), address());
    EXPECT_TRUE(first.instance.reachable());
    EXPECT_EQ(claim(in("one"), kRequest).claim, InstanceClaim::HandedOver);
    EXPECT_TRUE(first.awaitRequest(kRequest));
    EXPECT_TRUE(first.instance.endUnlessAsked());
}

}  // namespace
}  // namespace tavo
