// A session bus that is there and does not answer.
#include "tests/platform/linux/fixtures/OpeningFixture.h"
#include "tests/platform/linux/fixtures/PrivateBus.h"
#include "tests/platform/linux/fixtures/SilentSocket.h"
#include "tests/platform/linux/fixtures/UserManagerStandIn.h"

namespace tavo {
namespace {

using processes::Answer;
using processes::Openings;
using processes::OpeningTest;
using processes::PrivateBus;
using processes::SilentSocket;
using processes::UserManagerStandIn;

class SilentBus : public OpeningTest {
protected:
    static constexpr const char* kName = "org.example.Activatable";

    SilentBus()
        : silent_(folder_.path("silence")),
          address_("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + folder_.path("silence")) {}

    std::string activatableEntry() const {
        return entry("DBusActivatable=true\nExec=/bin/true\n", std::string(kName) + ".desktop");
    }

    SilentSocket silent_;
    processes::Variable address_;
};

TEST_F(SilentBus, keeps_no_ordinary_entry_from_starting) {
    added_ = {"KEPT=kept", "XDG_ACTIVATION_TOKEN=ours"};
    const std::string path = scriptEntry(
        "read -r pid name state parent group session rest </proc/$$/stat; "
        "[ $$ = $session ] && echo \"$# $1 $(pwd) $(readlink /proc/$$/fd/0) "
        "$KEPT$XDG_ACTIVATION_TOKEN $GIO_LAUNCHED_DESKTOP_FILE "
        "$((GIO_LAUNCHED_DESKTOP_FILE_PID - $$))\" >" +
        report_.path());
    std::filesystem::rename(path, path + ".old");
    std::ofstream(path) << std::ifstream(path + ".old").rdbuf();
    EXPECT_EQ(open(path).text(), "(no error)");
    EXPECT_EQ(reported(), "0  " + home_ + " /dev/null kept " + path + " 0");
    const std::string inFolder =
        scriptEntry("pwd >" + report_.path(), "Path=" + folder_.path("applications") + "\n");
    EXPECT_EQ(open(inFolder).text(), "(no error)");
    EXPECT_EQ(reported(), folder_.path("applications"));
}

TEST_F(SilentBus, hides_no_early_failure) {
    EXPECT_EQ(open(scriptEntry("exit 5")).text(),
              "Il programma «" + folder_.path("program") +
                  "» dell’app «App» si è chiuso subito dopo l’avvio con il codice di errore 5.");
    EXPECT_EQ(open(entry("Exec=/no/such\n")).text(), "Il programma «/no/such» non esiste.");
}

TEST_F(SilentBus, keeps_no_bundle_from_starting) {
    folder_.script("Foo.app/Foo", "echo ran >" + report_.path());
    EXPECT_EQ(open(folder_.path("Foo.app")).text(), "(no error)");
    EXPECT_EQ(reported(), "ran");
}

TEST_F(SilentBus, fails_an_activation_with_a_clear_text_each_time) {
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(open(activatableEntry()).text(),
                  "L’app «org.example.Activatable.desktop» non si può attivare: il bus di sessione "
                  "non risponde.");
    }
}

// A real session bus, stopped by SIGSTOP until goOn().
class StoppedBus : public OpeningTest {
protected:
    StoppedBus() : bus_(folder_), manager_(folder_) {
        manager_.start("answer");
        ::kill(bus_.process(), SIGSTOP);
    }
    ~StoppedBus() override { goOn(); }

    void goOn() const { ::kill(bus_.process(), SIGCONT); }

