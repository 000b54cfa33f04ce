#include "platform/linux/opening/LinuxWorkspace.h"
#include "platform/linux/wayland/WaylandSession.h"
#include "tests/contracts/WorkspaceContract.h"
#include "tests/platform/linux/fixtures/OpeningFixture.h"

namespace tavo {
namespace {

using processes::Answer;
using processes::becomesTrue;
using processes::children;
using processes::Openings;
using processes::OpeningTest;
using std::chrono::milliseconds;

struct LinuxWorkspaceRig : OpeningTest {
    void TestBody() override {}

    Workspace& workspace() { return OpeningTest::workspace(); }
    void end() { workspace_.reset(); }

    std::string bundle(std::optional<std::string> identifier,
                       std::optional<std::string> signature) const {
        std::string entries;
        if (identifier) {
            entries += "<key>CFBundleIdentifier</key><string>" + *identifier + "</string>";
        }
        if (signature) {
            entries += "<key>CFBundleSignature</key><string>" + *signature + "</string>";
        }
        folder_.write("Bundle.app/Contents/Info.plist",
                      "<plist version=\"1.0\"><dict>" + entries + "</dict></plist>");
        return folder_.path("Bundle.app");
    }

    std::string startable() const { return scriptEntry("exit 0"); }
    std::string broken() const { return entry("Exec=/no/such/program\n", "broken.desktop"); }
    std::string nowhere() const { return folder_.path("nowhere"); }

