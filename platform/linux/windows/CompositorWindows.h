// The windows of all programs, as a compositor lists them, in whatever way it does.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/windows/WindowMatcher.h"
#include "support/Signal.h"

namespace tavo {

struct CompositorWindow {
    WindowNames names;
    bool minimised = false;
    bool active = false;
    const CompositorWindow* parent = nullptr;  // the listed window that it is a dialog of
};

// The windows as they were when they were asked for. Do not keep it for long. Main thread.
class CompositorWindowList {
public:
    virtual ~CompositorWindowList() = default;

    // In the compositor's order, the newest first. The windows live as long as the list.
    [[nodiscard]] virtual std::vector<const CompositorWindow*> windows() const = 0;

    // Whether the compositor says which window is active. Where it does not, only a window of this
    // program may be marked as active.
    [[nodiscard]] virtual bool knowsActive() const { return true; }

    // Brings these windows of the list forward in this order, so that the last one is active, and
    // restores minimised ones.
    virtual void front(const std::vector<const CompositorWindow*>& windows) = 0;
};

// Main thread.
class CompositorWindows {
public:
    virtual ~CompositorWindows() = default;

    // Null where windows are not listed, and where the answer takes too long: a second at most.
    virtual std::unique_ptr<CompositorWindowList> list() = 0;

    // As RunningApplications::onWindowsChanged().
    [[nodiscard]] virtual Subscription onChanged(std::function<void()> changed) = 0;
};

}  // namespace tavo
