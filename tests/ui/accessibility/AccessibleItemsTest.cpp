#include <QWidget>
#include <memory>

#include <gtest/gtest.h>

#include "ui/accessibility/AccessibleItems.h"

namespace tavo {
namespace {

struct Entry {
    std::string key;
    QString name;
    std::optional<QString> button;
};

// A list of items, each ten pixels high.
class Lines final : public QWidget, public AccessibleItems {
public:
    explicit Lines(std::vector<Entry> lines) : entries(std::move(lines)) { resize(100, 50); }

    int itemCount() const override { return static_cast<int>(entries.size()); }
    const std::string& itemKey(int index) const override { return at(index).key; }
    QString itemName(int index) const override { return at(index).name; }
    QRect itemRect(int index) const override { return {0, 10 * index, 100, 10}; }
    bool itemIsSelected(int index) const override { return index == selected; }
    bool itemHasFocus(int index) const override { return index == focused; }
    void pressItem(int index) override { done << QStringLiteral("press ") + at(index).name; }
    void focusItem(int index) override { done << QStringLiteral("focus ") + at(index).name; }
    bool itemsHaveMenus() const override { return true; }
    void showItemMenu(int index) override { done << QStringLiteral("menu ") + at(index).name; }
    std::optional<Button> itemButton(int index) const override {
        const auto& name = at(index).button;
        return name ? std::optional(Button{*name, QRect(90, 10 * index, 10, 10)}) : std::nullopt;
    }
    void pressItemButton(int index) override {
        done << QStringLiteral("button of ") + at(index).name;
    }

    const Entry& at(int index) const { return entries[static_cast<std::size_t>(index)]; }

    void replace(std::vector<Entry> lines) {
        entries = std::move(lines);
        announceItems(*this);
    }

    std::vector<Entry> entries;
    int selected = -1;
    int focused = -1;
    QStringList done;
};

const QString kA = QStringLiteral("A");
const QString kB = QStringLiteral("B");
const QString kC = QStringLiteral("C");
const QString kStar = QStringLiteral("star");
const QString kUnstar = QStringLiteral("unstar");

const QString& press() {
    return QAccessibleActionInterface::pressAction();
}

class AccessibleItemsTest : public testing::Test {
protected:
    AccessibleItemsTest() { lines->show(); }

    QAccessibleInterface& list() { return *QAccessible::queryAccessibleInterface(lines.get()); }
    static void act(QAccessibleInterface& interface, const QString& action) {
        interface.actionInterface()->doAction(action);
    }

