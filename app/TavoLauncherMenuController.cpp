#include "app/TavoLauncherMenuController.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMenu>
#include <utility>

#include "app/status/NotifierStatusItem.h"
#include "app/status/XEmbedStatusItem.h"
#include "platform/WindowManagement.h"
#include "ui/look/Texts.h"
#include "ui/window/LauncherWindow.h"

namespace tavo {
namespace {

// An open QMenu ignores the shortcuts that it shows, so this one takes Ctrl+Q itself.
class StatusMenu final : public QMenu {
public:
    explicit StatusMenu(std::function<void()> quit) : quit_(std::move(quit)) {
        setAccessibleName(texts::kProgramName.toString());
    }

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (event->keyCombination() == (Qt::CTRL | Qt::Key_Q)) {
            close();
            quit_();
        } else {
            QMenu::keyPressEvent(event);
        }
    }

private:
    const std::function<void()> quit_;
};

}  // namespace

TavoLauncherMenuController::TavoLauncherMenuController(LauncherWindow& window,
                                                       WindowManagement& management,
                                                       StatusItemHosts& hosts,
                                                       std::function<bool()> reachable)
    : window_(window), management_(management), hosts_(hosts), reachable_(std::move(reachable)) {}

TavoLauncherMenuController::~TavoLauncherMenuController() = default;

void TavoLauncherMenuController::applicationDidFinishLaunching() {
    contextMenu_ = std::make_unique<StatusMenu>([this] { quit(); });
    QObject::connect(contextMenu_->addAction(texts::kOpenLauncher.toString()), &QAction::triggered,
                     contextMenu_.get(), [this] { showLauncher(); });
    contextMenu_->addSeparator();
    QAction* const quitting = contextMenu_->addAction(texts::kQuitLauncher.toString());
    quitting->setShortcut(Qt::CTRL | Qt::Key_Q);
    quitting->setShortcutVisibleInContextMenu(true);
    QObject::connect(quitting, &QAction::triggered, contextMenu_.get(), [this] { quit(); });
    hostChanges_ = hosts_.changed.subscribe([this] { followHost(); });
    followHost();
}

void TavoLauncherMenuController::followHost() {
    const StatusItemHost host = hosts_.host();
    if (host == itemHost_) {
        return;
    }
    itemHost_ = host;
    statusItem_.reset();
    switch (host) {
        case StatusItemHost::None:
            break;
        case StatusItemHost::Notifier:
            statusItem_ = std::make_unique<NotifierStatusItem>(
                hosts_, NotifierStatusItem::Actions{
                            .show = [this](const StartRequest& r) { showLauncher(r); },
                            .quit = [this] { quit(); }});
            break;
        case StatusItemHost::Embedding:
            statusItem_ = std::make_unique<XEmbedStatusItem>(
                *contextMenu_, [this](bool right) { statusButtonClicked(right); });
            break;
    }
}

void TavoLauncherMenuController::statusButtonClicked(bool right) {
    if (right && contextMenu_ && statusItem_) {
        statusItem_->openMenu();
    } else {
        showLauncher();
    }
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
    return reachable_() || (statusItem_ && hosts_.host() == itemHost_);
}

}  // namespace tavo
