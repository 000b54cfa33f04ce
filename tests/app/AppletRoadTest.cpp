// From the click on an applet to its script's window, with real processes and real time.
//
// The applet is a shell script named "applet"; the interpreter is the system's shell under the
// name "Python". A window is a file that the script makes: what a process shows is not known
// without a desktop, and is not what is tried here.
#include <QCoreApplication>
#include <csignal>

#include <sys/wait.h>

#include "catalogue/LauncherModel.h"
#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/opening/LinuxWorkspace.h"
#include "platform/posix/PosixChildProcess.h"
#include "platform/posix/PosixSpawn.h"
#include "platform/qt/QtMainQueue.h"
#include "tests/fakes/FakeApplicationSource.h"
#include "tests/fakes/FakeDefaultsStore.h"
#include "tests/fakes/FakeFileManager.h"
#include "tests/platform/linux/fixtures/ProcessFixture.h"

namespace tavo {
namespace {

using processes::Folder;
using processes::kPatience;
using SystemClock = std::chrono::system_clock;

std::string executableOf(std::int32_t process) {
    std::error_code failure;
    const auto link =
        std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/exe", failure);
    return failure ? std::string() : link.string();
}

// Processes that show a window, one file a process in `windows`.
class WindowedProcesses final : public RunningApplications {
public:
    explicit WindowedProcesses(std::string windows) : windows_(std::move(windows)) {}

    void noteUserRequest(const std::string& /*identifier*/) override {}

    std::vector<RunningApplication> withIdentifier(const std::string&) override { return {}; }

    bool listsWindows() override { return true; }

    std::optional<RunningApplication> withProcess(std::int32_t process) override {
        return std::filesystem::exists(windowOf(process))
                   ? std::optional(RunningApplication{process, ""})
                   : std::nullopt;
    }

    bool showsWindow(const RunningApplication& application) override {
        return std::filesystem::exists(windowOf(application.processIdentifier));
    }

    Subscription onWindowsChanged(std::function<void()> /*changed*/) override { return {}; }

    std::optional<std::string> executablePath(const RunningApplication& application) override {
        const std::string path = executableOf(application.processIdentifier);
        return path.empty() ? std::nullopt : std::optional(path);
    }

    void activateAllWindows(const RunningApplication& application) override {
        activated.push_back(application.processIdentifier);
    }

    [[nodiscard]] std::string windowOf(std::int32_t process) const {
        return windows_ + '/' + std::to_string(process);
    }

    std::vector<std::int32_t> activated;  // applets are activated on the main thread alone

private:
    const std::string windows_;
};

// The real process finder, or another program in its place; remembers when it was run.
class Finder final : public ChildProcess {
public:
    std::optional<std::string> output(const std::string& executable,
                                      const std::vector<std::string>& arguments) override {
        runs.push_back(SystemClock::now());
        return real->output(replacement.value_or(executable), arguments);
    }

    std::vector<SystemClock::time_point> runs;
    std::optional<std::string> replacement;
    std::unique_ptr<ChildProcess> real = makePosixChildProcess({.time = kPatience});
};

class AppletRoad : public testing::Test {
protected:
    AppletRoad() {
        for (const char* const folder : {"home", "windows", "bin"}) {
            std::filesystem::create_directory(folder_.path(folder));
        }
        EXPECT_EQ(::mkfifo(folder_.path("forever").c_str(), 0600), 0);
        std::filesystem::copy_file(std::filesystem::canonical("/bin/sh"), python());
    }

    // Ends the workspace, kills the interpreters that still run, and reaps all of them.
    ~AppletRoad() override {
        model_.reset();
        workspace_.reset();
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            const int process = std::atoi(entry.path().filename().c_str());
            if (process > 0 && executableOf(process) == python()) {
                ::kill(process, SIGKILL);
            }
        }
        while (::waitpid(-1, nullptr, 0) > 0) {
        }
    }

