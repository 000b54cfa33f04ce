// A program with windows, as a test wants them. Reads commands, answers each with one line:
//
//   open [instance=TEXT] [class=TEXT] [gtk=TEXT] [pid=NUMBER] [machine=TEXT] [type=NAME]
//        [transient=ID] [usertime=NUMBER] [title=SIZE] [name=SIZE] [unmanaged]
//       makes a window and answers its id once it is mapped; name=SIZE is a class of that many
//       bytes, title=SIZE such a title, type=NAME the end of _NET_WM_WINDOW_TYPE_NAME
//   ring COUNT TEXT
//       makes that many windows of that class, each a dialog of the next and the last one of the
//       first, and answers their ids
//   close ID
//
// pid and machine are its own unless given; "none" leaves them out. Ends with its input.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

#include <xcb/xcb.h>

namespace {

using Options = std::map<std::string, std::string>;

class Maker {
public:
    Maker() : connection_(xcb_connect(nullptr, nullptr)) {
        if (xcb_connection_has_error(connection_) == 0) {
            root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
        }
    }

    [[nodiscard]] bool works() const { return xcb_connection_has_error(connection_) == 0; }

    std::string open(const Options& options) {
        const xcb_window_t window = xcb_generate_id(connection_);
        const std::uint32_t values[] = {options.contains("unmanaged") ? 1U : 0U,
                                        XCB_EVENT_MASK_STRUCTURE_NOTIFY};
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_, 10, 10, 200, 100, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        describe(window, options);
        xcb_map_window(connection_, window);
        await(XCB_MAP_NOTIFY);
        return std::to_string(window);
    }

    std::string ring(std::size_t count, const std::string& className) {
        std::vector<xcb_window_t> windows(count);
        for (xcb_window_t& window : windows) {
            window = xcb_generate_id(connection_);
            xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_, 10, 10, 20, 10, 0,
                              XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
            setText(window, XCB_ATOM_WM_CLASS, '\0' + className + '\0');
        }
        std::string ids;
        for (std::size_t i = 0; i < count; ++i) {
            setNumber(windows[i], XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW,
                      windows[(i + 1) % count]);
            ids += std::to_string(windows[i]) + ' ';
        }
        std::free(
            xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        return ids;
    }

    std::string close(xcb_window_t window) {
        xcb_destroy_window(connection_, window);
        await(XCB_DESTROY_NOTIFY);
        return "closed";
    }

private:
    void describe(xcb_window_t window, const Options& options) {
        const auto option = [&](const char* name, const std::string& otherwise) {
            const auto found = options.find(name);
            return found == options.end() ? otherwise : found->second;
        };
        const std::string size = option("name", "");
        const std::string names = size.empty()
                                      ? option("instance", "") + '\0' + option("class", "") + '\0'
                                      : std::string(std::stoul(size), 'x') + '\0' + "X" + '\0';
        if (names.size() > 2) {
            setText(window, XCB_ATOM_WM_CLASS, names);
        }
        setText(window, XCB_ATOM_WM_NAME, std::string(std::stoul(option("title", "1")), 't'));
        char host[256] = {};
        ::gethostname(host, sizeof host - 1);
        if (const std::string machine = option("machine", host); machine != "none") {
            setText(window, XCB_ATOM_WM_CLIENT_MACHINE, machine);
        }
        if (const std::string text = option("gtk", ""); !text.empty()) {
            setText(window, atom("_GTK_APPLICATION_ID"), text);
        }
        if (const std::string pid = option("pid", std::to_string(::getpid())); pid != "none") {
            setNumber(window, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, number(pid));
        }
        if (const std::string time = option("usertime", ""); !time.empty()) {
            setNumber(window, atom("_NET_WM_USER_TIME"), XCB_ATOM_CARDINAL, number(time));
        }
        if (const std::string parent = option("transient", ""); !parent.empty()) {
            setNumber(window, XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, number(parent));
        }
        if (const std::string type = option("type", ""); !type.empty()) {
            setNumber(window, atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM,
                      atom("_NET_WM_WINDOW_TYPE_" + type));
        }
    }

    static std::uint32_t number(const std::string& text) {
        return static_cast<std::uint32_t>(std::stoll(text));
    }

    xcb_atom_t atom(const std::string& name) {
        auto* const reply = xcb_intern_atom_reply(
            connection_,
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
            nullptr);
        const xcb_atom_t atom = reply == nullptr ? xcb_atom_t{XCB_ATOM_NONE} : reply->atom;
        std::free(reply);
        return atom;
    }

    void setText(xcb_window_t window, xcb_atom_t property, const std::string& text) {
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, property, XCB_ATOM_STRING,
                            8, static_cast<std::uint32_t>(text.size()), text.data());
    }

    void setNumber(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::uint32_t value) {
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, property, type, 32, 1,
                            &value);
    }

    void await(int kind) {
        xcb_flush(connection_);
        while (xcb_generic_event_t* const event = xcb_wait_for_event(connection_)) {
            const bool found = (event->response_type & 0x7f) == kind;
            std::free(event);
            if (found) {
                break;
            }
        }
    }

    xcb_connection_t* connection_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
};

}  // namespace

int main() {
    Maker maker;
    if (!maker.works()) {
        return 1;
    }
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string command;
        words >> command;
        Options options;
        std::size_t count = 0;
        std::string rest;
        for (std::string word; words >> word;) {
            rest = word;
            const std::size_t equals = word.find('=');
            options[word.substr(0, equals)] =
                equals == std::string::npos ? "" : word.substr(equals + 1);
        }
        if (command == "open") {
            std::cout << maker.open(options) << std::endl;
        } else if (command == "ring") {
            std::istringstream(line.substr(command.size())) >> count >> rest;
            std::cout << maker.ring(count, rest) << std::endl;
        } else if (command == "close") {
            std::cout << maker.close(static_cast<xcb_window_t>(std::stoul(rest))) << std::endl;
        } else {
            std::cout << "what?" << std::endl;
        }
    }
    return 0;
}