    PrivateBus bus_;
    UserManagerStandIn manager_;
};

TEST_F(StoppedBus, what_was_started_meanwhile_gets_its_scope_when_the_bus_goes_on) {
    const std::string body = "echo $$ >" + report_.path() + "; exec sleep 1000";
    folder_.script("Foo.app/Foo", body);
    patience_ = std::chrono::milliseconds(1);
    std::set<std::string> wanted;
    std::vector<pid_t> running;
    for (const auto& [path, name] :
         {std::pair(folder_.path("Foo.app"), "Foo.app"), std::pair(scriptEntry(body), "app")}) {
        const Answer answer = open(path);
        ASSERT_TRUE(answer.running);
        running.push_back(answer.running->processIdentifier);
        wanted.insert("app-tavolauncher-" + std::string(name) + "-" + reported() + ".scope");
    }
    goOn();
    std::set<std::string> asked;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const std::string request = manager_.request();
        asked.insert(request.substr(0, request.find(' ')));
    }
    EXPECT_EQ(asked, wanted);
    for (const pid_t process : running) {
        ::kill(process, SIGKILL);
    }
}

TEST_F(StoppedBus, of_what_has_ended_meanwhile_no_scope_is_asked_for) {
    folder_.script("Ended.app/Ended", "exit 0");
    EXPECT_EQ(open(folder_.path("Ended.app")).text(), "(no error)");
    EXPECT_TRUE(processes::becomesTrue([] { return processes::children().size() <= 2; }));
    folder_.script("Foo.app/Foo", "exec sleep 1000");
    const Answer answer = open(folder_.path("Foo.app"));
    ASSERT_TRUE(answer.running);
    goOn();
    EXPECT_TRUE(manager_.request().starts_with("app-tavolauncher-Foo.app-"));
    ::kill(answer.running->processIdentifier, SIGKILL);
}

// A bus that did not answer when the launcher began. For that reason the launcher has hidden the
// address of the bus from GLib and libdbus.
class LateBus : public OpeningTest {
protected:
    static constexpr const char* kName = "org.example.Activatable";

    LateBus() : bus_(folder_) {
        bus_.addService(kName, std::string(TAVO_TEST_PROGRAMS) + "/tavo_activatable_service " +
                                   kName + " " + report_.path() + " answer");
        ::kill(bus_.process(), SIGSTOP);
        libraries_.emplace("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
        busAddress_ = "unix:path=" + folder_.path("bus");
    }
    ~LateBus() override { goOn(); }

    void goOn() const { ::kill(bus_.process(), SIGCONT); }

    // Writes an entry that activates the service. Its command, if it is run, reports that.
    std::string activatableEntry() const {
        return entry("DBusActivatable=true\nExec=" +
                         folder_.script("command", "echo command >" + report_.path()) + "\n",
                     std::string(kName) + ".desktop");
    }

    PrivateBus bus_;
    std::optional<processes::Variable> libraries_;
};

TEST_F(LateBus, is_used_as_soon_as_it_answers) {
    const std::string path = activatableEntry();
    EXPECT_EQ(open(path).text(),
              "L’app «org.example.Activatable.desktop» non si può attivare: il bus di sessione non "
              "risponde.");
    goOn();
    EXPECT_TRUE(processes::becomesTrue([&] { return open(path).text() == "(no error)"; }));
    EXPECT_EQ(reported(), "Activate id= token=");
}

TEST_F(LateBus, keeps_no_ordinary_entry_from_starting_neither_before_nor_after_it_answers) {
    const auto openOrdinary = [this] {
        return open(scriptEntry("echo ran >" + report_.path())).text();
    };
    EXPECT_EQ(openOrdinary(), "(no error)");
    EXPECT_EQ(reported(), "ran");
    const std::string path = activatableEntry();
    goOn();
    EXPECT_TRUE(processes::becomesTrue([&] { return open(path).text() == "(no error)"; }));
    EXPECT_EQ(reported(), "Activate id= token=");
    EXPECT_EQ(openOrdinary(), "(no error)");
    EXPECT_EQ(reported(), "ran");
}

TEST_F(LateBus, that_was_lost_is_used_again_when_it_returns) {
    goOn();
    const std::string path = activatableEntry();
    EXPECT_EQ(open(path).text(), "(no error)");
    EXPECT_EQ(reported(), "Activate id= token=");
    bus_.end();
    // Opens the entry repeatedly, because GLib learns that the bus is gone only during one of the
    // openings.
    EXPECT_TRUE(processes::becomesTrue([&] { return open(path).text() == "(no error)"; }));
    EXPECT_EQ(reported(), "command");
    std::filesystem::remove(folder_.path("bus"));
    const PrivateBus returned(folder_);
    EXPECT_EQ(open(path).text(), "(no error)");
    EXPECT_EQ(reported(), "Activate id= token=");
}

}  // namespace
}  // namespace tavo
