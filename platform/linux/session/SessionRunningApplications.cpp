#include "platform/linux/session/SessionRunningApplications.h"

#include <utility>

#include "platform/linux/wayland/WaylandRunningApplications.h"
#include "platform/linux/windows/NullRunningApplications.h"
#include "support/ApplicationId.h"

namespace tavo {

std::unique_ptr<RunningApplications> makeSessionRunningApplications(
    const StartEnvironment& environment, bool wayland, std::shared_ptr<DesktopEntryIndex> listed,
    UserTime userTime) {
    if (wayland) {
        return makeWaylandRunningApplications(environment.value("WAYLAND_DISPLAY").value_or(""),
                                              std::move(listed), kApplicationId);
    }
    const std::string display = environment.value("DISPLAY").value_or("");
    return display.empty()
               ? makeNullRunningApplications()
               : makeXcbRunningApplications(display, std::move(listed), std::move(userTime));
}

}  // namespace tavo
