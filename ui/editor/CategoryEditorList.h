// The editor's list of categories.
#pragma once

#include <QScrollArea>
#include <functional>
#include <map>
#include <string>

namespace tavo {

class CategoryEditorRow;
class ThinScrollBar;

// One row a category, all equally tall, made when they come into view, take the keyboard or are
// asked for by a screen reader: a list of thousands opens as quickly as a short one. Main thread.
class CategoryEditorList final : public QScrollArea {
public:
    using RowMaker = std::function<CategoryEditorRow*(const std::string& id, QWidget* parent)>;

    CategoryEditorList(RowMaker makeRow, QWidget* parent);
    ~CategoryEditorList() override;

    // The categories to show, by id. Rows of categories that stay are kept.
    void setIds(std::vector<std::string> ids);

    // Makes the rows that exist read everything again.
    void refresh();

    void scrollToEnd();

    [[nodiscard]] int rowCount() const { return static_cast<int>(ids_.size()); }

    // The row at `index`, made if it was not; scrolled to when `reveal`.
    CategoryEditorRow& rowAt(int index, bool reveal = false);

    // The row that `widget` is in; -1 when it is in none.
    [[nodiscard]] int indexOf(const QWidget* widget) const;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void changeEvent(QEvent* event) override;

private:
    class Content;

    void arrange();
    void makeRowsInView();
    void removeRowsOutOfView();
    template<typename Predicate>
    void removeRows(Predicate isOver);
    [[nodiscard]] int pitch();

    RowMaker makeRow_;
    Content* content_;
    ThinScrollBar* scrollBar_;
    std::vector<std::string> ids_;
    std::map<std::string, CategoryEditorRow*> rows_;
    int pitch_ = 0;
};

}  // namespace tavo
