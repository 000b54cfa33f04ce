#include <algorithm>

#include "catalogue/LauncherModel.h"
#include "launching/PathName.h"
#include "platform/RunningApplications.h"
#include "platform/Workspace.h"

namespace tavo {
namespace {

constexpr std::size_t kMostRecents = 30;

// How often the script of an applet is looked for again once the applet has been started.
constexpr int kRecoveryAttempts = 40;

// A bundle that merely starts a script, whose windows belong to the script's interpreter.
bool isApplet(const BundleFacts& facts) {
    return facts.signature == "aplt" ||
           (facts.executablePath && lastPathComponent(*facts.executablePath) == "applet");
}

}  // namespace

void LauncherModel::open(const AppItem& app) {
    // Whatever comes of it: the user asked for this one last.
    recordAsRecent(app.url.path);

    const BundleFacts facts = platform_.workspace.bundle(app.url.path).value_or(BundleFacts());
    const bool applet = isApplet(facts);
    if (bringForward(app, facts, applet)) {
        return;
    }

    platform_.workspace.openApplication(
        app.url.path, OpenConfiguration{.activates = !applet},
        // Perhaps after the model is gone: the adapters outlive it.
        [model = std::weak_ptr(alive_), app, applet, &running = platform_.running](
            const std::optional<RunningApplication>& started, const std::optional<Error>& error) {
            if (!applet && started) {
                running.activateAllWindows(*started);
            }
            const auto alive = model.lock();
            if (alive && applet) {
                // Also after an error: the script may have been started by other means.
                (*alive)->focusPythonSidecar(app, kRecoveryAttempts);
            }
            if (alive && error) {
                (*alive)->reportLaunchError(error->message);
            }
        });
}

// Whether the application runs; its windows are then in front.
bool LauncherModel::bringForward(const AppItem& app, const BundleFacts& facts, bool applet) {
    std::optional<RunningApplication> found;
    if (applet) {
        found = runningPythonSidecar(app);
    } else if (facts.identifier) {
        platform_.running.noteUserRequest(*facts.identifier);
        const auto running = platform_.running.withIdentifier(*facts.identifier);
        if (!running.empty()) {
            found = running.front();
        }
    }
    if (found) {
        platform_.running.activateAllWindows(*found);
    }
    return found.has_value();
}

void LauncherModel::recordAsRecent(const std::string& path) {
    recentPaths_.change([&](StringArray& paths) { std::erase(paths, path); });
    recentPaths_.change([&](StringArray& paths) { paths.insert(paths.begin(), path); });
    recentPaths_.change(
        [](StringArray& paths) { paths.resize(std::min(paths.size(), kMostRecents)); });
    platform_.defaults.set(kRecentsKey, *recentPaths_);
    objectWillChange.emit();
}

void LauncherModel::reportLaunchError(std::string message) {
    launchError_.set(std::move(message));
}

}  // namespace tavo
