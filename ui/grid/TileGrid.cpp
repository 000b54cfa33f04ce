#include "ui/grid/TileGrid.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "ui/controls/ToolTip.h"
#include "ui/grid/IconLoader.h"
#include "ui/look/ElidedText.h"
#include "ui/look/Metrics.h"
#include "ui/look/TextSanitizer.h"
#include "ui/look/Texts.h"

namespace tavo {

TileGrid::TileGrid(IconLoader& icons, TileMaker makeTile, QWidget* parent)
    : ItemView(texts::kApplications.toString(), parent),
      icons_(icons),
      makeTile_(std::move(makeTile)) {
    viewport()->setMouseTracking(true);
    layout_.tileHeight = AppTile::height();
    iconLoaded_ = icons_.loaded.subscribe([this](const std::string& path) {
        const GridLayout::Range range = inView();
        for (int index = range.first; index < range.end; ++index) {
            if (app(index).url.path == path) {
                updateItem(index);
            }
        }
    });
}

void TileGrid::setApps(std::vector<AppItem> apps) {
    const auto pathAt = [this](int index) {
        return index >= 0 ? app(index).url.path : std::string();
    };
    const std::string currentPath = pathAt(current_);
    const std::string hoveredPath = pathAt(hovered_);
    const bool sameItems = std::equal(
        apps_.begin(), apps_.end(), apps.begin(), apps.end(),
        [](const AppItem& one, const AppItem& other) { return one.url.path == other.url.path; });
    apps_ = std::move(apps);
    tiles_.clear();
    if (sameItems) {
        announceItemDetails(*this);
        viewport()->update();
        return;
    }
    if (current_ >= 0) {
        const int found = indexOf(currentPath);
        // After the tile with the focus is removed, the tile that follows it gets the focus.
        current_ = found >= 0 ? found : std::min(current_, itemCount() - 1);
    }
    hovered_ = hoveredPath.empty() ? -1 : indexOf(hoveredPath);
    layout_.count = itemCount();
    announceItems(*this);
    relayout();
    // An empty grid must not take the keyboard focus.
    setFocusPolicy(apps_.empty() ? Qt::NoFocus : Qt::TabFocus);
    if (hasFocus() && apps_.empty()) {
        onLeaveUp();
    } else if (hasFocus() && current_ >= 0 && app(current_).url.path != currentPath) {
        announceFocusSoon();
    }
}

int TileGrid::indexOf(const std::string& path) const {
    const auto found = std::find_if(apps_.begin(), apps_.end(),
                                    [&](const AppItem& item) { return item.url.path == path; });
    return found == apps_.end() ? -1 : static_cast<int>(found - apps_.begin());
}

void TileGrid::startAnew() {
    verticalScrollBar()->setValue(0);
    if (!hasFocus()) {
        current_ = -1;
    } else if (!apps_.empty()) {
        setCurrent(0);
    }
}

void TileGrid::enter() {
    if (!apps_.empty()) {
        setCurrent(0);
        setFocus(Qt::TabFocusReason);
    }
}

AppTile& TileGrid::tileAt(int index) {
    const auto known = tiles_.find(index);
    if (known != tiles_.end()) {
        return known->second;
    }
    AppTile& tile = tiles_.emplace(index, makeTile_(app(index))).first->second;
    tile.hovering = index == hovered_;
    return tile;
}

int TileGrid::scrollOffset() const {
    return verticalScrollBar()->value();
}

GridLayout::Range TileGrid::inView() const {
    return layout_.near(scrollOffset(), scrollOffset() + viewport()->height());
}

void TileGrid::relayout() {
    layout_.width = viewport()->width();
    const int surplus = std::max(0, layout_.contentHeight() - viewport()->height());
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setSingleStep(layout_.rowPitch() / 3);
    verticalScrollBar()->setRange(0, surplus);
    pointerAt(pointer_);
    wantIcons();
    viewport()->update();
}

void TileGrid::wantIcons() {
    iconScale_ = devicePixelRatioF();
    const GridLayout::Range range = inView();
    std::vector<std::string> paths;
    for (int index = range.first; index < range.end; ++index) {
        paths.push_back(app(index).url.path);
    }
    icons_.want(paths, iconScale_);
}

QString TileGrid::itemDescription(int index) const {
    return isFavorite && isFavorite(app(index)) ? texts::kFavorite.toString() : QString();
}

QRect TileGrid::itemRect(int index) const {
    return layout_.tile(index).translated(0, -scrollOffset());
}

QString TileGrid::itemName(int index) const {
    return texts::kOpenPrefix.toString() + displayText(app(index).name, 10'000);
}

void TileGrid::pressItem(int index) {
    const auto launch = tileAt(index).launch;
    launch();
}

void TileGrid::showItemMenu(int index) {
    setCurrent(index);
    showMenu(index, viewport()->mapToGlobal(itemRect(index).center()), PopupMenu::By::Key);
}

std::optional<AccessibleItems::Button> TileGrid::itemButton(int index) const {
    const bool favorite = isFavorite ? isFavorite(app(index)) : makeTile_(app(index)).favorite;
    if (!favorite && index != hovered_) {
        return std::nullopt;
    }
    return Button{AppTile::starName(favorite), AppTile::starRect(itemRect(index))};
}

void TileGrid::pressItemButton(int index) {
    const auto toggle = tileAt(index).toggleFavorite;
    toggle();
}

void TileGrid::updateItem(int index) {
    // The icon's shadow and the focus ring extend beyond the tile.
    viewport()->update(itemRect(index).adjusted(-AppTile::kReach, -AppTile::kReach, AppTile::kReach,
                                                AppTile::kReach));
}

void TileGrid::paintEvent(QPaintEvent* event) {
    if (iconScale_ != devicePixelRatioF()) {
        wantIcons();  // the window is on a screen of another scale now
    }
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QRect dirty = event->rect().adjusted(-AppTile::kReach, -AppTile::kReach, AppTile::kReach,
                                               AppTile::kReach);
    const GridLayout::Range range = inView();
    spreadNames(
        range.first, range.end,
        [this](int index) {
            return CutName{.cutAtEnd = tileAt(index).nameCutAtEnd(), .name = app(index).name};
        },
        [this](int index) { tileAt(index).cutInTheMiddle(); });
    for (int index = range.first; index < range.end; ++index) {
        const QRect rect = itemRect(index);
        if (rect.intersects(dirty)) {
            tileAt(index).paint(painter, rect,
                                {.appearance = appearance_,
                                 .icon = icons_.find(app(index).url.path),
                                 .current = isFramed(index)});
        }
    }
    std::erase_if(tiles_, [&](const auto& tile) {
        return tile.first < range.first || tile.first >= range.end;
    });
}

void TileGrid::scrollContentsBy(int, int) {
    pointerAt(pointer_);
    wantIcons();
    viewport()->update();
}

TileGrid::Target TileGrid::targetAt(QPoint viewportPoint) const {
    const QPoint point = viewportPoint + QPoint(0, scrollOffset());
    const int index = viewport()->rect().contains(viewportPoint) ? layout_.tileAt(point) : -1;
    if (index < 0) {
        return {};
    }
    const QRect tile = layout_.tile(index);
    if (AppTile::starRect(tile).contains(point)) {
        return {index, Part::Star};
    }
    return {index, AppTile::mainRect(tile).contains(point) ? Part::Main : Part::None};
}

// Updates the hovered tile for a pointer at `viewportPoint`, also after tiles have moved under it.
// The point is remembered, because asking the X11 server for it takes a round trip at each step of
// scrolling.
void TileGrid::pointerAt(std::optional<QPoint> viewportPoint) {
    pointer_ = viewportPoint;
    setHovered(pointer_ && isEnabled() ? targetAt(*pointer_).index : -1);
}

void TileGrid::setHovered(int index) {
    if (index == hovered_) {
        return;
    }
    const int before = std::exchange(hovered_, index);
    for (const int changed : {before, index}) {
        if (changed >= 0 && changed < itemCount()) {
            tileAt(changed).hovering = changed == hovered_;
            updateItem(changed);
            announceItemDetails(*this, changed);
        }
    }
}

void TileGrid::setCurrent(int index) {
    scrollTo(index);
    moveCurrent(index);
}

void TileGrid::moveCurrent(int index) {
    if (index == current_) {
        return;
    }
    const int before = std::exchange(current_, index);
    for (const int changed : {before, index}) {
        if (changed >= 0 && changed < itemCount()) {
            updateItem(changed);
            announceSelection(*this, changed);
        }
    }
    announceCurrent();
}

void TileGrid::scrollTo(int index) {
    const QRect tile = layout_.tile(index);
    QScrollBar& bar = *verticalScrollBar();
    const int top = tile.top() - metrics::kGridPadding;
    const int bottom = tile.bottom() + 1 + metrics::kGridPadding;
    if (top < bar.value()) {
        bar.setValue(top);
    } else if (bottom > bar.value() + viewport()->height()) {
        bar.setValue(bottom - viewport()->height());
    }
}

int TileGrid::stepped(int key) const {
    const int columns = layout_.columns();
    const int page = std::max(1, viewport()->height() / layout_.rowPitch()) * columns;
    const int last = itemCount() - 1;
    switch (key) {
        case Qt::Key_Left:
            return std::max(0, current_ - 1);
        case Qt::Key_Right:
            return std::min(last, current_ + 1);
        case Qt::Key_Up:
            return current_ - columns;
        case Qt::Key_Down:
            // Down from above a shorter last row goes to the last tile.
            return current_ / columns == last / columns ? current_
                                                        : std::min(last, current_ + columns);
        case Qt::Key_Home:
            return 0;
        case Qt::Key_End:
            return last;
        case Qt::Key_PageUp:
            return current_ - page >= 0 ? current_ - page : current_ % columns;
        case Qt::Key_PageDown:
            return std::min(last, current_ + page);
        default:
            return current_;
    }
}

void TileGrid::keyPressEvent(QKeyEvent* event) {
    if (apps_.empty() || (event->modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier)) != 0) {
        event->ignore();
        return;
    }
    if (current_ < 0) {
        setCurrent(0);
    }
    switch (event->key()) {
        case Qt::Key_Left:
        case Qt::Key_Right:
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_Home:
        case Qt::Key_End:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
            moveBy(event->key());
            break;
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            // Opens the application once while the key is held down.
            if (!event->isAutoRepeat()) {
                scrollTo(current_);
                pressItem(current_);
            }
            break;
        case Qt::Key_F10:
            // Qt makes context menu events for the Menu key only.
            if (event->modifiers().testFlag(Qt::ShiftModifier)) {
                showItemMenu(current_);
            } else {
                event->ignore();
            }
            break;
        default:
            event->ignore();
    }
}

void TileGrid::moveBy(int key) {
    const int next = stepped(key);
    if (next < 0) {
        onLeaveUp();
    } else {
        setCurrent(next);
    }
}

bool TileGrid::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::Enter) {
        pointerAt(static_cast<QEnterEvent*>(event)->position().toPoint());
    } else if (event->type() == QEvent::Leave) {
        pointerAt(std::nullopt);
    } else if (event->type() == QEvent::ToolTip) {
        const auto* const help = static_cast<QHelpEvent*>(event);
        const Target target = targetAt(help->pos());
        QString tip;
        if (target.part == Part::Main) {
            tip = tileAt(target.index).accessibleName();
        } else if (target.part == Part::Star) {
            tip = tileAt(target.index).starToolTip();
        }
        // Below the tile, so that neither its name nor its star is covered.
        const QRect tile =
            target.index >= 0 ? itemRect(target.index) : QRect(help->pos(), QSize(1, 1));
        showToolTip(toolTipText(tip), *this, tile.translated(viewport()->mapToGlobal(QPoint())));
        return true;
    }
    return ItemView::viewportEvent(event);
}

