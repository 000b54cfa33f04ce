// Opening entries that are D-Bus activatable, over a session bus of the test's own.
#include <gio/gio.h>

#include "tests/platform/linux/fixtures/OpeningFixture.h"
#include "tests/platform/linux/fixtures/PrivateBus.h"

namespace tavo {
namespace {

using processes::Answer;
using processes::Openings;
using processes::OpeningTest;
using processes::PrivateBus;
using std::chrono::milliseconds;

class BusOpening : public OpeningTest {
protected:
    static constexpr const char* kName = "org.example.Activatable";

    BusOpening() {
        // Makes a critical message of GLib end the test program.
        before_ = g_log_set_always_fatal(
            static_cast<GLogLevelFlags>(G_LOG_FATAL_MASK | G_LOG_LEVEL_CRITICAL));
    }
    ~BusOpening() override {
        workspace_.reset();
        g_log_set_always_fatal(before_);
    }

    void startBus() { bus_.emplace(folder_); }

    // Starts a bus with the service; `behaviour` is what the service does when it is activated.
    void startBusWithService(const std::string& behaviour) {
        startBus();
        bus_->addService(kName, std::string(TAVO_TEST_PROGRAMS) + "/tavo_activatable_service " +
                                    kName + " " + report_.path() + " " + behaviour);
    }

    // Writes an entry that activates the service. Its command, if it is run, reports that.
    std::string activatableEntry(const std::string& lines = {}) const {
        return entry("DBusActivatable=true\nExec=" +
                         folder_.script("program", "echo command >" + report_.path()) + "\n" +
                         lines,
                     std::string(kName) + ".desktop");
    }

    static std::string commandLineOf(pid_t process) {
        std::ifstream file("/proc/" + std::to_string(process) + "/cmdline");
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // Whether a click now activates the service. Its process is `process_` then.
    bool clickActivates() {
        const Answer answer = open(activatableEntry());
        EXPECT_EQ(answer.text(), "(no error)");
        if (answer.running) {
            EXPECT_EQ(reported(), "Activate id= token=");
            process_ = answer.running->processIdentifier;
        }
        return answer.running.has_value();
    }

    // Activates the service, which shows no window yet.
    void activateAndWatchWindows() {
        startBusWithService("answer");
        watchWindows();
        EXPECT_TRUE(clickActivates());
        drain();
    }

    pid_t process_ = 0;
    GLogLevelFlags before_ = G_LOG_LEVEL_CRITICAL;
    std::optional<PrivateBus> bus_;
};

TEST_F(BusOpening, an_activatable_entry_is_activated_instead_of_run) {
    startBusWithService("answer");
    const Answer answer = open(activatableEntry());
    EXPECT_EQ(answer.text(), "(no error)");
    ASSERT_TRUE(answer.running);
    EXPECT_EQ(answer.running->identifier, std::string(kName) + ".desktop");
    // The process that is answered is the service's.
    EXPECT_NE(commandLineOf(answer.running->processIdentifier).find(kName), std::string::npos);
    EXPECT_EQ(reported(), "Activate id= token=");
}

TEST_F(BusOpening, an_activation_carries_the_starts_identifier_on_x11) {
    added_ = {"DISPLAY=:99"};
    startBusWithService("answer");
    EXPECT_EQ(open(activatableEntry()).text(), "(no error)");
    EXPECT_TRUE(reported().starts_with("Activate id=tavo-"));
}

TEST_F(BusOpening, where_windows_cannot_be_seen_a_service_is_activated_at_each_click) {
    startBusWithService("answer");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(open(activatableEntry()).text(), "(no error)");
        EXPECT_EQ(reported(), "Activate id= token=");
    }
}

TEST_F(BusOpening, where_the_session_does_not_show_windows_a_service_is_activated_at_each_click) {
    startBusWithService("answer");
    windows_.lists = false;
    watchWindows();
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(clickActivates());
        drain();
    }
}

TEST_F(BusOpening, a_click_while_the_services_window_is_to_come_does_not_activate_it_again) {
    activateAndWatchWindows();
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(clickActivates());
    }
    queue_.run();
    std::set<pid_t> asked;  // once by identifier alone, once by process
    for (const RunningApplication& application : windows_.windowsAsked) {
        asked.insert(application.processIdentifier);
    }
    EXPECT_EQ(asked, (std::set<pid_t>{0, process_}));
    EXPECT_FALSE(clickActivates());
}

