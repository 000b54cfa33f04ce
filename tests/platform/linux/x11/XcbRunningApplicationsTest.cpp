// What X11 windows are whose, without a window manager: the tests say which windows are managed.
#include <array>
#include <chrono>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/x11/XcbRunningApplications.h"
#include "tests/platform/linux/fixtures/XDesktop.h"

namespace tavo {
namespace {

using processes::Folder;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kEditor = "org.example.Editor.desktop";
constexpr const char* kTool = "tool.desktop";

class XcbRunningApplicationsTest : public testing::Test {
protected:
    void SetUp() override {
        listed_->replace({{kEditor, "/a/org.example.Editor.desktop", "Editor", "editor"},
                          {kTool, "/a/tool.desktop", "", "tool"}});
        running_ = makeXcbRunningApplications(desktop_.display(), listed_, {});
        program_.emplace(desktop_);
    }

    // The processes that are found by `identifier`, the one with the topmost window first.
    std::vector<pid_t> processesOf(const char* identifier) {
        std::vector<pid_t> found;
        for (const RunningApplication& application : running_->withIdentifier(identifier)) {
            EXPECT_EQ(application.identifier, identifier);
            found.push_back(application.processIdentifier);
        }
        return found;
    }

    // Whether a window that is made with `options` is taken for the editor's.
    bool isEditor(const std::string& options) {
        desktop_.claim({program_->open(options)});
        return !processesOf(kEditor).empty();
    }

