// The grid of application tiles.
#pragma once

#include <QAbstractScrollArea>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "catalogue/AppItem.h"
#include "support/Signal.h"
#include "ui/accessibility/AccessibleItems.h"
#include "ui/grid/AppTile.h"
#include "ui/grid/GridLayout.h"
#include "ui/look/Appearance.h"

namespace tavo {

class IconLoader;
class ThinScrollBar;

// Shows the applications it is given and makes tiles only for the rows in view and one row above
// and below. It keeps what is its own: scroll position, the tile under the pointer, the keyboard's
// tile. Main thread.
class TileGrid final : public QAbstractScrollArea, public AccessibleItems {
public:
    using TileMaker = std::function<AppTile(const AppItem&)>;

    // `icons` outlives the grid. `makeTile` is called for each tile that comes into view.
    TileGrid(IconLoader& icons, TileMaker makeTile, QWidget* parent);

    // Whether an application is a favourite, where that is known without making its tile.
    std::function<bool(const AppItem&)> isFavorite;

    // The applications to show from now on, with their present marks. The keyboard's tile stays
    // with its application.
    void setApps(std::vector<AppItem> apps);

    // Back to the first tile; for a list that answers another question than the last one.
    void startAnew();

    // Takes the keyboard, coming from above.
    void enter();

    // Called when the keyboard leaves the grid upwards.
    std::function<void()> onLeaveUp;

    int itemCount() const override { return static_cast<int>(apps_.size()); }
    const std::string& itemKey(int index) const override { return app(index).url.path; }
    QString itemName(int index) const override;
    QRect itemRect(int index) const override;
    bool itemIsSelected(int index) const override { return index == current_; }
    bool itemHasFocus(int index) const override { return hasFocus() && index == current_; }
    void pressItem(int index) override;
    void focusItem(int index) override;
    bool itemsHaveMenus() const override { return true; }
    void showItemMenu(int index) override;
    // The star, while it is shown.
    std::optional<Button> itemButton(int index) const override;
    void pressItemButton(int index) override;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    // Where on a tile the pointer acts.
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

    void relayout();
    void wantIcons();
    void updateTile(int index);

    void pointerAt(std::optional<QPoint> viewportPoint);
    void findPointer();
    void watchPopup();
    void setHovered(int index);

    void setCurrent(int index);
    void moveCurrent(int index);
    void scrollTo(int index);
    void announceFocusSoon();
    [[nodiscard]] int stepped(int key) const;
    void moveBy(int key);
    void showMenu(int index, QPoint globalPosition);

    IconLoader& icons_;
    TileMaker makeTile_;
    Appearance appearance_;
    ThinScrollBar* scrollBar_;
    GridLayout layout_;
    std::vector<AppItem> apps_;
    std::map<int, AppTile> tiles_;   // those in view, made when first painted
    double iconScale_ = 0;           // at which the icons in view were asked for
    int current_ = -1;               // the keyboard's tile
    std::optional<QPoint> pointer_;  // in the viewport, while nothing covers it there
    int hovered_ = -1;
    Part pressedPart_ = Part::None;
    std::string pressedPath_;
    Subscription iconLoaded_;
};

}  // namespace tavo
