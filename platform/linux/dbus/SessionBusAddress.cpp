#include "platform/linux/dbus/SessionBusAddress.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <gio/gio.h>

#include "platform/posix/FileDescriptor.h"

namespace tavo {
namespace {

constexpr std::chrono::milliseconds kPatience{1000};

// What at-spi2-core calls the socket of its bus where it was started without a display.
constexpr std::string_view kNoDisplaySocket = "bus";

bool connectTo(int socket, const std::string& file) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (file.size() >= sizeof address.sun_path) {
        return false;
    }
    std::copy(file.begin(), file.end(), address.sun_path);
    return ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

// What at-spi2-core calls the socket of the bus of this display, without the number of a screen:
// "bus_0" of ":0" and of ":0.0".
std::string accessibilitySocketName() {
    const char* const display = std::getenv("DISPLAY");
    std::string name = std::string(kNoDisplaySocket) + (display != nullptr ? display : "");
    std::replace(name.begin(), name.end(), ':', '_');
    return name.substr(0, name.find('.'));
}

}  // namespace

std::string sessionBusAddress() {
    const char* const address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address != nullptr && *address != '\0') {
        return std::string_view(address).starts_with("autolaunch") ? "" : address;
    }
    const char* const folder = std::getenv("XDG_RUNTIME_DIR");
    if (folder == nullptr || *folder == '\0') {
        return "";
    }
    const std::string socket = std::string(folder) + "/bus";
    if (::access(socket.c_str(), F_OK) != 0) {
        return "";
    }
    char* const escaped = g_dbus_address_escape_value(socket.c_str());
    std::string found = std::string("unix:path=") + escaped;
    g_free(escaped);
    return found;
}

std::string socketFileOf(const std::string& address) {
    constexpr std::string_view kTransport = "unix:";
    constexpr std::string_view kKey = "path=";
    const std::string_view first = std::string_view(address).substr(0, address.find(';'));
    if (!first.starts_with(kTransport)) {
        return "";
    }
    std::string_view pairs = first.substr(kTransport.size());
    while (!pairs.empty()) {
        const std::string_view pair = pairs.substr(0, pairs.find(','));
        pairs.remove_prefix(std::min(pair.size() + 1, pairs.size()));
        if (pair.starts_with(kKey)) {
            const std::unique_ptr<char, decltype(&g_free)> file(
                g_uri_unescape_string(std::string(pair.substr(kKey.size())).c_str(), nullptr),
                g_free);
            return file ? file.get() : "";
        }
    }
    return "";
}

bool busAnswers(const std::string& address) {
    const std::string file = socketFileOf(address);
    if (file.empty()) {
        return true;
    }
    // Non-blocking: connect(2) then fails with EAGAIN when the bus accepts no connections and the
    // socket's backlog is full.
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!connectTo(socket.get(), file)) {
        return errno != EAGAIN;
    }
    // D-Bus Specification, "Authentication Protocol": a zero byte, then the question which
    // mechanisms the bus knows.
    constexpr std::string_view kGreeting("\0AUTH\r\n", 7);
    if (::send(socket.get(), kGreeting.data(), kGreeting.size(), MSG_NOSIGNAL) < 0) {
        return false;
    }
    pollfd wait = {.fd = socket.get(), .events = POLLIN, .revents = 0};
    return ::poll(&wait, 1, static_cast<int>(kPatience.count())) > 0;
}

bool accessibilityBusAnswers() {
    const char* const address = std::getenv("AT_SPI_BUS_ADDRESS");
    if (address != nullptr && *address != '\0') {
        return busAnswers(address);
    }
    const char* const folder = std::getenv("XDG_RUNTIME_DIR");
    if (folder == nullptr || *folder == '\0') {
        return true;
    }
    const std::string name = accessibilitySocketName();
    bool anyAsked = false;
    std::error_code failed;
    std::filesystem::directory_iterator entry(std::filesystem::path(folder) / "at-spi", failed);
    for (; !failed && entry != std::filesystem::directory_iterator(); entry.increment(failed)) {
        const std::string file = entry->path().filename();
        if (file != kNoDisplaySocket && file.substr(0, file.find('.')) != name) {
            continue;
        }
        char* const escaped = g_dbus_address_escape_value(entry->path().c_str());
        const bool answers = busAnswers(std::string("unix:path=") + escaped);
        g_free(escaped);
        if (answers) {
            return true;
        }
        anyAsked = true;
    }
    return !anyAsked;
}

}  // namespace tavo