void TileGrid::mouseMoveEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    // Qt also sends move events when tiles scroll under a pointer that does not move.
    const bool moved = pointer_ && *pointer_ != point;
    pointerAt(point);
    if (moved && hasFocus() && hovered_ >= 0 && event->buttons() == Qt::NoButton) {
        moveCurrent(hovered_);  // does not scroll, so that no tile moves under the pointer
    }
}

void TileGrid::mousePressEvent(QMouseEvent* event) {
    const Target target = targetAt(event->position().toPoint());
    const bool pressed = event->button() == Qt::LeftButton && target.part != Part::None;
    pressedPart_ = pressed ? target.part : Part::None;
    pressedPath_ = pressed ? app(target.index).url.path : std::string();
}

void TileGrid::mouseReleaseEvent(QMouseEvent* event) {
    const Target target = targetAt(event->position().toPoint());
    // Opens only what was pressed: the tile under the pointer may be another one since the press.
    if (event->button() != Qt::LeftButton || target.part == Part::None ||
        target.part != pressedPart_ || app(target.index).url.path != pressedPath_) {
        return;
    }
    pressedPart_ = Part::None;
    if (target.part == Part::Main) {
        pressItem(target.index);
    } else {
        pressItemButton(target.index);
    }
}

void TileGrid::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() == QContextMenuEvent::Keyboard) {
        if (current_ >= 0) {
            showItemMenu(current_);
        }
        return;
    }
    const int index = targetAt(event->pos()).index;
    if (index >= 0) {
        showMenu(index, event->globalPos(), PopupMenu::By::Pointer);
    }
}

