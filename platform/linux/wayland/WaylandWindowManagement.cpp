#include "platform/linux/wayland/WaylandWindowManagement.h"

#include <QTimer>
#include <QWindow>
#include <chrono>
#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/wayland/PlasmaShell.h"
#include "platform/linux/wayland/WaylandActivationTokens.h"
#include "platform/linux/wayland/WaylandToplevels.h"
#include "platform/linux/wayland/WaylandWindow.h"

namespace tavo {
namespace {

// How long the compositor may take to activate a window by its token, and to tell that another
// window has become active.
constexpr std::chrono::milliseconds kPatience{150};

class WaylandWindowManagement final : public WindowManagement {
public:
    WaylandWindowManagement(std::string display, std::string appId)
        : display_(std::move(display)), appId_(std::move(appId)) {}

    void prepareToShow(std::uintptr_t window, const StartRequest& /*request*/) override {
        const QWindow* const ours = ownWindow(window);
        wasShown_ = ours != nullptr && ours->isVisible();
    }

    void bringToFront(std::uintptr_t window, const StartRequest& request) override {
        keepOutOfTaskbar(window);
        if (!request.activationToken.empty()) {
            activateByToken(window, request.activationToken);
        }
        if (activateAsTaskbar() || !wasShown_) {
            return;
        }
        if (!request.activationToken.empty() || !showAnewUnlessActive(window)) {
            QTimer::singleShot(kPatience, &context_,
                               [this, window] { showAnewUnlessActive(window); });
        }
    }

private:
    void keepOutOfTaskbar(std::uintptr_t window) {
        if (!plasma_) {
            plasma_ = makePlasmaShell();
        }
        if (*plasma_) {
            (*plasma_)->keepOutOfTaskbar(window);
        }
    }

    // False where the compositor does not let task bars activate windows.
    bool activateAsTaskbar() {
        if (!listsToplevels_) {
            return false;
        }
        const auto toplevels = WaylandToplevels::ask(display_);
        if (!toplevels || toplevels->state() == WaylandToplevels::State::notListed) {
            listsToplevels_ = false;
            return false;
        }
        std::vector<const CompositorWindow*> ours = toplevels->windows();
        std::erase_if(
            ours, [this](const CompositorWindow* window) { return window->names.appId != appId_; });
        toplevels->front(ours);
        return true;
    }

    // Whether it was shown anew.
    bool showAnewUnlessActive(std::uintptr_t window) {
        QWindow* const ours = ownWindow(window);
        if (ours == nullptr || !ours->isVisible() || ours->isActive()) {
            return false;
        }
        ours->hide();
        ours->show();
        keepOutOfTaskbar(ours->winId());
        return true;
    }

    const std::string display_;
    const std::string appId_;
    bool wasShown_ = false;
    bool listsToplevels_ = true;
    std::optional<std::unique_ptr<PlasmaShell>> plasma_;  // made at the first showing
    QObject context_;                                     // ends the timers
};

}  // namespace

std::unique_ptr<WindowManagement> makeWaylandWindowManagement(std::string display,
                                                              std::string appId) {
    return std::make_unique<WaylandWindowManagement>(std::move(display), std::move(appId));
}

}  // namespace tavo
