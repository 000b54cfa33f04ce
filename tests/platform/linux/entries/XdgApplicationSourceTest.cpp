#include <algorithm>
#include <atomic>
#include <map>
#include <set>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/entries/DesktopEntry.h"
#include "platform/linux/entries/DesktopEntryIndex.h"
#include "platform/linux/entries/XdgApplicationSource.h"
#include "tests/Thorough.h"
#include "tests/contracts/ApplicationSourceContract.h"
#include "tests/platform/linux/fixtures/EntryTree.h"
#include "tests/platform/linux/fixtures/OrdinaryUser.h"

namespace tavo {
namespace {

using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

class XdgWorld final : public ApplicationSourceWorld {
public:
    ApplicationSource& source() override { return *source_; }

    FoundApplication install(const std::string& key, const std::string& name) override {
        return {name, tree_.write(fileOf(key), entryText(name))};
    }
    void uninstall(const std::string& key) override { tree_.remove(fileOf(key)); }

private:
    static std::string fileOf(const std::string& key) {
        return "system/applications/" + key + ".desktop";
    }

    EntryTree tree_;
    std::unique_ptr<ApplicationSource> source_ = makeXdgApplicationSource(tree_.environment());
};

INSTANTIATE_TEST_SUITE_P(Xdg, ApplicationSourceContract,
                         testing::Values(ApplicationSourceCase{
                             "xdg", [] { return std::make_unique<XdgWorld>(); }}),
                         nameOfCase);

class XdgApplicationSourceTest : public testing::Test {
protected:
    // The result of a new scan in `environment_`.
    [[nodiscard]] std::vector<FoundApplication> scan() const {
        return makeXdgApplicationSource(environment_)->applications();
    }
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const FoundApplication& application : scan()) {
            names.push_back(application.name);
        }
        return names;
    }
    [[nodiscard]] bool lists(const std::string& entry) const {
        tree_.write("user/applications/case.desktop", entry);
        return !scan().empty();
    }

    EntryTree tree_;
    DesktopEntryEnvironment environment_ = tree_.environment();
};

TEST_F(XdgApplicationSourceTest, sub_folders_are_part_of_the_id) {
    const std::string file = "applications/kde/games/chess.desktop";
    tree_.write("system/" + file, entryText("System chess"));
    EXPECT_THAT(scan(), UnorderedElementsAre(
                            FoundApplication{"System chess", tree_.path("system/" + file)}));
    tree_.write("user/applications/kde-games-chess.desktop", entryText("User chess"));
    EXPECT_THAT(names(), UnorderedElementsAre("User chess"));
}

TEST_F(XdgApplicationSourceTest, a_scan_leaves_what_windows_are_recognised_by) {
    const auto listed = std::make_shared<DesktopEntryIndex>();
    const auto source = makeXdgApplicationSource(environment_, listed);
    (void)tree_.write("user/applications/games/chess.desktop",
                      entryText("Chess", "StartupWMClass=Knight\nExec=" +
                                             tree_.makeProgram("bin/other chess") + "\n"));
    tree_.write("user/applications/quoted.desktop",
                "[Desktop Entry]\nType=Application\nName=Q\nExec=\"" +
                    tree_.makeProgram("bin/two words") + "\" %U\n");
    tree_.write("user/applications/secret.desktop", entryText("S", "NoDisplay=true\n"));
    (void)source->applications();
    const auto quoted = listed->entries();
    ASSERT_EQ(quoted->size(), 1U);
    EXPECT_EQ(quoted->front().identifier, "quoted.desktop");
    EXPECT_EQ(quoted->front().program, "two words");

    const std::string chess = tree_.write("user/applications/games/chess.desktop",
                                          entryText("Chess", "StartupWMClass=Knight\n"));
    (void)source->applications();
    const auto entries = listed->entries();
    const auto found = std::find_if(entries->begin(), entries->end(),
                                    [&](const ListedEntry& entry) { return entry.path == chess; });
    ASSERT_NE(found, entries->end());
    EXPECT_EQ(found->identifier, "games-chess.desktop");
    EXPECT_EQ(found->startupWmClass, "Knight");
    EXPECT_EQ(found->program, "program");
}

