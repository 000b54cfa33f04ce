#include "tests/platform/linux/XDesktop.h"

#include <algorithm>
#include <stdexcept>

namespace tavo {
namespace {

using processes::becomesTrue;

constexpr std::uint32_t kFromPager = 2;
constexpr std::uint32_t kIconic = 3;

bool isInstalled(const std::string& program) {
    return ::access(("/usr/bin/" + program).c_str(), X_OK) == 0;
}

constexpr const char* kGuarded = R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfwm4" version="1.0">
  <property name="general" type="empty">
    <property name="prevent_focus_stealing" type="bool" value="true"/>
  </property>
</channel>
)";

}  // namespace

XDesktop::XDesktop(Manager manager) {
    connection_ = XcbConnection::open(server_.display());
    if (!connection_) {
        throw std::runtime_error("no connection to the X server");
    }
    variables_ = {"DISPLAY=" + server_.display(),
                  "HOME=" + folder_.path(),
                  "XDG_CONFIG_HOME=" + folder_.path("config"),
                  "XDG_RUNTIME_DIR=" + folder_.path(),
                  "NO_AT_BRIDGE=1",
                  "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent"};
    if (manager == Manager::openbox) {
        startManager({"openbox"});
    } else if (manager != Manager::none) {
        if (manager == Manager::xfwm4Guarded) {
            (void)folder_.write("config/xfce4/xfconf/xfce-perchannel-xml/xfwm4.xml", kGuarded);
        }
        startManager({"xfwm4", "--compositor=off"});
    }
}

void XDesktop::startManager(const std::vector<std::string>& command) {
    if (!isInstalled(command.front())) {
        throw std::runtime_error("not installed: " + command.front());
    }
    if (command.front() == "xfwm4") {
        // It keeps its settings with a service.
        bus_ = std::make_unique<ChildProgram>(onDesktop(
            {"/bin/sh", "-c",
             "exec dbus-daemon --session --nofork --nopidfile --print-address=1 2>/dev/null"}));
        variables_.back() = "DBUS_SESSION_BUS_ADDRESS=" + bus_->readLine().value_or("");
    }
    std::string line = "exec";
    for (const std::string& word : command) {
        line += ' ' + word;
    }
    manager_ =
        std::make_unique<ChildProgram>(onDesktop({"/bin/sh", "-c", line + " >/dev/null 2>&1"}));
    if (!becomesTrue([this] { return !rootNumbers("_NET_SUPPORTING_WM_CHECK").empty(); }) ||
        !becomesTrue([this] { return managesWindows(); })) {
        throw std::runtime_error(command.front() + " does not come up");
    }
}

// A manager announces itself before it listens, and a window shown in between is never managed.
bool XDesktop::managesWindows() {
    const xcb_window_t probe = xcb_generate_id(connection_->get());
    xcb_create_window(connection_->get(), XCB_COPY_FROM_PARENT, probe, connection_->root(), 0, 0,
                      20, 20, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_map_window(connection_->get(), probe);
    const auto isManaged = [&] {
        const auto windows = rootNumbers("_NET_CLIENT_LIST");
        return std::find(windows.begin(), windows.end(), probe) != windows.end();
    };
    bool managed = isManaged();
    for (int round = 0; round < 20 && !managed; ++round) {
        ::poll(nullptr, 0, 5);
        managed = isManaged();
    }
    xcb_destroy_window(connection_->get(), probe);
    return managed && becomesTrue([&] { return !isManaged(); });
}

std::vector<std::string> XDesktop::onDesktop(const std::vector<std::string>& command) const {
    std::vector<std::string> words = {"/usr/bin/env"};
    words.insert(words.end(), variables_.begin(), variables_.end());
    words.insert(words.end(), command.begin(), command.end());
    return words;
}

xcb_atom_t XDesktop::atom(const char* name) {
    return connection_->atoms(std::vector<const char*>{name}).front();
}

std::vector<std::uint32_t> XDesktop::numbers(xcb_window_t window, const char* property) {
    connection_->beginExchange();
    const auto reply = connection_->reply<xcb_get_property_reply_t>(xcb_get_property(
        connection_->get(), 0, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 4096));
    if (!reply || reply->format != 32) {
        return {};
    }
    const auto* const first =
        static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {first, first + reply->value_len};
}

std::vector<std::uint32_t> XDesktop::rootNumbers(const char* property) {
    return numbers(connection_->root(), property);
}

xcb_window_t XDesktop::active() {
    const auto values = rootNumbers("_NET_ACTIVE_WINDOW");
    return values.empty() ? xcb_window_t{XCB_WINDOW_NONE} : values.front();
}

xcb_window_t XDesktop::focus() {
    connection_->beginExchange();
    const auto reply =
        connection_->reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(connection_->get()));
    return reply ? reply->focus : xcb_window_t{XCB_WINDOW_NONE};
}

