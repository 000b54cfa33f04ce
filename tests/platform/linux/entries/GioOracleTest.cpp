// The entries that are listed, and their names, against GIO's answer in the same environment.
//
// With TAVO_THOROUGH=1 every locale meets every desktop; otherwise each locale meets one desktop,
// and each desktop occurs.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <random>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spawn.h>

#include "platform/linux/entries/XdgApplicationSource.h"
#include "platform/linux/system/XdgFolders.h"
#include "tests/Thorough.h"
#include "tests/platform/linux/fixtures/EntryTree.h"
#include "tests/platform/linux/fixtures/ScopedVariables.h"

namespace tavo {
namespace {

using NamesByPath = std::map<std::string, std::string>;

// The standard output of tavo_gio_lister in the environment of this process as it is now.
std::string listerOutput() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    std::string program = TAVO_TEST_PROGRAMS "/tavo_gio_lister";
    std::array<char*, 2> arguments = {program.data(), nullptr};
    pid_t child = 0;
    const int failure =
        posix_spawn(&child, program.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    std::string output;
    std::array<char, 65536> buffer{};
    ssize_t count = 0;
    while ((count = read(ends[0], buffer.data(), buffer.size())) > 0) {
        output.append(buffer.data(), static_cast<std::size_t>(count));
    }
    close(ends[0]);
    int status = -1;
    if (failure != 0 || waitpid(child, &status, 0) != child || status != 0) {
        throw std::runtime_error("the lister failed");
    }
    return output;
}

NamesByPath listedByGio() {
    const std::string output = listerOutput();
    NamesByPath names;
    for (std::size_t start = 0; start < output.size();) {
        const std::string path = output.c_str() + start;
        const std::string name = output.c_str() + start + path.size() + 1;
        start += path.size() + name.size() + 2;
        if (g_utf8_validate(path.c_str(), -1, nullptr) != FALSE) {
            EXPECT_TRUE(names.emplace(path, name).second) << path << " twice";
        }
    }
    return names;
}

// Removes the folders to which Flatpak and snap export where XDG_DATA_DIRS does not name them: GIO
// does not read them then.
void removeFoldersUnknownToGio(std::vector<std::string>& dataDirs) {
    const char* const variable = std::getenv("XDG_DATA_DIRS");
    const auto named = splitAtColons(variable == nullptr ? "" : variable);
    std::erase_if(dataDirs, [&](const std::string& folder) {
        return (folder.ends_with("/flatpak/exports/share") || folder.ends_with("/snapd/desktop")) &&
               std::ranges::find(named, folder) == named.end();
    });
}

NamesByPath listedHere() {
    DesktopEntryEnvironment environment = DesktopEntryEnvironment::fromProcess();
    removeFoldersUnknownToGio(environment.dataDirs);
    NamesByPath names;
    for (FoundApplication& found : makeXdgApplicationSource(environment)->applications()) {
        EXPECT_TRUE(names.emplace(found.path, found.name).second) << found.path << " twice";
    }
    return names;
}

// A user's locale, as the variables that set it.
struct Locale {
    std::string name;
    std::vector<std::pair<std::string, std::string>> variables;
};

void PrintTo(const Locale& locale, std::ostream* stream) {
    *stream << locale.name;
}

const std::vector<Locale> kLocales = {
    {"none", {}},
    {"C", {{"LC_ALL", "C"}}},
    {"it_IT", {{"LANG", "it_IT"}}},
    {"de_DE_UTF8", {{"LANG", "de_DE.UTF-8"}}},
    {"sr_latin", {{"LC_MESSAGES", "sr@latin"}, {"LANG", "de_DE"}}},
    {"pt_BR", {{"LC_ALL", "pt_BR"}, {"LANG", "it_IT"}}},
    {"fr_then_it", {{"LANGUAGE", "fr:it"}, {"LANG", "C"}}},
};

const std::vector<std::optional<std::string>> kDesktops = {std::nullopt, "GNOME",        "XFCE",
                                                           "KDE",        "ubuntu:GNOME", "sway"};

class GioOracleTest : public testing::TestWithParam<Locale> {
protected:
    GioOracleTest() {
        for (const char* const name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
            variables_.set(name, std::nullopt);
        }
        for (const auto& [name, value] : GetParam().variables) {
            variables_.set(name, value);
        }
    }

