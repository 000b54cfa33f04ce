// The time from open() until the application's first instruction, beside the bare cost of starting
// the same program. The difference is the launcher's own work.
//
// The model is the real one, with a store on disk. No application runs before, so every opening
// starts one. The cases on X11 have an Xvfb of their own, to which a start with StartupNotify is
// announced; those with a token ask for an activation token as on Wayland, with a made-up answer.
//
// With a session bus (dbus-run-session), GIO and the request for a systemd scope reach it; without
// one the bus address leads to no bus.
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "catalogue/LauncherModel.h"
#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/dbus/SessionBusAddress.h"
#include "platform/linux/opening/LinuxWorkspace.h"
#include "platform/linux/store/SqliteDefaultsStore.h"
#include "platform/linux/windows/NullRunningApplications.h"
#include "platform/linux/x11/XcbConnection.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/posix/PosixChildProcess.h"
#include "platform/posix/PosixSpawn.h"
#include "tests/fakes/FakeApplicationSource.h"
#include "tests/fakes/FakeFileManager.h"
#include "tests/fakes/ManualMainQueue.h"
#include "tests/platform/linux/fixtures/XServer.h"

namespace tavo {
namespace {

namespace fs = std::filesystem;

std::int64_t nanosecondsNow() {
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * std::int64_t{1000000000} + now.tv_nsec;
}

class World {
public:
    explicit World(const std::string& program) : program_(program) {
        std::string pattern = (fs::temp_directory_path() / "tavo-opening-XXXXXX").string();
        root_ = mkdtemp(pattern.data());
        fs::create_directories(root_ / "Mark.app/Contents/MacOS");
        fs::create_symlink(program, root_ / "Mark.app/Contents/MacOS/Mark");
        std::ofstream(root_ / "Mark.app/Contents/Info.plist")
            << "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key>"
               "<string>org.example.Mark</string></dict></plist>";
        for (const auto& [name, lines] :
             {std::pair("mark", ""), {"announced", "StartupNotify=true\n"}}) {
            std::ofstream(root_ / (std::string(name) + ".desktop"))
                << "[Desktop Entry]\nType=Application\nName=Mark\nExec=" << program << " %U\n"
                << lines;
        }
        mkfifo((root_ / "marks").c_str(), 0600);
        marks_ = FileDescriptor(::open((root_ / "marks").c_str(), O_RDWR | O_CLOEXEC));
    }
    ~World() { fs::remove_all(root_); }
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    [[nodiscard]] std::string in(const std::string& name) const { return (root_ / name).string(); }
    [[nodiscard]] const std::string& program() const { return program_; }
    [[nodiscard]] std::vector<std::string> environment() const {
        return {"PATH=/usr/bin:/bin", "HOME=" + root_.string(), "TAVO_START_MARK=" + in("marks")};
    }

