#include "platform/linux/x11/XcbRunningApplications.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <unordered_map>
#include <utility>

#include <unistd.h>

#include "platform/linux/windows/ProcessRegistry.h"
#include "platform/linux/windows/WindowMatcher.h"
#include "platform/linux/x11/XcbConnection.h"
#include "platform/linux/x11/XcbWindows.h"

namespace tavo {
namespace {

// Times of the server turn around.
bool isLater(xcb_timestamp_t time, xcb_timestamp_t than) {
    return static_cast<std::int32_t>(time - than) > 0;
}

// Which application each window is of, looked up once a window.
class WindowOwners {
public:
    WindowOwners(const WindowMatcher& matcher, const ProcessRegistry& processes,
                 const XcbWindowList& list, std::string asked)
        : matcher_(matcher), starts_(processes, matcher), list_(list), asked_(std::move(asked)) {}

    [[nodiscard]] const std::string& owner(const XcbWindow& window) {
        const XcbWindow& transientRoot = list_.transientRoot(window);
        const auto [known, isNew] = owners_.try_emplace(transientRoot.id);
        if (isNew) {
            known->second = matcher_.owner(
                transientRoot.names, [&] { return starts_.of(transientRoot.process); }, asked_);
        }
        return known->second;
    }

private:
    const WindowMatcher& matcher_;
    ProcessStarts starts_;
    const XcbWindowList& list_;
    const std::string asked_;
    std::unordered_map<xcb_window_t, std::string> owners_;
};

class XcbRunningApplications final : public RunningApplications {
public:
    XcbRunningApplications(std::string display, std::shared_ptr<DesktopEntryIndex> listed,
                           UserTime userTime)
        : display_(std::move(display)),
          matcher_(std::move(listed)),
          userTime_(std::move(userTime)) {}

    std::vector<RunningApplication> withIdentifier(const std::string& identifier) override {
        const std::lock_guard lock(mutex_);
        std::vector<RunningApplication> found;
        if (identifier.empty() || !connected()) {
            return found;
        }
        XcbWindowList list = windows_->list();
        const Windows windows = windowsOf(identifier, list);
        for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
            const RunningApplication application{(*window)->process, identifier};
            if (std::find(found.begin(), found.end(), application) == found.end()) {
                processes_.remember(application.processIdentifier);
                found.push_back(application);
            }
        }
        wishes_[identifier] = {list.active, lastInput()};
        if (!found.empty()) {
            found_ = {identifier, std::move(list), Clock::now()};
        }
        return found;
    }

    std::optional<RunningApplication> withProcess(std::int32_t processIdentifier) override {
        const std::lock_guard lock(mutex_);
        if (!connected() || windowsOf(processIdentifier, windows_->list()).empty()) {
            return std::nullopt;
        }
        processes_.remember(processIdentifier);
        return RunningApplication{processIdentifier, ""};
    }

    bool showsWindow(const RunningApplication& application) override {
        const std::lock_guard lock(mutex_);
        // Asked again and again: a server that did not answer is asked again once it does.
        if (!connected(Patience::Once)) {
            return false;
        }
        const XcbWindowList list = windows_->list();
        return !windowsOf(application.identifier, list).empty() ||
               !windowsOf(application.processIdentifier, list).empty();
    }

    std::optional<std::string> executablePath(const RunningApplication& application) override {
        const std::lock_guard lock(mutex_);
        return processes_.executable(application.processIdentifier);
    }

    void activateAllWindows(const RunningApplication& application) override {
        const std::lock_guard lock(mutex_);
        const pid_t process = application.processIdentifier;
        if (!connected()) {
            return;
        }
        const bool byProcess = application.identifier.empty();
        if (byProcess && !processes_.isSame(process)) {
            return;
        }
        if (!byProcess && !processes_.isKnown(process)) {
            processes_.rememberStart(process, application.identifier);
        }
        const XcbWindowList list = listFor(application.identifier);
        const auto windows =
            byProcess ? windowsOf(process, list) : windowsOf(application.identifier, list);
        if (windows.empty() || userHasLeft(list, windows, application.identifier)) {
            return;
        }
        std::vector<xcb_window_t> ids;
        for (const XcbWindow* const window : windows) {
            ids.push_back(window->id);
        }
        windows_->front(ids);
    }

private:
    using Clock = std::chrono::steady_clock;
    using Windows = std::vector<const XcbWindow*>;

