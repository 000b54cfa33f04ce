// Web addresses, opened by way of associations that the test makes.
#include "tests/platform/linux/fixtures/ChildProgram.h"
#include "tests/platform/linux/fixtures/OpeningFixture.h"

namespace tavo {
namespace {

using processes::Folder;
using processes::Report;
using processes::Variable;

class UrlOpener : public testing::Test {
protected:
    void associate(const std::string& lines) const {
        folder_.write("data/applications/browser.desktop",
                      "[Desktop Entry]\nType=Application\nName=Browser\n"
                      "MimeType=x-scheme-handler/https;\n" +
                          lines);
        folder_.write("config/mimeapps.list",
                      "[Default Applications]\nx-scheme-handler/https=browser.desktop\n");
    }

    // "1" when a program was started for the address.
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

TEST_F(UrlOpener, the_associated_program_gets_the_address_in_a_session_of_its_own) {
    associate("Exec=" +
              folder_.script("browser",
                             "read -r pid name state parent group session rest "
                             "</proc/$$/stat; [ $$ = $session ] && echo \"$# $1 $2\" >" +
                                 report_.path()) +
              " --new %u\n");
    EXPECT_EQ(open("https://example.org/?a=b&c"), "1");
    EXPECT_EQ(report_.line(), "2 --new https://example.org/?a=b&c");
}

TEST_F(UrlOpener, without_an_associated_program_that_starts_nothing_is_opened) {
    EXPECT_EQ(open("https://example.org/"), "0");
    associate("Exec=/no/such/program %u\n");
    EXPECT_EQ(open("https://example.org/"), "0");
}

}  // namespace
}  // namespace tavo
