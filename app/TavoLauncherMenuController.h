// The program's presence on the desktop: the status item, its menu, and the window that both call.
#pragma once

#include <functional>
#include <memory>

#include "app/status/StatusItem.h"
#include "platform/StartRequest.h"
#include "platform/StatusItemHosts.h"
#include "support/Signal.h"

class QMenu;

namespace tavo {

class LauncherWindow;
class WindowManagement;

// An accessory: no entry in taskbar or pager, a status item for as long as the process lives
// wherever a panel takes one. Closing the window hides it, as long as something could bring it
// back: a status item, another start, the bus. Otherwise closing quits, and Esc, which would do
// so too easily, does nothing. Main thread.
class TavoLauncherMenuController {
public:
    struct World {
        LauncherWindow& window;
        WindowManagement& management;
        StatusItemHosts& hosts;
        std::function<bool()> reachable;  // whether another start would find this process
    };

    // What is in `world` outlives this.
    explicit TavoLauncherMenuController(World world);
    TavoLauncherMenuController(const TavoLauncherMenuController&) = delete;
    TavoLauncherMenuController& operator=(const TavoLauncherMenuController&) = delete;
    ~TavoLauncherMenuController();

    // Installs the status item now or when a host for it comes. After the first frame, which
    // it would delay.
    void applicationDidFinishLaunching();

    // The window in front, active, with the keyboard, whether it was closed, minimised, behind
    // others or on another desktop. `request` is what asked for it.
    void showLauncher(const StartRequest& request = {});

    // The window's close button, and Esc with nothing to clear.
    void closeLauncher();
    void escape();

    // Ends the program; everything it keeps is written already.
    void quit();

private:
    // The item, made anew for another kind of host, gone where there is none.
    void followHost();

    void statusButtonClicked(bool right);
    [[nodiscard]] bool canReturn() const;

    const World world_;
    std::unique_ptr<QMenu> contextMenu_;
    std::unique_ptr<StatusItem> statusItem_;
    StatusItemHost itemHost_ = StatusItemHost::None;  // that it was made for
    Subscription hostChanges_;
};

}  // namespace tavo
