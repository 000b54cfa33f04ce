// An X server with a window manager, for one test, and programs with windows on it.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

#include <xcb/xcb.h>

#include "platform/linux/XcbConnection.h"
#include "tests/platform/linux/ChildProgram.h"
#include "tests/platform/linux/ProcessFixture.h"
#include "tests/platform/linux/XServer.h"

namespace tavo {

enum class Manager { none, openbox, xfwm4, xfwm4Guarded };

inline void PrintTo(Manager manager, std::ostream* stream) {
    constexpr const char* kNames[] = {"none", "openbox", "xfwm4", "xfwm4Guarded"};
    *stream << kNames[static_cast<int>(manager)];
}

class XDesktop {
public:
    // `xfwm4Guarded` gives the focus only to windows that had the user's input last. Throws, and
    // says why, when there is no such desktop.
    explicit XDesktop(Manager manager);

    [[nodiscard]] const std::string& display() const { return server_.display(); }

    // Command words that run `command` on this desktop.
    [[nodiscard]] std::vector<std::string> onDesktop(const std::vector<std::string>& command) const;

    // Below, what the server says.
    [[nodiscard]] std::vector<std::uint32_t> rootNumbers(const char* property);
    [[nodiscard]] std::vector<std::uint32_t> numbers(xcb_window_t window, const char* property);
    [[nodiscard]] xcb_window_t active();
    [[nodiscard]] xcb_window_t focus();
    // The bottom one first.
    [[nodiscard]] std::vector<xcb_window_t> stacking();
    [[nodiscard]] bool isMinimised(xcb_window_t window);
    [[nodiscard]] xcb_timestamp_t time();

    // Requests as a pager or the user makes them; they return when that has happened.
    bool activate(xcb_window_t window);
    bool minimise(xcb_window_t window);
    bool moveToDesktop(xcb_window_t window, std::uint32_t desktop);
    bool goToDesktop(std::uint32_t desktop);

    // Returns when the manager has carried out all requests so far, and has heard of what came of
    // them. The focus stays where it is; one window is to be there.
    bool settle();

    // Says that these are the managed windows, where there is no manager to say it.
    void claim(const std::vector<xcb_window_t>& windows, xcb_window_t active = XCB_WINDOW_NONE);

private:
    void startManager(const std::vector<std::string>& command);
    bool managesWindows();
    void setRoot(const char* property, xcb_atom_t type, const std::vector<std::uint32_t>& values);
    void tell(xcb_window_t window, const char* message, std::uint32_t first,
              std::uint32_t second = 0);
    xcb_atom_t atom(const char* name);

    XServer server_{"800x600x24"};
    processes::Folder folder_;
    std::vector<std::string> variables_;
    std::unique_ptr<ChildProgram> bus_;
    std::unique_ptr<ChildProgram> manager_;
    std::unique_ptr<XcbConnection> connection_;
};

// A program that makes windows as it is told (WindowMaker.cpp says how).
class WindowedProgram {
public:
    WindowedProgram(const XDesktop& desktop, const std::string& program = defaultProgram(),
                    const std::vector<std::string>& variables = {});

    static std::string defaultProgram() {
        return std::filesystem::canonical(TAVO_TEST_PROGRAMS "/tavo_window_maker");
    }

    xcb_window_t open(const std::string& options) {
        return static_cast<xcb_window_t>(std::stoul(program_.ask("open " + options)));
    }
    std::vector<xcb_window_t> openRing(std::size_t count, const std::string& className) {
        std::istringstream ids(program_.ask("ring " + std::to_string(count) + ' ' + className));
        return {std::istream_iterator<xcb_window_t>(ids), {}};
    }
    void close(xcb_window_t window) { program_.ask("close " + std::to_string(window)); }

    [[nodiscard]] pid_t process() const { return process_; }
    void end() {
        program_.closeInput();
        program_.wait();
    }

private:
    ChildProgram program_;
    pid_t process_;
};

}  // namespace tavo