    [[nodiscard]] std::string python() const { return folder_.path("bin/Python"); }
    [[nodiscard]] std::string script() const {
        return folder_.path(name_ + ".app/Contents/Resources/" + name_ + ".py");
    }
    [[nodiscard]] std::string startedMark() const { return folder_.path("applet-started"); }

    // An applet whose program runs the shell commands `before`, of which startScript() may be one.
    // Its script runs the shell commands `script` and then waits until it is killed.
    AppItem applet(const std::string& before, const std::string& script) {
        folder_.script(name_ + ".app/Contents/MacOS/applet", ": >" + startedMark() + "\n" + before);
        folder_.write(name_ + ".app/Contents/Info.plist",
                      "<plist version=\"1.0\"><dict><key>CFBundleExecutable</key>"
                      "<string>applet</string></dict></plist>");
        folder_.write(name_ + ".app/Contents/Resources/" + name_ + ".py",
                      script + "\nread forever <" + folder_.path("forever") + "\n");
        return {name_, FileUrl{folder_.path(name_ + ".app")}};
    }

    [[nodiscard]] std::string startScript() const { return python() + " '" + script() + "' &"; }
    [[nodiscard]] std::string showWindow() const { return ": >" + folder_.path("windows/$$"); }

    LauncherModel& model() {
        if (!model_) {
            workspace_ =
                makeLinuxWorkspace({.mainQueue = *mainQueue_,
                                    .environment = StartEnvironment(
                                        {"PATH=/usr/bin:/bin", "HOME=" + folder_.path("home")}),
                                    .bus = bus_,
                                    .applicationFolders = {},
                                    .userTime = {}});
            model_ = std::make_unique<LauncherModel>(Platform{.defaults = defaults_,
                                                              .files = files_,
                                                              .applications = applications_,
                                                              .workspace = *workspace_,
                                                              .running = running_,
                                                              .processes = finder_,
                                                              .mainQueue = *mainQueue_},
                                                     TextRules("en_US"));
        }
        return *model_;
    }

    // Whether the condition comes true while the event loop runs.
    static bool comesTrue(const std::function<bool()>& condition) {
        return processes::becomesTrue([&] {
            QCoreApplication::processEvents();
            return condition();
        });
    }

    // How often the process finder was run later than 20 ms after the window of `process` had
    // appeared.
    [[nodiscard]] long runsWithWindow(std::int32_t process) const {
        struct stat facts = {};
        EXPECT_EQ(::stat(running_.windowOf(process).c_str(), &facts), 0);
        const auto shown =
            SystemClock::time_point(std::chrono::duration_cast<SystemClock::duration>(
                std::chrono::seconds(facts.st_mtim.tv_sec) +
                std::chrono::nanoseconds(facts.st_mtim.tv_nsec)));
        return std::count_if(finder_.runs.begin(), finder_.runs.end(), [shown](auto run) {
            return run > shown + std::chrono::milliseconds(20);
        });
    }

    void expectFrontedAtTheNextCheck() {
        ASSERT_TRUE(comesTrue([this] { return !running_.activated.empty(); }));
        EXPECT_EQ(executableOf(running_.activated[0]), python());
        EXPECT_LE(runsWithWindow(running_.activated[0]), 1);
        EXPECT_EQ(model().launchError(), std::nullopt);
    }

