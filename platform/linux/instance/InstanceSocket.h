// The quick road from a second start of the program to the first: a socket that needs no bus.
//
// It is looked for before anything else is loaded, so this file needs the C++ library alone.
//
// The first start holds an advisory lock on a file in a folder that only this user may write, and
// listens on a socket beside it as soon as it can answer. The lock goes with the process, however
// that ends, so a socket that was left behind misleads nobody.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/StartRequest.h"
#include "platform/posix/FileDescriptor.h"

namespace tavo {

class StartEnvironment;

// What it takes to be the first. The socket goes with it.
class InstanceSocket {
public:
    InstanceSocket(FileDescriptor folder, FileDescriptor lock, FileDescriptor listener);
    InstanceSocket(const InstanceSocket&) = delete;
    InstanceSocket& operator=(const InstanceSocket&) = delete;
    ~InstanceSocket();

    // Once: until then other starts wait.
    void listen() const;

    // For those who wait for it to become readable.
    [[nodiscard]] int listener() const { return listener_.get(); }

    // A start that wants to hand over, or an invalid descriptor when none is left or it is another
    // user's. Its message is there as soon as the descriptor is readable.
    [[nodiscard]] FileDescriptor accept() const;

private:
    FileDescriptor folder_;
    FileDescriptor lock_;
    FileDescriptor listener_;
};

// What the start at the other end asks; absent when that makes no sense.
[[nodiscard]] std::optional<StartRequest> readStartRequest(int connection);

// Tells the start at the other end to stay: whether this process will show a window is not certain
// yet.
void holdStartRequest(int connection);

// Tells the start at the other end that its work is done. One that finds the connection closed
// without it tries to become the first itself.
void confirmStartRequest(int connection);

enum class InstanceClaim : std::uint8_t {
    First,       // this process; it has the socket, and is to listen soon
    HandedOver,  // the request has reached the first, or lies where that will find it
    NoAnswer,    // somebody holds the lock without listening, for longer than starting or ending
                 // takes
    Impossible,  // there is no folder to trust and to write to
};

struct InstanceClaimed {
    InstanceClaim claim = InstanceClaim::Impossible;
    std::unique_ptr<InstanceSocket> socket;
};

// Where the socket may be.
struct InstancePlaces {
    std::string runtimeFolder;    // XDG_RUNTIME_DIR, or ""; used when it is this user's alone and
                                  // can be written to
    std::string temporaryFolder;  // else one of this user's in it

    // A TMPDIR that depends on where the program is started is none.
    static InstancePlaces in(const StartEnvironment& environment);
};

// How long the first is waited for.
struct InstancePatience {
    // For its first word. It says something at once, whatever else it is doing; one that is
    // stopped finds the request when it goes on.
    std::chrono::milliseconds answer = std::chrono::milliseconds(250);
    // For its second, when the first was that it is starting: such a one ends sooner than this if
    // its display does not answer.
    std::chrono::milliseconds start = std::chrono::seconds(15);
    // While it does not listen: it is being loaded, perhaps from a slow disk, or about to end.
    std::chrono::milliseconds silence = std::chrono::seconds(10);
};

// Either claims the place of the first or hands the request over to it. No path counts unless it
// is absolute. Any thread.
[[nodiscard]] InstanceClaimed claimInstance(const InstancePlaces& places,
                                            const StartRequest& request,
                                            const InstancePatience& patience = {});

}  // namespace tavo
