// The time to find out that an application runs and to bring it to the front, with many windows
// open on the X server of DISPLAY. There must be no window manager, so that only our own work and
// the server's is measured: the benchmark writes the list of managed windows itself.
//
//   xvfb-run tavo_fronting_benchmark, or on any server that may be disturbed
#include <cstdlib>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include <benchmark/benchmark.h>
#include <xcb/xcb.h>

#include "platform/linux/x11/XcbConnection.h"
#include "platform/linux/x11/XcbRunningApplications.h"

namespace {

constexpr std::size_t kEntries = 500;
constexpr std::size_t kOwnWindows = 3;

const char* display() {
    const char* const name = std::getenv("DISPLAY");
    return name == nullptr ? "" : name;
}

// Processes that own windows. Each has its own connection, as on a real desktop.
class Clients {
public:
    // `matched`: whether the windows belong to listed entries by their names. Where they do not,
    // RunningApplications has to look at each process.
    Clients(int windows, bool matched) {
        for (int i = 0; i < windows; ++i) {
            const bool own = i % (windows / static_cast<int>(kOwnWindows)) == 0;
            std::string name = "app7";
            if (!own) {
                name = matched ? "app" + std::to_string(10 + i) : "stranger";
            }
            start(name);
        }
        const auto connection = tavo::XcbConnection::open(display());
        connection->beginExchange();
        const char* const names[] = {"_NET_CLIENT_LIST_STACKING", "_NET_CLIENT_LIST"};
        for (const xcb_atom_t list : connection->atoms(names)) {
            xcb_change_property(connection->get(), XCB_PROP_MODE_REPLACE, connection->root(), list,
                                XCB_ATOM_WINDOW, 32, static_cast<std::uint32_t>(windows_.size()),
                                windows_.data());
        }
        (void)connection->now();
    }
    Clients(const Clients&) = delete;
    Clients& operator=(const Clients&) = delete;
    ~Clients() {
        for (const pid_t process : processes_) {
            ::kill(process, SIGKILL);
            ::waitpid(process, nullptr, 0);
        }
    }

private:
    void start(const std::string& name) {
        int ends[2] = {};
        if (::pipe(ends) != 0) {
            std::abort();
        }
        const pid_t process = ::fork();
        if (process == 0) {
            live(name, ends[1]);
        }
        processes_.push_back(process);
        xcb_window_t window = XCB_WINDOW_NONE;
        if (::read(ends[0], &window, sizeof window) != static_cast<ssize_t>(sizeof window)) {
            std::abort();
        }
        windows_.push_back(window);
        ::close(ends[0]);
        ::close(ends[1]);
    }

    [[noreturn]] static void live(const std::string& name, int output) {
        xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
        if (xcb_connection_has_error(connection) != 0) {
            ::_exit(1);
        }
        const xcb_window_t window = xcb_generate_id(connection);
        xcb_create_window(connection, 0, window,
                          xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root, 0, 0, 9,
                          9, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        const std::string names = name + '\0' + name + '\0';
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS,
                            XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(names.size()),
                            names.data());
        std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
        if (::write(output, &window, sizeof window) < 0) {
            ::_exit(1);
        }
        for (;;) {
            ::pause();
        }
    }

    std::vector<pid_t> processes_;
    std::vector<xcb_window_t> windows_;
};

void findAndFront(benchmark::State& state, bool matched) {
    const auto listed = std::make_shared<tavo::DesktopEntryIndex>();
    std::vector<tavo::ListedEntry> entries;
    for (std::size_t i = 0; i < kEntries; ++i) {
        const std::string name = "app" + std::to_string(i);
        entries.push_back({name + ".desktop", "/a/" + name + ".desktop", "", name});
    }
    listed->replace(std::move(entries));
    const auto running = tavo::makeXcbRunningApplications(display(), listed, {});
    if (!tavo::XcbConnection::open(display())) {
        state.SkipWithError("no X server at DISPLAY");
        return;
    }
    // An X server resets itself when its last client disconnects; this connection prevents it.
    const auto keep = tavo::XcbConnection::open(display());
    const Clients clients(static_cast<int>(state.range(0)), matched);
    std::size_t found = 0;
    for ([[maybe_unused]] const auto _ : state) {
        running->noteUserRequest("app7.desktop");
        const auto applications = running->withIdentifier("app7.desktop");
        found = applications.size();
        if (found > 0) {
            running->activateAllWindows(applications.front());
        }
    }
    if (found < kOwnWindows) {
        state.SkipWithError("the application was not found");
    }
}

BENCHMARK_CAPTURE(findAndFront, windows_of_listed_applications, true)
    ->Arg(20)
    ->Arg(200)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(findAndFront, windows_of_strangers, false)
    ->Arg(200)
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
