// The status item, its menu, and showing and hiding of the launcher window.
#pragma once

#include <functional>
#include <memory>

#include "app/status/StatusItemActions.h"
#include "platform/StartRequest.h"
#include "platform/StatusItemHosts.h"
#include "support/Signal.h"

namespace tavo {

class LauncherWindow;
class NotifierStatusItem;
class StatusMenu;
class WindowManagement;
class XEmbedStatusItem;

// An accessory application: not in taskbar or pager, but with a status item wherever a panel takes
// one. Closing the window hides it while something could bring it back: a status item, another
// start, the bus. Otherwise closing quits, and Esc, which is pressed too easily for that, does
// nothing. Main thread.
class TavoLauncherMenuController {
public:
    // `reachable` answers whether another start would find this process. The references must
    // outlive this object.
    TavoLauncherMenuController(LauncherWindow& window, WindowManagement& management,
                               StatusItemHosts& hosts, std::function<bool()> reachable);
    TavoLauncherMenuController(const TavoLauncherMenuController&) = delete;
    TavoLauncherMenuController& operator=(const TavoLauncherMenuController&) = delete;
    ~TavoLauncherMenuController();

    // Makes the status item now or when a panel for it comes. Called after the first frame, which
    // it would delay.
    void applicationDidFinishLaunching();

    // Brings the window to the front, active and with the keyboard focus, from wherever it is:
    // closed, minimised, behind others, on another desktop. `request` is what lets the window come
    // to the front.
    void showLauncher(const StartRequest& request);

    // Call when the window's close button is clicked.
    void closeLauncher();

    // Call when Esc is pressed and there is no search to clear.
    void escape();

    // Ends the program. Nothing has to be saved: each change was written at once.
    void quit();

private:
    // Makes the item for the kind of panel that there is now. Removes an embedded item for one that
    // draws items itself. Once offered, an item stays so: a panel may still list it when it
    // returns.
    void followHost();

    StatusItemActions statusItemActions();
    [[nodiscard]] bool canReturn() const;

    LauncherWindow& window_;
    WindowManagement& management_;
    StatusItemHosts& hosts_;
    const std::function<bool()> reachable_;
    std::unique_ptr<StatusMenu> contextMenu_;
    std::unique_ptr<NotifierStatusItem> notifierItem_;
    std::unique_ptr<XEmbedStatusItem> embeddedItem_;
    Subscription hostChanges_;
};

}  // namespace tavo
