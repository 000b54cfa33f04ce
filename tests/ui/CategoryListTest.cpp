#include <QAccessible>
#include <QScrollBar>
#include <QtTest/QTest>

#include <gtest/gtest.h>

#include "ui/CategoryList.h"

namespace tavo {
namespace {

class CategoryListTest : public testing::Test {
protected:
    CategoryListTest() {
        list.onSelect = [this](const std::string& id) { chosen.push_back(id); };
        list.resize(182, 300);
    }

    void show(std::vector<CategoryList::Row> rows) {
        list.setRows(std::move(rows));
        list.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&list));
    }

    CategoryList list{nullptr};
    std::vector<std::string> chosen;
};

const std::vector<CategoryList::Row> kRows{{"all", "Tutte", 0, true},
                                           {"work", "Lavoro", 0, false},
                                           {"a", "A", 1, false},
                                           {"b", "B", 2, false}};

TEST_F(CategoryListTest, a_click_chooses_the_row) {
    show(kRows);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.itemRect(1).center());
    EXPECT_EQ(chosen, std::vector<std::string>{"work"});
}

TEST_F(CategoryListTest, a_row_is_indented_by_14_for_each_level) {
    show(kRows);
    EXPECT_EQ(list.itemRect(0).left(), 0);
    EXPECT_EQ(list.itemRect(2).left(), 14);
    EXPECT_EQ(list.itemRect(3).left(), 28);
}

TEST_F(CategoryListTest, rows_are_34_tall_and_9_apart) {
    show(kRows);
    EXPECT_EQ(list.itemRect(0), QRect(0, 0, 164, 34));
    EXPECT_EQ(list.itemRect(1).top(), 43);
}

TEST_F(CategoryListTest, arrows_move_and_return_and_space_choose) {
    show(kRows);
    list.setFocus();
    QTest::keyClick(&list, Qt::Key_Down);
    QTest::keyClick(&list, Qt::Key_Return);
    QTest::keyClick(&list, Qt::Key_End);
    QTest::keyClick(&list, Qt::Key_Space);
    QTest::keyClick(&list, Qt::Key_Down);
    QTest::keyClick(&list, Qt::Key_Enter);
    EXPECT_EQ(chosen, (std::vector<std::string>{"work", "b", "b"}));
}

TEST_F(CategoryListTest, more_rows_than_fit_scroll) {
    std::vector<CategoryList::Row> rows;
    for (int i = 0; i < 5000; ++i) {
        rows.push_back({std::to_string(i), "Categoria " + std::to_string(i), 0, i == 0});
    }
    show(rows);
    list.setFocus();
    QTest::keyClick(&list, Qt::Key_End);
    EXPECT_TRUE(list.viewport()->rect().contains(list.itemRect(4999)));
}

TEST_F(CategoryListTest, a_click_on_a_scrolled_list_chooses_what_stands_there) {
    std::vector<CategoryList::Row> rows;
    for (int i = 0; i < 30; ++i) {
        rows.push_back({std::to_string(i), "Categoria " + std::to_string(i), 0, i == 0});
    }
    show(rows);
    list.verticalScrollBar()->setValue(list.verticalScrollBar()->maximum());
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.itemRect(28).center());
    EXPECT_EQ(chosen, std::vector<std::string>{"28"});
}

TEST_F(CategoryListTest, a_screen_reader_finds_the_rows_by_name_with_the_selected_one) {
    show(kRows);
    QAccessibleInterface* const tree = QAccessible::queryAccessibleInterface(&list);
    ASSERT_EQ(tree->childCount(), 4);
    EXPECT_EQ(tree->role(), QAccessible::List);
    EXPECT_EQ(tree->child(0)->text(QAccessible::Name), QStringLiteral("Tutte"));
    EXPECT_TRUE(tree->child(0)->state().selected);
    EXPECT_FALSE(tree->child(1)->state().selected);
    tree->child(1)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(chosen, std::vector<std::string>{"work"});
}

}  // namespace
}  // namespace tavo
