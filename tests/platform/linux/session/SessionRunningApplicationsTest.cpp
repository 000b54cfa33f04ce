// Finding and fronting on a real Wayland compositor.
#include <chrono>
#include <csignal>
#include <functional>
#include <map>

#include <gmock/gmock.h>

#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/session/SessionRunningApplications.h"
#include "platform/linux/wayland/WaylandSession.h"
#include "support/ApplicationId.h"
#include "tests/contracts/RunningApplicationsContract.h"
#include "tests/platform/linux/fixtures/WaylandDesktop.h"
#include "tests/platform/linux/fixtures/XDesktop.h"

namespace tavo {
namespace {

using processes::becomesTrue;

std::unique_ptr<RunningApplications> onWayland(
    const std::string& display, SessionBus& bus,
    std::shared_ptr<DesktopEntryIndex> listed = std::make_shared<DesktopEntryIndex>()) {
    return makeSessionRunningApplications(StartEnvironment({"WAYLAND_DISPLAY=" + display}), true,
                                          bus, std::move(listed), {});
}

struct WaylandRig {
    static constexpr bool kTellsProcesses = false;

    RunningApplications& running() { return *running_; }

    std::int32_t start(const std::string& identifier) {
        auto window = desktop_.open(identifier.substr(0, identifier.rfind('.')));
        const pid_t process = window.process;
        // The launcher does this for each application that it has started.
        running_->activateAllWindows({process, identifier});
        windows_[process] = std::move(window);
        return process;
    }

    void end(std::int32_t process) {
        windows_.erase(process);
        EXPECT_TRUE(becomesTrue(
            [&] { return desktop_.processes().size() == windows_.size() + (launcher_ ? 1 : 0); }));
    }

    static bool comesTrue(const std::function<bool()>& condition) {
        return processes::becomesTrueWithEvents(condition);
    }

    static std::string program(std::int32_t /*process*/) { return "/usr/bin/foot"; }

    void turnToLauncher() {
        if (!launcher_) {
            launcher_ = desktop_.open(kApplicationId);
        }
        desktop_.command("[app_id=" + std::string(kApplicationId) + "] focus");
        EXPECT_TRUE(becomesTrue([&] { return desktop_.focused() == launcher_->process; }));
    }

    bool isInFront(std::int32_t process) {
        return becomesTrue([&] { return desktop_.focused() == process; });
    }

    WaylandDesktop desktop_;
    std::optional<WaylandDesktop::Window> launcher_;
    std::map<pid_t, WaylandDesktop::Window> windows_;
    SessionBus bus_{""};
    std::unique_ptr<RunningApplications> running_ = onWayland(desktop_.display(), bus_);
};

INSTANTIATE_TYPED_TEST_SUITE_P(Wayland, RunningApplicationsContract, WaylandRig);

class WaylandSessionTest : public testing::Test {
protected:
    void SetUp() override {
        listed_->replace({{"org.example.Editor.desktop", "/a/editor.desktop", "EditorWindow", ""},
                          {"tool.desktop", "/a/tool.desktop", "", "tool-program"}});
        running_ = onWayland(desktop_.display(), bus_, listed_);
    }

    [[nodiscard]] bool runs(const char* identifier) {
        return !running_->withIdentifier(identifier).empty();
    }
    [[nodiscard]] bool becomesFocused(const WaylandDesktop::Window& window) {
        return becomesTrue([&] { return desktop_.focused() == window.process; });
    }

    // Does what a click in the launcher on a running application does.
    void click(const char* identifier) {
        running_->noteUserRequest(identifier);
        ASSERT_TRUE(runs(identifier));
        running_->activateAllWindows({0, identifier});
    }
    void focus(const WaylandDesktop::Window& window) {
        desktop_.command("[pid=" + std::to_string(window.process) + "] focus");
        ASSERT_TRUE(becomesFocused(window));
    }
    // The user goes to another workspace, where another program has the focus.
    [[nodiscard]] WaylandDesktop::Window goToAnotherWorkspace() {
        desktop_.command("workspace 2");
        auto other = desktop_.open("other");
        EXPECT_TRUE(becomesFocused(other));
        return other;
    }