void TileGrid::showMenu(int index, QPoint globalPosition, PopupMenu::By by) {
    auto* const menu = new PopupMenu(displayText(app(index).name), this);
    tileAt(index).fillMenu(*menu);
    menu_ = menu;
    menuFramed_ = hasFocus();
    menu->openAt(globalPosition, by);
}

// An open submenu takes the keyboard focus; the tile that the menu belongs to keeps its frame.
bool TileGrid::isFramed(int index) const {
    return index == current_ &&
           (hasFocus() || (menuFramed_ && menu_ != nullptr && menu_->isVisible()));
}

void TileGrid::hideEvent(QHideEvent* event) {
    ItemView::hideEvent(event);
    pressedPart_ = Part::None;
    pointerAt(std::nullopt);
}

void TileGrid::changeEvent(QEvent* event) {
    ItemView::changeEvent(event);
    switch (event->type()) {
        case QEvent::FontChange:
            layout_.tileHeight = AppTile::height();
            tiles_.clear();
            relayout();
            break;
        case QEvent::EnabledChange:
            // A disabled grid is behind a sheet, and so is not under the pointer.
            pressedPart_ = Part::None;
            if (!isEnabled()) {
                pointerAt(std::nullopt);
            }
            break;
        default:
            break;
    }
}

}  // namespace tavo
