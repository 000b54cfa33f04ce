#include "ui/TileGrid.h"

#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>
#include <algorithm>

#include "ui/DisplayText.h"
#include "ui/IconLoader.h"
#include "ui/Metrics.h"
#include "ui/Texts.h"
#include "ui/ThinScrollBar.h"

namespace tavo {

TileGrid::TileGrid(IconLoader& icons, TileMaker makeTile, QWidget* parent)
    : QAbstractScrollArea(parent),
      icons_(icons),
      makeTile_(std::move(makeTile)),
      appearance_(palette()),
      scrollBar_(new ThinScrollBar(*this)) {
    setFrameShape(QFrame::NoFrame);
    // By the keyboard only: a click acts, and typing goes on in the search.
    setFocusPolicy(Qt::TabFocus);
    setAccessibleName(texts::kApplications.toString());
    viewport()->setAutoFillBackground(false);
    viewport()->setMouseTracking(true);
    layout_.tileHeight = AppTile::height();
    iconLoaded_ = icons_.loaded.subscribe([this](const std::string& path) {
        const GridLayout::Range range = inView();
        for (int index = range.first; index < range.end; ++index) {
            if (app(index).url.path == path) {
                updateTile(index);
            }
        }
    });
}

void TileGrid::setApps(std::vector<AppItem> apps) {
    const std::string currentPath = current_ >= 0 ? app(current_).url.path : std::string();
    apps_ = std::move(apps);
    tiles_.clear();
    hovered_ = -1;
    if (!currentPath.empty()) {
        const auto found = std::find_if(apps_.begin(), apps_.end(), [&](const AppItem& item) {
            return item.url.path == currentPath;
        });
        // The next one takes the place of one that is gone.
        current_ = found != apps_.end() ? static_cast<int>(found - apps_.begin())
                                        : std::min(current_, itemCount() - 1);
    }
    relayout();
    announceItems(*this);
    if (hasFocus() && current_ >= 0) {
        announceFocus(*this, current_);
    }
}

void TileGrid::scrollToTop() {
    verticalScrollBar()->setValue(0);
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
    layout_.count = itemCount();
    const int surplus = std::max(0, layout_.contentHeight() - viewport()->height());
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setSingleStep(layout_.rowPitch() / 3);
    verticalScrollBar()->setRange(0, surplus);
    updateHover();
    wantIcons();
    viewport()->update();
}

void TileGrid::wantIcons() {
    const GridLayout::Range range = inView();
    std::vector<std::string> paths;
    for (int index = range.first; index < range.end; ++index) {
        paths.push_back(app(index).url.path);
    }
    icons_.want(paths, devicePixelRatioF());
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

void TileGrid::updateTile(int index) {
    // The shadow and the keyboard's frame reach beyond the tile.
    const int margin = IconLoader::margin();
    viewport()->update(itemRect(index).adjusted(-margin, -margin, margin, margin));
}

void TileGrid::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const int margin = IconLoader::margin();
    const QRect dirty = event->rect().adjusted(-margin, -margin, margin, margin);
    const GridLayout::Range range = inView();
    for (int index = range.first; index < range.end; ++index) {
        const QRect rect = itemRect(index);
        if (rect.intersects(dirty)) {
            tileAt(index).paint(painter, rect,
                                {.appearance = appearance_,
                                 .icon = icons_.find(app(index).url.path, devicePixelRatioF()),
                                 .current = hasFocus() && index == current_});
        }
    }
    std::erase_if(tiles_, [&](const auto& tile) {
        return tile.first < range.first || tile.first >= range.end;
    });
}

void TileGrid::resizeEvent(QResizeEvent*) {
    scrollBar_->place();
    relayout();
}

void TileGrid::scrollContentsBy(int, int) {
    updateHover();
    wantIcons();
    viewport()->update();
}

TileGrid::Target TileGrid::targetAt(QPoint viewportPoint) const {
    const QPoint point = viewportPoint + QPoint(0, scrollOffset());
    const int index = layout_.tileAt(point);
    if (index < 0) {
        return {};
    }
    const QRect tile = layout_.tile(index);
    if (AppTile::starRect(tile).contains(point)) {
        return {index, Part::Star};
    }
    return {index, AppTile::mainRect(tile).contains(point) ? Part::Main : Part::None};
}

void TileGrid::updateHover() {
    const QPoint pointer = viewport()->mapFromGlobal(QCursor::pos());
    setHovered(viewport()->underMouse() && viewport()->rect().contains(pointer)
                   ? targetAt(pointer).index
                   : -1);
}

void TileGrid::setHovered(int index) {
    if (index == hovered_) {
        return;
    }
    for (const auto& [tileIndex, hovering] : {std::pair(hovered_, false), std::pair(index, true)}) {
        if (tileIndex >= 0 && tileIndex < itemCount()) {
            tileAt(tileIndex).hovering = hovering;
            updateTile(tileIndex);
        }
    }
    hovered_ = index;
}

void TileGrid::setCurrent(int index) {
    if (index != current_ && current_ >= 0) {
        updateTile(current_);
    }
    current_ = index;
    const QRect tile = layout_.tile(index);
    QScrollBar& bar = *verticalScrollBar();
    const int top = tile.top() - metrics::kGridPadding;
    const int bottom = tile.bottom() + 1 + metrics::kGridPadding;
    if (top < bar.value()) {
        bar.setValue(top);
    } else if (bottom > bar.value() + viewport()->height()) {
        bar.setValue(bottom - viewport()->height());
    }
    updateTile(index);
    announceFocus(*this, index);
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
            // From above a shorter last row: to its end, not nowhere.
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
        case Qt::Key_PageDown: {
            const int next = stepped(event->key());
            if (next < 0) {
                onLeaveUp();
            } else {
                setCurrent(next);
            }
            break;
        }
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            pressItem(current_);
            break;
        case Qt::Key_F10:
            // The toolkit makes a menu event of the Menu key only.
            if (event->modifiers().testFlag(Qt::ShiftModifier)) {
                showMenuOfCurrent();
            } else {
                event->ignore();
            }
            break;
        default:
            event->ignore();
    }
}

