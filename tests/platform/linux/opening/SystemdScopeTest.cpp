// Requests for scopes, to a stand-in for systemd on a bus of the test's own.
#include "platform/linux/opening/SystemdScope.h"
#include "tests/platform/linux/fixtures/OpeningFixture.h"
#include "tests/platform/linux/fixtures/PrivateBus.h"
#include "tests/platform/linux/fixtures/UserManagerStandIn.h"

namespace tavo {
namespace {

using processes::Answer;
using processes::Openings;
using processes::OpeningTest;
using processes::PrivateBus;
using processes::UserManagerStandIn;
using std::chrono::milliseconds;

TEST(ScopeName, follows_the_conventions_and_escapes_what_a_unit_cannot_be_called) {
    EXPECT_EQ(scopeName("org.example.App.desktop", 7), "app-tavolauncher-org.example.App-7.scope");
    EXPECT_EQ(scopeName("vendor-app.desktop", 7), "app-tavolauncher-vendor\\x2dapp-7.scope");
    EXPECT_EQ(scopeName("Foo Bar.app", 7), "app-tavolauncher-Foo\\x20Bar.app-7.scope");
    EXPECT_EQ(scopeName("è/\n", 7), "app-tavolauncher-\\xc3\\xa8\\x2f\\x0a-7.scope");
}

class ScopeOpening : public OpeningTest {
protected:
    ScopeOpening() : bus_(folder_), manager_(folder_) {}

    // The request that systemd must get for a scope for `process`.
    static std::string expected(const std::string& name, const std::string& process) {
        return "app-tavolauncher-" + name + "-" + process + ".scope fail [('PIDs', <[uint32 " +
               process + "]>), ('Slice', <'app.slice'>), ('CollectMode', <'inactive-or-failed'>)]";
    }

    PrivateBus bus_;
    UserManagerStandIn manager_;
};

TEST_F(ScopeOpening, an_entrys_program_gets_a_scope_of_its_own) {
    manager_.start("answer");
    EXPECT_EQ(open(scriptEntry("echo $$ >" + report_.path())).text(), "(no error)");
    EXPECT_EQ(manager_.request(), expected("app", reported()));
}

TEST_F(ScopeOpening, a_bundles_program_gets_a_scope_of_its_own) {
    manager_.start("answer");
    // The program runs long enough for the bus to be connected, which a bundle's start does not
    // wait for.
    folder_.script("Foo.app/Foo", "echo $$ >" + report_.path() + "; exec sleep 1000");
    const Answer answer = open(folder_.path("Foo.app"));
    ASSERT_TRUE(answer.running);
    EXPECT_EQ(manager_.request(), expected("Foo.app", reported()));
    ::kill(answer.running->processIdentifier, SIGKILL);
}

TEST_F(ScopeOpening, every_start_asks_anew_also_after_a_refusal) {
    manager_.start("refuse");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(open(scriptEntry("echo $$ >" + report_.path())).text(), "(no error)");
        EXPECT_EQ(manager_.request(), expected("app", reported()));
    }
}

TEST_F(ScopeOpening, an_early_failure_is_told_whatever_the_manager_says) {
    for (const char* const behaviour : {"answer", "refuse", "silence"}) {
        SCOPED_TRACE(behaviour);
        manager_.start(behaviour);
        EXPECT_EQ(
            open(scriptEntry("exit 3")).text(),
            "Il programma «" + folder_.path("program") +
                "» dell’app «App» si è chiuso subito dopo l’avvio con il codice di errore 3.");
        EXPECT_NE(manager_.request(), "(none)");
    }
}

TEST_F(ScopeOpening, a_manager_that_says_nothing_delays_neither_start_nor_answer_nor_end) {
    manager_.start("silence");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(open(scriptEntry("echo $$ >" + report_.path())).text(), "(no error)");
        EXPECT_EQ(manager_.request(), expected("app", reported()));
    }
    workspace_.reset();
}

TEST_F(ScopeOpening, without_a_manager_programs_start_the_plain_way) {
    EXPECT_EQ(open(scriptEntry("echo ran >" + report_.path())).text(), "(no error)");
    EXPECT_EQ(reported(), "ran");
}

TEST_F(ScopeOpening, without_a_bus_programs_start_the_plain_way) {
    bus_.end();
    EXPECT_EQ(open(scriptEntry("echo ran >" + report_.path())).text(), "(no error)");
    EXPECT_EQ(reported(), "ran");
    folder_.script("Foo.app/Foo", "echo ran too >" + report_.path());
    EXPECT_EQ(open(folder_.path("Foo.app")).text(), "(no error)");
    EXPECT_EQ(reported(), "ran too");
}

}  // namespace
}  // namespace tavo
