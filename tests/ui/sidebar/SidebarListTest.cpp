#include <QAccessible>
#include <QApplication>
#include <QPushButton>
#include <QScrollBar>
#include <QtTest/QTest>

#include <gtest/gtest.h>

#include "tests/ui/ActiveWindow.h"
#include "tests/ui/ScreenReader.h"
#include "ui/look/Metrics.h"
#include "ui/sidebar/SidebarList.h"

namespace tavo {
namespace {

class SidebarListTest : public testing::Test {
protected:
    SidebarListTest() {
        list.onSelect = [this](const std::string& id) { chosen.push_back(id); };
        list.resize(182, 300);
    }

    void show(std::vector<SidebarList::Row> rows) {
        list.setRows(std::move(rows));
        list.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&list));
    }

    SidebarList list{nullptr};
    std::vector<std::string> chosen;
};

const std::vector<SidebarList::Row> kRows{{"all", "Tutte", 0, true},
                                          {"work", "Lavoro", 0, false},
                                          {"a", "A", 1, false},
                                          {"b", "B", 2, false}};

TEST_F(SidebarListTest, a_click_chooses_the_row) {
    show(kRows);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.itemRect(1).center());
    EXPECT_EQ(chosen, std::vector<std::string>{"work"});
}

TEST_F(SidebarListTest, a_quick_second_click_chooses_too_and_stays_in_the_list) {
    show(kRows);
    const QPoint row = list.itemRect(2).center();
    QMouseEvent again(QEvent::MouseButtonDblClick, row, list.viewport()->mapToGlobal(row),
                      Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(list.viewport(), &again);
    EXPECT_TRUE(again.isAccepted());
    QTest::mouseRelease(list.viewport(), Qt::LeftButton, {}, row);
    EXPECT_EQ(chosen, std::vector<std::string>{"a"});
}

TEST_F(SidebarListTest, a_row_is_indented_by_14_for_each_level) {
    show(kRows);
    EXPECT_EQ(list.itemRect(0).left(), 0);
    EXPECT_EQ(list.itemRect(2).left(), 14);
    EXPECT_EQ(list.itemRect(3).left(), 28);
}

TEST_F(SidebarListTest, only_the_selected_row_is_highlighted) {
    const auto background = [this](int index) {
        const QRect row = list.itemRect(index);
        return list.viewport()->grab().toImage().pixelColor(row.right() - 3, row.center().y());
    };
    show(kRows);
    const QColor plain = background(3);
    EXPECT_NE(background(0), plain);
    auto rows = kRows;
    std::swap(rows[0].selected, rows[3].selected);
    list.setRows(rows);
    EXPECT_NE(background(3), plain);
    for (const int other : {0, 1, 2}) {
        EXPECT_EQ(background(other), plain) << other;
    }
}

TEST_F(SidebarListTest, rows_are_34_tall_and_9_apart) {
    show(kRows);
    EXPECT_EQ(list.itemRect(0), QRect(0, 0, 164, 34));
    EXPECT_EQ(list.itemRect(1).top(), 43);
}

TEST_F(SidebarListTest, arrows_move_and_return_and_space_choose) {
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

TEST_F(SidebarListTest, more_rows_than_fit_scroll) {
    std::vector<SidebarList::Row> rows;
    for (int i = 0; i < 5000; ++i) {
        rows.push_back({std::to_string(i), "Categoria " + std::to_string(i), 0, i == 0});
    }
    show(rows);
    list.setFocus();
    QTest::keyClick(&list, Qt::Key_End);
    EXPECT_TRUE(list.viewport()->rect().contains(list.itemRect(4999)));
}

TEST_F(SidebarListTest, a_click_on_a_scrolled_list_chooses_what_stands_there) {
    std::vector<SidebarList::Row> rows;
    for (int i = 0; i < 30; ++i) {
        rows.push_back({std::to_string(i), "Categoria " + std::to_string(i), 0, i == 0});
    }
    show(rows);
    list.verticalScrollBar()->setValue(list.verticalScrollBar()->maximum());
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.itemRect(28).center());
    EXPECT_EQ(chosen, std::vector<std::string>{"28"});
}

TEST_F(SidebarListTest, a_screen_reader_finds_the_rows_by_name_with_the_selected_one) {
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

TEST_F(SidebarListTest, a_row_stays_the_same_to_a_screen_reader_when_the_selection_changes) {
    show(kRows);
    QAccessibleInterface* const tree = QAccessible::queryAccessibleInterface(&list);
    QAccessibleInterface* const work = tree->child(1);
    std::vector<SidebarList::Row> rows = kRows;
    rows[0].selected = false;
    rows[1].selected = true;
    list.setRows(rows);
    EXPECT_EQ(tree->child(1), work);
    EXPECT_TRUE(work->state().selected);
    EXPECT_FALSE(tree->child(0)->state().selected);
    rows.erase(rows.begin());
    list.setRows(rows);
    EXPECT_EQ(tree->child(0), work);
    EXPECT_EQ(tree->childCount(), 3);
}

TEST_F(SidebarListTest, a_row_below_another_says_its_level) {
    show(kRows);
    QAccessibleInterface* const tree = QAccessible::queryAccessibleInterface(&list);
    EXPECT_EQ(tree->child(1)->text(QAccessible::Description), QString());
    EXPECT_EQ(tree->child(2)->text(QAccessible::Description), QStringLiteral("Livello 2"));
    EXPECT_EQ(tree->child(3)->text(QAccessible::Description), QStringLiteral("Livello 3"));
}

TEST_F(SidebarListTest, a_screen_reader_gives_a_row_the_keyboard_without_selecting_it) {
    show(kRows);
    activate(list);
    QAccessibleInterface* const row = QAccessible::queryAccessibleInterface(&list)->child(2);
    row->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
    EXPECT_TRUE(row->state().focused);
    EXPECT_TRUE(chosen.empty());
    QTest::keyClick(&list, Qt::Key_Return);
    EXPECT_EQ(chosen, std::vector<std::string>{"a"});
}

TEST_F(SidebarListTest, the_focus_is_told_once_when_it_comes_and_with_each_step) {
    QWidget window;
    auto* const button = new QPushButton(&window);
    auto* const inside = new SidebarList(&window);
    inside->resize(182, 300);
    inside->setRows(kRows);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    activate(window);
    button->setFocus();
    const ScreenReader reader;
    QTest::keyClick(button, Qt::Key_Tab);
    QCoreApplication::processEvents();
    // The list by Qt, and the row by the list.
    EXPECT_EQ(ScreenReader::focused(),
              (QStringList{QStringLiteral("Categorie"), QStringLiteral("Tutte")}));
    ScreenReader::focused().clear();
    QTest::keyClick(inside, Qt::Key_Down);
    QCoreApplication::processEvents();
    EXPECT_EQ(ScreenReader::focused(), QStringList{QStringLiteral("Lavoro")});
    inside->focusItem(3);
    QCoreApplication::processEvents();
    EXPECT_EQ(ScreenReader::focused().last(), QStringLiteral("B"));
}

TEST_F(SidebarListTest, two_rows_with_one_id_are_both_there) {
    show({{"x", "Uno", 0, true}, {"x", "Due", 0, false}});
    QAccessibleInterface* const tree = QAccessible::queryAccessibleInterface(&list);
    ASSERT_EQ(tree->childCount(), 2);
    EXPECT_EQ(tree->child(0)->text(QAccessible::Name), QStringLiteral("Uno"));
    EXPECT_EQ(tree->child(1)->text(QAccessible::Name), QStringLiteral("Due"));
}

TEST_F(SidebarListTest, behind_a_sheet_it_looks_as_before_and_its_rows_do_nothing) {
    show(kRows);
    list.clearFocus();
    const QImage before = list.grab().toImage();
    list.setEnabled(false);
    EXPECT_EQ(list.grab().toImage(), before);
    QAccessibleInterface* const row = QAccessible::queryAccessibleInterface(&list)->child(1);
    EXPECT_TRUE(row->state().disabled);
    row->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(chosen.empty());
}

TEST_F(SidebarListTest, a_click_chooses_what_was_pressed_though_the_rows_move_meanwhile) {
    show(kRows);
    QTest::mousePress(list.viewport(), Qt::LeftButton, {}, list.itemRect(1).center());
    std::vector<SidebarList::Row> rows = kRows;
    rows.erase(rows.begin());
    list.setRows(rows);
    QTest::mouseRelease(list.viewport(), Qt::LeftButton, {}, list.itemRect(1).center());
    EXPECT_TRUE(chosen.empty());
    QTest::mousePress(list.viewport(), Qt::LeftButton, {}, list.itemRect(1).center());
    list.setRows(kRows);
    QTest::mouseRelease(list.viewport(), Qt::LeftButton, {}, list.itemRect(2).center());
    EXPECT_EQ(chosen, std::vector<std::string>{"a"});
}

TEST_F(SidebarListTest, a_scroll_bar_tells_at_rest_that_there_are_more_rows_than_in_view) {
    const auto bar = [this] {
        for (auto* const found : list.findChildren<QScrollBar*>()) {
            if (found->parentWidget() == &list && found->isVisible()) {
                return true;
            }
        }
        return false;
    };
    show(kRows);
    EXPECT_FALSE(bar());
    std::vector<SidebarList::Row> rows = kRows;
    for (int i = 0; i < 20; ++i) {
        rows.push_back({"n" + std::to_string(i), "Progetto", 0, false});
    }
    show(rows);
    EXPECT_TRUE(bar());
    show(kRows);
    EXPECT_FALSE(bar());
}

TEST_F(SidebarListTest, a_hostile_name_is_one_line_and_stays_in_its_row) {
    const std::string marks = [] {
        std::string text = "a";
        for (int i = 0; i < 2'000; ++i) {
            text += "\u0301";
        }
        return text;
    }();
    show({{"all", "Tutte", 0, true},
          {"x", marks, 0, false},
          {"y", std::string(10'000, 'W') + "\n<b>", 3, false},
          {"z", "Ultima", 0, false}});
    const QImage image = list.grab().toImage();
    // Nothing of a row may be painted in the space between two rows.
    const int gap = list.itemRect(1).top() - 5;
    for (int x = 0; x < image.width() - metrics::kSidebarPadding; ++x) {
        EXPECT_EQ(image.pixel(x, gap), image.pixel(0, gap)) << x;
    }
    EXPECT_FALSE(list.itemName(2).contains(u'\n'));
    EXPECT_GE(list.itemRect(2).width(), 60);
}

TEST_F(SidebarListTest, names_that_would_be_cut_to_the_same_text_are_cut_in_the_middle) {
    const std::string alike = "Documenti riservati del cliente molto importante ";
    const std::string other = "Una cartella con un nome troppo lungo";
    show({{"a", alike + "Alfa", 0, false},
          {"b", alike + "Beta", 0, false},
          {"c", other, 0, false},
          {"d", other, 0, false}});
    EXPECT_TRUE(list.elided(0).endsWith(QStringLiteral("Alfa")));
    EXPECT_TRUE(list.elided(1).endsWith(QStringLiteral("Beta")));
    // The same name twice cannot be told apart by any cut.
    EXPECT_TRUE(list.elided(2).endsWith(u'…'));
    const QRect row = list.itemRect(0);
    const QImage first = list.grab(row).toImage();
    list.setRows({{"a", alike + "Alfa", 0, false}, {"c", other, 0, false}});
    EXPECT_TRUE(list.elided(0).endsWith(u'…'));
    EXPECT_NE(list.grab(row).toImage(), first);
}

}  // namespace
}  // namespace tavo
