// The grid of application tiles.
#pragma once

#include <QAbstractScrollArea>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "catalogue/AppItem.h"
#include "support/Signal.h"
#include "ui/AccessibleItems.h"
#include "ui/AppTile.h"
#include "ui/Appearance.h"
#include "ui/GridLayout.h"

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

    // The applications to show from now on. The keyboard's tile stays with its application.
    void setApps(std::vector<AppItem> apps);

    // Back to the first row; for a list that answers another question than the last one.
    void scrollToTop();

    // Takes the keyboard, coming from above.
    void enter();

    // Called when the keyboard leaves the grid upwards.
    std::function<void()> onLeaveUp;

    int itemCount() const override { return static_cast<int>(apps_.size()); }
    QString itemName(int index) const override;
    QRect itemRect(int index) const override;
    bool itemIsSelected(int index) const override { return index == current_; }
    bool itemHasFocus(int index) const override { return hasFocus() && index == current_; }
    void pressItem(int index) override;

protected:
    bool viewportEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
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
    [[nodiscard]] Target targetAt(QPoint viewportPoint) const;
    [[nodiscard]] GridLayout::Range inView() const;
    [[nodiscard]] int scrollOffset() const;

    void relayout();
    void wantIcons();
    void updateTile(int index);
    void updateHover();
    void setHovered(int index);
    void setCurrent(int index);
    [[nodiscard]] int stepped(int key) const;
    void showMenu(int index, QPoint globalPosition);
    void showMenuOfCurrent();

    IconLoader& icons_;
    TileMaker makeTile_;
    Appearance appearance_;
    ThinScrollBar* scrollBar_;
    GridLayout layout_;
    std::vector<AppItem> apps_;
    std::map<int, AppTile> tiles_;  // those in view, made when first painted
    int current_ = -1;              // the keyboard's tile
    int hovered_ = -1;
    Part pressedPart_ = Part::None;
    std::string pressedPath_;
    Subscription iconLoaded_;
};

}  // namespace tavo
