// One application in the grid: what it shows and what can be done with it.
#pragma once

#include <QRect>
#include <QString>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "catalogue/AppItem.h"
#include "catalogue/LauncherCategory.h"

class QImage;
class QPainter;
class QWidget;

namespace tavo {

struct Appearance;
class PopupMenu;

// A view of plain values, made by the grid for the rows in view and thrown away when the model
// changes; everything it does goes out through its closures. All it keeps of its own is whether
// the pointer is over it, and what it measured. Main thread.
struct AppTile {
    AppItem app;
    bool favorite = false;
    bool hidden = false;
    std::vector<LauncherCategory> categories;  // offered in the menu, in this order
    std::set<std::string> assignedCategoryIDs;
    std::function<void()> launch;
    std::function<void()> toggleFavorite;
    std::function<void(const LauncherCategory&)> toggleCategory;
    std::function<void()> toggleHidden;

    bool hovering = false;

    // Also the tool tip of the main area.
    [[nodiscard]] QString accessibleName() const;
    // What a press of the star would do.
    [[nodiscard]] QString starToolTip() const { return starName(favorite); }
    static QString starName(bool favorite);

    // The star is shown on favourites, and on the others under the pointer.
    [[nodiscard]] bool showsStar() const { return hovering || favorite; }

    // How far the shadow, a long name and the keyboard's frame may reach beyond the tile.
    static constexpr int kReach = 13;

    // All tiles are equally tall, with or without their star.
    static int height();

    // Areas within `tile`. The main area takes the click that opens.
    static QRect iconRect(const QRect& tile);
    static QRect mainRect(const QRect& tile);
    static QRect starRect(const QRect& tile);

    struct Look {
        const Appearance& appearance;
        const QImage* icon = nullptr;  // with its shadow; null leaves the place empty
        bool current = false;          // the keyboard's tile
    };
    void paint(QPainter& painter, const QRect& tile, const Look& look) const;

    // Fills `menu` with the marks: hidden, favourite, categories. Its entries keep what they need.
    void fillMenu(PopupMenu& menu) const;

    // The name as it was last painted: measuring it costs more than painting.
    mutable QString shownName = {};

private:
    void paintStar(QPainter& painter, const QRect& box, const Appearance& appearance) const;
};

}  // namespace tavo