bool TileGrid::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::Leave) {
        setHovered(-1);
    } else if (event->type() == QEvent::ToolTip) {
        const auto* const help = static_cast<QHelpEvent*>(event);
        const Target target = targetAt(help->pos());
        QString tip;
        if (target.part == Part::Main) {
            tip = tileAt(target.index).accessibleName();
        } else if (target.part == Part::Star) {
            tip = tileAt(target.index).starToolTip();
        }
        QToolTip::showText(help->globalPos(), toolTipText(tip), this);
        return true;
    }
    return QAbstractScrollArea::viewportEvent(event);
}

void TileGrid::mouseMoveEvent(QMouseEvent* event) {
    setHovered(targetAt(event->position().toPoint()).index);
}

void TileGrid::mousePressEvent(QMouseEvent* event) {
    const Target target = targetAt(event->position().toPoint());
    const bool pressed = event->button() == Qt::LeftButton && target.part != Part::None;
    pressedPart_ = pressed ? target.part : Part::None;
    pressedPath_ = pressed ? app(target.index).url.path : std::string();
}

void TileGrid::mouseReleaseEvent(QMouseEvent* event) {
    const Target target = targetAt(event->position().toPoint());
    // The same application, wherever its tile has moved meanwhile.
    if (event->button() != Qt::LeftButton || target.part == Part::None ||
        target.part != pressedPart_ || app(target.index).url.path != pressedPath_) {
        return;
    }
    pressedPart_ = Part::None;
    if (target.part == Part::Main) {
        pressItem(target.index);
    } else {
        const auto toggle = tileAt(target.index).toggleFavorite;
        toggle();
    }
}

void TileGrid::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() == QContextMenuEvent::Keyboard) {
        showMenuOfCurrent();
        return;
    }
    const int index = targetAt(event->pos()).index;
    if (index >= 0) {
        showMenu(index, event->globalPos());
    }
}

void TileGrid::showMenuOfCurrent() {
    if (current_ >= 0) {
        setCurrent(current_);
        showMenu(current_, viewport()->mapToGlobal(itemRect(current_).center()));
    }
}

void TileGrid::showMenu(int index, QPoint globalPosition) {
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    tileAt(index).fillMenu(*menu, appearance_);
    menu->popup(globalPosition);
}

void TileGrid::focusInEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusInEvent(event);
    // Only whoever comes by Tab has to be shown where he is; when the window or a closed menu gives
    // the keyboard back, nothing may move under the pointer.
    if (event->reason() != Qt::TabFocusReason && event->reason() != Qt::BacktabFocusReason) {
        viewport()->update();
    } else if (!apps_.empty()) {
        setCurrent(std::max(0, current_));
    }
}

void TileGrid::focusOutEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusOutEvent(event);
    if (current_ >= 0) {
        updateTile(current_);
    }
}

void TileGrid::changeEvent(QEvent* event) {
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        appearance_ = Appearance(palette());
        viewport()->update();
    }
}

}  // namespace tavo
