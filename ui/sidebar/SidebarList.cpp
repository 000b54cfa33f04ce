#include "ui/sidebar/SidebarList.h"

#include <QFontMetrics>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "ui/controls/ToolTip.h"
#include "ui/look/ElidedText.h"
#include "ui/look/Metrics.h"
#include "ui/look/Symbols.h"
#include "ui/look/TextSanitizer.h"
#include "ui/look/TextScale.h"
#include "ui/look/Texts.h"

namespace tavo {
namespace {

using namespace metrics;

int symbolSide() {
    return grownWithText(kSymbol);
}

int rowHeight() {
    return symbolSide() + 2 * kRowVertical;
}

int rowPitch() {
    return rowHeight() + kSidebarSpacing;
}

}  // namespace

SidebarList::SidebarList(QWidget* parent) : ItemView(texts::kCategories.toString(), parent) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    keepScrollBar();
}

void SidebarList::setRows(std::vector<Row> rows) {
    if (rows == rows_) {
        return;
    }
    const bool sameItems =
        std::equal(rows.begin(), rows.end(), rows_.begin(), rows_.end(),
                   [](const Row& one, const Row& other) { return one.id == other.id; });
    const std::vector<Row> before = std::exchange(rows_, std::move(rows));
    current_ = keyboardRow(before);
    if (sameItems) {
        announceItemDetails(*this);
        for (int index = 0; index < itemCount(); ++index) {
            if (row(index).selected != before[static_cast<std::size_t>(index)].selected) {
                announceSelection(*this, index);
            }
        }
    } else {
        announceItems(*this);
        updateGeometry();
        relayout();
    }
    if (hasFocus()) {
        announceFocusSoon();
    }
    viewport()->update();
}

// The row for the keyboard focus: that of the category that had it, unless another category has
// been selected since; then that one's.
int SidebarList::keyboardRow(const std::vector<Row>& before) const {
    const auto isSelected = [](const Row& row) { return row.selected; };
    const auto selected = std::find_if(rows_.begin(), rows_.end(), isSelected);
    const auto selectedBefore = std::find_if(before.begin(), before.end(), isSelected);
    const bool sameSelection = selected != rows_.end() && selectedBefore != before.end() &&
                               selected->id == selectedBefore->id;
    auto found = selected;
    if (sameSelection && current_ >= 0 && current_ < static_cast<int>(before.size())) {
        const std::string& id = before[static_cast<std::size_t>(current_)].id;
        found =
            std::find_if(rows_.begin(), rows_.end(), [&](const Row& row) { return row.id == id; });
        found = found == rows_.end() ? selected : found;
    }
    return found == rows_.end() ? 0 : static_cast<int>(found - rows_.begin());
}

QSize SidebarList::sizeHint() const {
    return {sidebarWidth() - kSidebarPadding,
            std::max(0, itemCount() * rowPitch() - kSidebarSpacing)};
}

void SidebarList::relayout() {
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setSingleStep(rowPitch());
    verticalScrollBar()->setRange(0, std::max(0, sizeHint().height() - viewport()->height()));
}

QRect SidebarList::itemRect(int index) const {
    // The sidebar's padding at the right is left to the scroll bar.
    const int width = viewport()->width() - kSidebarPadding;
    const int furthest =
        width - 2 * kRowHorizontal - symbolSide() - kSymbolSpacing - kSmallestLabel;
    const int indentation = std::min(row(index).depth * kIndentation, std::max(0, furthest));
    return {indentation, index * rowPitch() - verticalScrollBar()->value(), width - indentation,
            rowHeight()};
}

QRect SidebarList::labelRect(int index) const {
    return itemRect(index).adjusted(kRowHorizontal + symbolSide() + kSymbolSpacing, 0,
                                    -kRowHorizontal, 0);
}

QString SidebarList::itemName(int index) const {
    return displayText(row(index).name);
}

QString SidebarList::itemDescription(int index) const {
    const int depth = row(index).depth;
    return depth > 0 ? texts::kLevelPrefix.toString() + QString::number(depth + 1) : QString();
}

QString SidebarList::fittedName(int index, Qt::TextElideMode mode) const {
    return fitted(itemName(index), QFontMetrics(interfaceFont(kBody)), labelRect(index).width(),
                  mode);
}

std::map<int, QString> SidebarList::namesInView() const {
    const int offset = verticalScrollBar()->value();
    const int first = offset / rowPitch();
    const int end = std::min(itemCount(), (offset + viewport()->height()) / rowPitch() + 1);
    std::map<int, QString> names;
    for (int index = first; index < end; ++index) {
        names.emplace(index, fittedName(index, Qt::ElideRight));
    }
    const std::map<int, QString> cutAtEnd = names;
    spreadNames(
        first, end,
        [&](int index) {
            const QString& shown = cutAtEnd.at(index);
            return CutName{.cutAtEnd = shown == itemName(index) ? QString() : shown,
                           .name = row(index).name};
        },
        [&](int index) { names[index] = fittedName(index, Qt::ElideMiddle); });
    return names;
}

