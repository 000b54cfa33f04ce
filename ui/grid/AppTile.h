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

// A tile as a plain value. The grid makes it for the rows in view and discards it when the model
// changes; all actions go through its closures. Of its own it keeps only whether the pointer is
// over it, and measurements. Main thread.
struct AppTile {
    AppItem app;
    bool favorite = false;
    bool hidden = false;
    std::vector<LauncherCategory> categories;  // offered in the menu in this order
    std::set<std::string> assignedCategoryIDs;
    std::function<void()> launch;
    std::function<void()> toggleFavorite;
    std::function<void(const LauncherCategory&)> toggleCategory;
    std::function<void()> toggleHidden;

    bool hovering = false;

    // The accessible name, and the tool tip of the main area.
    [[nodiscard]] QString accessibleName() const;
    // The tool tip of the star says what pressing it will do.
    [[nodiscard]] QString starToolTip() const { return starName(favorite); }
    static QString starName(bool favorite);

    // The star is shown on favourites and, under the pointer, on all other tiles.
    [[nodiscard]] bool showsStar() const { return hovering || favorite; }

    // How far the icon's shadow, a long name and the focus ring may extend beyond the tile.
    static constexpr int kReach = 13;

    // The height of all tiles, with and without a star.
    static int height();

    // Areas inside `tile`. A click on the main area opens the application.
    static QRect iconRect(const QRect& tile);
    static QRect mainRect(const QRect& tile);
    static QRect starRect(const QRect& tile);

    struct Look {
        const Appearance& appearance;
        const QImage* icon = nullptr;  // with its shadow; null until it is loaded
        bool current = false;          // whether the keyboard focus is on this tile
    };
    void paint(QPainter& painter, const QRect& tile, const Look& look) const;

    // Fills `menu` with the entries for favourite, hidden and the categories. The entries keep
    // copies of all that they need.
    void fillMenu(PopupMenu& menu) const;

    // The name as it is painted: whole, or shortened at its end.
    [[nodiscard]] const QString& shownName() const { return measured().shown; }

    // The name shortened at its end, also after cutInTheMiddle(). Empty if the whole name fits.
    [[nodiscard]] const QString& nameCutAtEnd() const { return measured().cutAtEnd; }

    // Shortens the name in its middle from now on, for two names that begin alike.
    void cutInTheMiddle();

    // Made when it is first asked for, and kept: measuring a name takes longer than painting it.
    struct Name {
        QString shown;
        QString cutAtEnd;
    };
    mutable Name name = {};

private:
    [[nodiscard]] const Name& measured() const;
    void paintStar(QPainter& painter, const QRect& box, const Appearance& appearance) const;
};

}  // namespace tavo
