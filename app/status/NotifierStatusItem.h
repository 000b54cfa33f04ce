// The status item as a StatusNotifierItem, which the panel draws.
#pragma once

#include "app/status/StatusItemActions.h"
#include "platform/StatusItemHosts.h"

namespace tavo {

class StatusMenu;

// Gives the panel the symbol, the tool tip and the menu's entries. The panel opens the menu itself;
// for one that draws no menus the program's own opens, or the window where that cannot be placed.
// When a click is reported is up to the panel: some panels do so as soon as the button is pressed.
// Offered as long as the object lives. Main thread.
class NotifierStatusItem final {
public:
    // `hosts` and `menu` must outlive this object.
    NotifierStatusItem(StatusItemHosts& hosts, StatusMenu& menu, StatusItemActions actions);
    NotifierStatusItem(const NotifierStatusItem&) = delete;
    NotifierStatusItem& operator=(const NotifierStatusItem&) = delete;
    ~NotifierStatusItem();

private:
    void clicked(const StatusItemClick& click);

    StatusItemHosts& hosts_;
    StatusMenu& menu_;
    const StatusItemActions actions_;
    Subscription clicks_;
};

}  // namespace tavo
