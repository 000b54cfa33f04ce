// The combo box for a category's parent.
#pragma once

#include <QComboBox>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "catalogue/LauncherCategory.h"
#include "ui/accessibility/AccessibleItems.h"
#include "ui/editor/Binding.h"

namespace tavo {

// Offers the top level and all candidates, as they were at the last refresh(). A parent that is not
// among the candidates shows as empty and is kept until the user picks another one. Main thread.
class ParentCategoryPicker final : public QComboBox, public AccessibleItems {
public:
    using Candidates = std::function<std::span<const LauncherCategory>()>;

    ParentCategoryPicker(Binding<std::optional<std::string>> parentID, Candidates candidates,
                         QWidget* parent);

    // Reads the candidates and the current parent again.
    void refresh();

    QSize sizeHint() const override;

    // For screen readers: a combo box whose entries can be pressed.
    int itemCount() const override { return count(); }
    const std::string& itemKey(int index) const override;
    QString itemName(int index) const override { return itemText(index); }
    QRect itemRect(int) const override { return rect(); }
    bool itemIsSelected(int index) const override { return index == currentIndex(); }
    bool itemHasFocus(int) const override { return false; }
    void pressItem(int index) override;
    void focusItem(int) override { setFocus(); }
    QString itemsValue() const override { return currentText(); }
    std::optional<bool> itemsExpanded() const override { return expanded_; }
    void expandItems() override { showPopup(); }

    void showPopup() override;

    bool eventFilter(QObject* object, QEvent* event) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    class Entries;

    void setExpanded(bool expanded);

    Binding<std::optional<std::string>> parentID_;
    Candidates candidates_;
    Entries* entries_;
    bool expanded_ = false;  // whether the list of entries is open
};

}  // namespace tavo
