// Bringing windows to the front, under real window managers.
#include <functional>
#include <map>
#include <thread>

#include <gmock/gmock.h>

#include "platform/linux/opening/FirstWindow.h"
#include "platform/linux/x11/XcbConnection.h"
#include "platform/linux/x11/XcbRunningApplications.h"
#include "platform/linux/x11/XcbWindows.h"
#include "tests/contracts/RunningApplicationsContract.h"
#include "tests/fakes/ManualMainQueue.h"
#include "tests/platform/linux/fixtures/XDesktop.h"

namespace tavo {
namespace {

using processes::becomesTrue;
using testing::ElementsAre;
using testing::ElementsAreArray;

// A desktop with programs on it, the rig of RunningApplicationsContract.
template<Manager manager>
struct XcbRig {
    static constexpr bool kTellsProcesses = true;

    static void turnToLauncher() {}

    RunningApplications& running() { return *running_; }

    std::int32_t start(const std::string& identifier) {
        auto program = std::make_unique<WindowedProgram>(desktop_);
        const std::string name = identifier.substr(0, identifier.rfind('.'));
        const xcb_window_t window = program->open("class=" + name);
        const pid_t process = program->process();
        programs_[process] = {std::move(program), window};
        EXPECT_TRUE(becomesTrue([&] { return desktop_.stacking().size() == programs_.size(); }));
        return process;
    }

    void end(std::int32_t process) {
        programs_[process].program->end();
        programs_.erase(process);
        EXPECT_TRUE(becomesTrue([&] { return desktop_.stacking().size() == programs_.size(); }));
    }

    static bool comesTrue(const std::function<bool()>& condition) {
        return processes::becomesTrueWithEvents(condition);
    }

    static std::string program(std::int32_t /*process*/) {
        return WindowedProgram::defaultProgram();
    }

    bool isInFront(std::int32_t process) {
        const xcb_window_t window = programs_[process].window;
        return becomesTrue([&] {
            return desktop_.active() == window && desktop_.stacking().back() == window &&
                   desktop_.focus() == window;
        });
    }

    struct Program {
        std::unique_ptr<WindowedProgram> program;
        xcb_window_t window = XCB_WINDOW_NONE;
    };
    XDesktop desktop_{manager};
    std::map<pid_t, Program> programs_;
    std::unique_ptr<RunningApplications> running_ =
        makeXcbRunningApplications(desktop_.display(), std::make_shared<DesktopEntryIndex>(), {});
};

using Rigs = testing::Types<XcbRig<Manager::openbox>, XcbRig<Manager::xfwm4Guarded>>;
INSTANTIATE_TYPED_TEST_SUITE_P(Xcb, RunningApplicationsContract, Rigs);

constexpr const char* kApp = "app.desktop";

class XcbFronting : public testing::TestWithParam<Manager> {
protected:
    void SetUp() override {
        running_ =
            makeXcbRunningApplications(desktop_.display(), listed_, [this] { return userTime_; });
        app_.emplace(desktop_);
        other_.emplace(desktop_);
    }

    // Opens a window of `program`; returns it when it is managed, with the focus that window
    // managers give to new windows.
    xcb_window_t open(WindowedProgram& program, const std::string& options) {
        const xcb_window_t window = program.open(options);
        EXPECT_TRUE(becomesTrue([&] {
            const auto stacking = desktop_.stacking();
            return std::find(stacking.begin(), stacking.end(), window) != stacking.end();
        }));
        return window;
    }

    // Does what a click on the running application does.
    void click() {
        running_->noteUserRequest(kApp);
        const auto found = running_->withIdentifier(kApp);
        ASSERT_FALSE(found.empty());
        running_->activateAllWindows(found.front());
    }

    void settle() { EXPECT_TRUE(desktop_.settle()); }

    // Whether `window` becomes active and stays so: before it looks, the window manager has done
    // all else that was asked of it.
    [[nodiscard]] bool becomesActive(xcb_window_t window) {
        settle();
        return becomesTrue(
            [&] { return desktop_.active() == window && desktop_.focus() == window; });
    }

