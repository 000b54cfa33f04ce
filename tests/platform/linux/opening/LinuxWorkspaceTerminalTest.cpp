// Opening entries that run in a terminal. The terminals are scripts that report how they were
// called.
#include "platform/linux/opening/TerminalCommand.h"
#include "tests/platform/linux/fixtures/OpeningFixture.h"
#include "tests/platform/linux/fixtures/XServer.h"

namespace tavo {
namespace {

using processes::Answer;
using processes::Folder;
using processes::OpeningTest;

class TerminalCommand : public testing::Test {
protected:
    // The words of the terminal command that is chosen when only these terminals are installed,
    // without the terminal's folder.
    [[nodiscard]] std::string chosen(const std::vector<std::string>& installed,
                                     bool wayland = false) const {
        const Folder folder;
        for (const std::string& name : installed) {
            folder.script("bin/" + name, "");
        }
        const auto words =
            terminalCommand(ExecutableLookup("/nonexistent:" + folder.path("bin")), wayland);
        std::string text;
        for (const std::string& word : words.value_or(std::vector<std::string>{"(none)"})) {
            text += (text.empty() ? "" : " ") + word;
        }
        const std::string prefix = folder.path("bin") + '/';
        return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
    }
};

struct TerminalRow {
    const char* program;
    const char* words;
};

TEST_F(TerminalCommand, every_terminal_is_called_as_it_wants_to_be) {
    for (const TerminalRow& row : {TerminalRow{"xdg-terminal-exec", "xdg-terminal-exec"},
                                   {"gnome-terminal", "gnome-terminal --"},
                                   {"mate-terminal", "mate-terminal -x"},
                                   {"xfce4-terminal", "xfce4-terminal -x"},
                                   {"kgx", "kgx -e"},
                                   {"tilix", "tilix -e"},
                                   {"konsole", "konsole -e"},
                                   {"foot", "foot"},
                                   {"kitty", "kitty"},
                                   {"alacritty", "alacritty -e"},
                                   {"x-terminal-emulator", "x-terminal-emulator -e"},
                                   {"rxvt", "rxvt -e"},
                                   {"xterm", "xterm -e"}}) {
        SCOPED_TRACE(row.program);
        EXPECT_EQ(chosen({row.program}, true), row.words);
    }
}

TEST_F(TerminalCommand, the_users_choice_comes_first_and_the_old_ones_last) {
    EXPECT_EQ(chosen({"xterm", "konsole", "xdg-terminal-exec"}), "xdg-terminal-exec");
    EXPECT_EQ(chosen({"xterm", "alacritty", "gnome-terminal"}), "gnome-terminal --");
    EXPECT_EQ(chosen({"xterm", "x-terminal-emulator", "kitty"}), "kitty");
    EXPECT_EQ(chosen({"xterm", "x-terminal-emulator"}), "x-terminal-emulator -e");
}

TEST_F(TerminalCommand, a_terminal_for_wayland_alone_is_chosen_there_alone) {
    EXPECT_EQ(chosen({"xterm", "foot"}, true), "foot");
    EXPECT_EQ(chosen({"xterm", "foot"}, false), "xterm -e");
    EXPECT_EQ(chosen({"foot"}, false), "(none)");
}

TEST_F(TerminalCommand, without_any_there_is_none) {
    EXPECT_EQ(chosen({}), "(none)");
}

class TerminalOpening : public OpeningTest {
protected:
    // Installs a terminal that reports its arguments and then runs the command as terminals do. The
    // command comes after the first `skipped` arguments.
    void install(const std::string& terminal, int skipped) {
        folder_.script("bin/" + terminal, "printf '[%s]' \"$@\" >" + folder_.path("arguments") +
                                              "\nshift " + std::to_string(skipped) +
                                              "\nexec \"$@\"");
        path_.emplace("PATH", folder_.path("bin") + ":" + folder_.path("tools"));
        for (const char* const tool : {"sleep", "cat"}) {
            std::filesystem::create_directories(folder_.path("tools"));
            std::filesystem::create_symlink("/bin/" + std::string(tool),
                                            folder_.path("tools/" + std::string(tool)));
        }
    }