    // The windows after the user has clicked the tool in the launcher, which started it, and has
    // gone elsewhere before its window showed.
    struct LeftStart {
        WaylandDesktop::Window launcher;
        WaylandDesktop::Window tool;
        WaylandDesktop::Window elsewhere;
    };
    [[nodiscard]] LeftStart startToolAndLeave() {
        LeftStart start;
        start.launcher = desktop_.open(kApplicationId);
        EXPECT_TRUE(becomesFocused(start.launcher));
        running_->noteUserRequest("tool.desktop");
        EXPECT_FALSE(runs("tool.desktop"));
        start.tool = desktop_.open("tool");
        start.elsewhere = desktop_.open("elsewhere");
        EXPECT_TRUE(becomesFocused(start.elsewhere));
        return start;
    }

    WaylandDesktop desktop_;
    std::shared_ptr<DesktopEntryIndex> listed_ = std::make_shared<DesktopEntryIndex>();
    SessionBus bus_{""};
    std::unique_ptr<RunningApplications> running_;
};

TEST_F(WaylandSessionTest, windows_are_told_by_their_application_id) {
    EXPECT_FALSE(runs("org.example.Editor.desktop"));
    const auto stated = desktop_.open("editorwindow");
    EXPECT_TRUE(runs("org.example.Editor.desktop"));
    const auto program = desktop_.open("Tool-Program");
    EXPECT_TRUE(runs("tool.desktop"));
    EXPECT_FALSE(runs("editorwindow2.desktop"));
    EXPECT_FALSE(runs(""));
}

TEST_F(WaylandSessionTest, all_windows_come_forward_the_newest_last) {
    const auto first = desktop_.open("tool");
    const auto second = desktop_.open("tool");
    const auto other = goToAnotherWorkspace();
    click("tool.desktop");
    EXPECT_TRUE(becomesFocused(second));
}

TEST_F(WaylandSessionTest, the_active_window_stays_the_active_one) {
    const auto first = desktop_.open("tool");
    const auto second = desktop_.open("tool");
    ASSERT_TRUE(becomesFocused(second));
    focus(first);
    running_->activateAllWindows({0, "tool.desktop"});
    EXPECT_TRUE(becomesFocused(first));
}

TEST_F(WaylandSessionTest, a_process_comes_forward_as_what_it_was_started_as) {
    const auto editor =
        desktop_.open("editorwindow", {"GIO_LAUNCHED_DESKTOP_FILE=/a/editor.desktop"});
    const auto other = desktop_.open(kApplicationId);
    ASSERT_TRUE(becomesFocused(other));
    const auto found = running_->withProcess(editor.process);
    ASSERT_TRUE(found);
    running_->activateAllWindows(*found);
    EXPECT_TRUE(becomesFocused(editor));
}

TEST_F(WaylandSessionTest, a_started_program_that_the_user_has_left_steals_nothing) {
    const LeftStart start = startToolAndLeave();
    running_->activateAllWindows({start.tool.process, "tool.desktop"});
    EXPECT_EQ(desktop_.focused(), start.elsewhere.process);
    focus(start.launcher);
    running_->activateAllWindows({start.tool.process, "tool.desktop"});
    EXPECT_TRUE(becomesFocused(start.tool));
}

TEST_F(WaylandSessionTest, a_question_is_no_click) {
    const LeftStart start = startToolAndLeave();
    EXPECT_TRUE(runs("tool.desktop"));
    EXPECT_TRUE(running_->showsWindow({start.tool.process, "tool.desktop"}));
    running_->activateAllWindows({start.tool.process, "tool.desktop"});
    EXPECT_EQ(desktop_.focused(), start.elsewhere.process);
}

TEST_F(WaylandSessionTest, a_window_on_another_workspace_is_gone_to) {
    const auto tool = desktop_.open("tool");
    const auto other = goToAnotherWorkspace();
    click("tool.desktop");
    EXPECT_TRUE(becomesFocused(tool));
}

TEST_F(WaylandSessionTest, processes_of_others_do_not_count) {
    if (::geteuid() == 0) {
        EXPECT_EQ(running_->withProcess(desktop_.compositor()), std::nullopt);
    } else {
        EXPECT_EQ(running_->withProcess(1), std::nullopt);
    }
    EXPECT_TRUE(running_->withProcess(::getpid()));
}

TEST_F(WaylandSessionTest, a_compositor_that_stands_still_holds_up_no_subscription) {
    constexpr std::chrono::milliseconds kOneLook{500};
    const RunningApplication started{0, "tool.desktop"};
    ASSERT_FALSE(running_->showsWindow(started));
    ::kill(desktop_.compositor(), SIGSTOP);
    const auto begin = std::chrono::steady_clock::now();
    int told = 0;
    const Subscription subscription = running_->onWindowsChanged([&] { ++told; });
    QCoreApplication::processEvents();
    EXPECT_FALSE(running_->showsWindow(started));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 3 * kOneLook);
    EXPECT_EQ(told, 0);
    ::kill(desktop_.compositor(), SIGCONT);
    const auto window = desktop_.open("tool");
    EXPECT_TRUE(processes::becomesTrueWithEvents(
        [&] { return told > 0 && running_->showsWindow(started); }));
}

TEST(WaylandSession, a_compositor_that_is_not_there_cannot_tell) {
    SessionBus bus("");
    const auto running = onWayland("/nonexistent/wayland-0", bus);
    EXPECT_FALSE(running->listsWindows());
    EXPECT_TRUE(running->withIdentifier("a.desktop").empty());
    running->activateAllWindows({0, "a.desktop"});
    running->activateAllWindows({::getpid(), ""});
    EXPECT_TRUE(running->withProcess(::getpid()));
}

TEST(SessionRunningApplications, without_any_display_nothing_is_known) {
    SessionBus bus("");
    const StartEnvironment environment({"PATH=/bin"});
    EXPECT_FALSE(isWaylandSession(environment));
    const auto running = makeSessionRunningApplications(environment, false, bus,
                                                        std::make_shared<DesktopEntryIndex>(), {});
    EXPECT_TRUE(running->withIdentifier("a.desktop").empty());
    EXPECT_EQ(running->withProcess(::getpid()), std::nullopt);
    EXPECT_EQ(running->executablePath({::getpid(), ""}), std::nullopt);
    running->activateAllWindows({::getpid(), "a.desktop"});
}

TEST(SessionRunningApplications, a_wayland_session_is_asked_before_an_x_server) {
    const WaylandDesktop desktop;
    SessionBus bus("");
    const StartEnvironment environment(
        {"WAYLAND_DISPLAY=" + desktop.display(), "DISPLAY=:7654321"});
    EXPECT_TRUE(isWaylandSession(environment));
    const auto running = makeSessionRunningApplications(environment, true, bus,
                                                        std::make_shared<DesktopEntryIndex>(), {});
    // Shows that Wayland was asked: on X11 a process without windows does not count as running.
    EXPECT_TRUE(running->withProcess(::getpid()));
}

TEST(SessionRunningApplications, a_left_over_name_of_a_compositor_hides_no_x_server) {
    XDesktop desktop(Manager::none);
    WindowedProgram program(desktop);
    desktop.claim({program.open("class=app")});
    SessionBus bus("");
    for (const std::string name : {"", "/nonexistent/wayland-0", "wayland-77"}) {
        SCOPED_TRACE(name);
        const StartEnvironment environment(
            {"WAYLAND_DISPLAY=" + name, "DISPLAY=" + desktop.display()});
        const bool wayland = isWaylandSession(environment);
        EXPECT_FALSE(wayland);
        const auto running = makeSessionRunningApplications(
            environment, wayland, bus, std::make_shared<DesktopEntryIndex>(), {});
        EXPECT_EQ(running->withIdentifier("app.desktop").size(), 1U);
        EXPECT_TRUE(running->withProcess(program.process()));
        EXPECT_EQ(running->withProcess(::getpid()), std::nullopt);
    }
}

}  // namespace
}  // namespace tavo