    // What was in front, and when the user last acted here, at a click on an application.
    struct Wish {
        xcb_window_t active = XCB_WINDOW_NONE;
        std::optional<xcb_timestamp_t> input;
    };

    // The list in which an application was found.
    struct Found {
        std::string identifier;
        XcbWindowList list;
        Clock::time_point at;
    };

    // To be found and to be brought forward are the two halves of one click, for which one list
    // does.
    XcbWindowList listFor(const std::string& identifier) {
        constexpr std::chrono::milliseconds kOneClick{20};
        if (const auto found = std::exchange(found_, std::nullopt);
            found && !identifier.empty() && found->identifier == identifier &&
            Clock::now() - found->at < kOneClick) {
            return found->list;
        }
        return windows_->list();
    }

    // Whether a server that lets everybody wait is waited for at each question, or only until it
    // was waited for in vain.
    enum class Patience : std::uint8_t { Always, Once };

    bool connected(Patience patience = Patience::Always) {
        if (connection_ && connection_->broken()) {
            found_.reset();
            windows_.reset();
            connection_.reset();
        }
        if (!connection_) {
            const bool waits = patience == Patience::Always || !opening_;
            if (!opening_) {
                opening_.emplace(display_);
            }
            connection_ =
                opening_->await(waits ? XcbConnection::kPatience : std::chrono::milliseconds(0));
            if (opening_->over()) {
                opening_.reset();
            }
        }
        if (!connection_ || (patience == Patience::Once && connection_->silent())) {
            return false;
        }
        if (!windows_) {
            windows_ = std::make_unique<XcbWindows>(*connection_);
        }
        if (!windows_->works()) {
            windows_.reset();
        }
        return windows_ != nullptr;
    }

    [[nodiscard]] std::optional<xcb_timestamp_t> lastInput() const {
        return userTime_ ? userTime_() : std::nullopt;
    }

    // The bottom one first; no identifier and no process have none.
    Windows windowsOf(const std::string& identifier, const XcbWindowList& list) {
        if (identifier.empty()) {
            return {};
        }
        WindowOwners owners(matcher_.get(), processes_, list, identifier);
        Windows found;
        for (const XcbWindow& window : list.windows) {
            if (!window.ofDesktop && owners.owner(window) == identifier) {
                found.push_back(&window);
            }
        }
        return found;
    }

    static Windows windowsOf(pid_t process, const XcbWindowList& list) {
        Windows found;
        for (const XcbWindow& window : list.windows) {
            if (process > 0 && !window.ofDesktop &&
                (window.process == process || list.transientRoot(window).process == process)) {
                found.push_back(&window);
            }
        }
        return found;
    }

    bool userHasLeft(const XcbWindowList& list, const Windows& windows,
                     const std::string& identifier) {
        const XcbWindow* const active = list.find(list.active);
        if (active == nullptr || active->process == ::getpid() ||
            std::find(windows.begin(), windows.end(), active) != windows.end()) {
            return false;
        }
        const auto wish = wishes_.find(identifier);
        if (wish != wishes_.end() && wish->second.active == active->id) {
            return false;
        }
        const auto ours = wish != wishes_.end() ? wish->second.input : lastInput();
        if (!ours) {
            return false;
        }
        const auto theirs = windows_->userTime(active->id);
        return !theirs || isLater(*theirs, *ours);
    }

    const std::string display_;
    LatestWindowMatcher matcher_;
    const UserTime userTime_;

    std::mutex mutex_;                               // over all below
    std::optional<XcbConnection::Opening> opening_;  // until the server has greeted us
    std::unique_ptr<XcbConnection> connection_;
    std::unique_ptr<XcbWindows> windows_;
    ProcessRegistry processes_;
    std::unordered_map<std::string, Wish> wishes_;  // by identifier
    std::optional<Found> found_;
};

}  // namespace

std::unique_ptr<RunningApplications> makeXcbRunningApplications(
    std::string display, std::shared_ptr<DesktopEntryIndex> listed, UserTime userTime) {
    return std::make_unique<XcbRunningApplications>(std::move(display), std::move(listed),
                                                    std::move(userTime));
}

}  // namespace tavo