    XDesktop desktop_{GetParam()};
    std::shared_ptr<DesktopEntryIndex> listed_ = std::make_shared<DesktopEntryIndex>();
    std::optional<xcb_timestamp_t> userTime_;
    std::unique_ptr<RunningApplications> running_;
    std::optional<WindowedProgram> app_;
    std::optional<WindowedProgram> other_;
};

TEST_P(XcbFronting, all_windows_come_above_the_others_in_their_order) {
    WindowedProgram second(desktop_);
    std::vector<xcb_window_t> windows = {open(*app_, "class=app"),  open(*other_, "class=other"),
                                         open(second, "class=app"), open(*other_, "class=other"),
                                         open(*app_, "class=app"),  open(*other_, "class=other")};
    for (const xcb_window_t window : windows) {
        ASSERT_TRUE(desktop_.activate(window));
    }
    ASSERT_THAT(desktop_.stacking(), ElementsAreArray(windows));
    click();
    EXPECT_TRUE(becomesActive(windows[4]));
    EXPECT_THAT(desktop_.stacking(), ElementsAre(windows[1], windows[3], windows[5], windows[0],
                                                 windows[2], windows[4]));
}

TEST_P(XcbFronting, what_is_in_front_already_stays_so) {
    const xcb_window_t low = open(*app_, "class=app");
    const xcb_window_t high = open(*app_, "class=app");
    ASSERT_TRUE(desktop_.activate(low));
    ASSERT_TRUE(desktop_.activate(high));
    click();
    EXPECT_TRUE(becomesActive(high));
    EXPECT_THAT(desktop_.stacking(), ElementsAre(low, high));
}

TEST_P(XcbFronting, what_is_in_front_stays_so_while_another_of_its_windows_is_restored) {
    const xcb_window_t low = open(*app_, "class=app");
    const xcb_window_t high = open(*app_, "class=app");
    ASSERT_TRUE(desktop_.minimise(low));
    ASSERT_TRUE(desktop_.activate(high));
    click();
    EXPECT_TRUE(becomesTrue([&] { return !desktop_.isMinimised(low); }));
    EXPECT_TRUE(becomesActive(high));
    EXPECT_THAT(desktop_.stacking(), ElementsAre(low, high));
}

TEST_P(XcbFronting, an_application_on_another_desktop_is_gone_to) {
    const xcb_window_t app = open(*app_, "class=app");
    ASSERT_TRUE(desktop_.moveToDesktop(app, 1));
    const xcb_window_t other = open(*other_, "class=other");
    ASSERT_TRUE(desktop_.activate(other));
    click();
    EXPECT_TRUE(becomesActive(app));
    EXPECT_THAT(desktop_.rootNumbers("_NET_CURRENT_DESKTOP"), ElementsAre(1));
    EXPECT_THAT(desktop_.numbers(app, "_NET_WM_DESKTOP"), ElementsAre(1));
}

TEST_P(XcbFronting, windows_on_other_desktops_stay_there_while_one_is_here) {
    const xcb_window_t away = open(*app_, "class=app");
    ASSERT_TRUE(desktop_.moveToDesktop(away, 1));
    const xcb_window_t here = open(*app_, "class=app");
    const xcb_window_t other = open(*other_, "class=other");
    ASSERT_TRUE(desktop_.activate(other));
    click();
    EXPECT_TRUE(becomesActive(here));
    settle();
    EXPECT_THAT(desktop_.rootNumbers("_NET_CURRENT_DESKTOP"), ElementsAre(0));
    EXPECT_THAT(desktop_.numbers(away, "_NET_WM_DESKTOP"), ElementsAre(1));
}

TEST_P(XcbFronting, a_minimised_application_is_restored) {
    const xcb_window_t app = open(*app_, "class=app");
    ASSERT_TRUE(desktop_.minimise(app));
    const xcb_window_t other = open(*other_, "class=other");
    ASSERT_TRUE(desktop_.activate(other));
    click();
    EXPECT_TRUE(becomesActive(app));
    EXPECT_FALSE(desktop_.isMinimised(app));
}

TEST_P(XcbFronting, minimised_windows_are_restored_beside_open_ones) {
    const xcb_window_t first = open(*app_, "class=app");
    const xcb_window_t second = open(*app_, "class=app");
    const xcb_window_t third = open(*app_, "class=app");
    const xcb_window_t other = open(*other_, "class=other");
    for (const xcb_window_t window : {first, second, third, other}) {
        ASSERT_TRUE(desktop_.activate(window));
    }
    ASSERT_TRUE(desktop_.minimise(second));
    ASSERT_TRUE(desktop_.activate(other));
    const auto before = desktop_.stacking();
    click();
    EXPECT_TRUE(becomesTrue([&] { return !desktop_.isMinimised(second); }));
    // The test does not say where a minimised window comes in the order: the window manager decides
    // that.
    std::vector<xcb_window_t> expected;
    std::copy_if(before.begin(), before.end(), std::back_inserter(expected),
                 [&](xcb_window_t window) { return window != other; });
    expected.insert(expected.begin(), other);
    EXPECT_TRUE(becomesActive(expected.back()));
    EXPECT_THAT(desktop_.stacking(), ElementsAreArray(expected));
}

TEST_P(XcbFronting, each_request_to_the_window_manager_has_a_time_of_the_server) {
    const xcb_window_t low = open(*app_, "class=app");
    const xcb_window_t middle = open(*app_, "class=app");
    const xcb_window_t high = open(*app_, "class=app");
    ASSERT_TRUE(desktop_.minimise(low));
    ASSERT_TRUE(desktop_.minimise(middle));
    ASSERT_TRUE(desktop_.activate(high));
    const auto listener = XcbConnection::open(desktop_.display());
    ASSERT_NE(listener, nullptr);
    listener->beginExchange();
    constexpr std::uint32_t kEvents = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(listener->get(), listener->root(), XCB_CW_EVENT_MASK, &kEvents);
    constexpr std::array kNames = {"_NET_ACTIVE_WINDOW"};
    const xcb_atom_t activation = listener->atoms(kNames).front();
    const xcb_timestamp_t before = desktop_.time();
    click();
    EXPECT_TRUE(becomesActive(high));
    const xcb_timestamp_t after = desktop_.time();
    std::size_t requests = 0;
    while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(listener->get())}) {
        const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(*event);
        if ((message.response_type & 0x7f) == XCB_CLIENT_MESSAGE && message.type == activation) {
            ++requests;
            EXPECT_GE(message.data.data32[1], before);
            EXPECT_LE(message.data.data32[1], after);
        }
    }
    EXPECT_EQ(requests, 4U);  // two to restore, and the one in front first and last
}