TEST_F(BusOpening, once_its_window_has_shown_a_service_is_activated_again) {
    activateAndWatchWindows();
    EXPECT_FALSE(clickActivates());
    showWindow(process_);
    drain();
    EXPECT_TRUE(clickActivates());
}

TEST_F(BusOpening, a_service_that_ends_before_its_window_is_activated_again) {
    activateAndWatchWindows();
    EXPECT_FALSE(clickActivates());
    ::kill(process_, SIGKILL);
    EXPECT_TRUE(processes::becomesTrue([&] { return clickActivates(); }));
}

TEST_F(BusOpening, after_its_time_a_service_without_a_window_is_activated_again) {
    startingTime_ = milliseconds(0);
    startBusWithService("answer");
    watchWindows();
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(clickActivates());
        drain();
    }
}

TEST_F(BusOpening, a_missing_service_is_told) {
    startBus();
    const std::string text = "L’app «" + std::string(kName) +
                             "» non si può attivare: nessun servizio D-Bus ha questo nome.";
    EXPECT_EQ(open(activatableEntry()).text(), text);
    EXPECT_EQ(open(activatableEntry("StartupNotify=true\n")).text(), text);
}

TEST_F(BusOpening, a_missing_service_is_told_on_x11_too) {
    added_ = {"DISPLAY=:99"};
    startBus();
    EXPECT_NE(open(activatableEntry()).text().find("nessun servizio"), std::string::npos);
    EXPECT_NE(open(activatableEntry("StartupNotify=true\n")).text().find("nessun servizio"),
              std::string::npos);
}

TEST_F(BusOpening, a_service_that_refuses_is_told_in_its_own_words) {
    startBusWithService("refuse");
    EXPECT_EQ(open(activatableEntry()).text(),
              "L’app «" + std::string(kName) + "» non ha accettato l’attivazione: Not today.");
}

TEST_F(BusOpening, a_service_that_cannot_start_is_told) {
    startBusWithService("die");
    const std::string text = open(activatableEntry()).text();
    EXPECT_TRUE(
        text.starts_with("L’app «" + std::string(kName) + "» non ha accettato l’attivazione: "))
        << text;
}

TEST_F(BusOpening, a_service_that_says_nothing_is_told_when_its_time_is_over) {
    patience_ = milliseconds(1);  // counts for programs, not for services
    busPatience_ = milliseconds(200);
    startBusWithService("silence");
    EXPECT_EQ(open(activatableEntry()).text(),
              "L’app «" + std::string(kName) + "» non ha risposto alla richiesta di attivazione.");
    EXPECT_EQ(reported(), "Activate id= token=");
}

TEST(OpeningSettings, a_service_has_the_buss_own_time_to_answer) {
    ManualMainQueue queue;
    SessionBus bus("");
    const OpeningSettings settings{.mainQueue = queue,
                                   .environment = StartEnvironment({}),
                                   .bus = bus,
                                   .applicationFolders = {},
                                   .userTime = {}};
    EXPECT_EQ(settings.busPatience, std::chrono::seconds(25));
    EXPECT_EQ(settings.patience, std::chrono::seconds(2));
    EXPECT_EQ(settings.startingTime, std::chrono::seconds(15));
}

TEST_F(BusOpening, a_service_that_has_not_answered_is_not_activated_again) {
    startingTime_ = milliseconds(0);  // counts for programs, not for services
    startBusWithService("silence");
    Openings first(queue_);
    begin(activatableEntry(), first);
    EXPECT_EQ(reported(), "Activate id= token=");
    const Answer second = open(activatableEntry());
    EXPECT_EQ(second.text(), "(no error)");
    EXPECT_EQ(second.running, std::nullopt);
    EXPECT_EQ(first.now().calls, 0);
    // The next report comes from another entry: the service was not activated a second time.
    EXPECT_EQ(open(scriptEntry("echo other >" + report_.path())).text(), "(no error)");
    EXPECT_EQ(reported(), "other");
}