std::vector<xcb_window_t> XDesktop::stacking() {
    std::vector<xcb_window_t> windows = rootNumbers("_NET_CLIENT_LIST_STACKING");
    // xfwm4 does not list a window there while it is the only one.
    const auto all = rootNumbers("_NET_CLIENT_LIST");
    return windows.empty() ? all : windows;
}

bool XDesktop::isMinimised(xcb_window_t window) {
    const auto state = numbers(window, "WM_STATE");
    return !state.empty() && state.front() == kIconic;
}

xcb_timestamp_t XDesktop::time() {
    connection_->beginExchange();
    return connection_->now().value_or(0);
}

bool XDesktop::activate(xcb_window_t window) {
    tell(window, "_NET_ACTIVE_WINDOW", kFromPager, time());
    return becomesTrue([&] { return active() == window && focus() == window; });
}

bool XDesktop::minimise(xcb_window_t window) {
    tell(window, "WM_CHANGE_STATE", kIconic);
    return becomesTrue([&] { return isMinimised(window); });
}

bool XDesktop::moveToDesktop(xcb_window_t window, std::uint32_t desktop) {
    tell(window, "_NET_WM_DESKTOP", desktop, kFromPager);
    return becomesTrue([&] { return numbers(window, "_NET_WM_DESKTOP") == std::vector{desktop}; });
}

bool XDesktop::goToDesktop(std::uint32_t desktop) {
    tell(connection_->root(), "_NET_CURRENT_DESKTOP", desktop, time());
    return becomesTrue([&] { return rootNumbers("_NET_CURRENT_DESKTOP") == std::vector{desktop}; });
}

bool XDesktop::settle() {
    constexpr std::uint32_t kRemove = 0;
    constexpr std::uint32_t kAdd = 1;
    const auto windows = rootNumbers("_NET_CLIENT_LIST");
    const std::uint32_t mark = atom("_NET_WM_STATE_SKIP_PAGER");
    const auto isMarked = [&] {
        const auto states = numbers(windows.front(), "_NET_WM_STATE");
        return std::find(states.begin(), states.end(), mark) != states.end();
    };
    // It takes requests and events in order. What it did for those before the first mark has
    // reached it as events before the second.
    const auto request = [&](std::uint32_t change) {
        tell(windows.front(), "_NET_WM_STATE", change, mark);
        return becomesTrue([&] { return isMarked() == (change == kAdd); });
    };
    return !windows.empty() && request(kAdd) && request(kRemove);
}

void XDesktop::claim(const std::vector<xcb_window_t>& windows, xcb_window_t active) {
    setRoot("_NET_CLIENT_LIST_STACKING", XCB_ATOM_WINDOW, windows);
    setRoot("_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW, {active});
}

void XDesktop::setRoot(const char* property, xcb_atom_t type,
                       const std::vector<std::uint32_t>& values) {
    connection_->beginExchange();
    xcb_change_property(connection_->get(), XCB_PROP_MODE_REPLACE, connection_->root(),
                        atom(property), type, 32, static_cast<std::uint32_t>(values.size()),
                        values.data());
    // An answer means that all before it has been done.
    (void)connection_->now();
}

void XDesktop::tell(xcb_window_t window, const char* message, std::uint32_t first,
                    std::uint32_t second) {
    connection_->beginExchange();
    xcb_client_message_event_t event = {};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(message);
    event.data.data32[0] = first;
    event.data.data32[1] = second;
    xcb_send_event(connection_->get(), 0, connection_->root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(connection_->get());
}

namespace {

std::vector<std::string> command(const XDesktop& desktop, const std::string& program,
                                 const std::vector<std::string>& variables) {
    std::vector<std::string> words = variables;
    // Says its process first, which stays the same when it becomes the program.
    words.insert(words.end(), {"/bin/sh", "-c", "echo $$; exec \"$0\"", program});
    return desktop.onDesktop(words);
}

}  // namespace

WindowedProgram::WindowedProgram(const XDesktop& desktop, const std::string& program,
                                 const std::vector<std::string>& variables)
    : program_(command(desktop, program, variables)),
      process_(std::stoi(program_.readLine().value_or("0"))) {}

}  // namespace tavo
