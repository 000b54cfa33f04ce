// The quick road from a second start of the program to the first: a socket that needs no bus.
//
// The first start holds an advisory lock on a file in a folder that only this user may write, and
// listens on a socket beside it. The lock goes with the process, however that ends, so a socket
// that was left behind misleads nobody.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/StartRequest.h"
#include "platform/linux/FileDescriptor.h"

namespace tavo {

// What it takes to be the first. The socket goes with it.
class InstanceSocket {
public:
    InstanceSocket(FileDescriptor folder, FileDescriptor lock, FileDescriptor listener);
    InstanceSocket(const InstanceSocket&) = delete;
    InstanceSocket& operator=(const InstanceSocket&) = delete;
    ~InstanceSocket();

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
    First,       // this process; it has the socket
    HandedOver,  // the request has reached the first, or lies where that will find it
    NoAnswer,    // somebody holds the lock without listening, for longer than starting or ending
                 // takes
    Impossible,  // there is no folder to trust and to write to
};

struct InstanceClaimed {
    InstanceClaim claim = InstanceClaim::Impossible;
    std::unique_ptr<InstanceSocket> socket;
};

// Either claims the place of the first or hands the request over to it. `runtimeFolder` is used
// when it is this user's alone and can be written to, else one of this user's in
// `temporaryFolder`; neither counts unless its path is absolute. Any thread; waits for a first that
// does not listen as long as `patience` at most, for one that is starting until it has come up.
[[nodiscard]] InstanceClaimed claimInstance(
    const std::string& runtimeFolder, const std::string& temporaryFolder,
    const StartRequest& request, std::chrono::milliseconds patience = std::chrono::seconds(3));

}  // namespace tavo
