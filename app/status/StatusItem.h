// The program's item in the desktop's panel: one symbol, with a menu.
#pragma once

namespace tavo {

// The tray item, shown as long as the object lives: one derived class for panels that draw
// StatusNotifierItems themselves, one for those that embed windows (XEmbed). Main thread.
class StatusItem {
public:
    StatusItem() = default;
    StatusItem(const StatusItem&) = delete;
    StatusItem& operator=(const StatusItem&) = delete;
    virtual ~StatusItem() = default;

    // Opens the menu at the item's edge, where the panel leaves that to the program.
    virtual void openMenu() {}
};

}  // namespace tavo
