// The grid of application tiles.
#pragma once

#include <QPointer>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "catalogue/AppItem.h"
#include "support/Signal.h"
#include "ui/controls/ItemView.h"
#include "ui/controls/PopupMenu.h"
#include "ui/grid/AppTile.h"
#include "ui/grid/GridLayout.h"

namespace tavo {

class IconLoader;

// Shows applications, and makes tiles only for the rows in view and one row above and below. Keeps
// the scroll position, the tile under the pointer and the tile with the keyboard focus; all else is
// in the model. Main thread.
class TileGrid final : public ItemView {
public:
    using TileMaker = std::function<AppTile(const AppItem&)>;

    // `icons` outlives the grid. `makeTile` is called for each tile that is scrolled into view.
    TileGrid(IconLoader& icons, TileMaker makeTile, QWidget* parent);

    // If set, tells whether an application is a favourite, so that no tile has to be made to know
    // it.
    std::function<bool(const AppItem&)> isFavorite;

    // The applications to show, in order. To be called again whenever something about them changes,
    // such as a favourite. The keyboard focus stays with its application.
    void setApps(std::vector<AppItem> apps);

    // Scrolls to the first tile. To be called after a new search or another category.
    void startAnew();

    // Takes the keyboard focus at the first tile, for a user who comes from the search field.
    void enter();

    // Called when the user leaves the grid with Up from the first row.
    std::function<void()> onLeaveUp;

    int itemCount() const override { return static_cast<int>(apps_.size()); }
    const std::string& itemKey(int index) const override { return app(index).url.path; }
    QString itemName(int index) const override;
    // Whether the application is a favourite.
    QString itemDescription(int index) const override;
    QRect itemRect(int index) const override;
    bool itemIsSelected(int index) const override { return index == current_; }
    void pressItem(int index) override;
    bool itemsHaveMenus() const override { return true; }
    void showItemMenu(int index) override;
    // The button of an item is the star, if the tile shows it at this moment.
    std::optional<Button> itemButton(int index) const override;
    void pressItemButton(int index) override;

protected:
    bool viewportEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    // The area of a tile that the pointer is over.
    enum class Part { None, Main, Star };
    struct Target {
        int index = -1;
        Part part = Part::None;
    };

    AppTile& tileAt(int index);
    [[nodiscard]] const AppItem& app(int index) const {
        return apps_[static_cast<std::size_t>(index)];
    }
    [[nodiscard]] int indexOf(const std::string& path) const;
    [[nodiscard]] Target targetAt(QPoint viewportPoint) const;
    [[nodiscard]] GridLayout::Range inView() const;
    [[nodiscard]] int scrollOffset() const;

    void relayout() override;
    void wantIcons();
    void updateItem(int index) override;

    void pointerAt(std::optional<QPoint> viewportPoint);
    void setHovered(int index);

    void setCurrent(int index) override;
    void moveCurrent(int index);
    void scrollTo(int index);
    [[nodiscard]] int stepped(int key) const;
    void moveBy(int key);
    void showMenu(int index, QPoint globalPosition, PopupMenu::By by);
    [[nodiscard]] bool isFramed(int index) const;

    IconLoader& icons_;
    TileMaker makeTile_;
    GridLayout layout_;
    std::vector<AppItem> apps_;
    std::map<int, AppTile> tiles_;   // those in view; each is made when it is first painted
    double iconScale_ = 0;           // the device pixel ratio that icons were last wanted for
    std::optional<QPoint> pointer_;  // in the viewport; empty if it is not over the visible grid
    int hovered_ = -1;
    Part pressedPart_ = Part::None;
    QPointer<QWidget> menu_;   // the open menu of a tile
    bool menuFramed_ = false;  // whether the current tile had its frame when the menu opened
    std::string pressedPath_;
    Subscription iconLoaded_;
};

}  // namespace tavo