TEST_P(XcbFronting, a_minimised_application_on_another_desktop_is_restored_there) {
    const xcb_window_t app = open(*app_, "class=app");
    ASSERT_TRUE(desktop_.moveToDesktop(app, 1));
    ASSERT_TRUE(desktop_.goToDesktop(1));
    ASSERT_TRUE(desktop_.minimise(app));
    ASSERT_TRUE(desktop_.goToDesktop(0));
    const xcb_window_t other = open(*other_, "class=other");
    ASSERT_TRUE(desktop_.activate(other));
    click();
    EXPECT_TRUE(becomesActive(app));
    EXPECT_FALSE(desktop_.isMinimised(app));
    EXPECT_THAT(desktop_.rootNumbers("_NET_CURRENT_DESKTOP"), ElementsAre(1));
}

TEST_P(XcbFronting, a_dialog_comes_with_its_window_and_is_active) {
    const xcb_window_t parent = open(*app_, "class=app");
    const xcb_window_t dialog =
        open(*app_, "class=x type=DIALOG transient=" + std::to_string(parent));
    const xcb_window_t other = open(*other_, "class=other");
    ASSERT_TRUE(desktop_.activate(other));
    click();
    EXPECT_TRUE(becomesActive(dialog));
    EXPECT_THAT(desktop_.stacking(), ElementsAre(other, parent, dialog));
}

