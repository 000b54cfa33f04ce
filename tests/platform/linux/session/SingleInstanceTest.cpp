#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <ctime>
#include <deque>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <gtest/gtest.h>

#include "platform/MainQueue.h"
#include "platform/linux/dbus/SessionBusAddress.h"
#include "platform/linux/instance/InstanceSocket.h"
#include "platform/linux/session/SingleInstance.h"
#include "tests/platform/linux/fixtures/PanelStandIn.h"
#include "tests/platform/linux/fixtures/PrivateBus.h"
#include "tests/platform/linux/fixtures/ProcessFixture.h"
#include "tests/platform/linux/fixtures/SilentSocket.h"

namespace tavo {
namespace {

using processes::kPatience;

const StartRequest kRequest = {.startupId = "panel-1_TIME42", .activationToken = "token"};

// Runs what it is given on the thread that waits.
class AwaitedQueue final : public MainQueue {
public:
    void async(std::function<void()> block) override {
        const std::lock_guard lock(mutex_);
        blocks_.push_back(std::move(block));
        changed_.notify_all();
    }

    void asyncAfter(std::chrono::milliseconds /*delay*/, std::function<void()> block) override {
        async(std::move(block));
    }

    bool runUntil(const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + kPatience;
        while (!condition()) {
            std::unique_lock lock(mutex_);
            if (!changed_.wait_until(lock, end, [this] { return !blocks_.empty(); })) {
                return false;
            }
            const auto block = std::move(blocks_.front());
            blocks_.pop_front();
            lock.unlock();
            block();
        }
        return true;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> blocks_;
};

// A first that is busy for a moment is not taken for one that is stopped.
constexpr InstancePatience kPatient = {.answer = std::chrono::milliseconds(1000)};

InstanceClaimed claim(const InstancePlaces& places, const StartRequest& request = {}) {
    return claimInstance(places, request, kPatient);
}

// One process's presence, with what it heard; none when another one has the place.
struct Side {
    Side(const InstancePlaces& places, const std::string& bus, const StartRequest& request = {})
        : claimed(tavo::claim(places, request)), presence(std::move(claimed.socket)) {
        if (isOne()) {
            presence.attend(bus, request);
            presence.serve(queue, {.activated = [this](const StartRequest& r) { asked = r; },
                                   .superseded = [this] { superseded = true; },
                                   .changed = [] {},
                                   .itemClicked = [this](const StatusItemClick& c) { click = c; }});
        }
    }
    Side(const Side&) = delete;
    Side& operator=(const Side&) = delete;
    ~Side() { presence.stopServing(); }

    [[nodiscard]] bool isOne() const {
        return claimed.claim == InstanceClaim::First || claimed.claim == InstanceClaim::Impossible;
    }
    bool awaitReachable() {
        return queue.runUntil([this] { return presence.reachable(); });
    }
    bool awaitRequest(const StartRequest& request) {
        return queue.runUntil([&] { return asked == request; });
    }

