// The seconds between a click and the application's first window.
#include "tests/platform/linux/fixtures/OpeningFixture.h"

namespace tavo {
namespace {

using processes::Answer;
using processes::becomesTrue;
using processes::Openings;
using processes::OpeningTest;
using std::chrono::milliseconds;

// The programs in these tests report their PID, and run until letEnd() ends them.
class Starting : public OpeningTest {
protected:
    Starting() {
        EXPECT_EQ(::mkfifo(folder_.path("end").c_str(), 0600), 0);
        hold_ = FileDescriptor(::open(folder_.path("end").c_str(), O_RDWR | O_CLOEXEC));
    }
    ~Starting() override {
        workspace_.reset();
        for (const pid_t process : running_) {
            processes::endProcess(process);
        }
    }

    [[nodiscard]] std::string body() const {
        return "echo $$ >" + report_.path() + "; read status <" + folder_.path("end") +
               "; exit $status";
    }
    std::string program() const { return scriptEntry(body()); }
    std::string bundle(const std::string& program = "Foo") const {
        folder_.script("Foo.app/Contents/MacOS/" + program, body());
        folder_.write("Foo.app/Contents/Info.plist",
                      "<plist version=\"1.0\"><dict><key>CFBundleExecutable</key><string>" +
                          program + "</string></dict></plist>");
        return folder_.path("Foo.app");
    }

    // Waits for a program's report and answers its PID.
    pid_t started() {
        const auto process = static_cast<pid_t>(std::stol(reported()));
        running_.insert(process);
        return process;
    }

    // Lets the program exit with `status`. Returns when the workspace has learnt of it.
    void letEnd(pid_t process, int status) {
        const std::string line = std::to_string(status) + "\n";
        EXPECT_EQ(::write(hold_.get(), line.data(), line.size()),
                  static_cast<ssize_t>(line.size()));
        EXPECT_TRUE(becomesTrue([&] { return !processes::children().contains(process); }));
        running_.erase(process);
        drain();
    }

    // Kills the program.
    void forget(pid_t process) {
        processes::endProcess(process);
        running_.erase(process);
    }

private:
    FileDescriptor hold_;
    std::set<pid_t> running_;
};

TEST_F(Starting, a_second_click_starts_nothing_and_is_answered_without_error) {
    const std::string path = program();
    Openings first(queue_);
    begin(path, first);
    started();
    const Answer second = open(path);
    EXPECT_EQ(second.text(), "(no error)");
    EXPECT_EQ(second.calls, 1);
    EXPECT_EQ(second.running, std::nullopt);
    EXPECT_EQ(first.now().calls, 0);
    EXPECT_EQ(processes::children().size(), 1U);
}

TEST_F(Starting, a_second_click_before_the_program_runs_starts_nothing) {
    const std::string path = program();
    std::vector<Openings> clicks(5, Openings(queue_));
    for (const Openings& click : clicks) {
        begin(path, click);
    }
    started();
    for (int i = 1; i < 5; ++i) {
        EXPECT_EQ(clicks[i].wait().text(), "(no error)");
    }
    EXPECT_EQ(processes::children().size(), 1U);
}

TEST_F(Starting, a_bundle_is_not_started_twice_either) {
    const std::string path = bundle();
    EXPECT_TRUE(open(path).running);
    started();
    const Answer second = open(path);
    EXPECT_EQ(second.text(), "(no error)");
    EXPECT_EQ(second.running, std::nullopt);
    EXPECT_EQ(processes::children().size(), 1U);
}

TEST_F(Starting, what_is_not_to_be_activated_is_started_each_time) {
    const std::string path = bundle("applet");
    for (int i = 0; i < 3; ++i) {
        Openings opening(queue_);
        begin(path, opening, false);
        EXPECT_TRUE(opening.wait().running);
        started();
    }
    EXPECT_EQ(processes::children().size(), 3U);
}

TEST_F(Starting, an_address_is_for_an_application_that_is_starting_already) {
    const std::string path = program();
    Openings first(queue_);
    begin(path, first);
    started();
    Openings second(queue_);
    workspace().openApplication(path, {.address = "https://example.org/"}, second.completion());
    started();
    EXPECT_EQ(processes::children().size(), 2U);
}

TEST_F(Starting, other_applications_start_meanwhile) {
    Openings first(queue_);
    begin(program(), first);
    started();
    EXPECT_TRUE(open(bundle()).running);
    started();
    EXPECT_EQ(processes::children().size(), 2U);
}

TEST_F(Starting, an_application_that_has_ended_is_started_again) {
    const std::string path = program();
    for (const int status : {0, 0, 3}) {
        Openings opening(queue_);
        begin(path, opening);
        letEnd(started(), status);
        EXPECT_EQ(opening.now().calls, 1);
        EXPECT_EQ(opening.now().error.has_value(), status != 0);
    }
    Openings last(queue_);
    begin(path, last);
    started();
}

TEST_F(Starting, a_bundle_that_has_ended_is_started_again) {
    const std::string path = bundle();
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(open(path).running);
        letEnd(started(), 0);
    }
}

TEST_F(Starting, an_application_that_could_not_start_is_tried_again) {
    const std::string path = entry("Exec=/no/such/program\n");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(open(path).text(), "Il programma «/no/such/program» non esiste.");
    }
}