QString SidebarList::elided(int index) const {
    const std::map<int, QString> names = namesInView();
    const auto found = names.find(index);
    return found != names.end() ? found->second : fittedName(index, Qt::ElideRight);
}

int SidebarList::rowAt(QPoint point) const {
    const int index = (point.y() + verticalScrollBar()->value()) / rowPitch();
    return index >= 0 && index < itemCount() && itemRect(index).contains(point) ? index : -1;
}

void SidebarList::pressItem(int index) {
    const std::string id = row(index).id;  // a copy, because the call may replace the rows
    onSelect(id);
}

void SidebarList::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    const int offset = verticalScrollBar()->value();
    const int first = std::max(0, (event->rect().top() + offset) / rowPitch());
    const int last = std::min(itemCount() - 1, (event->rect().bottom() + offset) / rowPitch());
    const std::map<int, QString> names = namesInView();
    for (int index = first; index <= last; ++index) {
        paintRow(painter, index, names.at(index));
    }
}

void SidebarList::paintRow(QPainter& painter, int index, const QString& name) const {
    const QRect rect = itemRect(index);
    const bool focused = hasFocus() && index == current_;
    const auto stroke = [&](const QColor& color, double width) {
        const double half = width / 2;
        painter.setPen(QPen(color, width));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect).adjusted(half, half, -half, -half), kRowRadius - half,
                                kRowRadius - half);
    };
    if (row(index).selected) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(appearance_.selection);
        painter.drawRoundedRect(rect, kRowRadius, kRowRadius);
        stroke(appearance_.outline, 1);
    }
    if (focused) {
        stroke(appearance_.focusRing, appearance_.focusWidth);
    }
    const QRect symbol(rect.left() + kRowHorizontal, rect.top() + kRowVertical, symbolSide(),
                       symbolSide());
    drawSymbol(painter, symbol, categorySymbol(QString::fromStdString(row(index).name)),
               row(index).selected ? appearance_.accentOnSelection : appearance_.accent);
    painter.setFont(interfaceFont(kBody));
    painter.setPen(appearance_.text);
    drawElidedText(painter, labelRect(index), 0, Qt::AlignVCenter | Qt::AlignLeft, name);
}

void SidebarList::updateItem(int index) {
    viewport()->update(itemRect(index));
}

void SidebarList::scrollContentsBy(int, int) {
    viewport()->update();
}

void SidebarList::setCurrent(int index) {
    current_ = std::clamp(index, 0, itemCount() - 1);
    QScrollBar& bar = *verticalScrollBar();
    const int top = current_ * rowPitch();
    bar.setValue(std::min(std::max(bar.value(), top + rowHeight() - viewport()->height()), top));
    viewport()->update();
    announceCurrent();
}

void SidebarList::keyPressEvent(QKeyEvent* event) {
    if (rows_.empty() || (event->modifiers() & ~Qt::KeypadModifier) != 0) {
        event->ignore();
        return;
    }
    const int page = std::max(1, viewport()->height() / rowPitch());
    switch (event->key()) {
        case Qt::Key_Up:
            setCurrent(current_ - 1);
            break;
        case Qt::Key_Down:
            setCurrent(current_ + 1);
            break;
        case Qt::Key_Home:
            setCurrent(0);
            break;
        case Qt::Key_End:
            setCurrent(itemCount() - 1);
            break;
        case Qt::Key_PageUp:
            setCurrent(current_ - page);
            break;
        case Qt::Key_PageDown:
            setCurrent(current_ + page);
            break;
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            if (!event->isAutoRepeat()) {
                setCurrent(current_);
                pressItem(current_);
            }
            break;
        default:
            event->ignore();
    }
}

void SidebarList::mousePressEvent(QMouseEvent* event) {
    const int index = event->button() == Qt::LeftButton ? rowAt(event->position().toPoint()) : -1;
    pressedId_ = index >= 0 ? std::optional(row(index).id) : std::nullopt;
    // Passes on a press beside the rows to the window, which can be dragged there.
    event->setAccepted(index >= 0);
}

void SidebarList::mouseReleaseEvent(QMouseEvent* event) {
    const int index = rowAt(event->position().toPoint());
    const auto pressed = std::exchange(pressedId_, std::nullopt);
    // Selects only what was pressed: the row under the pointer may be another category's since the
    // press.
    if (index >= 0 && pressed == row(index).id) {
        pressItem(index);
    }
}

bool SidebarList::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto* const help = static_cast<QHelpEvent*>(event);
        const int index = rowAt(help->pos());
        const QString name = index >= 0 ? itemName(index) : QString();
        const QRect row = index >= 0 ? itemRect(index) : QRect(help->pos(), QSize(1, 1));
        showToolTip(index >= 0 && elided(index) != name ? toolTipText(name) : QString(), *this,
                    row.translated(viewport()->mapToGlobal(QPoint())));
        return true;
    }
    return ItemView::viewportEvent(event);
}

void SidebarList::changeEvent(QEvent* event) {
    ItemView::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        updateGeometry();
        relayout();
    } else if (event->type() == QEvent::EnabledChange) {
        pressedId_.reset();
    }
}

}  // namespace tavo
