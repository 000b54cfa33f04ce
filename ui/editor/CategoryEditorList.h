// The list of categories in the editor.
#pragma once

#include <QScrollArea>
#include <functional>
#include <map>
#include <string>

namespace tavo {

class CategoryEditorRow;
class ThinScrollBar;

// A row for each category, all of the same height. A row is made when it is scrolled into view,
// gets the keyboard focus or is asked for by an accessibility client, so that a list of thousands
// opens as quickly as a short one. Main thread.
class CategoryEditorList final : public QScrollArea {
public:
    using RowMaker = std::function<CategoryEditorRow*(const std::string& id, QWidget* parent)>;

    CategoryEditorList(RowMaker makeRow, QWidget* parent);
    ~CategoryEditorList() override;

    // The ids of the categories to show, in order. Rows of categories that stay are kept.
    void setIds(std::vector<std::string> ids);

    // Makes all existing rows read their values again.
    void refresh();

    void scrollToEnd();

    [[nodiscard]] int rowCount() const { return static_cast<int>(ids_.size()); }

    // The row at `index`, which is made if needed and, if `reveal`, scrolled to.
    CategoryEditorRow& rowAt(int index, bool reveal = false);

    // The index of the row that contains `widget`; -1 if none does.
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
    bool hoverPending_ = false;
};

}  // namespace tavo
