#include "platform/linux/instance/InstanceListener.h"

#include <utility>

#include <poll.h>

namespace tavo {
namespace {

// How long a connected start may take to send its request, which it does at once.
constexpr std::chrono::milliseconds kRequestPatience{1000};

// How long to pause while there is no free descriptor to accept a connection with. Starts wait in
// the socket's backlog meanwhile, together with their requests. Shorter than a start waits for its
// answer.
constexpr std::chrono::milliseconds kDescriptorPause{100};

bool isReadable(int descriptor) {
    pollfd now = {.fd = descriptor, .events = POLLIN, .revents = 0};
    return ::poll(&now, 1, 0) == 1;
}

}  // namespace

InstanceListener::InstanceListener(GLibThread& thread, std::unique_ptr<InstanceSocket> socket,
                                   std::function<void(const StartRequest&)> asked)
    : thread_(thread), socket_(std::move(socket)), asked_(std::move(asked)) {
    socket_->listen();
    listen();
}

void InstanceListener::listen() {
    listener_ = thread_.whenReadable(socket_->listener(), [this] {
        // Without the pause the loop would spin on a listener that stays readable.
        if (!accept() && isReadable(socket_->listener())) {
            listener_.end();
            pause_ = thread_.after(kDescriptorPause, [this] { listen(); });
        }
    });
}

bool InstanceListener::accept() {
    FileDescriptor connection = socket_->accept();
    const int key = connection.get();
    if (!connection.valid()) {
        return false;
    }
    starts_.insert_or_assign(
        key, Start{.connection = std::move(connection),
                   .readable = thread_.whenReadable(key, [this, key] { hear(key); }),
                   .late = thread_.after(kRequestPatience, [this, key] { starts_.erase(key); })});
    return true;
}

void InstanceListener::hear(int connection) {
    const auto start = starts_.extract(connection);
    const auto request = readStartRequest(connection);
    if (!request) {
        return;
    }
    asked_(*request);
    if (confirms_) {
        confirmStartRequest(connection);
    } else {
        holdStartRequest(connection);
        waiting_.push_back(std::move(start.mapped().connection));
    }
}

void InstanceListener::hearAll() {
    while (isReadable(socket_->listener()) && accept()) {
    }
    for (auto start = starts_.begin(); start != starts_.end();) {
        const int connection = (start++)->first;
        if (isReadable(connection)) {
            hear(connection);
        }
    }
}

void InstanceListener::confirmStarts() {
    confirms_ = true;
    for (const FileDescriptor& start : std::exchange(waiting_, {})) {
        confirmStartRequest(start.get());
    }
}

}  // namespace tavo