TEST_P(XcbFronting, a_process_comes_with_all_its_windows_and_no_others) {
    const xcb_window_t first = open(*app_, "class=a");
    const xcb_window_t second = open(*app_, "class=b");
    const xcb_window_t other = open(*other_, "class=a");
    for (const xcb_window_t window : {first, second, other}) {
        ASSERT_TRUE(desktop_.activate(window));
    }
    const auto found = running_->withProcess(app_->process());
    ASSERT_TRUE(found);
    running_->activateAllWindows(*found);
    EXPECT_TRUE(becomesActive(second));
    EXPECT_THAT(desktop_.stacking(), ElementsAre(other, first, second));
}

TEST_P(XcbFronting, one_that_has_vanished_does_not_keep_the_rest_from_coming_to_the_front) {
    const auto connection = XcbConnection::open(desktop_.display());
    ASSERT_NE(connection, nullptr);
    XcbWindows windows(*connection);
    for (const std::uint32_t desktop : {0U, 1U}) {
        SCOPED_TRACE(desktop);
        const xcb_window_t left = open(*app_, "class=app");
        const xcb_window_t gone = open(*app_, "class=app");
        app_->close(gone);
        EXPECT_TRUE(becomesTrue([&] {
            const auto stacking = desktop_.stacking();
            return std::find(stacking.begin(), stacking.end(), gone) == stacking.end();
        }));
        ASSERT_TRUE(desktop_.moveToDesktop(left, desktop));
        ASSERT_TRUE(desktop_.activate(open(*other_, "class=other")));
        windows.front({left, gone});
        EXPECT_TRUE(becomesActive(left));
        EXPECT_EQ(desktop_.stacking().back(), left);
        EXPECT_THAT(desktop_.rootNumbers("_NET_CURRENT_DESKTOP"), ElementsAre(desktop));
    }
}

TEST_P(XcbFronting, windows_that_vanish_meanwhile_leave_the_rest_in_front) {
    std::vector<xcb_window_t> passing;
    open(*app_, "class=app");
    const xcb_window_t last = open(*app_, "class=app");
    const xcb_window_t other = open(*other_, "class=other");
    for (int round = 0; round < 10; ++round) {
        const xcb_window_t gone = open(*app_, "class=app");
        ASSERT_TRUE(desktop_.activate(last));
        ASSERT_TRUE(desktop_.activate(other));
        std::thread closing([&] { app_->close(gone); });
        click();
        closing.join();
        // The request to come to the front is lost if it names the window that vanishes. The window
        // manager then chooses which of the other windows is on top.
        settle();
        ASSERT_TRUE(becomesTrue([&] { return desktop_.stacking().size() == 3; }));
        // A window manager may pass the focus of the vanished window on late, and so undo one
        // click, but not two.
        const auto inFront = [&] {
            const auto stacking = desktop_.stacking();
            return stacking.front() == other && desktop_.active() == stacking.back();
        };
        click();
        settle();
        if (!inFront()) {
            click();
        }
        ASSERT_TRUE(becomesTrue(inFront)) << "round " << round;
    }
}

// Tests of programs that the user has started: what may happen between the click and the first
// window.

TEST_P(XcbFronting, a_started_program_comes_forward_while_the_user_waits) {
    userTime_ = desktop_.time();
    const xcb_window_t before = open(*other_, "class=other usertime=1");
    ASSERT_TRUE(desktop_.activate(before));
    running_->noteUserRequest(kApp);
    const xcb_window_t app = open(*app_, "class=app");
    ASSERT_TRUE(desktop_.activate(before));
    running_->activateAllWindows({app_->process(), kApp});
    EXPECT_TRUE(becomesActive(app));
}

TEST_P(XcbFronting, a_started_program_that_the_user_has_left_steals_nothing) {
    const xcb_window_t launcher = open(*other_, "class=other");
    ASSERT_TRUE(desktop_.activate(launcher));
    userTime_ = desktop_.time();
    running_->noteUserRequest(kApp);
    const xcb_window_t app = open(*app_, "class=app");
    const xcb_window_t elsewhere =
        open(*other_, "class=other usertime=" + std::to_string(*userTime_ + 1));
    ASSERT_TRUE(desktop_.activate(elsewhere));
    ASSERT_TRUE(becomesTrue([&] { return desktop_.stacking().back() == elsewhere; }));
    const auto before = desktop_.stacking();
    running_->activateAllWindows({app_->process(), kApp});
    running_->activateAllWindows({app_->process(), ""});
    EXPECT_TRUE(becomesActive(elsewhere));
    EXPECT_EQ(desktop_.stacking(), before);
    EXPECT_NE(desktop_.active(), app);
}