TEST_F(XdgApplicationSourceTest, hidden_folders_and_files_count_and_other_suffixes_do_not) {
    tree_.write("user/applications/.hidden/a.desktop", entryText("A"));
    tree_.write("user/applications/.b.desktop", entryText("B"));
    tree_.write("user/applications/.desktop", entryText("C"));
    tree_.write("user/applications/d.DESKTOP", entryText("D"));
    tree_.write("user/applications/e.desktop~", entryText("E"));
    tree_.write("user/applications/folder.desktop/f.desktop", entryText("F"));
    tree_.write("user/g.desktop", entryText("G"));
    EXPECT_THAT(names(), UnorderedElementsAre("A", "B", "C"));
}

TEST_F(XdgApplicationSourceTest, data_folders_are_taken_in_their_order) {
    tree_.write("user/applications/a.desktop", entryText("User"));
    tree_.write("system/applications/a.desktop", entryText("System"));
    EXPECT_THAT(names(), UnorderedElementsAre("User"));
    std::swap(environment_.dataDirs[0], environment_.dataDirs[1]);
    EXPECT_THAT(names(), UnorderedElementsAre("System"));
}

TEST_F(XdgApplicationSourceTest, a_data_folder_given_twice_counts_once) {
    tree_.write("user/applications/a.desktop", entryText("A"));
    environment_.dataDirs.push_back(environment_.dataDirs[0]);
    EXPECT_THAT(names(), UnorderedElementsAre("A"));
}