    [[nodiscard]] std::string arguments() const {
        std::ifstream file(folder_.path("arguments"));
        std::string line;
        std::getline(file, line);
        return line;
    }

    std::optional<processes::Variable> path_;
};

TEST_F(TerminalOpening, the_command_runs_in_the_terminal_with_its_arguments_whole) {
    install("alacritty", 1);
    const std::string program = folder_.script("program", "echo \"ran $# $1\" >" + report_.path());
    EXPECT_EQ(open(entry("Terminal=true\nExec=" + program + " \"two words\" %U %c 100%%\n")).text(),
              "(no error)");
    EXPECT_EQ(reported(), "ran 3 two words");
    EXPECT_EQ(arguments(), "[-e][" + program + "][two words][App][100%]");
}

TEST_F(TerminalOpening, a_terminal_without_an_option_gets_the_command_alone) {
    install("xdg-terminal-exec", 0);
    open(scriptEntry("echo ran >" + report_.path(), "Terminal=true\n"));
    EXPECT_EQ(reported(), "ran");
    EXPECT_EQ(arguments(), "[" + folder_.path("program") + "]");
}

TEST_F(TerminalOpening, a_terminal_in_a_folder_with_a_blank_is_found) {
    folder_.script("my bin/kitty", "echo \"kitty $1\" >" + report_.path());
    const processes::Variable path("PATH", folder_.path("my bin"));
    open(scriptEntry("", "Terminal=true\n"));
    EXPECT_EQ(reported(), "kitty " + folder_.path("program"));
}

TEST_F(TerminalOpening, the_terminals_process_is_marked_with_the_entry_it_was_started_from) {
    install("kitty", 0);
    const std::string path = scriptEntry(
        "echo \"$GIO_LAUNCHED_DESKTOP_FILE $$ $GIO_LAUNCHED_DESKTOP_FILE_PID\" >" + report_.path(),
        "Terminal=true\n");
    open(path);
    std::istringstream line(reported());
    std::string file;
    std::string process;
    std::string marked;
    line >> file >> process >> marked;
    EXPECT_EQ(file, path);
    EXPECT_EQ(marked, process);  // exec keeps the PID
}

TEST_F(TerminalOpening, the_working_directory_is_the_entrys_or_home) {
    install("kitty", 0);
    const std::string body = "pwd >" + report_.path();
    open(scriptEntry(body, "Terminal=true\n"));
    EXPECT_EQ(reported(), home_);
    open(scriptEntry(body, "Terminal=true\nPath=" + folder_.path("applications") + "\n"));
    EXPECT_EQ(reported(), folder_.path("applications"));
}

TEST_F(TerminalOpening, an_early_failure_is_reported_with_the_programs_name) {
    install("kitty", 0);
    EXPECT_EQ(open(scriptEntry("exit 4", "Terminal=true\n")).text(),
              "Il programma «" + folder_.path("program") +
                  "» dell’app «App» si è chiuso subito dopo l’avvio con il codice di errore 4.");
}

// Runs xfce4-terminal and xterm on an X11 server of the test's own.
TEST_F(TerminalOpening, real_terminals_run_the_program_on_a_terminal_of_its_own) {
    const XServer server;
    added_ = {"DISPLAY=" + server.display()};
    for (const std::string name : {"xfce4-terminal", "xterm"}) {
        const std::string program = "/usr/bin/" + name;
        ASSERT_EQ(::access(program.c_str(), X_OK), 0) << "not installed: " << name;
        SCOPED_TRACE(name);
        std::filesystem::create_directory(folder_.path(name));
        std::filesystem::create_symlink(program, folder_.path(name + "/" + name));
        const processes::Variable path("PATH", folder_.path(name));
        workspace_.reset();
        open(scriptEntry("echo \"$(/usr/bin/tty) $1\" >" + report_.path(), "Terminal=true\n"));
        EXPECT_TRUE(reported().starts_with("/dev/pts/"));
    }
}

}  // namespace
}  // namespace tavo
