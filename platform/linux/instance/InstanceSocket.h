// The socket by which a second start of the program reaches the first, without a bus.
//
// A start uses it before anything else is loaded, so this file needs the C++ library alone.
//
// The first start holds an advisory lock (flock) on a file in a folder that only this user may
// write, and listens on a socket beside it as soon as it can answer. The kernel releases the lock
// however the process ends, so a socket file without a lock counts for nothing.
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

// The place of the first start: the lock, and the socket. The destructor removes the socket and
// releases the lock.
class InstanceSocket {
public:
    InstanceSocket(FileDescriptor folder, FileDescriptor lock, FileDescriptor listener);
    InstanceSocket(const InstanceSocket&) = delete;
    InstanceSocket& operator=(const InstanceSocket&) = delete;
    ~InstanceSocket();

    // Call once. Other starts wait until then.
    void listen() const;

    // The listening descriptor: readable when a start has connected.
    [[nodiscard]] int listener() const { return listener_.get(); }

    // The connection of a start that wants to hand over. Invalid when there is none, when it is
    // another user's, and when this process has no descriptor left. The request can be read as soon
    // as the connection is readable.
    [[nodiscard]] FileDescriptor accept() const;

private:
    FileDescriptor folder_;
    FileDescriptor lock_;
    FileDescriptor listener_;
};

// The request of the start at the other end; absent when it is malformed.
[[nodiscard]] std::optional<StartRequest> readStartRequest(int connection);

// Tells the start at the other end to wait: whether this process will show a window is not certain
// yet.
void holdStartRequest(int connection);

// Tells the start at the other end that it may end. A start whose connection closes without that
// tries to become the first itself.
void confirmStartRequest(int connection);

enum class InstanceClaim : std::uint8_t {
    First,       // this process is the first; it has the socket, and calls listen() soon
    HandedOver,  // the first has the request, or will find it in the socket when it goes on
    NoAnswer,    // another process holds the lock without listening, for longer than starting or
                 // ending takes
    Impossible,  // there is no folder that is this user's alone and can be written to
};

struct InstanceClaimed {
    InstanceClaim claim = InstanceClaim::Impossible;
    std::unique_ptr<InstanceSocket> socket;
};

// The folders in which the socket may be, in order of preference.
struct InstancePlaces {
    std::string runtimeFolder;    // XDG_RUNTIME_DIR, or ""; used when it is this user's alone and
                                  // can be written to
    std::string temporaryFolder;  // else a folder of this user is made in it

    // A relative TMPDIR does not count: it depends on where the program is started.
    static InstancePlaces in(const StartEnvironment& environment);
};

// How long a start waits for the first start.
struct InstancePatience {
    // For the first start's first answer, which comes at once whatever that process is doing. If it
    // is stopped (SIGSTOP), it finds the request when it goes on.
    std::chrono::milliseconds answer = std::chrono::milliseconds(250);
    // For the first start's second answer, after holdStartRequest(). If its display does not
    // answer, the first start ends sooner than this.
    std::chrono::milliseconds start = std::chrono::seconds(15);
    // While the first start does not listen, because it is being loaded from a slow disk or about
    // to end.
    std::chrono::milliseconds silence = std::chrono::seconds(10);
};

// Either claims the place of the first start for this process, or hands `request` over to the first
// start. Relative paths in `places` do not count. Any thread.
[[nodiscard]] InstanceClaimed claimInstance(const InstancePlaces& places,
                                            const StartRequest& request,
                                            const InstancePatience& patience = {});

}  // namespace tavo
