#include "platform/linux/wayland/WaylandWindowManagement.h"

#include <utility>

#include "platform/linux/wayland/WaylandActivationTokens.h"

namespace tavo {
namespace {

class WaylandWindowManagement final : public WindowManagement {
public:
    WaylandWindowManagement(RunningApplications& running, std::string ownAppId)
        : running_(running), ownAppId_(std::move(ownAppId)) {}

    void prepareToShow(std::uintptr_t /*window*/, const StartRequest& /*request*/) override {}

    // A token may be absent or too old, and some compositors only highlight a window that asks with
    // a token, so the window is activated as a task bar does it, too.
    void bringToFront(std::uintptr_t window, const StartRequest& request) override {
        if (!request.activationToken.empty()) {
            activateByToken(window, request.activationToken);
        }
        running_.noteUserRequest(ownAppId_);
        running_.activateAllWindows({0, ownAppId_});
    }

private:
    RunningApplications& running_;
    const std::string ownAppId_;
};

}  // namespace

std::unique_ptr<WindowManagement> makeWaylandWindowManagement(RunningApplications& running,
                                                              std::string ownAppId) {
    return std::make_unique<WaylandWindowManagement>(running, std::move(ownAppId));
}

}  // namespace tavo
