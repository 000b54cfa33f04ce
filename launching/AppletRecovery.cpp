#include <chrono>
#include <string_view>

#include "catalogue/LauncherModel.h"
#include "launching/PathName.h"
#include "launching/ProcessPattern.h"
#include "platform/ChildProcess.h"
#include "platform/MainQueue.h"
#include "platform/RunningApplications.h"

namespace tavo {
namespace {

constexpr const char* kProcessFinder = "/usr/bin/pgrep";
constexpr std::string_view kInterpreter = "Python";
constexpr std::chrono::milliseconds kBetweenChecks{250};

// Names one application whichever applet was opened: it is the one whose users meet this.
constexpr const char* kNoWindow =
    "Velumo non ha mostrato la sua finestra. Controlla che la sua installazione sia completa.";

// The process identifiers among the lines of `output`, in their order; anything else in it is
// passed over.
std::vector<std::int32_t> processesIn(std::string_view output) {
    std::vector<std::int32_t> processes;
    while (!output.empty()) {
        const std::size_t end = output.find('\n');
        if (const auto process = processIdentifier(output.substr(0, end))) {
            processes.push_back(*process);
        }
        output = end == std::string_view::npos ? "" : output.substr(end + 1);
    }
    return processes;
}

}  // namespace

std::optional<RunningApplication> LauncherModel::runningPythonSidecar(const AppItem& app) {
    const std::string output =
        platform_.processes.output(kProcessFinder, {"-f", processPattern(app.name + ".py")})
            .value_or("");
    for (const std::int32_t process : processesIn(output)) {
        auto running = platform_.running.withProcess(process);
        const auto executable = running ? platform_.running.executablePath(*running) : std::nullopt;
        if (executable && lastPathComponent(*executable) == kInterpreter) {
            return running;
        }
    }
    return std::nullopt;
}

void LauncherModel::focusPythonSidecar(const AppItem& app, int attemptsRemaining) {
    if (const auto sidecar = runningPythonSidecar(app)) {
        platform_.running.activateAllWindows(*sidecar);
    } else if (attemptsRemaining <= 0) {
        reportLaunchError(kNoWindow);
    } else {
        platform_.mainQueue.asyncAfter(
            kBetweenChecks, [model = std::weak_ptr(alive_), app, attemptsRemaining] {
                if (const auto alive = model.lock()) {
                    (*alive)->focusPythonSidecar(app, attemptsRemaining - 1);
                }
            });
    }
}

}  // namespace tavo