    const Folder folder_;
    // Unique, because the process finder looks at all processes of the machine.
    const std::string name_ = "Prova (" + std::to_string(::getpid()) + ")";
    FakeDefaultsStore defaults_;
    FakeFileManager files_;
    FakeApplicationSource applications_;
    WindowedProcesses running_{folder_.path("windows")};
    Finder finder_;
    std::unique_ptr<MainQueue> mainQueue_ = makeQtMainQueue();
    SessionBus bus_{""};
    std::unique_ptr<Workspace> workspace_;
    std::unique_ptr<LauncherModel> model_;
};

TEST_F(AppletRoad, a_script_that_starts_after_three_seconds_is_fronted_at_the_next_check) {
    model().open(applet("sleep 3\n" + startScript(), showWindow()));
    expectFrontedAtTheNextCheck();
    EXPECT_GE(finder_.runs.size(), 1U + 6U);
}

TEST_F(AppletRoad, a_window_that_comes_a_second_after_its_process_is_fronted_at_the_next_check) {
    model().open(applet(startScript(), "sleep 1\n" + showWindow()));
    expectFrontedAtTheNextCheck();
    EXPECT_GE(finder_.runs.size(), 1U + 2U);
}

TEST_F(AppletRoad, a_script_that_never_comes_is_told_after_ten_seconds) {
    model().open(applet("exit 1", ""));
    ASSERT_TRUE(comesTrue([this] { return model().launchError().has_value(); }));
    EXPECT_EQ(model().launchError(),
              "Velumo non ha mostrato la sua finestra. Controlla che la sua installazione sia "
              "completa.");
    EXPECT_EQ(finder_.runs.size(), 1U + 41U);
    EXPECT_GE(finder_.runs.back() - finder_.runs[1], std::chrono::milliseconds(9900));
    EXPECT_TRUE(running_.activated.empty());
}

TEST_F(AppletRoad, a_script_that_runs_already_is_fronted_and_the_applet_not_started) {
    const AppItem app = applet(startScript(), showWindow());
    SpawnRequest start;
    start.executable = python();
    start.arguments = {script()};
    start.environment = {"PATH=/usr/bin:/bin"};
    pid_t process = 0;
    ASSERT_EQ(spawnProgram(start, process), 0);
    ASSERT_TRUE(comesTrue([&] { return std::filesystem::exists(running_.windowOf(process)); }));
    model().open(app);
    EXPECT_EQ(running_.activated, std::vector<std::int32_t>{process});
    model_.reset();
    workspace_.reset();  // waits until its thread has done what came before
    EXPECT_FALSE(std::filesystem::exists(startedMark()));
}

TEST_F(AppletRoad, an_editor_that_has_the_script_open_is_not_taken_for_it) {
    const AppItem app = applet("exit 0", "");
    SpawnRequest start;
    start.executable = "/bin/sh";
    start.arguments = {script()};
    start.environment = {"PATH=/usr/bin:/bin"};
    pid_t process = 0;
    ASSERT_EQ(spawnProgram(start, process), 0);
    std::ofstream(running_.windowOf(process)) << "";
    model().open(app);
    EXPECT_TRUE(running_.activated.empty());
    EXPECT_TRUE(comesTrue([this] { return std::filesystem::exists(startedMark()); }));
    ::kill(-process, SIGKILL);
}

struct BadFinder {
    const char* name;
    const char* script;  // null: there is no such program
};

class AppletRoadBadFinder : public AppletRoad, public testing::WithParamInterface<BadFinder> {};

TEST_P(AppletRoadBadFinder, counts_as_not_running_and_the_applet_is_started) {
    SCOPED_TRACE(GetParam().name);
    finder_.real = makePosixChildProcess();
    finder_.replacement = GetParam().script == nullptr
                              ? "/nonexistent/finder"
                              : folder_.script("finder", GetParam().script);
    model().open(applet("exit 0", ""));
    EXPECT_EQ(finder_.runs.size(), 1U);
    EXPECT_TRUE(running_.activated.empty());
    EXPECT_TRUE(comesTrue([this] { return std::filesystem::exists(startedMark()); }));
}

INSTANTIATE_TEST_SUITE_P(Rows, AppletRoadBadFinder,
                         testing::Values(BadFinder{"missing", nullptr},
                                         BadFinder{"garbage", "head -c 100000 /dev/urandom"},
                                         BadFinder{"a_hundred_megabytes",
                                                   "head -c 100000000 /dev/zero"},
                                         BadFinder{"hanging", "exec sleep 1000"},
                                         BadFinder{"failing", "echo no; exit 3"}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace tavo