    // The desktops in which this locale is compared.
    static std::vector<std::optional<std::string>> desktops() {
        if (isThorough()) {
            return kDesktops;
        }
        const auto locale = std::ranges::find(kLocales, GetParam().name, &Locale::name);
        const auto index = static_cast<std::size_t>(locale - kLocales.begin());
        return {kDesktops[index % kDesktops.size()]};
    }

    // `check` is called for each desktop, with the number of entries that are listed in it.
    void expectSameInEachDesktop(const std::function<void(std::size_t)>& check) {
        for (const auto& desktop : desktops()) {
            SCOPED_TRACE(desktop.value_or("no desktop"));
            variables_.set("XDG_CURRENT_DESKTOP", desktop);
            const NamesByPath here = listedHere();
            EXPECT_EQ(here, listedByGio());
            check(here.size());
        }
    }

    ScopedVariables variables_;
};

TEST_P(GioOracleTest, installed_entries_are_listed_as_GIO_lists_them) {
    // Checks no number: how many entries there are depends on the machine.
    expectSameInEachDesktop([](std::size_t) {});
}

// Whether this GLib, as that of Debian 12, reads a value with an unknown escape and a translation
// for the language "C", and finds no "./program" in the search path. Our reader does the same,
// later versions of GLib the contrary.
bool readsOddValues() {
    GKeyFile* const file = g_key_file_new();
    g_key_file_load_from_data(file, "[a]\nb=\\q\n", static_cast<gsize>(-1), G_KEY_FILE_NONE,
                              nullptr);
    char* const value = g_key_file_get_string(file, "a", "b", nullptr);
    const bool read = value != nullptr;
    g_free(value);
    g_key_file_unref(file);
    return read;
}

// Makes desktop entries that differ in whatever a rule of discovery looks at. Makes the same ones
// in each run.
class EntryMaker {
public:
    explicit EntryMaker(const EntryTree& tree) : tree_(tree) {}

    std::string make() {
        std::string text =
            oneIn(12) ? pick({"# c\n\n", " \t\n", "\n", "[Other]\nA=b\n", "A=b\n"}) : "";
        text += oneIn(20) ? pick({"[Desktop Entry] \n", " [Desktop Entry]\n", "[Desktop Entry]x\n"})
                          : "[Desktop Entry]\n";
        std::vector<std::string> lines = keys();
        std::shuffle(lines.begin(), lines.end(), random_);
        for (const std::string& line : lines) {
            text += line + '\n';
        }
        if (oneIn(3)) {
            text += "\n[Desktop Action x]\nName=Action\nExec=missing\nNoDisplay=true\n";
        }
        if (oneIn(15)) {
            text += pick({"garbage\n", "=x\n", "[open\n", "Name[it=x\n", "[]\n", "a b=c\n", "#\n",
                          "X[]=y\n", "Encoding=Latin-1\n", "[Desktop Entry]\nHidden=true\n"});
        }
        if (oneIn(10)) {
            text = withCarriageReturns(text);
        }
        if (oneIn(10)) {
            text.pop_back();
        }
        return text;
    }

    // Few different ids, so that files in other data folders and in sub-folders often have the
    // same one.
    std::string fileName() {
        const std::string stem =
            pick({"a", "b", "c", "d-e", "f", "g"}) + std::to_string(random_() % 40);
        return pick({"", "", "", "sub/", "sub-", "sub/inner/", ".dot/", "caff\xc3\xa8-"}) + stem +
               ".desktop";
    }

private:
    using Choices = std::vector<std::string>;

    bool oneIn(unsigned n) { return random_() % n == 0; }
    std::string pick(const Choices& choices) { return choices[random_() % choices.size()]; }

    std::vector<std::string> keys() {
        std::vector<std::string> lines = {"Version=1.5", "Comment=None", "Keywords=a;b;"};
        lines.push_back(oneIn(12) ? pick({"Type=Link", "Type=Application ", "Kind=Application"})
                                  : "Type=Application");
        if (!oneIn(25)) {
            lines.push_back("Name=" + name());
        }
        for (const std::string locale : {"it", "it_IT", "de", "de_DE", "sr", "sr@latin", "pt",
                                         "pt_BR", "fr", "C", "en_GB", "IT"}) {
            if (oneIn(4) && (oddValues_ || locale != "C")) {
                lines.push_back("Name[" + locale + "]=" + (oneIn(10) ? "Caff\xe8" : name()));
            }
        }
        if (!oneIn(10)) {
            lines.push_back("Exec=" + exec());
        }
        if (oneIn(4)) {
            lines.push_back("TryExec=" +
                            pick({"program", "missing", "data", "folder", "",
                                  tree_.path("bin/program"), "program %U", "/dev/null"}));
        }
        if (oneIn(3)) {
            lines.push_back("OnlyShowIn=" + desktops());
        }
        if (oneIn(4)) {
            lines.push_back("NotShowIn=" + desktops());
        }
        for (const char* const key : {"Hidden=", "NoDisplay=", "Terminal=", "DBusActivatable="}) {
            if (oneIn(5)) {
                lines.push_back(key + pick({"true", "false", "false", "1", "0", "True", "yes",
                                            "true ", "", "1 "}));
            }
        }
        return lines;
    }

