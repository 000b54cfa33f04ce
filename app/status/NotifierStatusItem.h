// The status item as a StatusNotifierItem, which the panel draws.
#pragma once

#include <functional>

#include "app/status/StatusItem.h"
#include "platform/StatusItemHosts.h"

namespace tavo {

// Gives the panel the symbol, the tool tip and the menu's entries. The panel opens the menu itself.
// When a click is reported is up to the panel: some panels do so as soon as the button is pressed.
class NotifierStatusItem final : public StatusItem {
public:
    struct Actions {
        std::function<void(const StartRequest&)> show;
        std::function<void()> quit;
    };

    // `hosts` must outlive this object.
    NotifierStatusItem(StatusItemHosts& hosts, Actions actions);
    ~NotifierStatusItem() override;

private:
    void clicked(const StatusItemClick& click) const;

    StatusItemHosts& hosts_;
    const Actions actions_;
    Subscription clicks_;
};

}  // namespace tavo