    AwaitedQueue queue;
    std::optional<StartRequest> asked;
    std::optional<StatusItemClick> click;
    bool superseded = false;
    InstanceClaimed claimed;
    SingleInstance presence;
};

class SessionPresenceTest : public testing::Test {
protected:
    SessionPresenceTest() {
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

TEST_F(SessionPresenceTest, a_start_is_confirmed_before_anybody_has_looked_at_its_request) {
    Side first(in("one"), "");
    EXPECT_EQ(claim(in("one"), kRequest).claim, InstanceClaim::HandedOver);
    EXPECT_TRUE(first.awaitRequest(kRequest));
}

// For what must not happen: longer than an answer takes that waits for nothing.
bool becomesTrueSoon(const std::function<bool()>& condition) {
    constexpr std::chrono::milliseconds kLonger{200};
    const auto end = std::chrono::steady_clock::now() + kPatient.answer + kLonger;
    while (!condition() && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return condition();
}

// A start that waits for its answer.
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

TEST_F(SessionPresenceTest, a_start_waits_until_it_is_sure_that_the_first_shows_its_window) {
    SingleInstance first(claim(in("one")).socket);
    first.attend("", {});
    WaitingStart second(in("one"));
    EXPECT_FALSE(second.endsSoon());
    AwaitedQueue queue;
    std::optional<StartRequest> asked;
    first.serve(queue, {.activated = [&](const StartRequest& request) { asked = request; },
                        .superseded = [] {},
                        .changed = [] {},
                        .itemClicked = [](const StatusItemClick&) {}});
    EXPECT_EQ(second.await(), InstanceClaim::HandedOver);
    EXPECT_TRUE(queue.runUntil([&] { return asked == kRequest; }));
    first.stopServing();
}

TEST_F(SessionPresenceTest, a_start_that_waited_for_one_which_failed_takes_its_place) {
    auto first = std::make_unique<SingleInstance>(claim(in("one")).socket);
    first->attend("", {});
    WaitingStart second(in("one"));
    EXPECT_FALSE(second.endsSoon());
    first.reset();
    EXPECT_EQ(second.await(), InstanceClaim::First);
}

TEST_F(SessionPresenceTest, a_start_by_the_bus_that_waited_for_one_which_failed_has_the_name) {
    const processes::PrivateBus bus(folder_);
    auto first = std::make_unique<SingleInstance>(claim(in("none")).socket);
    first->attend(address(), {});
    ASSERT_TRUE(processes::becomesTrue([&] { return first->reachable(); }));
    Side second(in("none"), address());
    EXPECT_FALSE(becomesTrueSoon([&] { return second.presence.superseded(); }));
    first.reset();
    EXPECT_TRUE(second.awaitReachable());
    EXPECT_FALSE(second.presence.superseded());
}

TEST_F(SessionPresenceTest, a_process_that_a_start_waits_for_does_not_end) {
    Side first(in("one"), "");
    ASSERT_EQ(claim(in("one"), kRequest).claim, InstanceClaim::HandedOver);
    EXPECT_FALSE(first.presence.endUnlessAsked());
}

// As long as it lives, this process has no descriptor left for anything new.
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

TEST_F(SessionPresenceTest, a_start_that_finds_no_descriptor_left_waits_without_work_for_one) {
    Side first(in("one"), "");
    // Whatever needs descriptors the first time only has had them.
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

TEST_F(SessionPresenceTest, after_it_has_ended_the_next_start_is_the_first) {
    Side first(in("one"), "");
    EXPECT_TRUE(first.presence.endUnlessAsked());
    EXPECT_EQ(claim(in("one")).claim, InstanceClaim::First);
}

TEST_F(SessionPresenceTest, a_start_that_shares_only_the_bus_hands_over_by_it) {
    const processes::PrivateBus bus(folder_);
    Side first(in("none"), address());
    ASSERT_TRUE(first.awaitReachable());
    Side second(in("other"), address(), kRequest);
    EXPECT_TRUE(second.queue.runUntil([&] { return second.superseded; }));
    EXPECT_TRUE(second.presence.superseded());
    EXPECT_TRUE(first.awaitRequest(kRequest));
    EXPECT_FALSE(first.superseded);
}

TEST_F(SessionPresenceTest, of_starts_that_share_only_the_bus_exactly_one_goes_on) {
    const processes::PrivateBus bus(folder_);
    Side one(in("one"), address());
    Side other(in("other"), address());
    // Each has heard its answer when one is superseded and the other has been asked.
    EXPECT_TRUE(one.queue.runUntil([&] { return one.superseded || one.asked.has_value(); }));
    EXPECT_TRUE(other.queue.runUntil([&] { return other.superseded || other.asked.has_value(); }));
    EXPECT_NE(one.superseded, other.superseded);
}

TEST_F(SessionPresenceTest, the_name_is_claimed_when_the_bus_comes_and_again_when_it_returns) {
    // Reachable by the bus alone.
    Side first({.runtimeFolder = "", .temporaryFolder = folder_.path("none")}, address());
    EXPECT_FALSE(first.presence.reachable());
    for (int round = 0; round < 2; ++round) {
        processes::PrivateBus bus(folder_);
        EXPECT_TRUE(first.awaitReachable());
        bus.end();
        EXPECT_TRUE(first.queue.runUntil([&] { return !first.presence.reachable(); }));
        std::filesystem::remove(folder_.path("bus"));
    }
}

TEST_F(SessionPresenceTest, a_bus_that_never_answers_stops_nothing) {
    const processes::SilentSocket silent(folder_.path("bus"));
    EXPECT_FALSE(busAnswers(address()));

    Side first(in("one"), address());
    EXPECT_TRUE(first.presence.reachable());
    EXPECT_EQ(first.presence.notifierHost(), std::nullopt);
    EXPECT_EQ(claim(in("one"), kRequest).claim, InstanceClaim::HandedOver);
    EXPECT_TRUE(first.awaitRequest(kRequest));
    EXPECT_TRUE(first.presence.endUnlessAsked());
}

TEST_F(SessionPresenceTest, without_a_bus_there_is_no_panel_on_it) {
    Side first(in("one"), "");
    EXPECT_TRUE(first.queue.runUntil([&] { return first.presence.notifierHost() == false; }));
}

TEST_F(SessionPresenceTest, a_bus_without_a_watcher_has_no_panel) {
    const processes::PrivateBus bus(folder_);
    Side first(in("one"), address());
    EXPECT_TRUE(first.queue.runUntil([&] { return first.presence.notifierHost() == false; }));
}

TEST_F(SessionPresenceTest, the_status_item_is_there_again_on_each_bus_that_comes) {
    Side first(in("one"), address());
    first.presence.offerItem({.title = "Something", .images = {}, .menu = {}});
    for (int round = 0; round < 2; ++round) {
        processes::PrivateBus bus(folder_);
        processes::PanelStandIn panel(address());
        EXPECT_TRUE(first.queue.runUntil([&] { return first.presence.notifierHost() == true; }));
        EXPECT_EQ(first.presence.notifierProcess(), ::getpid());
        const std::string item = panel.awaitItem();
        EXPECT_TRUE(panel.client().call(item, "/StatusNotifierItem", "org.kde.StatusNotifierItem",
                                        "Activate", g_variant_new("(ii)", 0, 0)));
        EXPECT_TRUE(first.queue.runUntil([&] { return first.click.has_value(); }));
        first.click.reset();
        bus.end();
        EXPECT_TRUE(first.queue.runUntil([&] { return first.presence.notifierHost() == false; }));
        std::filesystem::remove(folder_.path("bus"));
    }
}

TEST_F(SessionPresenceTest, an_item_that_was_withdrawn_comes_to_no_panel) {
    const processes::PrivateBus bus(folder_);
    Side first(in("one"), address());
    first.presence.offerItem({.title = "Withdrawn", .images = {}, .menu = {}});
    first.presence.withdrawItem();
    processes::PanelStandIn panel(address());
    first.presence.offerItem({.title = "Shown", .images = {}, .menu = {}});
    EXPECT_EQ(panel.client().property(panel.awaitItem(), "/StatusNotifierItem",
                                      "org.kde.StatusNotifierItem", "Title"),
              "(<'Shown'>,)");
}

struct Address {
    std::string name;
    std::string address;
    std::string file;
};

class SocketFile : public testing::TestWithParam<Address> {};

TEST_P(SocketFile, of_an_address_is_the_first_path_in_it) {
    SCOPED_TRACE(GetParam().name);
    EXPECT_EQ(socketFileOf(GetParam().address), GetParam().file);
}

INSTANTIATE_TEST_SUITE_P(
    Addresses, SocketFile,
    testing::Values(Address{"none", "", ""}, Address{"a path", "unix:path=/run/bus", "/run/bus"},
                    Address{"a path and an id", "unix:path=/run/bus,guid=0af", "/run/bus"},
                    Address{"an id before", "unix:guid=0af,path=/run/bus", "/run/bus"},
                    Address{"escaped", "unix:path=/run/b%20s", "/run/b s"},
                    Address{"badly escaped", "unix:path=/run/%zz", ""},
                    Address{"abstract", "unix:abstract=/tmp/bus", ""},
                    Address{"another transport", "tcp:host=localhost,port=1", ""},
                    Address{"two addresses", "unix:path=/a;unix:path=/b", "/a"}));

TEST(BusAnswers, by_a_live_bus_and_not_asked_where_there_is_no_file) {
    const processes::Folder folder;
    const processes::PrivateBus bus(folder);
    EXPECT_TRUE(busAnswers("unix:path=" + folder.path("bus")));
    EXPECT_TRUE(busAnswers("unix:abstract=nobody"));
    EXPECT_TRUE(busAnswers("unix:path=" + folder.path("gone")));
}

}  // namespace
}  // namespace tavo