TEST_P(XcbFronting, a_question_is_no_click) {
    const xcb_window_t launcher = open(*other_, "class=other");
    ASSERT_TRUE(desktop_.activate(launcher));
    userTime_ = desktop_.time();
    running_->noteUserRequest(kApp);
    const xcb_window_t elsewhere =
        open(*other_, "class=other usertime=" + std::to_string(*userTime_ + 1));
    ASSERT_TRUE(desktop_.activate(elsewhere));
    const xcb_window_t app = open(*app_, "class=app usertime=0");
    ASSERT_TRUE(desktop_.activate(elsewhere));
    ASSERT_TRUE(becomesTrue([&] { return desktop_.stacking().back() == elsewhere; }));
    EXPECT_FALSE(running_->withIdentifier(kApp).empty());
    EXPECT_TRUE(running_->withProcess(app_->process()));
    EXPECT_TRUE(running_->showsWindow({app_->process(), kApp}));
    const auto before = desktop_.stacking();
    running_->activateAllWindows({app_->process(), kApp});
    EXPECT_TRUE(becomesActive(elsewhere));
    EXPECT_EQ(desktop_.stacking(), before);
    EXPECT_NE(desktop_.active(), app);
}

TEST_P(XcbFronting, a_first_window_comes_forward_by_its_event_alone) {
    const xcb_window_t launcher = open(*other_, "class=other usertime=1");
    ASSERT_TRUE(desktop_.activate(launcher));
    userTime_ = desktop_.time();
    running_->noteUserRequest(kApp);
    ManualMainQueue queue;  // its time stands still: only events make FirstWindow look
    const FirstWindow firstWindow(queue, running_.get());
    const auto start =
        std::make_shared<PendingLaunch>(PendingLaunch::Clock::now() + std::chrono::hours(1));
    firstWindow.await({app_->process(), kApp}, start, [this] {
        running_->activateAllWindows({app_->process(), kApp});
    });
    queue.run();
    EXPECT_TRUE(start->lasts());
    const xcb_window_t app = app_->open("class=app usertime=0");
    EXPECT_TRUE(processes::becomesTrueWithEvents([&] {
        queue.run();
        return !start->lasts();
    }));
    EXPECT_TRUE(becomesActive(app));
}

TEST_P(XcbFronting, a_click_counts_whatever_was_in_front) {
    const xcb_window_t app = open(*app_, "class=app");
    userTime_ = desktop_.time() - 1000;
    const xcb_window_t other =
        open(*other_, "class=other usertime=" + std::to_string(desktop_.time()));
    ASSERT_TRUE(desktop_.activate(other));
    click();
    EXPECT_TRUE(becomesActive(app));
}

TEST_P(XcbFronting, the_later_of_two_clicks_keeps_the_front) {
    const xcb_window_t launcher = open(*other_, "class=other");
    ASSERT_TRUE(desktop_.activate(launcher));
    const xcb_timestamp_t time = desktop_.time();
    userTime_ = time;
    running_->noteUserRequest(kApp);  // the first click, on a program that starts slowly
    userTime_ = time + 1;             // the second click, on one that starts quickly
    WindowedProgram quick(desktop_);
    const xcb_window_t second = open(quick, "class=quick usertime=" + std::to_string(*userTime_));
    ASSERT_TRUE(desktop_.activate(second));
    (void)open(*app_, "class=app usertime=1");
    ASSERT_TRUE(desktop_.activate(second));
    running_->activateAllWindows({app_->process(), kApp});
    EXPECT_TRUE(becomesActive(second));
}

INSTANTIATE_TEST_SUITE_P(Managers, XcbFronting,
                         testing::Values(Manager::openbox, Manager::xfwm4, Manager::xfwm4Guarded),
                         [](const auto& row) { return testing::PrintToString(row.param); });

}  // namespace
}  // namespace tavo