    XDesktop desktop_{Manager::none};
    std::shared_ptr<DesktopEntryIndex> listed_ = std::make_shared<DesktopEntryIndex>();
    std::unique_ptr<RunningApplications> running_;
    std::optional<WindowedProgram> program_;
};

TEST_F(XcbRunningApplicationsTest, windows_are_told_by_what_they_call_themselves) {
    EXPECT_TRUE(isEditor("instance=editor class=Editor"));
    EXPECT_TRUE(isEditor("instance=x class=EDITOR"));
    EXPECT_TRUE(isEditor("instance=x class=X gtk=org.example.Editor"));
    EXPECT_TRUE(isEditor("class=org.example.editor"));
    EXPECT_FALSE(isEditor("instance=x class=X"));
    EXPECT_FALSE(isEditor(""));
}

TEST_F(XcbRunningApplicationsTest, unmanaged_windows_belong_to_no_application) {
    desktop_.claim({});
    (void)program_->open("class=Editor unmanaged");
    (void)program_->open("class=Editor");
    EXPECT_THAT(processesOf(kEditor), IsEmpty());
    EXPECT_EQ(running_->withProcess(program_->process()), std::nullopt);
}

TEST_F(XcbRunningApplicationsTest, panels_desktops_and_tool_tips_belong_to_no_application) {
    for (const char* const type : {"DOCK", "DESKTOP", "TOOLTIP", "NOTIFICATION", "POPUP_MENU"}) {
        SCOPED_TRACE(type);
        EXPECT_FALSE(isEditor(std::string("class=Editor type=") + type));
        EXPECT_EQ(running_->withProcess(program_->process()), std::nullopt);
    }
    for (const char* const type : {"NORMAL", "DIALOG", "UTILITY", "SPLASH", "MADE_UP"}) {
        SCOPED_TRACE(type);
        EXPECT_TRUE(isEditor(std::string("class=Editor type=") + type));
    }
}

TEST_F(XcbRunningApplicationsTest, a_dialog_belongs_to_the_application_of_its_window) {
    WindowedProgram portal(desktop_);
    const xcb_window_t parent = program_->open("class=Editor");
    const xcb_window_t dialog = portal.open("class=Portal transient=" + std::to_string(parent));
    const xcb_window_t question = portal.open("class=Tool transient=" + std::to_string(dialog));
    desktop_.claim({parent, dialog, question});
    EXPECT_THAT(processesOf(kEditor), ElementsAre(portal.process(), program_->process()));
    EXPECT_THAT(processesOf(kTool), IsEmpty());
}

TEST_F(XcbRunningApplicationsTest, a_dialog_of_no_managed_window_is_told_by_itself) {
    EXPECT_TRUE(isEditor("class=Editor transient=1"));
    EXPECT_TRUE(isEditor("class=Editor transient=4294967295"));
}

TEST_F(XcbRunningApplicationsTest, dialogs_in_a_circle_end) {
    const xcb_window_t first = program_->open("class=Editor");
    const xcb_window_t second = program_->open("class=Editor transient=" + std::to_string(first));
    WindowedProgram other(desktop_);
    const xcb_window_t self = other.open("class=Editor transient=" + std::to_string(second + 1));
    desktop_.claim({first, second, self, first});
    EXPECT_FALSE(processesOf(kEditor).empty());
}

TEST_F(XcbRunningApplicationsTest, of_several_processes_the_one_on_top_comes_first) {
    WindowedProgram other(desktop_);
    const xcb_window_t low = program_->open("class=Editor");
    const xcb_window_t high = other.open("class=Editor");
    desktop_.claim({low, high});
    EXPECT_THAT(processesOf(kEditor), ElementsAre(other.process(), program_->process()));
    desktop_.claim({high, low});
    EXPECT_THAT(processesOf(kEditor), ElementsAre(program_->process(), other.process()));
}

TEST_F(XcbRunningApplicationsTest, a_process_runs_once_it_has_a_managed_window) {
    desktop_.claim({});
    EXPECT_EQ(running_->withProcess(program_->process()), std::nullopt);
    desktop_.claim({program_->open("class=Whatever")});
    EXPECT_EQ(running_->withProcess(program_->process()),
              (RunningApplication{program_->process(), ""}));
    EXPECT_EQ(running_->withProcess(::getpid()), std::nullopt);
}

TEST_F(XcbRunningApplicationsTest, a_window_that_does_not_name_its_process_has_it_all_the_same) {
    desktop_.claim({program_->open("class=Old pid=none machine=none")});
    EXPECT_TRUE(running_->withProcess(program_->process()));
}

TEST_F(XcbRunningApplicationsTest, a_window_that_names_another_process_has_none) {
    // A window from inside a container names a PID of the container's, which here is another
    // process.
    desktop_.claim({program_->open("class=Editor pid=" + std::to_string(::getpid()))});
    EXPECT_EQ(running_->withProcess(::getpid()), std::nullopt);
    EXPECT_EQ(running_->withProcess(program_->process()), std::nullopt);
    EXPECT_THAT(processesOf(kEditor), ElementsAre(0));
}

TEST_F(XcbRunningApplicationsTest, a_window_of_another_host_has_no_process_here) {
    desktop_.claim({program_->open("class=Editor machine=elsewhere.example")});
    EXPECT_EQ(running_->withProcess(program_->process()), std::nullopt);
    EXPECT_THAT(processesOf(kEditor), ElementsAre(0));
}

TEST_F(XcbRunningApplicationsTest, a_nameless_window_is_its_process_start) {
    const Folder folder;
    const std::string start = folder.script("start",
                                            "export GIO_LAUNCHED_DESKTOP_FILE=/a/tool.desktop "
                                            "GIO_LAUNCHED_DESKTOP_FILE_PID=$$\nexec " +
                                                WindowedProgram::defaultProgram());
    WindowedProgram started(desktop_, start);
    desktop_.claim({started.open("class=Other")});
    EXPECT_THAT(processesOf(kTool), ElementsAre(started.process()));
    desktop_.claim({started.open("class=Other machine=elsewhere.example")});
    EXPECT_THAT(processesOf(kTool), IsEmpty());
}

// Programs started by a wrapper that waits for them, as in Exec=sh -c "prog; true". The wrapper has
// a session (setsid(2)) of its own, as whatever is started from an entry has.
class XcbWrappedPrograms : public XcbRunningApplicationsTest {
protected:
    // Runs `body` in a shell that was started from the tool's entry; $1 in it is the program with
    // windows.
    WindowedProgram startTool(const std::string& body) {
        const std::string number = std::to_string(++started_);
        const std::string wrapper = folder_.script("wrapper" + number, body);
        const std::string entry = folder_.script(
            "entry" + number,
            "export GIO_LAUNCHED_DESKTOP_FILE=/a/tool.desktop GIO_LAUNCHED_DESKTOP_FILE_PID=$$\n"
            "exec " +
                wrapper + " " + WindowedProgram::defaultProgram());
        return WindowedProgram(desktop_,
                               folder_.script("start" + number, "exec setsid -w " + entry));
    }

    // The processes that are found for the tool when `program` has a window made with `options`.
    std::vector<pid_t> toolWith(WindowedProgram& program, const std::string& options) {
        desktop_.claim({program.open(options)});
        return processesOf(kTool);
    }

