#include "platform/linux/windows/CompositorRunningApplications.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

#include "platform/linux/system/ProcessInfo.h"
#include "platform/linux/windows/ProcessRegistry.h"
#include "platform/linux/windows/TransientRoot.h"
#include "platform/linux/windows/WindowMatcher.h"

namespace tavo {
namespace {

class CompositorRunningApplications final : public RunningApplications {
public:
    CompositorRunningApplications(std::unique_ptr<CompositorWindows> windows,
                                  std::shared_ptr<DesktopEntryIndex> listed, std::string ownAppId)
        : windows_(std::move(windows)),
          matcher_(std::move(listed)),
          ownAppId_(std::move(ownAppId)) {}

    void noteUserRequest(const std::string& identifier) override {
        click_ = {};
        List list = ask();
        activeAtRequest_[identifier] = list ? activeAppId(*list) : std::string();
        noted_ = Click{identifier, std::move(list)};
    }

    std::vector<RunningApplication> withIdentifier(const std::string& identifier) override {
        click_ = {};
        auto noted = std::exchange(noted_, std::nullopt);
        const bool isClick = noted && noted->identifier == identifier;
        List list = isClick ? std::move(noted->list) : ask();
        if (!list || windowsOf(identifier, *list).empty()) {
            return {};
        }
        if (isClick) {
            click_ = {identifier, std::move(list)};
        }
        return {{0, identifier}};
    }

    bool listsWindows() override { return lists_; }

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
        const List list = ask();
        return list && !windowsOf(application.identifier, *list).empty();
    }

    Subscription onWindowsChanged(std::function<void()> changed) override {
        return windows_->onChanged(std::move(changed));
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
        const List list =
            click.list && click.identifier == identifier ? std::move(click.list) : ask();
        if (!list) {
            return;
        }
        Windows windows = windowsOf(identifier, *list);
        if (windows.empty() || userHasLeft(*list, windows, identifier)) {
            return;
        }
        std::reverse(windows.begin(), windows.end());
        std::stable_partition(windows.begin(), windows.end(),
                              [](const CompositorWindow* window) { return !window->active; });
        list->front(windows);
    }

private:
    using List = std::unique_ptr<CompositorWindowList>;
    using Windows = std::vector<const CompositorWindow*>;

    // A click on a running application calls noteUserRequest(), withIdentifier() and
    // activateAllWindows() in turn. The compositor is asked once for all three.
    struct Click {
        std::string identifier;
        List list;  // null when the compositor did not answer
    };

    List ask() {
        noted_.reset();
        List list = windows_->list();
        lists_ = list != nullptr;
        return list;
    }

    // The windows of `identifier`, in the compositor's order; none for an empty identifier.
    [[nodiscard]] Windows windowsOf(const std::string& identifier,
                                    const CompositorWindowList& list) {
        if (identifier.empty()) {
            return {};
        }
        const WindowMatcher& matcher = matcher_.get();
        Windows windows = list.windows();
        std::erase_if(windows, [&](const CompositorWindow* window) {
            return matcher.owner(transientRoot(*window).names, nullptr, identifier) != identifier;
        });
        return windows;
    }

    // The application id of the active window: empty when no window is active, absent when it is
    // not known which one is.
    static std::optional<std::string> activeAppId(const CompositorWindowList& list) {
        const Windows windows = list.windows();
        const auto active = std::find_if(windows.begin(), windows.end(),
                                         [](const auto* window) { return window->active; });
        if (active != windows.end()) {
            return (*active)->names.appId;
        }
        return list.knowsActive() ? std::optional(std::string()) : std::nullopt;
    }

    [[nodiscard]] bool userHasLeft(const CompositorWindowList& list, const Windows& windows,
                                   const std::string& identifier) const {
        const std::optional<std::string> active = activeAppId(list);
        const bool isOurs =
            (active && (active->empty() || *active == ownAppId_)) ||
            std::any_of(windows.begin(), windows.end(),
                        [](const CompositorWindow* window) { return window->active; });
        const auto atRequest = activeAtRequest_.find(identifier);
        return !isOurs && (atRequest == activeAtRequest_.end() || atRequest->second != active);
    }

    const std::unique_ptr<CompositorWindows> windows_;
    bool lists_ = false;  // whether the latest question was answered
    LatestWindowMatcher matcher_;
    const std::string ownAppId_;

    ProcessRegistry processes_;
    // Each is kept until a call that is not the click's next one.
    std::optional<Click> noted_;  // by noteUserRequest()
    Click click_;                 // by withIdentifier()
    std::unordered_map<std::string, std::optional<std::string>> activeAtRequest_;  // by identifier
};

}  // namespace

std::unique_ptr<RunningApplications> makeCompositorRunningApplications(
    std::unique_ptr<CompositorWindows> windows, std::shared_ptr<DesktopEntryIndex> listed,
    std::string ownAppId) {
    return std::make_unique<CompositorRunningApplications>(std::move(windows), std::move(listed),
                                                           std::move(ownAppId));
}

}  // namespace tavo
