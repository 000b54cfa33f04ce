#include "tests/platform/linux/WaylandDesktop.h"

#include <algorithm>
#include <functional>
#include <stdexcept>

#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

namespace tavo {
namespace {

using nlohmann::json;
using processes::becomesTrue;

constexpr uid_t kNobody = 65534;

void visit(const json& node, const std::function<void(const json&)>& window) {
    if (node.value("pid", 0) > 0 && node.value("type", "") == "con") {
        window(node);
    }
    for (const char* const kind : {"nodes", "floating_nodes"}) {
        for (const json& inner : node.value(kind, json::array())) {
            visit(inner, window);
        }
    }
}

std::string firstMatch(const std::string& folder, const std::string& prefix) {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
        const std::string name = entry.path().filename();
        if (name.starts_with(prefix) && !name.ends_with(".lock")) {
            return entry.path();
        }
    }
    return {};
}

}  // namespace

WaylandDesktop::WaylandDesktop() {
    for (const char* const program : {"/usr/bin/sway", "/usr/bin/swaymsg", "/usr/bin/foot"}) {
        if (::access(program, X_OK) != 0) {
            throw std::runtime_error(std::string("not installed: ") + program);
        }
    }
    const std::string configuration =
        folder_.write("config", "xwayland disable\ndefault_border none\n");
    const std::string runtime = folder_.path("run");
    std::filesystem::create_directory(runtime);
    ::chmod(runtime.c_str(), 0700);
    std::vector<std::string> words = {"/usr/bin/env"};
    if (::geteuid() == 0) {
        ::chmod(folder_.path().c_str(), 0755);
        if (::chown(runtime.c_str(), kNobody, kNobody) != 0) {
            throw std::runtime_error("the folder cannot be given to nobody");
        }
        words = {"/usr/bin/setpriv", "--reuid=65534", "--regid=65534", "--clear-groups",
                 "/usr/bin/env"};
    }
    words.insert(words.end(),
                 {"-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", "HOME=" + runtime,
                  "XDG_RUNTIME_DIR=" + runtime, "WLR_BACKENDS=headless", "WLR_RENDERER=pixman",
                  "WLR_LIBINPUT_NO_DEVICES=1", "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent",
                  "/bin/sh", "-c", "echo $$; exec sway -c " + configuration + " >/dev/null 2>&1"});
    compositor_ = std::make_unique<ChildProgram>(words);
    compositorProcess_ = std::stoi(compositor_->readLine().value_or("0"));
    if (!becomesTrue([&] {
            display_ = firstMatch(runtime, "wayland-");
            control_ = firstMatch(runtime, "sway-ipc.");
            return !display_.empty() && !control_.empty() && !message({"-t", "get_tree"}).empty();
        })) {
        throw std::runtime_error("sway does not come up");
    }
}

std::string WaylandDesktop::message(const std::vector<std::string>& words) {
    std::vector<std::string> all = {"/usr/bin/swaymsg", "-r", "-s", control_};
    all.insert(all.end(), words.begin(), words.end());
    ChildProgram program(all);
    std::string answer;
    while (const auto line = program.readLine()) {
        answer += *line;
    }
    program.wait();
    return answer;
}

void WaylandDesktop::command(const std::string& words) {
    (void)message({"--", words});
}

std::vector<pid_t> WaylandDesktop::processes() {
    std::vector<pid_t> found;
    const json tree = json::parse(message({"-t", "get_tree"}), nullptr, false);
    if (tree.is_object()) {
        visit(tree, [&](const json& window) { found.push_back(window.value("pid", 0)); });
    }
    return found;
}

std::vector<std::string> WaylandDesktop::onDesktop(const std::vector<std::string>& command) const {
    std::vector<std::string> words = {"/usr/bin/env",
                                      "-u",
                                      "DISPLAY",
                                      "WAYLAND_DISPLAY=" + display_,
                                      "XDG_RUNTIME_DIR=" + folder_.path("run"),
                                      "HOME=" + folder_.path(),
                                      "QT_QPA_PLATFORM=wayland",
                                      "LC_ALL=C.UTF-8"};
    words.insert(words.end(), command.begin(), command.end());
    return words;
}

pid_t WaylandDesktop::focused() {
    pid_t focused = 0;
    const json tree = json::parse(message({"-t", "get_tree"}), nullptr, false);
    if (tree.is_object()) {
        visit(tree, [&](const json& window) {
            focused = window.value("focused", false) ? window.value("pid", 0) : focused;
        });
    }
    return focused;
}

WaylandDesktop::Window WaylandDesktop::open(const std::string& appId,
                                            const std::vector<std::string>& variables) {
    std::vector<std::string> words = {"/usr/bin/env", "-u", "DISPLAY"};
    words.insert(words.end(), variables.begin(), variables.end());
    words.insert(words.end(),
                 {"WAYLAND_DISPLAY=" + display_, "XDG_RUNTIME_DIR=" + folder_.path("run"),
                  "HOME=" + folder_.path(), "LC_ALL=C.UTF-8", "/bin/sh", "-c",
                  "echo $$; export GIO_LAUNCHED_DESKTOP_FILE_PID=$$; "
                  "exec /usr/bin/foot --app-id=\"$0\" /bin/sleep 1000 2>/dev/null",
                  appId});
    Window window;
    window.program = std::make_unique<ChildProgram>(words);
    window.process = std::stoi(window.program->readLine().value_or("0"));
    EXPECT_TRUE(becomesTrue([&] {
        const auto all = processes();
        return std::find(all.begin(), all.end(), window.process) != all.end();
    }));
    return window;
}

}  // namespace tavo