    Folder folder_;
    int started_ = 0;
};

TEST_F(XcbWrappedPrograms, a_nameless_window_is_its_wrappers_start) {
    for (const char* const body : {"\"$1\"; true", "sh -c \"'$1'; true\"; true",
                                   "timeout 1000 \"$1\"; true", "env A=b nice \"$1\"; true"}) {
        SCOPED_TRACE(body);
        WindowedProgram program = startTool(body);
        EXPECT_EQ(toolWith(program, "class=Other").size(), 1U);
        EXPECT_THAT(processesOf(kEditor), IsEmpty());
    }
}

TEST_F(XcbWrappedPrograms, a_window_that_names_another_entry_is_that_ones) {
    WindowedProgram program = startTool("\"$1\"; true");
    EXPECT_THAT(toolWith(program, "class=Editor"), IsEmpty());
    EXPECT_EQ(processesOf(kEditor).size(), 1U);
}

TEST_F(XcbWrappedPrograms, what_a_program_starts_itself_is_not_its_entrys) {
    // perl stands for a program with windows of its own that starts another program.
    const std::string child = "perl -e 'system(@ARGV)' ";
    for (const std::string& body : {child + "\"$1\"; true", "exec " + child + "\"$1\"",
                                    child + "sh -c \"'$1'; true\"; true"}) {
        SCOPED_TRACE(body);
        WindowedProgram program = startTool(body);
        EXPECT_THAT(toolWith(program, "class=Other"), IsEmpty());
    }
}

TEST_F(XcbWrappedPrograms, what_is_started_by_hand_in_a_session_of_its_own_is_not_the_entrys) {
    // A second session inside the entry's, as a terminal that was started from an entry makes for
    // its shell.
    WindowedProgram program = startTool("setsid -w sh -c \"'$1'; true\"; true");
    EXPECT_THAT(toolWith(program, "class=Other"), IsEmpty());
}

TEST_F(XcbRunningApplicationsTest, an_activation_tells_what_a_process_was_started_as) {
    const xcb_window_t window = program_->open("class=Other");
    desktop_.claim({window});
    EXPECT_THAT(processesOf("org.example.Bundle"), IsEmpty());
    running_->activateAllWindows({program_->process(), "org.example.Bundle"});
    EXPECT_THAT(processesOf("org.example.Bundle"), ElementsAre(program_->process()));
    EXPECT_THAT(processesOf(kTool), IsEmpty());
}

TEST_F(XcbRunningApplicationsTest, hostile_sizes_neither_match_nor_disturb) {
    const xcb_window_t huge = program_->open("name=65536 title=65536");
    const xcb_window_t titled = program_->open("class=Editor title=65536");
    desktop_.claim({huge, titled});
    EXPECT_THAT(processesOf(kEditor), ElementsAre(program_->process()));
    EXPECT_THAT(processesOf(std::string(65536, 'x').c_str()), IsEmpty());
}

TEST_F(XcbRunningApplicationsTest, windows_that_are_gone_are_passed_over) {
    const xcb_window_t gone = program_->open("class=Editor");
    const xcb_window_t left = program_->open("class=Editor");
    program_->close(gone);
    desktop_.claim({gone, 0, left, 0xffffffff}, gone);
    EXPECT_THAT(processesOf(kEditor), ElementsAre(program_->process()));
    running_->activateAllWindows({0, kEditor});
    running_->activateAllWindows({program_->process(), ""});
    EXPECT_THAT(processesOf(kEditor), ElementsAre(program_->process()));
}

TEST_F(XcbRunningApplicationsTest, a_program_is_described_until_it_has_ended) {
    desktop_.claim({program_->open("class=Editor")});
    const auto found = running_->withIdentifier(kEditor);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(running_->executablePath(found.front()), WindowedProgram::defaultProgram());
    program_->end();
    EXPECT_EQ(running_->executablePath(found.front()), std::nullopt);
    running_->activateAllWindows(found.front());
    EXPECT_EQ(running_->executablePath({0, kEditor}), std::nullopt);
}

TEST(XcbRunningApplications, a_server_that_is_not_there_cannot_tell) {
    const auto running =
        makeXcbRunningApplications(":7654321", std::make_shared<DesktopEntryIndex>(), {});
    EXPECT_TRUE(running->withIdentifier("a.desktop").empty());
    EXPECT_EQ(running->withProcess(::getpid()), std::nullopt);
    running->activateAllWindows({::getpid(), "a.desktop"});
}

TEST(XcbRunningApplications, a_server_that_dies_ends_nothing_and_cannot_tell) {
    auto desktop = std::make_unique<XDesktop>(Manager::none);
    const auto listed = std::make_shared<DesktopEntryIndex>();
    const auto running = makeXcbRunningApplications(desktop->display(), listed, {});
    auto program = std::make_unique<WindowedProgram>(*desktop);
    desktop->claim({program->open("class=a")});
    EXPECT_EQ(running->withIdentifier("a.desktop").size(), 1U);
    program.reset();
    desktop.reset();
    EXPECT_TRUE(running->withIdentifier("a.desktop").empty());
    running->activateAllWindows({0, "a.desktop"});
    EXPECT_TRUE(running->withIdentifier("a.desktop").empty());
}

// Grabs the X server, which then answers no other client.
class Grab {
public:
    explicit Grab(const XDesktop& desktop) : grabber_(XcbConnection::open(desktop.display())) {
        xcb_grab_server(grabber_->get());
        awaitServer();
    }
    Grab(const Grab&) = delete;
    Grab& operator=(const Grab&) = delete;
    ~Grab() {
        xcb_ungrab_server(grabber_->get());
        awaitServer();
    }

private:
    void awaitServer() {
        grabber_->beginExchange();
        EXPECT_TRUE(grabber_->now());
    }

