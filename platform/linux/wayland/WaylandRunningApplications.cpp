#include "platform/linux/wayland/WaylandRunningApplications.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

#include "platform/linux/system/ProcessInfo.h"
#include "platform/linux/wayland/WaylandToplevelWatch.h"
#include "platform/linux/wayland/WaylandToplevels.h"
#include "platform/linux/windows/ProcessRegistry.h"
#include "platform/linux/windows/TransientRoot.h"
#include "platform/linux/windows/WindowMatcher.h"

namespace tavo {
namespace {

class WaylandRunningApplications final : public RunningApplications {
public:
    WaylandRunningApplications(std::string display, std::shared_ptr<DesktopEntryIndex> listed,
                               std::string ownAppId)
        : display_(std::move(display)),
          matcher_(std::move(listed)),
          ownAppId_(std::move(ownAppId)) {}

    void noteUserRequest(const std::string& identifier) override {
        const auto toplevels = WaylandToplevels::ask(display_);
        activeAtRequest_[identifier] = toplevels ? activeAppId(*toplevels) : std::string();
        click_ = {identifier, nullptr};
    }

    std::vector<RunningApplication> withIdentifier(const std::string& identifier) override {
        const Click click = std::exchange(click_, {});
        auto toplevels = WaylandToplevels::ask(display_);
        if (!toplevels || windowsOf(identifier, *toplevels).empty()) {
            return {};
        }
        if (click.identifier == identifier) {
            click_ = {identifier, std::move(toplevels)};
        }
        return {{0, identifier}};
    }

    std::optional<RunningApplication> withProcess(std::int32_t processIdentifier) override {
        click_ = {};
        if (!isOwnProcess(processIdentifier) || !processStartTime(processIdentifier)) {
            return std::nullopt;
        }
        processes_.remember(processIdentifier);
        return RunningApplication{processIdentifier, ""};
    }

    // Looks for windows of the identifier alone: a window does not tell its process.
    bool showsWindow(const RunningApplication& application) override {
        click_ = {};
        const auto toplevels = WaylandToplevels::ask(display_);
        return toplevels && !windowsOf(application.identifier, *toplevels).empty();
    }

    Subscription onWindowsChanged(std::function<void()> changed) override {
        return watchWaylandToplevels(display_, std::move(changed));
    }

    std::optional<std::string> executablePath(const RunningApplication& application) override {
        return processes_.executable(application.processIdentifier);
    }

    void activateAllWindows(const RunningApplication& application) override {
        Click click = std::exchange(click_, {});
        const pid_t process = application.processIdentifier;
        std::string identifier = application.identifier;
        if (identifier.empty()) {
            identifier = processes_.isSame(process)
                             ? ProcessStarts(processes_, matcher_.get()).of(process)
                             : std::string();
        } else if (!processes_.isKnown(process)) {
            processes_.rememberStart(process, identifier);
        }
        if (identifier.empty()) {
            return;
        }
        const auto toplevels = click.toplevels && click.identifier == identifier
                                   ? std::move(click.toplevels)
                                   : WaylandToplevels::ask(display_);
        if (!toplevels) {
            return;
        }
        Windows windows = windowsOf(identifier, *toplevels);
        if (windows.empty() || userHasLeft(*toplevels, windows, identifier)) {
            return;
        }
        std::reverse(windows.begin(), windows.end());
        std::stable_partition(windows.begin(), windows.end(),
                              [](const WaylandToplevel* window) { return !window->activated; });
        toplevels->front(windows);
    }

private:
    using Windows = std::vector<const WaylandToplevel*>;

    // A click on a running application calls noteUserRequest(), withIdentifier() and
    // activateAllWindows() in turn. The last one uses the windows that withIdentifier() has found.
    struct Click {
        std::string identifier;
        std::unique_ptr<WaylandToplevels> toplevels;  // set by withIdentifier()
    };

    // The windows of `identifier`, in the compositor's order; none for an empty identifier.
    [[nodiscard]] Windows windowsOf(const std::string& identifier,
                                    const WaylandToplevels& toplevels) {
        if (identifier.empty()) {
            return {};
        }
        const WindowMatcher& matcher = matcher_.get();
        Windows found;
        for (const WaylandToplevel& window : toplevels.windows()) {
            const std::string& appId = transientRoot(window).appId;
            if (matcher.owner({"", "", appId}, nullptr, identifier) == identifier) {
                found.push_back(&window);
            }
        }
        return found;
    }

    static std::string activeAppId(const WaylandToplevels& toplevels) {
        const auto& windows = toplevels.windows();
        const auto active = std::find_if(windows.begin(), windows.end(),
                                         [](const auto& window) { return window.activated; });
        return active == windows.end() ? std::string() : active->appId;
    }

    [[nodiscard]] bool userHasLeft(const WaylandToplevels& toplevels, const Windows& windows,
                                   const std::string& identifier) const {
        const std::string active = activeAppId(toplevels);
        const bool isOurs =
            active.empty() || active == ownAppId_ ||
            std::any_of(windows.begin(), windows.end(),
                        [](const WaylandToplevel* window) { return window->activated; });
        const auto atRequest = activeAtRequest_.find(identifier);
        return !isOurs && (atRequest == activeAtRequest_.end() || atRequest->second != active);
    }

    const std::string display_;
    LatestWindowMatcher matcher_;
    const std::string ownAppId_;

    ProcessRegistry processes_;
    Click click_;  // kept until a call that is not the click's next one
    std::unordered_map<std::string, std::string> activeAtRequest_;  // by identifier
};

}  // namespace

std::unique_ptr<RunningApplications> makeWaylandRunningApplications(
    std::string display, std::shared_ptr<DesktopEntryIndex> listed, std::string ownAppId) {
    return std::make_unique<WaylandRunningApplications>(std::move(display), std::move(listed),
                                                        std::move(ownAppId));
}

}  // namespace tavo
