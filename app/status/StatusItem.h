// The program's item in the desktop's panel: one symbol, with a menu.
#pragma once

namespace tavo {

// Made for one kind of panel, and shown there for as long as the object lives. Main thread.
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