TEST_F(XdgApplicationSourceTest, missing_data_folders_contribute_nothing) {
    environment_.dataDirs.insert(environment_.dataDirs.begin(), tree_.path("nothing"));
    environment_.dataDirs.emplace_back("/dev/null");
    tree_.write("user/applications/a.desktop", entryText("A"));
    EXPECT_THAT(names(), UnorderedElementsAre("A"));
    environment_.dataDirs.clear();
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(XdgApplicationSourceTest, whatever_has_an_id_masks_less_important_files_of_that_id) {
    const std::string file = tree_.path("user/applications/a.desktop");
    const std::map<std::string, std::function<void()>> rows = {
        {"hidden",
         [&] { tree_.write("user/applications/a.desktop", entryText("A", "Hidden=1\n")); }},
        {"not displayed",
         [&] { tree_.write("user/applications/a.desktop", entryText("A", "NoDisplay=1\n")); }},
        {"broken", [&] { tree_.write("user/applications/a.desktop", "garbage"); }},
        {"empty", [&] { tree_.write("user/applications/a.desktop", ""); }},
        {"without a name",
         [&] {
             tree_.write("user/applications/a.desktop", "[Desktop Entry]\nType=Application\n");
         }},
        {"a link to nothing", [&] { tree_.link("user/applications/a.desktop", "nothing"); }},
        {"a link to the null device",
         [&] { tree_.link("user/applications/a.desktop", "/dev/null"); }},
        {"a folder", [&] { tree_.makeFolder("user/applications/a.desktop"); }},
        {"a FIFO", [&] { ASSERT_EQ(mkfifo(file.c_str(), 0644), 0); }},
    };
    tree_.write("system/applications/a.desktop", entryText("System"));
    for (const auto& [name, make] : rows) {
        SCOPED_TRACE(name);
        tree_.remove("user/applications/a.desktop");
        EXPECT_THAT(names(), UnorderedElementsAre("System"));
        make();
        EXPECT_THAT(names(), IsEmpty());
    }
}

TEST_F(XdgApplicationSourceTest, shows_entries_of_type_application_with_a_name) {
    struct Row {
        const char* name;
        std::string bytes;
        bool listed;
    };
    const std::string head = "[Desktop Entry]\nExec=program\n";
    const std::vector<Row> rows = {
        {"an application", head + "Name=A\nType=Application\n", true},
        {"a link", head + "Name=A\nType=Link\n", false},
        {"no type", head + "Name=A\n", false},
        {"a blank after the type", head + "Name=A\nType=Application \n", false},
        {"no name", head + "Type=Application\n", false},
        {"an empty name", head + "Type=Application\nName=\n", false},
        {"a name in another language only", head + "Type=Application\nName[it]=A\n", false},
        {"an ill-formed name", head + "Type=Application\nName=Caff\xe8\n", true},
        {"hidden", head + "Name=A\nType=Application\nHidden=true\n", false},
        {"not hidden", head + "Name=A\nType=Application\nHidden=false\n", true},
        {"not displayed", head + "Name=A\nType=Application\nNoDisplay=true\n", false},
        {"an ill-formed line", head + "Name=A\nType=Application\noops\n", false},
        {"binary garbage",
         std::string("\x7f"
                     "ELF\0\0\n[\xff",
                     9),
         false},
        {"ten megabytes", head + "Name=A\nType=Application\n" + std::string(10'000'000, '\n'),
         false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(lists(row.bytes), row.listed);
    }
}

TEST_F(XdgApplicationSourceTest, the_first_current_desktop_that_a_list_names_decides) {
    struct Row {
        const char* name;
        std::vector<std::string> desktops;
        std::string lines;
        bool listed;
    };
    const std::vector<Row> rows = {
        {"no lists, no desktop", {}, "", true},
        {"only in one, no desktop", {}, "OnlyShowIn=GNOME;\n", false},
        {"not in one, no desktop", {}, "NotShowIn=GNOME;\n", true},
        {"only in this one", {"GNOME"}, "OnlyShowIn=KDE;GNOME;\n", true},
        {"only in another", {"XFCE"}, "OnlyShowIn=KDE;GNOME;\n", false},
        {"only in none", {"GNOME"}, "OnlyShowIn=\n", false},
        {"not in this one", {"GNOME"}, "NotShowIn=GNOME;\n", false},
        {"not in another", {"XFCE"}, "NotShowIn=GNOME;\n", true},
        {"not in none", {"XFCE"}, "NotShowIn=\n", true},
        {"only in the second", {"ubuntu", "GNOME"}, "OnlyShowIn=GNOME;\n", true},
        {"not in the second", {"ubuntu", "GNOME"}, "NotShowIn=GNOME;\n", false},
        {"the first one decides for",
         {"ubuntu", "GNOME"},
         "OnlyShowIn=ubuntu;\nNotShowIn=GNOME;\n",
         true},
        {"the first one decides against",
         {"ubuntu", "GNOME"},
         "OnlyShowIn=GNOME;\nNotShowIn=ubuntu;\n",
         false},
        {"both lists name it", {"GNOME"}, "OnlyShowIn=GNOME;\nNotShowIn=GNOME;\n", true},
        {"case counts", {"GNOME"}, "OnlyShowIn=gnome;\n", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        environment_.currentDesktops = row.desktops;
        EXPECT_EQ(lists(entryText("A", row.lines)), row.listed);
    }
}

TEST_F(XdgApplicationSourceTest, programs_must_exist) {
    tree_.write("bin/data", "");
    tree_.makeFolder("bin/folder");
    const std::string absolute = tree_.path("bin/program");
    struct Row {
        const char* name;
        std::string lines;
        bool listed;
    };
    const std::vector<Row> rows = {
        {"no program at all", "", true},
        {"an empty command line", "Exec=\n", true},
        {"a program on the path", "Exec=program %U\n", true},
        {"one that is not there", "Exec=missing %U\n", false},
        {"one that is not executable", "Exec=data\n", false},
        {"a folder", "Exec=folder\n", false},
        {"an absolute path", "Exec=" + absolute + "\n", true},
        {"an absolute path to nothing", "Exec=" + absolute + "x\n", false},
        {"quotes", "Exec=\"" + absolute + "\" %f\n", true},
        {"an open quote", "Exec=program \"x\n", false},
        {"blanks alone", "Exec=\\s\n", false},
        {"try something that is there", "Exec=program\nTryExec=program\n", true},
        {"try something that is not there", "Exec=program\nTryExec=missing\n", false},
        {"try a folder", "Exec=program\nTryExec=" + tree_.path("bin") + "\n", false},
        {"try nothing", "Exec=program\nTryExec=\n", true},
        {"try is not a command line", "Exec=program\nTryExec=program %U\n", false},
        {"try alone", "TryExec=missing\n", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(lists("[Desktop Entry]\nType=Application\nName=A\n" + row.lines), row.listed);
    }
}

TEST_F(XdgApplicationSourceTest, names_are_localized) {
    tree_.write("user/applications/a.desktop", entryText("Files", "Name[it]=Archivi\n"));
    EXPECT_THAT(names(), UnorderedElementsAre("Files"));
    environment_.languages = {"it_IT", "it", "C"};
    EXPECT_THAT(names(), UnorderedElementsAre("Archivi"));
}

TEST_F(XdgApplicationSourceTest, names_pass_as_plain_data) {
    for (const std::string& name :
         {std::string("<b>&amp;"), std::string("a\x01\x1b[31m\x7f"),
          std::string("\xe2\x80\xae\xd7\x90"), std::string(10'000, 'x')}) {
        tree_.write("user/applications/a.desktop", entryText(name));
        EXPECT_THAT(names(), UnorderedElementsAre(name));
    }
}

TEST_F(XdgApplicationSourceTest, a_path_that_is_not_utf8_is_not_listed_but_masks) {
    const std::string name = "applications/caff\xe8.desktop";
    const int probe = open(tree_.path("probe\xe8").c_str(), O_CREAT | O_CLOEXEC, 0600);
    if (probe < 0) {
        GTEST_SKIP() << "this file system takes UTF-8 names alone";
    }
    close(probe);
    tree_.write("system/" + name, entryText("A"));
    tree_.write("system/applications/caff\xc3\xa8.desktop", entryText("B"));
    EXPECT_THAT(names(), UnorderedElementsAre("B"));
    tree_.write("user/applications/a\xe8/b.desktop", entryText("C"));
    tree_.write("system/applications/a\xe8-b.desktop", entryText("D"));
    EXPECT_THAT(names(), UnorderedElementsAre("B"));
}

TEST_F(XdgApplicationSourceTest, linked_folders_are_followed) {
    tree_.write("elsewhere/inner/a.desktop", entryText("A"));
    tree_.link("user/applications/linked", tree_.path("elsewhere"));
    EXPECT_THAT(scan(), UnorderedElementsAre(FoundApplication{
                            "A", tree_.path("user/applications/linked/inner/a.desktop")}));
}

TEST_F(XdgApplicationSourceTest, folders_that_lead_back_to_themselves_end) {
    tree_.write("user/applications/a/b/c.desktop", entryText("A"));
    tree_.link("user/applications/a/self", ".");
    tree_.link("user/applications/a/b/up", "../..");
    tree_.link("user/applications/a/b/itself", "itself");
    tree_.link("user/applications/root", tree_.path("user/applications"));
    EXPECT_THAT(names(), UnorderedElementsAre("A"));
}

TEST_F(XdgApplicationSourceTest, links_that_multiply_folders_end) {
    // Thirty levels of folders, each with two links to the next: 2^30 paths lead to the last one.
    for (int level = 0; level < 30; ++level) {
        const std::string folder = "levels/" + std::to_string(level);
        tree_.makeFolder(folder);
        const std::string next = tree_.path("levels/" + std::to_string(level + 1));
        tree_.link(folder + "/a", next);
        tree_.link(folder + "/b", next);
    }
    tree_.link("user/applications/levels", tree_.path("levels/0"));
    tree_.write("system/applications/a.desktop", entryText("A"));
    EXPECT_THAT(names(), UnorderedElementsAre("A"));
}

TEST_F(XdgApplicationSourceTest, very_deep_folders_end) {
    std::string folder = "user/applications";
    for (int level = 0; level < 100; ++level) {
        folder += "/d";
        tree_.makeFolder(folder);
    }
    tree_.write(folder + "/deep.desktop", entryText("Deep"));
    tree_.write("user/applications/d/d/near.desktop", entryText("Near"));
    EXPECT_THAT(names(), UnorderedElementsAre("Near"));
}

TEST_F(XdgApplicationSourceTest, what_cannot_be_read_contributes_nothing) {
    tree_.write("user/applications/a.desktop", entryText("A"));
    tree_.write("user/applications/secret.desktop", entryText("B"));
    tree_.write("user/applications/folder/c.desktop", entryText("C"));
    tree_.write("system/applications/d.desktop", entryText("D"));
    const std::filesystem::perms none = std::filesystem::perms::none;
    const std::filesystem::perms all = std::filesystem::perms::all;
    std::filesystem::permissions(tree_.path("user/applications/secret.desktop"), none);
    std::filesystem::permissions(tree_.path("user/applications/folder"), none);
    std::filesystem::permissions(tree_.path("system"), none);
    std::vector<std::string> found;
    bool isOrdinary = false;
    {
        const OrdinaryUser user;
        isOrdinary = user.succeeded();
        found = names();
    }
    std::filesystem::permissions(tree_.path("user/applications/folder"), all);
    std::filesystem::permissions(tree_.path("system"), all);
    if (!isOrdinary) {
        GTEST_SKIP() << "this process may read every file and cannot give that up";
    }
    EXPECT_THAT(found, UnorderedElementsAre("A"));
}

TEST_F(XdgApplicationSourceTest, many_entries_are_each_found_once) {
    std::set<FoundApplication,
             decltype([](const auto& a, const auto& b) { return a.path < b.path; })>
        expected;
    for (int i = 0; i < 600; ++i) {  // so many that the scan uses a second thread
        const std::string name = "App " + std::to_string(i);
        const std::string file = "user/applications/app" + std::to_string(i) + ".desktop";
        expected.insert({name, tree_.write(file, entryText(name))});
        tree_.write("system/applications/app" + std::to_string(i) + ".desktop", entryText("X"));
    }
    EXPECT_THAT(scan(), testing::UnorderedElementsAreArray(expected));
}

TEST_F(XdgApplicationSourceTest, entries_may_come_and_go_while_they_are_read) {
    for (int i = 0; i < 600; ++i) {
        tree_.write("system/applications/stays" + std::to_string(i) + ".desktop",
                    entryText("Stays"));
    }
    std::atomic<bool> enough = false;
    std::thread other([&] {
        while (!enough) {
            for (int i = 0; i < 20; ++i) {
                tree_.write("system/applications/sub/goes" + std::to_string(i) + ".desktop",
                            entryText("Goes"));
            }
            tree_.remove("system/applications/sub");
        }
    });
    const auto source = makeXdgApplicationSource(environment_);
    for (int i = 0; i < (isThorough() ? 40 : 10); ++i) {
        int staying = 0;
        for (const FoundApplication& application : source->applications()) {
            staying += application.name == "Stays" ? 1 : 0;
        }
        EXPECT_EQ(staying, 600);
    }
    enough = true;
    other.join();
}

TEST_F(XdgApplicationSourceTest, leaves_no_file_open) {
    const auto openFiles = [] {
        const auto listed = std::filesystem::directory_iterator("/proc/self/fd");
        return std::distance(begin(listed), end(listed));
    };
    tree_.write("user/applications/a/b/c.desktop", entryText("A"));
    tree_.link("user/applications/a/self", ".");
    tree_.write("user/applications/large.desktop", std::string(2 << 20, '\n'));
    tree_.makeFolder("user/applications/folder.desktop");
    const auto before = openFiles();
    EXPECT_THAT(scan(), SizeIs(1));
    EXPECT_EQ(openFiles(), before);
}

}  // namespace
}  // namespace tavo
