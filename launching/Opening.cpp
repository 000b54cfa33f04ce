#include <algorithm>

#include "catalogue/LauncherModel.h"
#include "platform/MainQueue.h"
#include "platform/RunningApplications.h"
#include "platform/Workspace.h"

namespace tavo {
namespace {

constexpr std::size_t kMostRecents = 30;

}  // namespace

void LauncherModel::open(const AppItem& app) {
    // Whatever comes of it: the user asked for this one last.
    recordAsRecent(app.url.path);

    if (const auto facts = platform_.workspace.bundle(app.url.path); facts && facts->identifier) {
        const auto running = platform_.running.withIdentifier(*facts->identifier);
        if (!running.empty()) {
            platform_.running.activateAllWindows(running.front());
            return;
        }
    }

    platform_.workspace.openApplication(
        app.url.path, OpenConfiguration{.activates = true},
        // Any thread, and perhaps after the model is gone: the adapters outlive it.
        [model = std::weak_ptr(alive_), &running = platform_.running,
         &mainQueue = platform_.mainQueue](const std::optional<RunningApplication>& started,
                                           const std::optional<Error>& error) {
            if (started) {
                running.activateAllWindows(*started);
            }
            if (error) {
                mainQueue.async([model, message = error->message] {
                    if (const auto alive = model.lock()) {
                        (*alive)->reportLaunchError(message);
                    }
                });
            }
        });
}

void LauncherModel::recordAsRecent(const std::string& path) {
    recentPaths_.change([&](StringArray& paths) {
        std::erase(paths, path);
        paths.insert(paths.begin(), path);
        if (paths.size() > kMostRecents) {
            paths.resize(kMostRecents);
        }
    });
    platform_.defaults.set(kRecentsKey, *recentPaths_);
    objectWillChange.emit();
}

void LauncherModel::reportLaunchError(std::string message) {
    launchError_.set(std::move(message));
}

}  // namespace tavo