    std::string name() {
        return pick({"Files", "Caff\xc3\xa8", "a\\sb\\\\c", oddValues_ ? "x\\qy" : "xy", "<b>&",
                     "\xe2\x80\xae"
                     "A",
                     "tab\\tbreak\\n", "  blanks  ", oddValues_ ? "end\\" : "end",
                     "\xd7\x90\xd7\x91", "a=b;c", "\x01"}) +
               std::to_string(random_() % 1000);
    }

    std::string exec() {
        if (!oneIn(3)) {
            return pick({"program", "program %U", "other --new-window %F"});
        }
        return pick({"missing",
                     "data",
                     "folder",
                     "",
                     "\\s",
                     "\"program\" x",
                     "'program'",
                     "program \"",
                     "program it's",
                     "pro\"gram\"",
                     "\"\"",
                     "# x",
                     "program #\"",
                     "program#",
                     "\\tprogram",
                     "env A=b program",
                     "A=b program",
                     "program\\nx",
                     "program \\\\",
                     oddValues_ ? "program \\q" : "program q",
                     "caff\xe8",
                     oddValues_ ? "./program" : "program",
                     "/bin/sh",
                     "/nonexistent",
                     tree_.path("bin/program") + " %f",
                     '"' + tree_.path("bin/with blank") + '"',
                     "$HOME/x",
                     "program\\\\ x"});
    }

    std::string desktops() {
        return pick({"GNOME;", "KDE;", "XFCE;KDE;", "GNOME;ubuntu;", "ubuntu;", "sway", "", ";",
                     "gnome;", "GNOME ;", "K\\;DE;", "KDE;\\q;", "KDE\\", "\xe9;", "Unity;MATE;"});
    }

    static std::string withCarriageReturns(const std::string& text) {
        std::string result;
        for (const char c : text) {
            result += c == '\n' ? std::string("\r\n") : std::string(1, c);
        }
        return result;
    }

    const EntryTree& tree_;
    const bool oddValues_ = readsOddValues();
    std::mt19937 random_{42};
};

TEST_P(GioOracleTest, generated_entries_are_listed_as_GIO_lists_them) {
    const EntryTree tree;
    tree.makeProgram("bin2/other");
    tree.makeProgram("bin/with blank");
    tree.write("bin/data", "");
    tree.makeFolder("bin/folder");
    EntryMaker maker(tree);
    for (const char* const folder : {"user", "system", "third"}) {
        for (int i = 0; i < 300; ++i) {
            tree.write(std::string(folder) + "/applications/" + maker.fileName(), maker.make());
        }
        tree.write(std::string(folder) + "/applications/caff\xe8.desktop", entryText("Bytes"));
        tree.link(std::string(folder) + "/applications/linked", tree.path("elsewhere"));
    }
    tree.write("elsewhere/x.desktop", entryText("Linked"));
    tree.link("user/applications/masked.desktop", "/dev/null");
    tree.write("system/applications/masked.desktop", entryText("Masked"));

    variables_.set("XDG_DATA_HOME", tree.path("user"));
    variables_.set("XDG_DATA_DIRS", tree.path("system") + "/:" + tree.path("third"));
    variables_.set("PATH", tree.path("bin") + ':' + tree.path("nothing") + ':' + tree.path("bin2"));
    expectSameInEachDesktop([](std::size_t listed) {
        // If nearly no or nearly all entries were listed, the comparison would prove nothing.
        EXPECT_GT(listed, 100U);
        EXPECT_LT(listed, 600U);
    });
}

std::string nameOfLocale(const testing::TestParamInfo<Locale>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Locale, GioOracleTest, testing::ValuesIn(kLocales), nameOfLocale);

}  // namespace
}  // namespace tavo
