#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <gtest/gtest.h>

#include "platform/linux/instance/InstanceSocket.h"
#include "platform/linux/system/StartEnvironment.h"
#include "tests/platform/linux/fixtures/ProcessFixture.h"

namespace tavo {
namespace {

using namespace std::chrono_literals;

const StartRequest kRequest = {.startupId = "panel-1_TIME42", .activationToken = "token"};
constexpr int kPatienceMs = 20000;
constexpr auto kAnswer = 1000ms;
constexpr int kLongerThanAnswer = 1200;
// For tests in which the first process is sure to answer, on a busy machine too.
constexpr InstancePatience kPatient = {.answer = 20s, .start = 20s, .silence = 20s};

class InstanceSocketTest : public testing::Test {
protected:
    InstanceSocketTest() {
        std::filesystem::create_directory(run_);
        ownOnly(run_);
    }

    static void ownOnly(const std::string& folder) {
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    }

    InstanceClaimed claim(const StartRequest& request = {},
                          const InstancePatience& patience = {}) const {
        InstanceClaimed claimed = claimWithoutListening(request, patience);
        if (claimed.socket) {
            claimed.socket->listen();
        }
        return claimed;
    }

    // Like claim(), but a first process does not listen on its socket yet.
    InstanceClaimed claimWithoutListening(const StartRequest& request = {},
                                          const InstancePatience& patience = {}) const {
        return claimInstance({.runtimeFolder = run_, .temporaryFolder = temporary_}, request,
                             patience);
    }

    // Accepts the next start, and returns its connection once its request can be read.
    static FileDescriptor acceptOne(const InstanceSocket& socket) {
        FileDescriptor caller = await(socket.listener()) ? socket.accept() : FileDescriptor();
        EXPECT_TRUE(caller.valid() && await(caller.get()));
        return caller;
    }

    // Reads the request of the next start, and confirms it.
    static std::optional<StartRequest> serveOne(const InstanceSocket& socket) {
        const FileDescriptor caller = acceptOne(socket);
        auto request = readStartRequest(caller.get());
        confirmStartRequest(caller.get());
        return request;
    }

    static bool await(int descriptor) {
        pollfd wait = {.fd = descriptor, .events = POLLIN, .revents = 0};
        return ::poll(&wait, 1, kPatienceMs) == 1;
    }

