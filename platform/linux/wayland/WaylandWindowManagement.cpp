#include "platform/linux/wayland/WaylandWindowManagement.h"

#include <QTimer>
#include <QWindow>
#include <chrono>
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
        : display_(std::move(display)), appId_(std::move(appId)) {
        again_.setSingleShot(true);
        again_.setInterval(kPatience);
        again_.callOnTimeout([this] { showAnewUnlessActive(window_); });
    }

    void prepareToShow(std::uintptr_t window, const StartRequest& /*request*/) override {
        const QWindow* const ours = ownWindow(window);
        wasShown_ = ours != nullptr && ours->isVisible();
    }

    void bringToFront(std::uintptr_t window, const StartRequest& request) override {
        plasma_.keepOutOfTaskbar(window);
        if (!request.activationToken.empty()) {
            activateByToken(window, request.activationToken);
        }
        // A compositor activates a window that has just been shown by itself.
        if (!wasShown_ || activateAsTaskbar()) {
            return;
        }
        if (!request.activationToken.empty() || !showAnewUnlessActive(window)) {
            lookAgain(window);
        }
    }

private:
    // Once the compositor has had time to tell of changes that are under way. A window that becomes
    // active meanwhile has come forward, even if the user leaves it at once.
    void lookAgain(std::uintptr_t window) {
        const QWindow* const ours = ownWindow(window);
        window_ = window;
        again_.start();
        QObject::disconnect(activeChanged_);
        if (ours != nullptr) {
            activeChanged_ = QObject::connect(ours, &QWindow::activeChanged, &again_, [this, ours] {
                if (ours->isActive()) {
                    again_.stop();
                }
            });
        }
    }

    // False where the compositor does not let task bars activate windows, or is silent.
    bool activateAsTaskbar() {
        if (!listsToplevels_) {
            return false;
        }
        const auto toplevels = WaylandToplevels::ask(display_);
        if (!toplevels || toplevels->state() != WaylandToplevels::State::listed) {
            listsToplevels_ =
                !toplevels || toplevels->state() != WaylandToplevels::State::notListed;
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
        plasma_.keepOutOfTaskbar(ours->winId());
        return true;
    }

    const std::string display_;
    const std::string appId_;
    bool wasShown_ = false;
    bool listsToplevels_ = true;
    PlasmaShell plasma_;
    std::uintptr_t window_ = 0;  // of lookAgain()
    QMetaObject::Connection activeChanged_;
    QTimer again_;
};

}  // namespace

std::unique_ptr<WindowManagement> makeWaylandWindowManagement(std::string display,
                                                              std::string appId) {
    return std::make_unique<WaylandWindowManagement>(std::move(display), std::move(appId));
}

}  // namespace tavo