TEST_F(BusOpening, after_a_refusal_a_service_is_activated_again) {
    startBusWithService("refuse");
    for (int i = 0; i < 2; ++i) {
        EXPECT_NE(open(activatableEntry()).text().find("Not today."), std::string::npos);
        EXPECT_EQ(reported(), "Activate id= token=");
    }
}

TEST_F(BusOpening, an_entry_without_a_command_is_activated) {
    startBusWithService("answer");
    const std::string path = entry("DBusActivatable=true\n", std::string(kName) + ".desktop");
    EXPECT_EQ(open(path).text(), "(no error)");
    EXPECT_EQ(reported(), "Activate id= token=");
}

TEST_F(BusOpening, an_activation_carries_the_sessions_token_for_old_and_new_toolkits) {
    startBusWithService("answer");
    giveTokens([](const std::string& identifier) { return "for " + identifier; });
    EXPECT_EQ(open(activatableEntry()).text(), "(no error)");
    const std::string token = "for " + std::string(kName) + ".desktop";
    EXPECT_EQ(reported(), "Activate id=" + token + " token=" + token);
}

TEST_F(BusOpening, an_activation_goes_without_a_token_that_the_bus_cannot_carry) {
    startBusWithService("answer");
    giveTokens([](const std::string&) { return "not UTF-8: \xff"; });
    EXPECT_EQ(open(activatableEntry()).text(), "(no error)");
    EXPECT_EQ(reported(), "Activate id= token=");
}

TEST_F(BusOpening, ending_does_not_wait_for_a_service_that_says_nothing) {
    startBusWithService("silence");
    Openings opening(queue_);
    begin(activatableEntry(), opening);
    EXPECT_EQ(reported(), "Activate id= token=");
    workspace_.reset();
    EXPECT_EQ(opening.now().calls, 0);
}

TEST_F(BusOpening, without_a_bus_the_command_is_run) {
    EXPECT_EQ(open(activatableEntry()).text(), "(no error)");
    EXPECT_EQ(reported(), "command");
}

TEST_F(BusOpening, without_a_bus_and_a_command_there_is_nothing_to_run) {
    const std::string path = entry("DBusActivatable=true\n", std::string(kName) + ".desktop");
    EXPECT_EQ(open(path).text(),
              "La voce di menu «" + path + "» non dice quale programma avviare (manca Exec).");
}

TEST_F(BusOpening, an_entry_whose_name_is_no_bus_name_is_run) {
    startBus();
    const std::string path =
        entry("DBusActivatable=true\nExec=" +
                  folder_.script("program", "echo command >" + report_.path()) + "\n",
              "plain.desktop");
    EXPECT_EQ(open(path).text(), "(no error)");
    EXPECT_EQ(reported(), "command");
}

TEST_F(BusOpening, an_ordinary_entry_is_run_with_a_bus_as_without) {
    startBus();
    EXPECT_EQ(open(scriptEntry("echo ran >" + report_.path() + "; exit 5")).text(),
              "Il programma «" + folder_.path("program") +
                  "» dell’app «App» si è chiuso subito dopo l’avvio con il codice di errore 5.");
    EXPECT_EQ(reported(), "ran");
}

TEST_F(BusOpening, losing_the_bus_ends_nothing_and_commands_are_run_from_then_on) {
    startBusWithService("answer");
    EXPECT_EQ(open(activatableEntry()).text(), "(no error)");
    EXPECT_EQ(reported(), "Activate id= token=");
    bus_->end();
    // Opens the entry repeatedly, because GLib learns that the bus is gone only during one of the
    // openings.
    EXPECT_TRUE(
        processes::becomesTrue([&] { return open(activatableEntry()).text() == "(no error)"; }));
    EXPECT_EQ(reported(), "command");
}

}  // namespace
}  // namespace tavo