    void deliver(const std::function<bool()>& answered) {
        EXPECT_TRUE(becomesTrue([&] {
            queue_.run();
            return answered();
        }));
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, WorkspaceContract, LinuxWorkspaceRig);

class LinuxWorkspace : public OpeningTest {};

TEST_F(LinuxWorkspace, an_entrys_identifier_is_its_path_below_the_application_folder) {
    const std::string lines = "Exec=/bin/true\n";
    const auto identifier = [&](const std::string& path) {
        return workspace().bundle(path).value_or(BundleFacts()).identifier.value_or("(none)");
    };
    EXPECT_EQ(identifier(entry(lines, "org.example.App.desktop")), "org.example.App.desktop");
    EXPECT_EQ(identifier(entry(lines, "vendor/sub/app.desktop")), "vendor-sub-app.desktop");
    const std::string content = "[Desktop Entry]\nType=Application\nName=x\nExec=/bin/true\n";
    EXPECT_EQ(identifier(folder_.write("elsewhere/app.desktop", content)), "app.desktop");
}

TEST_F(LinuxWorkspace, an_entrys_executable_is_the_first_word_of_its_command) {
    const std::string tool = folder_.script("tools/some tool", "");
    added_ = {};
    const processes::Variable path("PATH", folder_.path("tools") + ":/usr/bin:/bin");
    const auto executable = [&](const std::string& lines) {
        return workspace()
            .bundle(entry(lines))
            .value_or(BundleFacts())
            .executablePath.value_or("(none)");
    };
    EXPECT_EQ(executable("Exec=\"" + tool + "\" --new %U\n"), tool);
    EXPECT_EQ(executable("Exec=\"some tool\" %f\n"), tool);
    EXPECT_EQ(executable("Exec=/no/such/program\n"), "(none)");
    EXPECT_EQ(executable("Exec=\"unbalanced\n"), "(none)");
    EXPECT_EQ(executable("DBusActivatable=true\n"), "(none)");
    EXPECT_EQ(workspace().bundle(entry("Exec=sh\n"))->signature, std::nullopt);
}

TEST_F(LinuxWorkspace, what_is_neither_entry_nor_folder_has_no_facts) {
    EXPECT_EQ(workspace().bundle(folder_.write("note.txt", "x")), std::nullopt);
    EXPECT_EQ(workspace().bundle(folder_.write("bad.desktop", "garbage")), std::nullopt);
    EXPECT_EQ(workspace().bundle(folder_.write("empty.desktop", "")), std::nullopt);
    EXPECT_EQ(workspace().bundle(folder_.path("missing.desktop")), std::nullopt);
    ASSERT_EQ(::mkfifo(folder_.path("pipe.desktop").c_str(), 0600), 0);
    EXPECT_EQ(workspace().bundle(folder_.path("pipe.desktop")), std::nullopt);
}

TEST_F(LinuxWorkspace, opening_uses_what_the_same_click_has_read_for_the_facts) {
    const auto lines = [this](const std::string& word) {
        return "Exec=" + folder_.script("program", "echo $1 >" + report_.path()) + ' ' + word +
               '\n';
    };
    const std::string path = entry(lines("one"));
    const auto time = std::filesystem::last_write_time(path);
    ASSERT_TRUE(workspace().bundle(path));
    entry(lines("two"));
    std::filesystem::last_write_time(path, time);  // so that the change is not noticed
    open(path);
    EXPECT_EQ(reported(), "one");
    open(path);
    EXPECT_EQ(reported(), "two");
}

TEST_F(LinuxWorkspace, a_started_program_gets_its_arguments) {
    const std::string program =
        folder_.script("program", "printf '[%s]' \"$@\" >" + folder_.path("arguments") +
                                      "; echo done >" + report_.path());
    open(entry("Exec=" + program + " \"two words\" --x=%%1 %U %c\n"));
    ASSERT_EQ(reported(), "done");
    std::ifstream file(folder_.path("arguments"));
    std::string arguments;
    std::getline(file, arguments);
    EXPECT_EQ(arguments, "[two words][--x=%1][App]");
}

TEST_F(LinuxWorkspace, a_started_program_has_a_session_of_its_own) {
    open(
        scriptEntry("read -r pid name state parent group session rest </proc/$$/stat; "
                    "echo $pid $group $session >" +
                    report_.path()));
    std::istringstream line(reported());
    pid_t process = 0;
    pid_t group = 0;
    pid_t session = 0;
    line >> process >> group >> session;
    EXPECT_GT(process, 0);
    EXPECT_EQ(group, process);
    EXPECT_EQ(session, process);
    EXPECT_NE(session, ::getsid(0));
}

TEST_F(LinuxWorkspace, a_started_program_inherits_no_descriptor_and_reads_nothing) {
    const int leaked = ::open("/dev/null", O_RDONLY);  // no O_CLOEXEC: exec would keep it open
    ASSERT_GE(leaked, 3);
    open(scriptEntry(
        "input=$(readlink /proc/$$/fd/0); open=; for n in $(seq 3 60); do "
        // Only /dev/null counts: the shell itself has another descriptor open, for the script.
        "[ \"$(readlink /proc/$$/fd/$n)\" = /dev/null ] && open=\"$open $n\"; done; "
        "echo $input$open >" +
        report_.path()));
    EXPECT_EQ(reported(), "/dev/null");
    ::close(leaked);
}

TEST_F(LinuxWorkspace, a_started_program_has_default_signals) {
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    open(scriptEntry("echo $(grep -E '^Sig(Ign|Blk):' /proc/self/status) >" + report_.path()));
    EXPECT_EQ(reported(), "SigBlk: 0000000000000000 SigIgn: 0000000000000000");
    std::signal(SIGPIPE, before);
}

TEST_F(LinuxWorkspace, the_working_directory_is_home_unless_the_entry_says_another) {
    const std::string body = "pwd >" + report_.path();
    open(scriptEntry(body));
    EXPECT_EQ(reported(), home_);
    open(scriptEntry(body, "Path=" + folder_.path("applications") + "\n"));
    EXPECT_EQ(reported(), folder_.path("applications"));
    std::filesystem::remove(home_);
    open(scriptEntry(body));
    EXPECT_EQ(reported(), "/");
}

TEST_F(LinuxWorkspace, a_started_program_gets_the_environment_of_our_start_alone) {
    added_ = {"KEPT=kept value", "TAVO_CHANGED=then", "DESKTOP_STARTUP_ID=ours",
              "XDG_ACTIVATION_TOKEN=ours", "DESKTOP_AUTOSTART_ID=ours"};
    workspace();
    const processes::Variable changed("TAVO_CHANGED", "now");
    const processes::Variable set("QT_QPA_PLATFORM", "ours");
    const processes::Variable token("XDG_ACTIVATION_TOKEN", "ours");
    open(
        scriptEntry("echo \"$KEPT/$TAVO_CHANGED/$QT_QPA_PLATFORM/$DESKTOP_STARTUP_ID/"
                    "$XDG_ACTIVATION_TOKEN/$DESKTOP_AUTOSTART_ID\" >" +
                    report_.path()));
    EXPECT_EQ(reported(), "kept value/then////");
}

TEST_F(LinuxWorkspace, variables_whose_names_no_shell_accepts_reach_the_program) {
    added_ = {"BASH_FUNC_tavo%%=() { echo \"a=b\"\n}", "with.dot=1"};
    const std::string copy = folder_.path("environment");
    EXPECT_EQ(open(entry("Exec=cp /proc/self/environ " + copy + "\n")).text(), "(no error)");
    std::ifstream file(copy, std::ios::binary);
    const std::string environment(std::istreambuf_iterator<char>(file), {});
    for (const std::string& variable : added_) {
        EXPECT_NE(environment.find(variable + '\0'), std::string::npos) << variable;
    }
    EXPECT_NE(environment.find("GIO_LAUNCHED_DESKTOP_FILE_PID="), std::string::npos);
}

TEST_F(LinuxWorkspace, on_x11_every_start_gets_an_identifier_of_its_own) {
    added_ = {"DISPLAY=:99"};
    folder_.script("bin/xdg-terminal-exec", "exec \"$@\"");
    const processes::Variable path("PATH", folder_.path("bin") + ":/usr/bin:/bin");
    OpeningSettings settings = this->settings();
    settings.userTime = [] { return 4242; };
    workspace_ = makeLinuxWorkspace(std::move(settings));
    const std::string body = "echo \"id=$DESKTOP_STARTUP_ID\" >" + report_.path();
    std::set<std::string> seen;
    for (const std::string lines : {"StartupNotify=true\n", "StartupNotify=true\n",
                                    "StartupNotify=false\n", "", "Terminal=true\n"}) {
        SCOPED_TRACE(lines);
        open(scriptEntry(body, lines));
        const std::string id = reported();
        EXPECT_TRUE(id.starts_with("id=tavo-" + std::to_string(::getpid()) + "-")) << id;
        EXPECT_TRUE(id.ends_with("_TIME4242")) << id;
        EXPECT_TRUE(seen.insert(id).second);
    }
}

TEST_F(LinuxWorkspace, on_wayland_there_is_no_startup_identifier) {
    added_ = {"DISPLAY=:99", "WAYLAND_DISPLAY=wayland-0"};
    OpeningSettings settings = this->settings();
    settings.wayland = true;
    workspace_ = makeLinuxWorkspace(std::move(settings));
    open(scriptEntry("echo \"id=$DESKTOP_STARTUP_ID\" >" + report_.path(), "StartupNotify=true\n"));
    EXPECT_EQ(reported(), "id=");
}

TEST_F(LinuxWorkspace, a_left_over_name_of_a_compositor_takes_no_startup_identifier_away) {
    added_ = {"DISPLAY=:99", "WAYLAND_DISPLAY=/nonexistent/wayland-0"};
    OpeningSettings settings = this->settings();
    settings.wayland = isWaylandSession(settings.environment);
    workspace_ = makeLinuxWorkspace(std::move(settings));
    open(scriptEntry("echo \"id=$DESKTOP_STARTUP_ID\" >" + report_.path(), "StartupNotify=true\n"));
    EXPECT_TRUE(reported().starts_with("id=tavo-"));
}

TEST_F(LinuxWorkspace, a_program_that_hands_over_and_ends_is_no_error) {
    const Answer answer = open(scriptEntry("exit 0"));
    EXPECT_EQ(answer.text(), "(no error)");
    EXPECT_EQ(answer.running, std::nullopt);
}

TEST_F(LinuxWorkspace, a_program_that_fails_at_once_is_reported_with_its_status) {
    EXPECT_EQ(open(scriptEntry("exit 3")).text(),
              "Il programma «" + folder_.path("program") +
                  "» dell’app «App» si è chiuso subito dopo l’avvio con il codice di errore 3.");
}

TEST_F(LinuxWorkspace, a_program_that_crashes_at_once_is_reported_with_the_signal) {
    EXPECT_EQ(open(scriptEntry("kill -SEGV $$")).text(),
              "Il programma «" + folder_.path("program") +
                  "» dell’app «App» è stato interrotto subito dopo l’avvio dal segnale SIGSEGV.");
}

struct EarlyEnd {
    const char* name;
    const char* lines;
    const char* text;
};

TEST_F(LinuxWorkspace, an_early_end_names_the_application_where_the_program_says_something_else) {
    const processes::Variable path("PATH", "/usr/bin:/bin");
    const processes::Variable language("LANGUAGE", "it");
    const processes::Variable locale("LC_ALL", "C.UTF-8");
    for (const EarlyEnd& row :
         {EarlyEnd{"a shell", "Exec=sh -c \"exec /no/such\"\n",
                   "Il programma «sh» dell’app «App» si è chiuso subito dopo l’avvio con il codice "
                   "di errore 127."},
          {"a setter of variables", "Exec=env A=b tavo-no-such\n",
           "Il programma «env» dell’app «App» si è chiuso subito dopo l’avvio con il codice di "
           "errore 127."},
          {"a translated name", "Name[it]=Nome\nExec=sh -c \"exit 4\"\n",
           "Il programma «sh» dell’app «Nome» si è chiuso subito dopo l’avvio con il codice di "
           "errore 4."},
          {"a signal", "Exec=sh -c \"kill -ABRT \\\\$\\\\$\"\n",
           "Il programma «sh» dell’app «App» è stato interrotto subito dopo l’avvio dal segnale "
           "SIGABRT."},
          {"one name for both", "Name[it]=false\nExec=false\n",
           "Il programma «false» si è chiuso subito dopo l’avvio con il codice di errore 1."},
          {"one name for both, and a path", "Name[it]=false\nExec=/bin/false\n",
           "Il programma «/bin/false» si è chiuso subito dopo l’avvio con il codice di errore "
           "1."}}) {
        SCOPED_TRACE(row.name);
        workspace_.reset();
        EXPECT_EQ(open(entry(row.lines)).text(), row.text);
    }
}

TEST_F(LinuxWorkspace, a_program_that_runs_on_is_answered_with_its_process) {
    patience_ = milliseconds(50);
    const Answer answer = open(scriptEntry("echo $$ >" + report_.path() + "; exec sleep 1000"));
    EXPECT_EQ(answer.text(), "(no error)");
    ASSERT_TRUE(answer.running);
    EXPECT_EQ(std::to_string(answer.running->processIdentifier), reported());
    EXPECT_EQ(answer.running->identifier, "app.desktop");
    ::kill(answer.running->processIdentifier, SIGKILL);
    EXPECT_TRUE(becomesTrue([] { return children().empty(); }));
}

TEST_F(LinuxWorkspace, a_later_end_is_reaped_and_says_nothing_more) {
    patience_ = milliseconds(50);
    Openings opening(queue_);
    ASSERT_EQ(::mkfifo(folder_.path("end").c_str(), 0600), 0);
    begin(scriptEntry("read line <" + folder_.path("end") + "; exit 9"), opening);
    ASSERT_EQ(opening.wait().text(), "(no error)");
    ASSERT_EQ(children().size(), 1U);
    std::ofstream(folder_.path("end")) << "now\n";
    EXPECT_TRUE(becomesTrue([] { return children().empty(); }));
    workspace_.reset();
    EXPECT_EQ(opening.now().calls, 1);
    EXPECT_EQ(opening.now().text(), "(no error)");
}

TEST_F(LinuxWorkspace, a_started_program_outlives_the_workspace) {
    patience_ = milliseconds(1);
    const Answer answer = open(scriptEntry("exec sleep 1000"));
    ASSERT_TRUE(answer.running);
    workspace_.reset();
    EXPECT_EQ(::kill(answer.running->processIdentifier, 0), 0);
    int status = 0;
    EXPECT_EQ(::waitpid(answer.running->processIdentifier, &status, WNOHANG), 0);
    processes::endProcess(answer.running->processIdentifier);
}

TEST_F(LinuxWorkspace, fifty_starts_leave_no_zombie_and_no_descriptor) {
    const std::string path = scriptEntry("exit 0");
    ASSERT_EQ(open(path).text(), "(no error)");
    const auto before = processes::openDescriptors();
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(open(path).text(), "(no error)");
    }
    EXPECT_TRUE(children().empty());
    // `before` may be too large: a start's descriptors are closed a little after its answer.
    EXPECT_TRUE(becomesTrue([&] { return processes::openDescriptors().size() <= before.size(); }));
}

TEST_F(LinuxWorkspace, works_where_ended_children_are_ignored) {
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    const Answer answer = open(scriptEntry("echo ran >" + report_.path()));
    EXPECT_EQ(answer.text(), "(no error)");
    EXPECT_EQ(reported(), "ran");
    std::signal(SIGCHLD, before);
}

TEST_F(LinuxWorkspace, openings_that_wait_when_it_ends_are_dropped) {
    Openings opening(queue_);
    begin(scriptEntry("echo $$ >" + report_.path() + "; exec sleep 1000"), opening);
    const pid_t process = static_cast<pid_t>(std::stol(reported()));
    workspace_.reset();
    EXPECT_EQ(opening.now().calls, 0);
    processes::endProcess(process);
}

}  // namespace
}  // namespace tavo
