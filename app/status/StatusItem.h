// The item in the desktop's panel.
#pragma once

#include <QObject>
#include <optional>

#include "app/status/StatusSymbol.h"

namespace tavo {

// One symbol, as square as the panel makes it, tinted to be seen on the panel. Made for one kind of
// host. Main thread.
class StatusItem : public QObject {
public:
    // Looks at the panel, soon, and is tinted for it.
    void look();

    // Opens the menu at the item's edge, where that is left to us.
    virtual void openMenu() {}

protected:
    StatusItem();

    // Of the panel, as it is shown now.
    [[nodiscard]] virtual Ground ground() = 0;

    virtual void paint(Ground ground) = 0;

    // Looks at once.
    void tint();

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    std::optional<Ground> painted_;  // for this one
    bool looking_ = false;
};

}  // namespace tavo