    // Waits for the next started program. Returns when it began to run, in nanoseconds; 0 when none
    // did.
    [[nodiscard]] std::int64_t nextMark() const {
        std::int64_t nanoseconds = 0;
        pollfd wanted = {marks_.get(), POLLIN, 0};
        constexpr int kPatience = 10000;  // milliseconds
        if (::poll(&wanted, 1, kPatience) <= 0 ||
            ::read(marks_.get(), &nanoseconds, sizeof nanoseconds) != sizeof nanoseconds) {
            return 0;
        }
        return nanoseconds;
    }

private:
    const std::string program_;
    fs::path root_;
    FileDescriptor marks_;
};

const World* theWorld = nullptr;

template<typename Start>
void measure(benchmark::State& state, const Start& start) {
    for (auto _ : state) {
        const std::int64_t before = nanosecondsNow();
        start();
        const std::int64_t mark = theWorld->nextMark();
        if (mark == 0) {
            state.SkipWithError("nothing was started");
            break;
        }
        state.SetIterationTime(static_cast<double>(mark - before) / 1e9);
    }
}

void bareStart(benchmark::State& state) {
    SpawnRequest start;
    start.executable = theWorld->program();
    start.environment = theWorld->environment();
    measure(state, [&] {
        pid_t process = 0;
        if (spawnProgram(start, process) == 0) {
            ::waitpid(process, nullptr, 0);
        }
    });
}

// What the launcher finds in the session: environment variables, and activation tokens as on
// Wayland.
struct Session {
    std::vector<std::string> variables;
    bool tokens = false;
};

void openApplication(benchmark::State& state, const std::string& name, const Session& session) {
    const auto defaults = makeSqliteDefaultsStore(theWorld->in("defaults.sqlite"));
    FakeFileManager files;
    FakeApplicationSource applications;
    ManualMainQueue mainQueue;
    const auto running = makeNullRunningApplications();
    const auto processes = makePosixChildProcess();
    std::vector<std::string> variables = theWorld->environment();
    variables.insert(variables.end(), session.variables.begin(), session.variables.end());
    SessionBus bus(sessionBusAddress());
    OpeningSettings settings{.mainQueue = mainQueue,
                             .environment = StartEnvironment(variables),
                             .bus = bus,
                             .applicationFolders = {},
                             .userTime = {},
                             .startingTime = std::chrono::milliseconds(0)};
    if (session.tokens) {
        settings.activationToken = [](const std::string& identifier) { return identifier; };
    }
    const auto workspace = makeLinuxWorkspace(std::move(settings));
    LauncherModel model({.defaults = *defaults,
                         .files = files,
                         .applications = applications,
                         .workspace = *workspace,
                         .running = *running,
                         .processes = *processes,
                         .mainQueue = mainQueue},
                        TextRules("it_IT"));
    const AppItem app("Mark", FileUrl{theWorld->in(name)});
    measure(state, [&] {
        mainQueue.run();
        model.open(app);
    });
}

void openPlainly(benchmark::State& state, const char* name) {
    openApplication(state, name, {});
}

void openWithToken(benchmark::State& state, const char* name) {
    openApplication(state, name, {.variables = {"WAYLAND_DISPLAY=wayland-bench"}, .tokens = true});
}

void openOnX11(benchmark::State& state, const char* name) {
    std::optional<XServer> server;
    try {
        server.emplace();
    } catch (const std::runtime_error& error) {
        state.SkipWithError(error.what());
        return;
    }
    // An X server resets itself when its last client disconnects; this connection prevents it.
    const auto client = XcbConnection::open(server->display());
    openApplication(state, name, {.variables = {"DISPLAY=" + server->display()}});
}

constexpr int kStarts = 200;

void measured(benchmark::internal::Benchmark* benchmark) {
    benchmark->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(kStarts);
}

BENCHMARK(bareStart)->Apply(measured);
BENCHMARK_CAPTURE(openPlainly, bundle, "Mark.app")->Apply(measured);
BENCHMARK_CAPTURE(openPlainly, entry, "mark.desktop")->Apply(measured);
BENCHMARK_CAPTURE(openWithToken, bundle, "Mark.app")->Apply(measured);
BENCHMARK_CAPTURE(openWithToken, entry, "mark.desktop")->Apply(measured);
BENCHMARK_CAPTURE(openOnX11, bundle, "Mark.app")->Apply(measured);
BENCHMARK_CAPTURE(openOnX11, entry, "mark.desktop")->Apply(measured);
BENCHMARK_CAPTURE(openOnX11, announcedEntry, "announced.desktop")->Apply(measured);

}  // namespace
}  // namespace tavo

int main(int argc, char** argv) {
    // An unset address would make GLib start a bus daemon of its own.
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 0);
    const std::string self = std::filesystem::canonical("/proc/self/exe").string();
    const tavo::World world(self.substr(0, self.rfind('/')) + "/tavo_start_mark");
    tavo::theWorld = &world;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