TEST_F(Starting, after_its_time_an_application_without_a_window_is_started_again) {
    startingTime_ = milliseconds(0);
    const std::string path = program();
    std::vector<Openings> opening(2, Openings(queue_));
    for (const Openings& click : opening) {
        begin(path, click);
        started();
    }
    EXPECT_EQ(processes::children().size(), 2U);
}

TEST_F(Starting, the_end_of_its_patience_is_not_the_end_of_a_start) {
    patience_ = milliseconds(1);
    const std::string path = program();
    EXPECT_TRUE(open(path).running);
    started();
    EXPECT_EQ(open(path).running, std::nullopt);
    EXPECT_EQ(processes::children().size(), 1U);
}

TEST_F(Starting, the_first_window_answers_and_ends_the_start) {
    watchWindows();
    const std::string path = program();
    Openings opening(queue_);
    begin(path, opening);
    const pid_t process = started();
    EXPECT_TRUE(becomesTrue([&] { return queue_.waiting() > 0; }));
    queue_.run();
    drain();
    EXPECT_EQ(windows_.windowsAsked.back(), (RunningApplication{process, "app.desktop"}));
    EXPECT_EQ(opening.now().calls, 0);

    showWindow();
    const Answer answer = opening.wait();
    EXPECT_EQ(answer.text(), "(no error)");
    EXPECT_EQ(answer.running, (RunningApplication{process, "app.desktop"}));

    Openings again(queue_);
    begin(path, again);
    EXPECT_NE(started(), process);
}

TEST_F(Starting, an_end_after_the_first_window_is_silent) {
    watchWindows();
    showWindow();
    Openings opening(queue_);
    begin(program(), opening);
    const pid_t process = started();
    EXPECT_TRUE(becomesTrue([&] { return queue_.waiting() > 0; }));
    queue_.run();
    EXPECT_EQ(opening.wait().text(), "(no error)");
    letEnd(process, 9);
    EXPECT_EQ(opening.now().calls, 1);
    EXPECT_EQ(opening.now().text(), "(no error)");
}

TEST_F(Starting, a_window_that_shows_after_the_answer_ends_the_start_alone) {
    patience_ = milliseconds(1);
    watchWindows();
    const std::string path = program();
    Openings opening(queue_);
    begin(path, opening);
    started();
    EXPECT_EQ(opening.wait().text(), "(no error)");
    showWindow();
    drain();
    EXPECT_EQ(opening.now().calls, 1);
    Openings again(queue_);
    begin(path, again);
    started();
    EXPECT_EQ(processes::children().size(), 2U);
}

TEST_F(Starting, windows_of_what_is_not_to_be_activated_are_not_looked_for) {
    watchWindows();
    Openings opening(queue_);
    begin(bundle("applet"), opening, false);
    EXPECT_TRUE(opening.wait().running);
    started();
    drain();
    EXPECT_EQ(queue_.waiting(), 0U);
}

TEST_F(Starting, a_window_found_after_the_workspace_has_ended_does_nothing) {
    watchWindows();
    Openings opening(queue_);
    begin(program(), opening);
    started();
    EXPECT_TRUE(becomesTrue([&] { return queue_.waiting() > 0; }));
    workspace_.reset();
    showWindow();
    queue_.advance(milliseconds(60000));
    EXPECT_EQ(opening.now().calls, 0);
    EXPECT_TRUE(windows_.windowsAsked.empty());
}

TEST_F(Starting, a_bundle_gets_what_brings_it_forward_unless_it_is_not_to_be_activated) {
    added_ = {"DISPLAY=:99", "XDG_ACTIVATION_TOKEN=ours"};
    giveTokens([](const std::string& identifier) { return "for " + identifier; });
    folder_.script("Foo.app/Foo",
                   "echo \"${DESKTOP_STARTUP_ID%%-*}/$XDG_ACTIVATION_TOKEN\" >" + report_.path());
    open(folder_.path("Foo.app"));
    EXPECT_EQ(reported(), "tavo/for Foo.app");
    drain();
    Openings opening(queue_);
    begin(folder_.path("Foo.app"), opening, false);
    EXPECT_EQ(reported(), "/");
}

TEST_F(Starting, an_entry_gets_the_sessions_token_for_newer_and_for_older_toolkits) {
    giveTokens([](const std::string& identifier) { return "for " + identifier; });
    open(scriptEntry("echo \"$XDG_ACTIVATION_TOKEN, $DESKTOP_STARTUP_ID\" >" + report_.path()));
    EXPECT_EQ(reported(), "for app.desktop, for app.desktop");
}

TEST_F(Starting, where_windows_are_not_listed_what_has_one_window_is_started_at_each_click) {
    struct Row {
        const char* name;
        bool lists;
        const char* lines;
        bool again;
    };
    constexpr Row kRows[] = {
        {"not listed, one window", false, "SingleMainWindow=true\n", true},
        {"not listed, any number", false, "", false},
        {"listed, one window", true, "SingleMainWindow=true\n", false},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        windows_.lists = row.lists;
        watchWindows();
        const std::string path = scriptEntry(body(), row.lines);
        Openings opening(queue_);
        begin(path, opening);
        started();
        begin(path, opening);
        if (row.again) {
            started();
        }
        drain();
        EXPECT_EQ(processes::children().size(), row.again ? 2U : 1U);
        workspace_.reset();
        for (const pid_t process : processes::children()) {
            forget(process);
        }
    }
}

}  // namespace
}  // namespace tavo
