#include <optional>

#include <pwd.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/entries/XdgEnvironment.h"
#include "tests/platform/linux/fixtures/ScopedVariables.h"

namespace tavo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Variable = std::optional<std::string>;

class XdgEnvironmentTest : public testing::Test {
protected:
    XdgEnvironmentTest() {
        variables_.set("HOME", "/home/ada");
        for (const char* const name : {"XDG_DATA_HOME", "XDG_DATA_DIRS", "XDG_CURRENT_DESKTOP",
                                       "LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
            variables_.set(name, std::nullopt);
        }
    }

    // Without the export folders, which come last.
    [[nodiscard]] static std::vector<std::string> ownDataDirs() {
        auto folders = XdgEnvironment::fromProcess().dataDirs;
        folders.resize(folders.size() - 3);
        return folders;
    }

    ScopedVariables variables_;
};

TEST_F(XdgEnvironmentTest, the_default_data_folders_and_the_export_folders) {
    EXPECT_THAT(XdgEnvironment::fromProcess().dataDirs,
                ElementsAre("/home/ada/.local/share", "/usr/local/share", "/usr/share",
                            "/home/ada/.local/share/flatpak/exports/share",
                            "/var/lib/flatpak/exports/share", "/var/lib/snapd/desktop"));
}

TEST_F(XdgEnvironmentTest, data_folders_follow_the_variables) {
    struct Row {
        const char* name;
        Variable home;
        Variable dirs;
        std::vector<std::string> expected;
    };
    const std::vector<Row> rows = {
        {"both set", "/d/home", "/a:/b", {"/d/home", "/a", "/b"}},
        {"empty is unset", "", "", {"/home/ada/.local/share", "/usr/local/share", "/usr/share"}},
        {"relative ones are ignored", "d", "a:./b:/c:", {"/home/ada/.local/share", "/c"}},
        {"trailing slashes are dropped", "/d///", "/a/:/b//", {"/d", "/a", "/b"}},
        {"the rest stays as it is written", "/d", "/a//b/../c", {"/d", "/a//b/../c"}},
        {"an order is kept, a repetition too", "/d", "/b:/a:/b", {"/d", "/b", "/a", "/b"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        variables_.set("XDG_DATA_HOME", row.home);
        variables_.set("XDG_DATA_DIRS", row.dirs);
        EXPECT_EQ(ownDataDirs(), row.expected);
    }
}

TEST_F(XdgEnvironmentTest, the_users_folder_is_in_the_home) {
    const passwd* const user = getpwuid(getuid());
    ASSERT_NE(user, nullptr);
    const std::string recorded = user->pw_dir == std::string("/") ? "" : user->pw_dir;
    struct Row {
        const char* name;
        Variable home;
        std::string expected;
    };
    const std::vector<Row> rows = {
        {"plain", "/home/ada", "/home/ada/.local/share"},
        {"a trailing slash", "/home/ada/", "/home/ada/.local/share"},
        {"several of them", "/home/ada///", "/home/ada/.local/share"},
        {"slashes within stay", "/home//ada", "/home//ada/.local/share"},
        {"the root", "/", "/.local/share"},
        {"relative", "ada", recorded + "/.local/share"},
        {"empty", "", recorded + "/.local/share"},
        {"unset", std::nullopt, recorded + "/.local/share"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        variables_.set("HOME", row.home);
        const auto folders = XdgEnvironment::fromProcess().dataDirs;
        EXPECT_EQ(folders.front(), row.expected);
        EXPECT_THAT(folders, testing::Contains(row.expected + "/flatpak/exports/share"));
    }
}

TEST_F(XdgEnvironmentTest, the_users_flatpak_folder_follows_the_data_home) {
    for (const char* const folder : {"/d", "/d//"}) {
        SCOPED_TRACE(folder);
        variables_.set("XDG_DATA_HOME", folder);
        EXPECT_THAT(XdgEnvironment::fromProcess().dataDirs,
                    testing::Contains("/d/flatpak/exports/share"));
    }
}

TEST_F(XdgEnvironmentTest, desktops_are_split_at_colons) {
    struct Row {
        const char* name;
        Variable value;
        std::vector<std::string> expected;
    };
    const std::vector<Row> rows = {
        {"unset", std::nullopt, {}},
        {"empty", "", {}},
        {"one", "GNOME", {"GNOME"}},
        {"two in their order", "ubuntu:GNOME", {"ubuntu", "GNOME"}},
        {"an empty one is one", "GNOME:", {"GNOME", ""}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        variables_.set("XDG_CURRENT_DESKTOP", row.value);
        EXPECT_EQ(XdgEnvironment::fromProcess().currentDesktops, row.expected);
    }
}

TEST_F(XdgEnvironmentTest, languages_are_those_of_messages) {
    variables_.set("LANG", "de_DE.UTF-8");
    EXPECT_THAT(XdgEnvironment::fromProcess().languages,
                ElementsAre("de_DE.UTF-8", "de_DE", "de.UTF-8", "de", "C"));
    variables_.set("LC_MESSAGES", "sr_RS@latin");
    EXPECT_THAT(XdgEnvironment::fromProcess().languages,
                ElementsAre("sr_RS@latin", "sr@latin", "sr_RS", "sr", "C"));
    variables_.set("LANGUAGE", "fr:it");
    EXPECT_THAT(XdgEnvironment::fromProcess().languages, ElementsAre("fr", "it", "C"));
}

TEST_F(XdgEnvironmentTest, the_search_path_has_a_default) {
    variables_.set("PATH", "/a:/b");
    EXPECT_EQ(XdgEnvironment::fromProcess().path, "/a:/b");
    variables_.set("PATH", std::nullopt);
    EXPECT_EQ(XdgEnvironment::fromProcess().path, "/bin:/usr/bin:.");
}

}  // namespace
}  // namespace tavo
