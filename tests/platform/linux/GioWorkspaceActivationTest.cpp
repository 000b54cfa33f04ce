// Opening over a session bus of the test's own.
#include <gio/gio.h>

#include "platform/linux/PosixSpawn.h"
#include "tests/platform/linux/OpeningFixture.h"

namespace tavo {
namespace {

using processes::Answer;
using processes::Folder;
using processes::Openings;
using processes::OpeningTest;
using processes::Report;
using std::chrono::milliseconds;

// A bus daemon with services of its own and nothing else. Ends with the test, its services too.
class PrivateBus {
public:
    explicit PrivateBus(const Folder& folder) : folder_(folder) {
        std::filesystem::create_directories(folder.path("services"));
        const std::string configuration = folder.write(
            "bus.conf", "<busconfig><type>session</type><listen>unix:path=" + folder.path("bus") +
                            "</listen><servicedir>" + folder.path("services") +
                            "</servicedir><policy context='default'><allow send_destination='*'/>"
                            "<allow receive_sender='*'/>"
                            "<allow own='*'/></policy></busconfig>");
        int ends[2];
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        const FileDescriptor reading(ends[0]);
        FileDescriptor writing(ends[1]);
        ProgramStart daemon;
        // Goes even if the test is killed.
        daemon.executable = "/usr/bin/setpriv";
        daemon.arguments = {"--pdeathsig",
                            "KILL",
                            "/usr/bin/dbus-daemon",
                            "--nofork",
                            "--nopidfile",
                            "--print-address=1",
                            "--config-file=" + configuration};
        daemon.environment = {"PATH=/usr/bin:/bin", "HOME=" + folder.path()};
        daemon.output = writing.get();
        EXPECT_EQ(startProgram(daemon, process_), 0);
        writing.close();
        char address[512];
        EXPECT_GT(::read(reading.get(), address, sizeof address), 0);  // it listens
        variable_.emplace("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + folder.path("bus"));
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    ~PrivateBus() { end(); }

    void end() {
        if (process_ > 0) {
            processes::endProcess(std::exchange(process_, 0));
        }
    }

    void addService(const std::string& name, const std::string& command) const {
        folder_.write("services/" + name + ".service",
                      "[D-BUS Service]\nName=" + name + "\nExec=" + command + "\n");
    }

private:
    const Folder& folder_;
    pid_t process_ = 0;
    std::optional<processes::Variable> variable_;
};

class BusOpening : public OpeningTest {
protected:
    static constexpr const char* kName = "org.example.Activatable";

    BusOpening() {
        // A misuse of GLib ends the test instead of scrolling by.
        before_ = g_log_set_always_fatal(
            static_cast<GLogLevelFlags>(G_LOG_FATAL_MASK | G_LOG_LEVEL_CRITICAL));
    }
    ~BusOpening() override {
        workspace_.reset();
        g_log_set_always_fatal(before_);
    }

    void startBus() { bus_.emplace(folder_); }

    void addService(const std::string& behaviour) {
        bus_->addService(kName, std::string(TAVO_TEST_PROGRAMS) + "/tavo_activatable_service " +
                                    kName + " " + report_.path() + " " + behaviour);
    }

    // An entry for the service whose command, should it be run, says so.
    std::string activatableEntry(const std::string& lines = {}) const {
        return entry("DBusActivatable=true\nExec=" +
                         folder_.script("program", "echo command >" + report_.path()) + "\n" +
                         lines,
                     std::string(kName) + ".desktop");
    }

    GLogLevelFlags before_ = G_LOG_LEVEL_CRITICAL;
    std::optional<PrivateBus> bus_;
};

TEST_F(BusOpening, an_activatable_entry_is_activated_instead_of_run) {
    startBus();
    addService("answer");
    const Answer answer = open(activatableEntry());
    EXPECT_EQ(answer.text(), "(no error)");
    EXPECT_EQ(answer.running, (RunningApplication{0, std::string(kName) + ".desktop"}));
    EXPECT_EQ(reported(), "Activate id=");
}

TEST_F(BusOpening, an_activation_carries_the_starts_identifier_on_x11) {
    added_ = {"DISPLAY=:99"};
    startBus();
    addService("answer");
    EXPECT_EQ(open(activatableEntry("StartupNotify=true\n")).text(), "(no error)");
    EXPECT_TRUE(reported().starts_with("Activate id=tavo-"));
}

TEST_F(BusOpening, a_service_that_runs_already_is_activated_again) {
    startBus();
    addService("answer");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(open(activatableEntry()).text(), "(no error)");
        EXPECT_EQ(reported(), "Activate id=");
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
    startBus();
    addService("refuse");
    EXPECT_EQ(open(activatableEntry()).text(),
              "L’app «" + std::string(kName) + "» non ha accettato l’attivazione: Not today.");
}

TEST_F(BusOpening, a_service_that_cannot_start_is_told) {
    startBus();
    addService("die");
    const std::string text = open(activatableEntry()).text();
    EXPECT_TRUE(
        text.starts_with("L’app «" + std::string(kName) + "» non ha accettato l’attivazione: "))
        << text;
}

TEST_F(BusOpening, a_service_that_says_nothing_counts_as_started_after_a_while) {
    patience_ = milliseconds(50);
    startBus();
    addService("silence");
    EXPECT_EQ(open(activatableEntry()).text(), "(no error)");
}

TEST_F(BusOpening, ending_does_not_wait_for_a_service_that_says_nothing) {
    startBus();
    addService("silence");
    Openings opening;
    workspace().openApplication(activatableEntry(), {}, opening.completion());
    EXPECT_EQ(reported(), "Activate id=");
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
                  "» si è chiuso subito dopo l’avvio con il codice di errore 5.");
    EXPECT_EQ(reported(), "ran");
}

TEST_F(BusOpening, losing_the_bus_ends_nothing_and_commands_are_run_from_then_on) {
    startBus();
    addService("answer");
    EXPECT_EQ(open(activatableEntry()).text(), "(no error)");
    EXPECT_EQ(reported(), "Activate id=");
    bus_->end();
    // The loss is noticed in the course of some opening.
    EXPECT_TRUE(
        processes::becomesTrue([&] { return open(activatableEntry()).text() == "(no error)"; }));
    EXPECT_EQ(reported(), "command");
}

}  // namespace
}  // namespace tavo
