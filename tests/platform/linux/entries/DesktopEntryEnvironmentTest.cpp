#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/entries/DesktopEntryEnvironment.h"
#include "platform/linux/system/XdgFolders.h"
#include "tests/platform/linux/fixtures/ScopedVariables.h"

namespace tavo {
namespace {

using testing::ElementsAre;

class DesktopEntryEnvironmentTest : public testing::Test {
protected:
    DesktopEntryEnvironmentTest() {
        for (const char* const name :
             {"XDG_CURRENT_DESKTOP", "LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
            variables_.set(name, std::nullopt);
        }
    }

    ScopedVariables variables_;
};

TEST_F(DesktopEntryEnvironmentTest, data_folders_are_those_of_the_session) {
    variables_.set("XDG_DATA_HOME", "/d");
    EXPECT_EQ(DesktopEntryEnvironment::fromProcess().dataDirs, XdgFolders::fromProcess().dataDirs);
    EXPECT_EQ(DesktopEntryEnvironment::fromProcess().dataDirs.front(), "/d");
}

TEST_F(DesktopEntryEnvironmentTest, desktops_are_split_at_colons) {
    EXPECT_THAT(DesktopEntryEnvironment::fromProcess().currentDesktops, ElementsAre());
    variables_.set("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
    EXPECT_THAT(DesktopEntryEnvironment::fromProcess().currentDesktops,
                ElementsAre("ubuntu", "GNOME"));
}

TEST_F(DesktopEntryEnvironmentTest, languages_are_those_of_messages) {
    variables_.set("LANG", "de_DE.UTF-8");
    EXPECT_THAT(DesktopEntryEnvironment::fromProcess().languages,
                ElementsAre("de_DE.UTF-8", "de_DE", "de.UTF-8", "de", "C"));
    variables_.set("LC_MESSAGES", "sr_RS@latin");
    EXPECT_THAT(DesktopEntryEnvironment::fromProcess().languages,
                ElementsAre("sr_RS@latin", "sr@latin", "sr_RS", "sr", "C"));
    variables_.set("LANGUAGE", "fr:it");
    EXPECT_THAT(DesktopEntryEnvironment::fromProcess().languages, ElementsAre("fr", "it", "C"));
}

TEST_F(DesktopEntryEnvironmentTest, the_search_path_has_a_default) {
    variables_.set("PATH", "/a:/b");
    EXPECT_EQ(DesktopEntryEnvironment::fromProcess().path, "/a:/b");
    variables_.set("PATH", std::nullopt);
    EXPECT_EQ(DesktopEntryEnvironment::fromProcess().path, "/bin:/usr/bin:.");
}

}  // namespace
}  // namespace tavo
