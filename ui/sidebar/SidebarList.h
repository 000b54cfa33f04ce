// The list of categories in the sidebar.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ui/controls/ItemView.h"

namespace tavo {

// A row for each category; a click, Return or Space selects it. Scrolls when the rows do not fit,
// and paints only those in view. Keeps the scroll position and the row with the keyboard focus; all
// else is in the model. Main thread.
class SidebarList final : public ItemView {
public:
    struct Row {
        std::string id;
        std::string name;
        int depth = 0;
        bool selected = false;

        bool operator==(const Row&) const = default;
    };

    explicit SidebarList(QWidget* parent);

    void setRows(std::vector<Row> rows);

    // Called with the id of the category that the user selected.
    std::function<void(const std::string& id)> onSelect;

    int itemCount() const override { return static_cast<int>(rows_.size()); }
    const std::string& itemKey(int index) const override { return row(index).id; }
    QString itemName(int index) const override;
    // The level in the tree, for categories below another one.
    QString itemDescription(int index) const override;
    QRect itemRect(int index) const override;
    bool itemIsSelected(int index) const override { return row(index).selected; }
    void pressItem(int index) override;

    QSize sizeHint() const override;

    // The name as it is shown: shortened where it does not fit, in its middle where another name in
    // view would read the same.
    [[nodiscard]] QString elided(int index) const;

protected:
    bool viewportEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    [[nodiscard]] const Row& row(int index) const { return rows_[static_cast<std::size_t>(index)]; }
    [[nodiscard]] int rowAt(QPoint point) const;
    [[nodiscard]] QRect labelRect(int index) const;
    [[nodiscard]] QString fittedName(int index, Qt::TextElideMode mode) const;
    [[nodiscard]] std::map<int, QString> namesInView() const;
    void paintRow(QPainter& painter, int index, const QString& name) const;
    void setCurrent(int index) override;
    void updateItem(int index) override;
    void relayout() override;
    [[nodiscard]] int keyboardRow(const std::vector<Row>& before) const;

    std::vector<Row> rows_;
    std::optional<std::string> pressedId_;
};

}  // namespace tavo
