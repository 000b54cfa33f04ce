#include "platform/linux/instance/InstanceSocket.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/linux/system/StartEnvironment.h"

namespace tavo {
namespace {

constexpr char kSocket[] = "tavolauncher.socket";
constexpr char kLock[] = "tavolauncher.lock";
constexpr int kWaiting = 64;
constexpr std::size_t kLongestToken = 1024;
constexpr std::chrono::milliseconds kBetweenTries{1};

// The answers of the first start, one byte each.
constexpr char kTaken = 1;
constexpr char kStarting = 2;

// Invalid unless this user owns the folder and no other user can put a socket into it.
FileDescriptor openOwn(const std::string& folder) {
    if (!folder.starts_with('/')) {
        return {};
    }
    FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat facts = {};
    if (!opened.valid() || ::fstat(opened.get(), &facts) != 0 || facts.st_uid != ::geteuid() ||
        (facts.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        return {};
    }
    return opened;
}

// The address of the socket in `folder`. Through /proc/self/fd, because the folder's own path may
// be too long for sockaddr_un.
sockaddr_un addressIn(int folder) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string path = "/proc/self/fd/" + std::to_string(folder) + '/' + kSocket;
    std::copy(path.begin(), path.end(), address.sun_path);
    return address;
}

bool ownPeer(int socket) {
    ucred peer = {};
    socklen_t size = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == ::geteuid();
}

FileDescriptor makeSocket() {
    return FileDescriptor(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

std::string messageOf(const StartRequest& request) {
    std::string message;
    for (const std::string* const token : {&request.startupId, &request.activationToken}) {
        // Longer tokens are left out: no desktop makes them.
        message += token->size() <= kLongestToken ? *token : std::string();
        message += '\0';
    }
    return message;
}

enum class HandOver : std::uint8_t { NotThere, GivenUp, Done };

// The answer of the first start: "" when it closed the connection, absent when it did not answer
// within `patience`.
std::optional<std::string> hear(int socket, std::chrono::milliseconds patience) {
    pollfd wait = {.fd = socket, .events = POLLIN, .revents = 0};
    if (::poll(&wait, 1, static_cast<int>(patience.count())) == 0) {
        return std::nullopt;
    }
    char said = 0;
    return ::recv(socket, &said, 1, 0) == 1 ? std::string(1, said) : std::string();
}

HandOver handOver(int folder, const StartRequest& request, const InstancePatience& patience) {
    const FileDescriptor socket = makeSocket();
    const sockaddr_un address = addressIn(folder);
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        !ownPeer(socket.get())) {
        return HandOver::NotThere;
    }
    const std::string message = messageOf(request);
    if (::send(socket.get(), message.data(), message.size(), MSG_NOSIGNAL) < 0) {
        return HandOver::NotThere;
    }
    auto said = hear(socket.get(), patience.answer);
    const bool starting = said == std::string(1, kStarting);
    if (starting) {
        said = hear(socket.get(), patience.start);
    }
    if (!said || *said == std::string(1, kTaken)) {
        return HandOver::Done;
    }
    return starting ? HandOver::GivenUp : HandOver::NotThere;
}

// Sends one answer. That fails when the start has ended meanwhile, and then it needs none.
void say(int connection, char what) {
    [[maybe_unused]] const ssize_t sent = ::send(connection, &what, 1, MSG_NOSIGNAL);
}

// Replaces a socket file that was left over. Called with the lock held, so that no other start does
// the same.
FileDescriptor bindIn(int folder) {
    ::unlinkat(folder, kSocket, 0);
    FileDescriptor socket = makeSocket();
    const sockaddr_un address = addressIn(folder);
    if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return {};
    }
    return socket;
}

InstanceClaimed claimIn(FileDescriptor folder, const StartRequest& request,
                        const InstancePatience& patience) {
    if (!folder.valid()) {
        return {};
    }
    FileDescriptor lock(::openat(folder.get(), kLock, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW,
                                 S_IRUSR | S_IWUSR));
    if (!lock.valid()) {
        return {};
    }
    auto end = std::chrono::steady_clock::now() + patience.silence;
    do {
        const HandOver done = handOver(folder.get(), request, patience);
        if (done == HandOver::Done) {
            return {.claim = InstanceClaim::HandedOver, .socket = nullptr};
        }
        if (::flock(lock.get(), LOCK_EX | LOCK_NB) == 0) {
            FileDescriptor listener = bindIn(folder.get());
            if (!listener.valid()) {
                return {};
            }
            return {.claim = InstanceClaim::First,
                    .socket = std::make_unique<InstanceSocket>(std::move(folder), std::move(lock),
                                                               std::move(listener))};
        }
        if (errno != EWOULDBLOCK) {
            return {};
        }
        if (done == HandOver::GivenUp) {
            // Another start that waited for the same first one has taken its place, and gets the
            // full time.
            end = std::chrono::steady_clock::now() + patience.silence;
        }
        std::this_thread::sleep_for(kBetweenTries);
    } while (std::chrono::steady_clock::now() < end);
    return {.claim = InstanceClaim::NoAnswer, .socket = nullptr};
}

}  // namespace

InstanceSocket::InstanceSocket(FileDescriptor folder, FileDescriptor lock, FileDescriptor listener)
    : folder_(std::move(folder)), lock_(std::move(lock)), listener_(std::move(listener)) {}

InstanceSocket::~InstanceSocket() {
    // The lock is released last, so the socket file that is removed is this process's.
    ::unlinkat(folder_.get(), kSocket, 0);
    listener_.close();
    lock_.close();
}

void InstanceSocket::listen() const {
    // Cannot fail once bind() has succeeded.
    ::listen(listener_.get(), kWaiting);
}

FileDescriptor InstanceSocket::accept() const {
    FileDescriptor connection(
        ::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    return connection.valid() && ownPeer(connection.get()) ? std::move(connection)
                                                           : FileDescriptor();
}

std::optional<StartRequest> readStartRequest(int connection) {
    std::array<char, 2 * (kLongestToken + 1)> bytes;
    const ssize_t size = ::recv(connection, bytes.data(), bytes.size(), 0);
    if (size < 2) {
        return std::nullopt;
    }
    const std::string_view message(bytes.data(), static_cast<std::size_t>(size));
    const std::size_t end = message.find('\0');
    if (end == std::string_view::npos || message.find('\0', end + 1) != message.size() - 1) {
        return std::nullopt;
    }
    return StartRequest{
        .startupId = std::string(message.substr(0, end)),
        .activationToken = std::string(message.substr(end + 1, message.size() - end - 2))};
}

void holdStartRequest(int connection) {
    say(connection, kStarting);
}

void confirmStartRequest(int connection) {
    say(connection, kTaken);
}

InstancePlaces InstancePlaces::in(const StartEnvironment& environment) {
    std::string temporary = environment.value("TMPDIR").value_or("");
    if (!temporary.starts_with('/')) {
        temporary = "/tmp";
    }
    return {.runtimeFolder = environment.value("XDG_RUNTIME_DIR").value_or(""),
            .temporaryFolder = std::move(temporary)};
}

InstanceClaimed claimInstance(const InstancePlaces& places, const StartRequest& request,
                              const InstancePatience& patience) {
    InstanceClaimed claimed = claimIn(openOwn(places.runtimeFolder), request, patience);
    if (claimed.claim == InstanceClaim::Impossible && places.temporaryFolder.starts_with('/')) {
        const std::string own =
            places.temporaryFolder + "/tavolauncher-" + std::to_string(::geteuid());
        ::mkdir(own.c_str(), S_IRWXU);
        claimed = claimIn(openOwn(own), request, patience);
    }
    return claimed;
}

}  // namespace tavo
