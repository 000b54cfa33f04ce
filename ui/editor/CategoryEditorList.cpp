#include "ui/editor/CategoryEditorList.h"

#include <QAccessibleWidget>
#include <QLayout>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "ui/controls/Hover.h"
#include "ui/controls/ThinScrollBar.h"
#include "ui/editor/CategoryEditorRow.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/Texts.h"

namespace tavo {

// The widget that is scrolled: the rows, with a separator between two.
class CategoryEditorList::Content final : public QWidget {
public:
    explicit Content(CategoryEditorList& rows) : rows_(rows) {}

    [[nodiscard]] CategoryEditorList& rows() const { return rows_; }

protected:
    void paintEvent(QPaintEvent* event) override {
        if (rows_.rowCount() == 0) {
            return;
        }
        QPainter painter(this);
        const QColor line = Appearance(palette()).separator;
        const int pitch = rows_.pitch();
        for (int y = (event->rect().top() / pitch) * pitch; y <= event->rect().bottom();
             y += pitch) {
            if (y > 0 && y < height()) {
                painter.fillRect(0, y - 1, width(), 1, line);
            }
        }
    }

private:
    CategoryEditorList& rows_;
};

namespace {

// The accessibility tree contains all rows; those that do not exist are made when asked for.
template<typename Content>
class RowsInterface final : public QAccessibleWidget {
public:
    explicit RowsInterface(Content& content)
        : QAccessibleWidget(&content, QAccessible::List, texts::kCategories.toString()),
          rows_(content.rows()) {}

    int childCount() const override { return rows_.rowCount(); }
    QAccessibleInterface* child(int index) const override {
        return index >= 0 && index < rows_.rowCount()
                   ? QAccessible::queryAccessibleInterface(&rows_.rowAt(index))
                   : nullptr;
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        return rows_.indexOf(qobject_cast<const QWidget*>(child->object()));
    }

private:
    CategoryEditorList& rows_;
};

}  // namespace

CategoryEditorList::CategoryEditorList(RowMaker makeRow, QWidget* parent)
    : QScrollArea(parent),
      makeRow_(std::move(makeRow)),
      content_(new Content(*this)),
      scrollBar_(new ThinScrollBar(*this, 0)) {
    static const bool installed = [] {
        QAccessible::installFactory([](const QString&, QObject* object) -> QAccessibleInterface* {
            auto* const content = dynamic_cast<Content*>(object);
            return content == nullptr ? nullptr : new RowsInterface<Content>(*content);
        });
        return true;
    }();
    static_cast<void>(installed);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setMinimumHeight(metrics::kSmallestRowList);
    setWidget(content_);
    content_->setAutoFillBackground(false);
    viewport()->setAutoFillBackground(false);
}

CategoryEditorList::~CategoryEditorList() = default;

template<typename Predicate>
void CategoryEditorList::removeRows(Predicate isOver) {
    std::vector<CategoryEditorRow*> over;
    std::erase_if(rows_, [&](const auto& entry) {
        const bool remove = isOver(entry.first, *entry.second);
        if (remove) {
            over.push_back(entry.second);
        }
        return remove;
    });
    for (CategoryEditorRow* const row : over) {
        row->hide();
        // Deleted later, because a signal of its own delete button may have led here.
        row->deleteLater();
    }
}

void CategoryEditorList::setIds(std::vector<std::string> ids) {
    ids_ = std::move(ids);
    removeRows([this](const std::string& id, const CategoryEditorRow&) {
        return std::find(ids_.begin(), ids_.end(), id) == ids_.end();
    });
    arrange();
    refresh();
}

void CategoryEditorList::refresh() {
    for (const auto& [id, row] : rows_) {
        row->refresh();
    }
}

void CategoryEditorList::scrollToEnd() {
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

CategoryEditorRow& CategoryEditorList::rowAt(int index, bool reveal) {
    const std::string& id = ids_[static_cast<std::size_t>(index)];
    CategoryEditorRow*& row = rows_[id];
    if (row == nullptr) {
        row = makeRow_(id, content_);
        const int height = pitch_ != 0 ? pitch_ : pitch();
        row->setGeometry(0, index * height, content_->width(), height - 1);
        row->show();
        if (QAccessible::isActive()) {
            QAccessibleEvent event(row, QAccessible::ObjectCreated);
            QAccessible::updateAccessibility(&event);
        }
    }
    if (reveal) {
        QScrollBar& bar = *verticalScrollBar();
        const int top = index * pitch();
        bar.setValue(std::min(std::max(bar.value(), top + pitch() - viewport()->height()), top));
    }
    return *row;
}

int CategoryEditorList::indexOf(const QWidget* widget) const {
    while (widget != nullptr && widget->parentWidget() != content_) {
        widget = widget->parentWidget();
    }
    for (const auto& [id, row] : rows_) {
        if (row == widget) {
            return static_cast<int>(std::find(ids_.begin(), ids_.end(), id) - ids_.begin());
        }
    }
    return -1;
}

// The distance between two rows: the height that all rows have, and one pixel for the separator.
int CategoryEditorList::pitch() {
    if (pitch_ == 0 && !ids_.empty()) {
        CategoryEditorRow*& row = rows_[ids_.front()];
        if (row == nullptr) {
            row = makeRow_(ids_.front(), content_);
            row->show();
        }
        row->layout()->activate();  // measures anew after a change of the font
        pitch_ = row->sizeHint().height() + 1;
    }
    return pitch_;
}

void CategoryEditorList::arrange() {
    content_->resize(viewport()->width(), rowCount() * pitch());
    for (const auto& [id, row] : rows_) {
        const auto index = std::find(ids_.begin(), ids_.end(), id) - ids_.begin();
        row->setGeometry(0, static_cast<int>(index) * pitch(), content_->width(), pitch() - 1);
    }
    makeRowsInView();
    content_->update();
}

void CategoryEditorList::makeRowsInView() {
    if (ids_.empty()) {
        return;
    }
    const int top = verticalScrollBar()->value();
    const int first = std::max(0, top / pitch() - 1);
    const int last = std::min(rowCount() - 1, (top + viewport()->height()) / pitch() + 1);
    for (int index = first; index <= last; ++index) {
        rowAt(index);
    }
}

// With an accessibility client all rows are kept, because clients keep references to them. Else
// only the rows near the view are kept, and the one with the keyboard focus.
void CategoryEditorList::removeRowsOutOfView() {
    if (QAccessible::isActive()) {
        return;
    }
    const QRect near = viewport()
                           ->rect()
                           .translated(0, verticalScrollBar()->value())
                           .adjusted(0, -2 * pitch(), 0, 2 * pitch());
    removeRows([&](const std::string&, const CategoryEditorRow& row) {
        return !row.geometry().intersects(near) && !row.isAncestorOf(row.window()->focusWidget());
    });
}

void CategoryEditorList::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    scrollBar_->place();
    arrange();
}

void CategoryEditorList::scrollContentsBy(int dx, int dy) {
    QScrollArea::scrollContentsBy(dx, dy);
    makeRowsInView();
    removeRowsOutOfView();
    // Once a turn of the event loop, however many steps the list is scrolled by.
    if (!std::exchange(hoverPending_, true)) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                hoverPending_ = false;
                refreshHover(*window());
            },
            Qt::QueuedConnection);
    }
}

void CategoryEditorList::changeEvent(QEvent* event) {
    QScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        pitch_ = 0;
        if (content_ != nullptr) {
            arrange();
        }
    }
}

}  // namespace tavo
