#include "tests/platform/linux/XServer.h"

#include <array>
#include <csignal>
#include <stdexcept>
#include <string_view>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <xcb/xcb.h>

namespace tavo {
namespace {

xcb_atom_t internAtom(xcb_connection_t* connection, std::string_view name) {
    xcb_intern_atom_reply_t* const reply = xcb_intern_atom_reply(
        connection,
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr);
    if (reply == nullptr) {
        throw std::runtime_error("the X server went away");
    }
    const xcb_atom_t atom = reply->atom;
    std::free(reply);
    return atom;
}

}  // namespace

XServer::XServer(const char* screen) {
    std::array<int, 2> ends = {};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    const std::string descriptor = std::to_string(ends[1]);
    process_ = ::fork();
    if (process_ == 0) {
        ::fcntl(ends[1], F_SETFD, 0);
        const int nowhere = ::open("/dev/null", O_RDWR);
        ::dup2(nowhere, STDOUT_FILENO);
        ::dup2(nowhere, STDERR_FILENO);
        // A server that begins anew whenever its last client has left would now and then refuse
        // the next one.
        ::execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-screen", "0", screen,
                 "-nolisten", "tcp", "-noreset", nullptr);
        ::_exit(127);
    }
    ::close(ends[1]);
    std::string number;
    pollfd waiting = {ends[0], POLLIN, 0};
    constexpr int kPatience = 30000;  // milliseconds
    while (!number.ends_with('\n') && ::poll(&waiting, 1, kPatience) > 0) {
        std::array<char, 16> bytes = {};
        const ssize_t got = ::read(ends[0], bytes.data(), bytes.size());
        if (got <= 0) {
            break;
        }
        number.append(bytes.data(), static_cast<std::size_t>(got));
    }
    ::close(ends[0]);
    if (!number.ends_with('\n')) {
        end();
        throw std::runtime_error("Xvfb does not come up");
    }
    number.pop_back();
    display_ = ":" + number;
}

XServer::~XServer() {
    end();
}

void XServer::end() {
    if (process_ > 0) {
        ::kill(process_, SIGTERM);
        ::kill(process_, SIGCONT);  // a test may have stopped it
        ::waitpid(process_, nullptr, 0);
    }
}

std::shared_ptr<void> XServer::publishSettings(const std::string& property) const {
    std::shared_ptr<xcb_connection_t> connection(xcb_connect(display_.c_str(), nullptr),
                                                 &xcb_disconnect);
    xcb_connection_t* const raw = connection.get();
    const xcb_window_t window = xcb_generate_id(raw);
    const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(raw)).data;
    xcb_create_window(raw, 0, window, screen->root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    const xcb_atom_t settings = internAtom(raw, "_XSETTINGS_SETTINGS");
    xcb_change_property(raw, XCB_PROP_MODE_REPLACE, window, settings, settings, 8,
                        static_cast<std::uint32_t>(property.size()), property.data());
    xcb_set_selection_owner(raw, window, internAtom(raw, "_XSETTINGS_S0"), XCB_CURRENT_TIME);
    // An answer means that all before it has been done.
    internAtom(raw, "_XSETTINGS_S0");
    return connection;
}

}  // namespace tavo