    const std::unique_ptr<XcbConnection> grabber_;
};

TEST(XcbRunningApplications, a_grabbed_server_holds_up_no_question_for_long) {
    XDesktop desktop(Manager::none);
    const auto running =
        makeXcbRunningApplications(desktop.display(), std::make_shared<DesktopEntryIndex>(), {});
    WindowedProgram program(desktop);
    desktop.claim({program.open("class=a")});
    ASSERT_EQ(running->withIdentifier("a.desktop").size(), 1U);

    {
        const Grab grab(desktop);
        // The call returns although the X server does not answer it.
        EXPECT_TRUE(running->withIdentifier("a.desktop").empty());
    }
    EXPECT_EQ(running->withIdentifier("a.desktop").size(), 1U);
}

TEST(XcbRunningApplications, a_window_that_is_listed_right_after_a_subscription_is_told) {
    XDesktop desktop(Manager::none);
    const auto manager = XcbConnection::open(desktop.display());
    manager->beginExchange();
    constexpr std::array kNames = {"_NET_CLIENT_LIST"};
    const xcb_atom_t list = manager->atoms(kNames).front();
    const auto running =
        makeXcbRunningApplications(desktop.display(), std::make_shared<DesktopEntryIndex>(), {});
    for (std::uint32_t window = 1; window <= 100; ++window) {
        int told = 0;
        const Subscription subscription = running->onWindowsChanged([&] { ++told; });
        xcb_change_property(manager->get(), XCB_PROP_MODE_REPLACE, manager->root(), list,
                            XCB_ATOM_WINDOW, 32, 1, &window);
        xcb_flush(manager->get());
        ASSERT_TRUE(processes::becomesTrueWithEvents([&] { return told > 0; })) << window;
    }
}

TEST(XcbRunningApplications, a_grabbed_server_holds_up_no_subscription) {
    XDesktop desktop(Manager::none);
    WindowedProgram program(desktop);
    const RunningApplication started{program.process(), "a.desktop"};
    const auto running =
        makeXcbRunningApplications(desktop.display(), std::make_shared<DesktopEntryIndex>(), {});
    int told = 0;
    Subscription subscription = running->onWindowsChanged([&] { ++told; });
    {
        const Grab grab(desktop);
        const auto begin = std::chrono::steady_clock::now();
        QCoreApplication::processEvents();
        const Subscription late = running->onWindowsChanged([] {});
        EXPECT_FALSE(running->showsWindow(started));
        EXPECT_LT(std::chrono::steady_clock::now() - begin, 3 * XcbConnection::kPatience);
    }
    desktop.claim({program.open("class=a")});
    EXPECT_TRUE(processes::becomesTrueWithEvents([&] { return told > 0; }));
    EXPECT_TRUE(running->showsWindow(started));
}

TEST(XcbRunningApplications, a_subscription_survives_the_servers_end_without_further_calls) {
    auto desktop = std::make_unique<XDesktop>(Manager::none);
    const auto running =
        makeXcbRunningApplications(desktop->display(), std::make_shared<DesktopEntryIndex>(), {});
    int told = 0;
    const Subscription subscription = running->onWindowsChanged([&] { ++told; });
    desktop.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(told, 0);
    const Subscription none = running->onWindowsChanged([&] { ++told; });
    QCoreApplication::processEvents();
    EXPECT_EQ(told, 0);
}

}  // namespace
}  // namespace tavo
