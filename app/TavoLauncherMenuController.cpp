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

// While it is open the keyboard is the menu's, its entries' shortcuts included.
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

TavoLauncherMenuController::TavoLauncherMenuController(World world) : world_(std::move(world)) {}

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
    hostChanges_ = world_.hosts.changed.subscribe([this] { followHost(); });
    followHost();
}

void TavoLauncherMenuController::followHost() {
    const StatusItemHost host = world_.hosts.host();
    if (host == itemHost_) {
        if (statusItem_) {
            statusItem_->look();
        }
        return;
    }
    itemHost_ = host;
    statusItem_.reset();
    switch (host) {
        case StatusItemHost::None:
            break;
        case StatusItemHost::Notifier:
            statusItem_ = std::make_unique<NotifierStatusItem>(
                world_.hosts, NotifierStatusItem::Actions{
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
    world_.management.prepareToShow(world_.window.winId(), request);
    world_.window.present();
    world_.management.bringToFront(world_.window.winId(), request);
}

void TavoLauncherMenuController::closeLauncher() {
    if (canReturn()) {
        world_.window.hide();
    } else {
        quit();
    }
}

void TavoLauncherMenuController::escape() {
    if (canReturn()) {
        world_.window.hide();
    }
}

// At once, where asking every window whether it would close might end with a no. What the user
// types meanwhile finds no window.
void TavoLauncherMenuController::quit() {
    world_.window.hide();
    QCoreApplication::exit(0);
}

bool TavoLauncherMenuController::canReturn() const {
    return world_.reachable() || (statusItem_ && world_.hosts.host() == itemHost_);
}

}  // namespace tavo
