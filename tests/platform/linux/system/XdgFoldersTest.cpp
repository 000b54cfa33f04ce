#include <pwd.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/system/XdgFolders.h"
#include "tests/platform/linux/fixtures/ScopedVariables.h"

namespace tavo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using Strings = std::vector<std::string>;
using Variable = std::optional<std::string>;

class XdgFoldersTest : public testing::Test {
protected:
    XdgFoldersTest() {
        variables_.set("HOME", "/home/ada");
        for (const char* const name : {"XDG_DATA_HOME", "XDG_DATA_DIRS", "XDG_CONFIG_HOME",
                                       "XDG_CONFIG_DIRS", "XDG_CACHE_HOME"}) {
            variables_.set(name, std::nullopt);
        }
    }

    ScopedVariables variables_;
};

TEST_F(XdgFoldersTest, without_variables_the_usual_folders_count) {
    const auto folders = XdgFolders::fromProcess();
    EXPECT_EQ(folders.home, "/home/ada");
    EXPECT_EQ(folders.dataHome, "/home/ada/.local/share");
    EXPECT_EQ(folders.cacheHome, "/home/ada/.cache");
    EXPECT_THAT(folders.dataDirs,
                ElementsAre("/home/ada/.local/share", "/usr/local/share", "/usr/share",
                            "/home/ada/.local/share/flatpak/exports/share",
                            "/var/lib/flatpak/exports/share", "/var/lib/snapd/desktop"));
    EXPECT_THAT(folders.configDirs, ElementsAre("/home/ada/.config", "/etc/xdg"));
}

TEST_F(XdgFoldersTest, data_folders_follow_the_variables) {
    struct Row {
        const char* name;
        Variable home;
        Variable dirs;
        Strings expected;  // the folders before those to which Flatpak and snap export
    };
    const std::vector<Row> rows = {
        {"both set", "/d/home", "/a:/b", {"/d/home", "/a", "/b"}},
        {"empty is unset", "", "", {"/home/ada/.local/share", "/usr/local/share", "/usr/share"}},
        {"relative ones are ignored", "d", "a:./b:/c:", {"/home/ada/.local/share", "/c"}},
        {"trailing slashes are dropped", "/d///", "/a/:/b//", {"/d", "/a", "/b"}},
        {"the rest stays as it is written", "/d", "/a//b/../c", {"/d", "/a//b/../c"}},
        {"each once, in their order", "/d", "/b:/a:/b/:/d", {"/d", "/b", "/a"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        variables_.set("XDG_DATA_HOME", row.home);
        variables_.set("XDG_DATA_DIRS", row.dirs);
        Strings expected = row.expected;
        expected.insert(expected.end(),
                        {row.expected[0] + "/flatpak/exports/share",
                         "/var/lib/flatpak/exports/share", "/var/lib/snapd/desktop"});
        EXPECT_EQ(XdgFolders::fromProcess().dataDirs, expected);
    }
}

TEST_F(XdgFoldersTest, an_export_folder_that_the_session_names_keeps_its_place) {
    variables_.set("XDG_DATA_HOME", "/d");
    variables_.set("XDG_DATA_DIRS", "/var/lib/flatpak/exports/share/:/usr/share");
    EXPECT_THAT(XdgFolders::fromProcess().dataDirs,
                ElementsAre("/d", "/var/lib/flatpak/exports/share", "/usr/share",
                            "/d/flatpak/exports/share", "/var/lib/snapd/desktop"));
}

TEST_F(XdgFoldersTest, configuration_and_cache_follow_their_variables) {
    variables_.set("XDG_CONFIG_HOME", "/c/");
    variables_.set("XDG_CONFIG_DIRS", "/kde:relative:/etc/xdg");
    variables_.set("XDG_CACHE_HOME", "/cache/");
    EXPECT_THAT(XdgFolders::fromProcess().configDirs, ElementsAre("/c", "/kde", "/etc/xdg"));
    EXPECT_EQ(XdgFolders::fromProcess().cacheHome, "/cache");
    variables_.set("XDG_CONFIG_HOME", "relative");
    variables_.set("XDG_CACHE_HOME", "relative");
    EXPECT_EQ(XdgFolders::fromProcess().configDirs.front(), "/home/ada/.config");
    EXPECT_EQ(XdgFolders::fromProcess().cacheHome, "/home/ada/.cache");
}

TEST_F(XdgFoldersTest, the_users_folders_are_in_the_home) {
    const passwd* const user = getpwuid(getuid());
    ASSERT_NE(user, nullptr);
    const std::string recorded = user->pw_dir == std::string("/") ? "" : user->pw_dir;
    struct Row {
        const char* name;
        Variable home;
        std::string expected;
    };
    const std::vector<Row> rows = {
        {"plain", "/home/ada", "/home/ada"},
        {"trailing slashes", "/home/ada///", "/home/ada"},
        {"slashes within stay", "/home//ada", "/home//ada"},
        {"the root", "/", ""},
        {"relative", "ada", recorded},
        {"empty", "", recorded},
        {"unset", std::nullopt, recorded},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        variables_.set("HOME", row.home);
        const auto folders = XdgFolders::fromProcess();
        EXPECT_EQ(folders.home, row.expected);
        EXPECT_EQ(folders.dataHome, row.expected + "/.local/share");
        EXPECT_EQ(folders.cacheHome, row.expected + "/.cache");
        EXPECT_EQ(folders.configDirs.front(), row.expected + "/.config");
        EXPECT_THAT(folders.dataDirs, Contains(folders.dataHome + "/flatpak/exports/share"));
    }
}

TEST(SplitAtColons, keeps_empty_pieces_of_a_list_that_is_not_empty) {
    struct Row {
        const char* list;
        Strings expected;
    };
    for (const Row& row : {Row{"", {}}, Row{"a", {"a"}}, Row{"a:b", {"a", "b"}},
                           Row{":a::", {"", "a", "", ""}}, Row{":", {"", ""}}}) {
        EXPECT_EQ(splitAtColons(row.list), row.expected) << row.list;
    }
}

}  // namespace
}  // namespace tavo
