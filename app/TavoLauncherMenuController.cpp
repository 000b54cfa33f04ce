#include "app/TavoLauncherMenuController.h"

#include <QCoreApplication>
#include <utility>

#include "app/status/NotifierStatusItem.h"
#include "app/status/StatusMenu.h"
#include "app/status/XEmbedStatusItem.h"
#include "platform/WindowManagement.h"
#include "ui/window/LauncherWindow.h"

namespace tavo {

TavoLauncherMenuController::TavoLauncherMenuController(LauncherWindow& window,
                                                       WindowManagement& management,
                                                       StatusItemHosts& hosts,
                                                       std::function<bool()> reachable)
    : window_(window), management_(management), hosts_(hosts), reachable_(std::move(reachable)) {}

TavoLauncherMenuController::~TavoLauncherMenuController() = default;

void TavoLauncherMenuController::applicationDidFinishLaunching() {
    contextMenu_ = std::make_unique<StatusMenu>(statusItemActions());
    hostChanges_ = hosts_.changed.subscribe([this] { followHost(); });
    followHost();
}

void TavoLauncherMenuController::followHost() {
    switch (hosts_.host()) {
        case StatusItemHost::None:
            break;
        case StatusItemHost::Notifier:
            embeddedItem_.reset();
            if (!notifierItem_) {
                notifierItem_ = std::make_unique<NotifierStatusItem>(hosts_, *contextMenu_,
                                                                     statusItemActions());
            }
            break;
        case StatusItemHost::Embedding:
            if (!embeddedItem_) {
                embeddedItem_ =
                    std::make_unique<XEmbedStatusItem>(*contextMenu_, statusItemActions());
            }
            break;
    }
}

StatusItemActions TavoLauncherMenuController::statusItemActions() {
    return {.show = [this](const StartRequest& request) { showLauncher(request); },
            .quit = [this] { quit(); }};
}

void TavoLauncherMenuController::showLauncher(const StartRequest& request) {
    management_.prepareToShow(window_.winId(), request);
    window_.present();
    management_.bringToFront(window_.winId(), request);
}

void TavoLauncherMenuController::closeLauncher() {
    if (canReturn()) {
        window_.hide();
    } else {
        quit();
    }
}

void TavoLauncherMenuController::escape() {
    if (canReturn()) {
        window_.hide();
    }
}

// exit() asks no window whether it may close; the launcher window would refuse. The window is
// hidden first, so that nothing is typed into it while the program ends.
void TavoLauncherMenuController::quit() {
    window_.hide();
    QCoreApplication::exit(0);
}

bool TavoLauncherMenuController::canReturn() const {
    return reachable_() || (contextMenu_ && hosts_.host() != StatusItemHost::None);
}

}  // namespace tavo
