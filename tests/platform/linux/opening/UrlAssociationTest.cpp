// Opening web addresses, by associations that the test makes.
#include "tests/platform/linux/fixtures/ChildProgram.h"
#include "tests/platform/linux/fixtures/OpeningFixture.h"
#include "tests/platform/linux/fixtures/PrivateBus.h"

namespace tavo {
namespace {

using processes::Folder;
using processes::Report;
using processes::Variable;

class UrlAssociation : public testing::Test {
protected:
    void associate(const std::string& lines, const std::string& entry = "browser.desktop") const {
        folder_.write("data/applications/" + entry,
                      "[Desktop Entry]\nType=Application\nName=Browser\n"
                      "MimeType=x-scheme-handler/https;\n" +
                          lines);
        folder_.write("config/mimeapps.list",
                      "[Default Applications]\nx-scheme-handler/https=" + entry + "\n");
    }

    // Writes a browser that reports its arguments if it runs in a session (setsid(2)) of its own.
    std::string browser() const {
        return folder_.script("browser",
                              "read -r pid name state parent group session rest </proc/$$/stat; "
                              "[ $$ = $session ] && echo \"$# $1 $2\" >" +
                                  report_.path());
    }

    // Opens a web address by the launcher; answers "-1" when it is not opened.
    static std::string open(const std::string& address) {
        ChildProgram launcher({std::string(TAVO_TEST_PROGRAMS) + "/tavo_starter"});
        return launcher.ask("open " + address);
    }

    const Folder folder_;
    Report report_{folder_};
    const Variable data_{"XDG_DATA_HOME", folder_.path("data")};
    const Variable shared_{"XDG_DATA_DIRS", folder_.path("nothing")};
    const Variable config_{"XDG_CONFIG_HOME", folder_.path("config")};
    const Variable shared_config_{"XDG_CONFIG_DIRS", folder_.path("nothing")};
};

TEST_F(UrlAssociation, the_associated_program_gets_the_address_in_a_session_of_its_own) {
    associate("Exec=" + browser() + " --new %u\n");
    EXPECT_NE(open("https://example.org/?a=b&c"), "-1");
    EXPECT_EQ(report_.line(), "2 --new https://example.org/?a=b&c");
}

TEST_F(UrlAssociation, a_program_for_the_terminal_gets_the_address_there) {
    folder_.script("bin/xdg-terminal-exec", "echo terminal >" + report_.path() + "; exec \"$@\"");
    const Variable path("PATH", folder_.path("bin") + ":/usr/bin:/bin");
    associate("Terminal=true\nExec=" + browser() + " --new %U\n");
    EXPECT_NE(open("https://example.org/"), "-1");
    EXPECT_EQ(report_.line(), "terminal");
    EXPECT_EQ(report_.line(), "2 --new https://example.org/");
}

TEST_F(UrlAssociation, a_program_that_the_bus_activates_is_told_the_address_there) {
    constexpr const char* kName = "org.example.Activatable";
    const processes::PrivateBus bus(folder_);
    bus.addService(kName, std::string(TAVO_TEST_PROGRAMS) + "/tavo_activatable_service " + kName +
                              " " + report_.path() + " answer");
    associate("DBusActivatable=true\nExec=" + browser() + " %u\n", std::string(kName) + ".desktop");
    EXPECT_NE(open("https://example.org/"), "-1");
    EXPECT_EQ(report_.line(), "Open ['https://example.org/'] id= token=");
}

TEST_F(UrlAssociation, without_an_associated_program_that_starts_nothing_is_opened) {
    EXPECT_EQ(open("https://example.org/"), "-1");
    associate("Exec=/no/such/program %u\n");
    EXPECT_EQ(open("https://example.org/"), "-1");
}

}  // namespace
}  // namespace tavo
