#include "platform/linux/session/SessionRunningApplications.h"

#include <utility>
#include <vector>

#include "platform/linux/compositors/BusCompositorWindows.h"
#include "platform/linux/compositors/GnomeShellWindows.h"
#include "platform/linux/compositors/KWinWindows.h"
#include "platform/linux/wayland/WaylandToplevelWatch.h"
#include "platform/linux/wayland/WaylandToplevels.h"
#include "platform/linux/windows/CompositorRunningApplications.h"
#include "platform/linux/windows/NullRunningApplications.h"
#include "support/ApplicationId.h"

namespace tavo {
namespace {

// Asks a compositor for its list of toplevel windows, and over the bus once it has turned out to
// have no such list.
class WaylandSessionWindows final : public CompositorWindows {
public:
    WaylandSessionWindows(std::string display, std::unique_ptr<CompositorWindows> onBus)
        : display_(std::move(display)), onBus_(std::move(onBus)) {}

    std::unique_ptr<CompositorWindowList> list() override {
        if (!onlyOnBus_) {
            auto toplevels = WaylandToplevels::ask(display_);
            const auto state = toplevels ? toplevels->state() : WaylandToplevels::State::silent;
            if (state != WaylandToplevels::State::notListed) {
                return state == WaylandToplevels::State::listed ? std::move(toplevels) : nullptr;
            }
            onlyOnBus_ = true;
        }
        return onBus_->list();
    }

    Subscription onChanged(std::function<void()> changed) override {
        return onlyOnBus_ ? onBus_->onChanged(std::move(changed))
                          : watchWaylandToplevels(display_, std::move(changed));
    }

private:
    const std::string display_;
    const std::unique_ptr<CompositorWindows> onBus_;
    bool onlyOnBus_ = false;
};

}  // namespace

std::unique_ptr<RunningApplications> makeSessionRunningApplications(
    const StartEnvironment& environment, bool wayland, SessionBus& bus,
    std::shared_ptr<DesktopEntryIndex> listed, UserTime userTime) {
    if (wayland) {
        std::vector<std::unique_ptr<BusWindowLister>> listers;
        listers.push_back(makeKWinWindows());
        listers.push_back(makeGnomeShellWindows());
        return makeCompositorRunningApplications(
            std::make_unique<WaylandSessionWindows>(
                environment.value("WAYLAND_DISPLAY").value_or(""),
                makeBusCompositorWindows(bus, std::move(listers))),
            std::move(listed), kApplicationId);
    }
    const std::string display = environment.value("DISPLAY").value_or("");
    return display.empty()
               ? makeNullRunningApplications()
               : makeXcbRunningApplications(display, std::move(listed), std::move(userTime));
}

}  // namespace tavo
