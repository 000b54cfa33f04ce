// The program's item in the desktop's panel: one symbol, with a menu.
#pragma once

#include <functional>

#include "platform/StartRequest.h"

namespace tavo {

// What the user can do with the item.
struct StatusItemActions {
    std::function<void(const StartRequest&)> show;
    std::function<void()> quit;
};

// The tray item, shown as long as the object lives: one derived class for panels that draw
// StatusNotifierItems themselves, one for those that embed windows (XEmbed). Main thread.
class StatusItem {
public:
    StatusItem() = default;
    StatusItem(const StatusItem&) = delete;
    StatusItem& operator=(const StatusItem&) = delete;
    virtual ~StatusItem() = default;
};

}  // namespace tavo