    std::unique_ptr<Lines> lines =
        std::make_unique<Lines>(std::vector<Entry>{{"a", kA, {}}, {"b", kB, {}}, {"c", kC, {}}});
};

TEST_F(AccessibleItemsTest, an_item_says_what_it_is_and_where) {
    lines->selected = 1;
    lines->focused = 2;
    ASSERT_EQ(list().childCount(), 3);
    QAccessibleInterface* const item = list().child(1);
    EXPECT_EQ(item->role(), QAccessible::ListItem);
    EXPECT_EQ(item->text(QAccessible::Name), kB);
    EXPECT_EQ(item->parent(), &list());
    EXPECT_EQ(item->rect().topLeft(), lines->mapToGlobal(QPoint(0, 10)));
    EXPECT_TRUE(item->state().selected);
    EXPECT_FALSE(item->state().focused);
    EXPECT_TRUE(list().child(2)->state().focused);
    EXPECT_EQ(list().focusChild(), list().child(2));
    EXPECT_EQ(list().childAt(item->rect().x(), item->rect().y()), item);
    EXPECT_EQ(item->childCount(), 0);
    EXPECT_EQ(list().child(3), nullptr);
    EXPECT_EQ(list().child(-1), nullptr);
}

TEST_F(AccessibleItemsTest, an_item_is_pressed_focused_and_shows_its_menu) {
    for (const QString& action : list().child(1)->actionInterface()->actionNames()) {
        act(*list().child(1), action);
    }
    EXPECT_EQ(lines->done, (QStringList{QStringLiteral("press B"), QStringLiteral("focus B"),
                                        QStringLiteral("menu B")}));
}

TEST_F(AccessibleItemsTest, an_item_keeps_its_place_in_a_screen_reader_wherever_it_moves) {
    QAccessibleInterface* const b = list().child(1);
    lines->replace({{"x", QStringLiteral("X"), {}}, {"c", kC, {}}, {"y", kC, {}}, {"b", kB, {}}});
    EXPECT_EQ(list().child(3), b);
    EXPECT_EQ(list().indexOfChild(b), 3);
    EXPECT_EQ(b->rect().top(), lines->mapToGlobal(QPoint(0, 30)).y());
    act(*b, press());
    EXPECT_EQ(lines->done, QStringList{QStringLiteral("press B")});
}

TEST_F(AccessibleItemsTest, an_item_that_is_gone_ends_with_its_button) {
    lines->replace({{"a", kA, kStar}, {"b", kB, kStar}});
    const QAccessible::Id item = QAccessible::uniqueId(list().child(1));
    const QAccessible::Id button = QAccessible::uniqueId(list().child(1)->child(0));
    lines->replace({{"a", kA, kStar}});
    EXPECT_EQ(QAccessible::accessibleInterface(item), nullptr);
    EXPECT_EQ(QAccessible::accessibleInterface(button), nullptr);
    EXPECT_EQ(list().child(0)->childCount(), 1);
}

TEST_F(AccessibleItemsTest, items_with_equal_keys_are_all_there) {
    lines->replace({{"a", kA, {}}, {"a", kB, {}}, {"a", kC, {}}});
    QAccessibleInterface* const first = list().child(0);
    QAccessibleInterface* const last = list().child(2);
    EXPECT_EQ(last->text(QAccessible::Name), kC);
    EXPECT_NE(first, last);
    lines->replace({{"a", kA, {}}, {"a", kB, {}}});
    EXPECT_EQ(list().childCount(), 2);
    EXPECT_EQ(list().child(1)->text(QAccessible::Name), kB);
}

TEST_F(AccessibleItemsTest, a_button_is_in_the_tree_only_while_it_is_shown) {
    QAccessibleInterface* const item = list().child(1);
    ASSERT_EQ(item->childCount(), 0);
    lines->entries[1].button = kStar;
    announceItemDetails(*lines, 1);
    ASSERT_EQ(item->childCount(), 1);
    QAccessibleInterface* const button = item->child(0);
    EXPECT_EQ(button->role(), QAccessible::Button);
    EXPECT_EQ(button->text(QAccessible::Name), kStar);
    EXPECT_EQ(button->parent(), item);
    EXPECT_EQ(item->indexOfChild(button), 0);
    EXPECT_EQ(button->rect().left(), lines->mapToGlobal(QPoint(90, 10)).x());
    EXPECT_FALSE(button->state().checkable);
    EXPECT_FALSE(button->state().invisible);
    act(*button, press());
    EXPECT_EQ(lines->done, QStringList{QStringLiteral("button of B")});

    // The item keeps its button, whose name changes.
    lines->entries[1].button = kUnstar;
    announceItemDetails(*lines);
    EXPECT_EQ(item->child(0), button);
    EXPECT_EQ(button->text(QAccessible::Name), kUnstar);

    const QAccessible::Id id = QAccessible::uniqueId(button);
    lines->entries[1].button.reset();
    announceItemDetails(*lines, 1);
    EXPECT_EQ(QAccessible::accessibleInterface(id), nullptr);
    EXPECT_EQ(item->childCount(), 0);
    EXPECT_EQ(item->child(0), nullptr);
}

TEST_F(AccessibleItemsTest, a_button_that_is_about_to_go_is_no_longer_seen) {
    lines->entries[1].button = kStar;
    QAccessibleInterface* const button = list().child(1)->child(0);
    lines->entries[1].button.reset();
    EXPECT_EQ(button->text(QAccessible::Name), QString());
    EXPECT_TRUE(button->state().invisible);
    EXPECT_EQ(list().child(1)->childCount(), 0);
}

TEST_F(AccessibleItemsTest, items_of_a_disabled_widget_say_so_and_do_nothing) {
    lines->entries[1].button = kStar;
    lines->setEnabled(false);
    QAccessibleInterface* const item = list().child(1);
    EXPECT_TRUE(item->state().disabled);
    EXPECT_TRUE(item->child(0)->state().disabled);
    for (const QString& action : item->actionInterface()->actionNames()) {
        act(*item, action);
    }
    act(*item->child(0), press());
    EXPECT_EQ(lines->done, QStringList());
    lines->setEnabled(true);
    EXPECT_FALSE(item->state().disabled);
}

TEST_F(AccessibleItemsTest, nothing_is_left_of_a_widget_that_is_gone) {
    lines->entries[0].button = kStar;
    const QAccessible::Id ids[] = {
        QAccessible::uniqueId(&list()), QAccessible::uniqueId(list().child(0)),
        QAccessible::uniqueId(list().child(0)->child(0)), QAccessible::uniqueId(list().child(2))};
    lines.reset();
    for (const QAccessible::Id id : ids) {
        EXPECT_EQ(QAccessible::accessibleInterface(id), nullptr);
    }
}

}  // namespace
}  // namespace tavo
