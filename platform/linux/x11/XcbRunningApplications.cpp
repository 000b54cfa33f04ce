#include "platform/linux/x11/XcbRunningApplications.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include <unistd.h>

#include "platform/linux/windows/ProcessRegistry.h"
#include "platform/linux/windows/TransientRoot.h"
#include "platform/linux/windows/WindowMatcher.h"
#include "platform/linux/x11/XcbConnection.h"
#include "platform/linux/x11/XcbWindowListWatch.h"
#include "platform/linux/x11/XcbWindows.h"

namespace tavo {
namespace {

// Compares times of the X server, which restart from 0 every 49 days.
bool isLater(xcb_timestamp_t time, xcb_timestamp_t than) {
    return static_cast<std::int32_t>(time - than) > 0;
}

class XcbRunningApplications final : public RunningApplications {
public:
    XcbRunningApplications(std::string display, std::shared_ptr<DesktopEntryIndex> listed,
                           UserTime userTime)
        : display_(std::move(display)),
          matcher_(std::move(listed)),
          userTime_(std::move(userTime)) {}

    void noteUserRequest(const std::string& identifier) override {
        requests_[identifier] = {XCB_WINDOW_NONE, lastInput()};
        if (connected()) {
            readActive();
            asked_ = Asked{identifier, windows_->askActive()};
        }
        click_.emplace(Click{identifier, std::nullopt});
    }

    std::vector<RunningApplication> withIdentifier(const std::string& identifier) override {
        const auto click = std::exchange(click_, std::nullopt);
        std::vector<RunningApplication> found;
        if (identifier.empty() || !connected()) {
            return found;
        }
        XcbWindowList list = this->list();
        readActive();
        const Windows windows = windowsOf(identifier, list);
        for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
            const RunningApplication application{(*window)->process, identifier};
            if (std::find(found.begin(), found.end(), application) == found.end()) {
                processes_.remember(application.processIdentifier);
                found.push_back(application);
            }
        }
        if (click && click->identifier == identifier && !found.empty()) {
            click_.emplace(Click{identifier, std::move(list)});
        }
        return found;
    }

    bool listsWindows() override { return windows_ != nullptr && managed_; }

    std::optional<RunningApplication> withProcess(std::int32_t processIdentifier) override {
        click_.reset();
        if (!connected() || windowsOf(processIdentifier, list()).empty()) {
            return std::nullopt;
        }
        processes_.remember(processIdentifier);
        return RunningApplication{processIdentifier, ""};
    }

    bool showsWindow(const RunningApplication& application) override {
        click_.reset();
        if (!connected()) {
            return false;
        }
        const XcbWindowList list = this->list();
        return !windowsOf(application.identifier, list).empty() ||
               !windowsOf(application.processIdentifier, list).empty();
    }

    Subscription onWindowsChanged(std::function<void()> changed) override {
        return watchXcbWindowList(display_, std::move(changed));
    }

    std::optional<std::string> executablePath(const RunningApplication& application) override {
        return processes_.executable(application.processIdentifier);
    }

    void activateAllWindows(const RunningApplication& application) override {
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
    using Windows = std::vector<const XcbWindow*>;

    // The state of the desktop at the user's click on an application.
    struct Request {
        xcb_window_t active = XCB_WINDOW_NONE;  // the active window
        std::optional<xcb_timestamp_t> input;   // the user's last input to the launcher
    };

    // A request for the active window, sent at a click, with the reply not read yet: so the click
    // does not wait for a round trip of its own.
    struct Asked {
        std::string identifier;
        xcb_get_property_cookie_t active;
    };

    void readActive() {
        if (const auto asked = std::exchange(asked_, std::nullopt)) {
            requests_[asked->identifier].active = windows_->active(asked->active);
        }
    }

    // A click on a running application calls noteUserRequest(), withIdentifier() and
    // activateAllWindows() in turn. The last one uses the window list that withIdentifier() has
    // read.
    struct Click {
        std::string identifier;
        std::optional<XcbWindowList> list;  // set by withIdentifier()
    };

    XcbWindowList listFor(const std::string& identifier) {
        auto click = std::exchange(click_, std::nullopt);
        return click && click->list && click->identifier == identifier ? std::move(*click->list)
                                                                       : list();
    }

    bool connected() {
        if (connection_ && connection_->broken()) {
            asked_.reset();
            windows_.reset();
            connection_.reset();
        }
        if (!connection_) {
            connection_ = XcbConnection::open(display_);
        }
        if (connection_ && !windows_) {
            windows_ = std::make_unique<XcbWindows>(*connection_);
            if (!windows_->works()) {
                windows_.reset();
            }
        }
        return windows_ != nullptr;
    }

    XcbWindowList list() {
        XcbWindowList list = windows_->list();
        managed_ = list.managed;
        return list;
    }

    [[nodiscard]] std::optional<xcb_timestamp_t> lastInput() const {
        return userTime_ ? userTime_() : std::nullopt;
    }

    // The windows of `identifier`, the bottom one first; none for an empty identifier.
    Windows windowsOf(const std::string& identifier, const XcbWindowList& list) {
        if (identifier.empty()) {
            return {};
        }
        const WindowMatcher& matcher = matcher_.get();
        ProcessStarts starts(processes_, matcher);
        Windows found;
        for (const XcbWindow& window : list.windows) {
            const XcbWindow& root = transientRoot(window);
            const auto start = [&] { return starts.of(root.process); };
            if (!window.ofDesktop && matcher.owner(root.names, start, identifier) == identifier) {
                found.push_back(&window);
            }
        }
        return found;
    }

    // The windows of `process`, the bottom one first; none for 0.
    static Windows windowsOf(pid_t process, const XcbWindowList& list) {
        Windows found;
        for (const XcbWindow& window : list.windows) {
            if (process > 0 && !window.ofDesktop &&
                (window.process == process || transientRoot(window).process == process)) {
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
        readActive();
        const auto request = requests_.find(identifier);
        if (request != requests_.end() && request->second.active == active->id) {
            return false;
        }
        const auto ours = request != requests_.end() ? request->second.input : lastInput();
        if (!ours) {
            return false;
        }
        const auto theirs = windows_->userTime(active->id);
        return !theirs || isLater(*theirs, *ours);
    }

    const std::string display_;
    LatestWindowMatcher matcher_;
    const UserTime userTime_;

    std::unique_ptr<XcbConnection> connection_;
    std::unique_ptr<XcbWindows> windows_;
    bool managed_ = false;  // whether a window manager listed the windows last read
    ProcessRegistry processes_;
    std::unordered_map<std::string, Request> requests_;  // by identifier
    std::optional<Asked> asked_;
    std::optional<Click> click_;  // kept until a call that is not the click's next one
};

}  // namespace

std::unique_ptr<RunningApplications> makeXcbRunningApplications(
    std::string display, std::shared_ptr<DesktopEntryIndex> listed, UserTime userTime) {
    return std::make_unique<XcbRunningApplications>(std::move(display), std::move(listed),
                                                    std::move(userTime));
}

}  // namespace tavo
