// The status item as panels draw it themselves.
#pragma once

#include <functional>

#include "app/status/StatusItem.h"
#include "platform/StatusItemHosts.h"

namespace tavo {

// The panel opens the menu itself, and tells of clicks when it sees fit: some on the press. It is
// told the symbol, the tool tip and the menu's entries.
class NotifierStatusItem final : public StatusItem {
public:
    struct Actions {
        std::function<void(const StartRequest&)> show;
        std::function<void()> quit;
    };

    // `hosts` outlives this.
    NotifierStatusItem(StatusItemHosts& hosts, Actions actions);
    ~NotifierStatusItem() override;

private:
    Ground ground() override;
    void paint(Ground ground) override;
    void clicked(const StatusItemClick& click) const;

    StatusItemHosts& hosts_;
    const Actions actions_;
    Subscription clicks_;
};

}  // namespace tavo