    processes::Folder folder_;
    std::string run_ = folder_.path("run");
    std::string temporary_ = folder_.path();
};

TEST_F(InstanceSocketTest, the_first_start_is_the_first_and_the_second_hands_its_request_over) {
    const InstanceClaimed first = claim();
    ASSERT_EQ(first.claim, InstanceClaim::First);
    std::optional<StartRequest> served;
    std::thread server([&] { served = serveOne(*first.socket); });
    const InstanceClaimed second = claim(kRequest, kPatient);
    server.join();
    EXPECT_EQ(second.claim, InstanceClaim::HandedOver);
    EXPECT_EQ(second.socket, nullptr);
    EXPECT_EQ(served, kRequest);
}

TEST_F(InstanceSocketTest, a_first_that_does_not_react_finds_the_request_when_it_does) {
    const InstanceClaimed first = claim();
    EXPECT_EQ(claim(kRequest).claim, InstanceClaim::HandedOver);
    EXPECT_EQ(serveOne(*first.socket), kRequest);
}

TEST_F(InstanceSocketTest, a_start_that_is_told_to_wait_does_until_it_is_confirmed) {
    const InstanceClaimed first = claim();
    std::thread server([&] {
        const FileDescriptor caller = acceptOne(*first.socket);
        EXPECT_EQ(readStartRequest(caller.get()), kRequest);
        holdStartRequest(caller.get());
        pollfd leaves = {.fd = caller.get(), .events = POLLIN, .revents = 0};
        EXPECT_EQ(::poll(&leaves, 1, kLongerThanAnswer), 0) << "it did not wait";
        confirmStartRequest(caller.get());
    });
    EXPECT_EQ(claim(kRequest, {.answer = kAnswer}).claim, InstanceClaim::HandedOver);
    server.join();
}

TEST_F(InstanceSocketTest, a_start_that_is_told_to_wait_in_vain_becomes_the_first) {
    InstanceClaimed first = claim();
    std::thread server([&] {
        FileDescriptor caller = acceptOne(*first.socket);
        holdStartRequest(caller.get());
        first.socket.reset();
        caller.close();
    });
    EXPECT_EQ(claim(kRequest, kPatient).claim, InstanceClaim::First);
    server.join();
}

TEST_F(InstanceSocketTest, a_start_waits_for_one_that_is_being_loaded) {
    const InstanceClaimed first = claimWithoutListening();
    std::optional<StartRequest> served;
    std::thread server([&] {
        std::this_thread::sleep_for(20ms);  // stands for the time of loading
        first.socket->listen();
        served = serveOne(*first.socket);
    });
    EXPECT_EQ(claim(kRequest, kPatient).claim, InstanceClaim::HandedOver);
    server.join();
    EXPECT_EQ(served, kRequest);
}

TEST_F(InstanceSocketTest, a_start_that_finds_the_first_ending_becomes_the_first) {
    InstanceClaimed first = claim();
    std::thread ending([&] {
        if (await(first.socket->listener())) {
            first.socket.reset();  // while the other start waits for an answer
        }
    });
    const InstanceClaimed second = claim(kRequest, kPatient);
    ending.join();
    EXPECT_EQ(second.claim, InstanceClaim::First);
}

TEST_F(InstanceSocketTest, a_socket_that_a_killed_process_left_behind_does_not_count) {
    const pid_t child = ::fork();
    if (child == 0) {
        const InstanceClaimed first = claim();
        ::kill(::getpid(), SIGKILL);
    }
    ::waitpid(child, nullptr, 0);
    ASSERT_TRUE(std::filesystem::exists(run_ + "/tavolauncher.socket"));
    EXPECT_EQ(claim().claim, InstanceClaim::First);
}

TEST_F(InstanceSocketTest, of_many_starts_in_the_same_moment_one_is_the_first) {
    constexpr int kStarts = 16;
    std::vector<InstanceClaimed> claimed(kStarts);
    std::vector<std::thread> starts;
    for (InstanceClaimed& each : claimed) {
        starts.emplace_back([this, &each] { each = claim(kRequest); });
    }
    for (std::thread& start : starts) {
        start.join();
    }
    int firsts = 0;
    int handedOver = 0;
    for (const InstanceClaimed& each : claimed) {
        firsts += each.claim == InstanceClaim::First ? 1 : 0;
        handedOver += each.claim == InstanceClaim::HandedOver ? 1 : 0;
    }
    EXPECT_EQ(firsts, 1);
    EXPECT_EQ(handedOver, kStarts - 1);
}

TEST_F(InstanceSocketTest, one_that_holds_the_place_and_never_listens_is_not_waited_for_for_ever) {
    const InstanceClaimed first = claimWithoutListening();
    EXPECT_EQ(claim({}, {.silence = 20ms}).claim, InstanceClaim::NoAnswer);
}

TEST_F(InstanceSocketTest, a_folder_that_others_may_write_is_not_used) {
    std::filesystem::permissions(run_, std::filesystem::perms::all);
    ASSERT_EQ(claim().claim, InstanceClaim::First);
    EXPECT_FALSE(std::filesystem::exists(run_ + "/tavolauncher.lock"));
}

TEST_F(InstanceSocketTest, a_runtime_folder_that_cannot_be_written_to_gives_way_to_the_users_own) {
    // A folder in place of the lock file: even root cannot open it for writing.
    std::filesystem::create_directory(run_ + "/tavolauncher.lock");
    const InstanceClaimed first = claim();
    ASSERT_EQ(first.claim, InstanceClaim::First);
    EXPECT_EQ(claim().claim, InstanceClaim::HandedOver);
}

TEST_F(InstanceSocketTest, a_folder_named_from_the_working_directory_is_not_used) {
    const std::string here = std::filesystem::current_path();
    std::filesystem::current_path(folder_.path());
    for (const std::string name : {"", "relative"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(claimInstance({.runtimeFolder = name, .temporaryFolder = name}, {}).claim,
                  InstanceClaim::Impossible);
    }
    std::filesystem::current_path(here);
    EXPECT_FALSE(std::filesystem::exists(folder_.path("relative")));
}

TEST_F(InstanceSocketTest, without_a_runtime_folder_one_of_the_users_own_is_made) {
    std::filesystem::remove(run_);
    const InstanceClaimed first = claim();
    ASSERT_EQ(first.claim, InstanceClaim::First);
    const std::string own = temporary_ + "/tavolauncher-" + std::to_string(::geteuid());
    EXPECT_EQ(std::filesystem::status(own).permissions(), std::filesystem::perms::owner_all);
    EXPECT_EQ(claim().claim, InstanceClaim::HandedOver);
}

TEST_F(InstanceSocketTest, a_link_in_the_place_of_the_users_own_folder_is_not_followed) {
    std::filesystem::remove(run_);
    const std::string elsewhere = folder_.path("elsewhere");
    std::filesystem::create_directory(elsewhere);
    ownOnly(elsewhere);
    std::filesystem::create_directory_symlink(
        elsewhere, temporary_ + "/tavolauncher-" + std::to_string(::geteuid()));
    EXPECT_EQ(claim().claim, InstanceClaim::Impossible);
    EXPECT_TRUE(std::filesystem::is_empty(elsewhere));
}

TEST_F(InstanceSocketTest, a_folder_with_a_path_longer_than_a_sockets_address_serves_as_well) {
    run_ = folder_.path(std::string(200, 'x'));
    std::filesystem::create_directory(run_);
    ownOnly(run_);
    const InstanceClaimed first = claim();
    ASSERT_EQ(first.claim, InstanceClaim::First);
    EXPECT_EQ(claim().claim, InstanceClaim::HandedOver);
}

TEST_F(InstanceSocketTest, a_place_given_up_leaves_no_socket) {
    claim().socket.reset();
    EXPECT_FALSE(std::filesystem::exists(run_ + "/tavolauncher.socket"));
}

TEST_F(InstanceSocketTest, a_token_of_absurd_length_is_left_out_and_the_rest_is_told) {
    const InstanceClaimed first = claim();
    EXPECT_EQ(claim({.startupId = std::string(100000, 'x'), .activationToken = "token"}).claim,
              InstanceClaim::HandedOver);
    EXPECT_EQ(serveOne(*first.socket), (StartRequest{.startupId = "", .activationToken = "token"}));
}

struct Message {
    std::string name;
    std::string bytes;
};

class StartRequestMessage : public testing::TestWithParam<Message> {};

TEST_P(StartRequestMessage, that_makes_no_sense_asks_nothing) {
    SCOPED_TRACE(GetParam().name);
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends), 0);
    const FileDescriptor ours(ends[0]);
    const FileDescriptor theirs(ends[1]);
    ASSERT_GE(::send(theirs.get(), GetParam().bytes.data(), GetParam().bytes.size(), 0), 0);
    EXPECT_EQ(readStartRequest(ours.get()), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Messages, StartRequestMessage,
                         testing::Values(Message{"empty", ""}, Message{"one token", "a"},
                                         Message{"one token that ends", std::string("a\0", 2)},
                                         Message{"no end", std::string("a\0b", 3)},
                                         Message{"three tokens", std::string("a\0b\0c\0", 6)}));

struct Environment {
    std::string name;
    std::vector<std::string> variables;
    std::string runtimeFolder;
    std::string temporaryFolder;
};

class PlacesInEnvironment : public testing::TestWithParam<Environment> {};

TEST_P(PlacesInEnvironment, do_not_depend_on_the_working_directory) {
    SCOPED_TRACE(GetParam().name);
    const auto places = InstancePlaces::in(StartEnvironment(GetParam().variables));
    EXPECT_EQ(places.runtimeFolder, GetParam().runtimeFolder);
    EXPECT_EQ(places.temporaryFolder, GetParam().temporaryFolder);
}

INSTANTIATE_TEST_SUITE_P(
    Environments, PlacesInEnvironment,
    testing::Values(Environment{"nothing set", {}, "", "/tmp"},
                    Environment{"both", {"XDG_RUNTIME_DIR=/run/1", "TMPDIR=/t"}, "/run/1", "/t"},
                    Environment{"an empty one", {"TMPDIR="}, "", "/tmp"},
                    Environment{"a relative one", {"TMPDIR=here"}, "", "/tmp"},
                    Environment{"a relative one with dots", {"TMPDIR=../here"}, "", "/tmp"}));

}  // namespace
}  // namespace tavo
