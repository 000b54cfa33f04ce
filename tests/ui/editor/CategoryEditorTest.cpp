#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QtTest/QTest>

#include <gtest/gtest.h>

#include "tests/ui/ActiveWindow.h"
#include "tests/ui/ScreenReader.h"
#include "ui/accessibility/AccessibleItems.h"
#include "ui/editor/CategoryEditor.h"
#include "ui/editor/CategoryEditorList.h"
#include "ui/editor/CategoryEditorRow.h"

namespace tavo {
namespace {

constexpr int kName = 0;
constexpr int kPosition = 1;
constexpr int kRule = 2;
constexpr int kRemove = 3;

// The editor in a window. Tests use keys and clicks, and read the result from its controls.
class CategoryEditorTest : public testing::Test {
protected:
    CategoryEditor& editor() {
        if (editor_ == nullptr) {
            window_.resize(980, 640);
            window_.show();
            EXPECT_TRUE(QTest::qWaitForWindowExposed(&window_));
            activate(window_);
            editor_ = new CategoryEditor(
                initial, rules, TextRules("it_IT"),
                [this](const auto& categories, const auto& keywords) {
                    ++saves;
                    saved = categories;
                    savedRules = keywords;
                },
                &window_);
            editor_->dismiss = [this] {
                ++dismissals;
                editor_->withdraw();
            };
            editor_->present();
        }
        return *editor_;
    }

    CategoryEditorList& rows() {
        return dynamic_cast<CategoryEditorList&>(*editor().findChild<QScrollArea*>());
    }
    QWidget& control(int row, int which) {
        return *rows().rowAt(row).controls().at(static_cast<std::size_t>(which));
    }
    QLineEdit& nameField(int row) { return dynamic_cast<QLineEdit&>(control(row, kName)); }
    QLineEdit& ruleField(int row) { return dynamic_cast<QLineEdit&>(control(row, kRule)); }
    QComboBox& picker(int row) { return dynamic_cast<QComboBox&>(control(row, kPosition)); }
    void pressRemove(int row) { dynamic_cast<QAbstractButton&>(control(row, kRemove)).click(); }
    QLineEdit& newName() {
        for (QLineEdit* const field : editor().findChildren<QLineEdit*>()) {
            if (field->placeholderText() == QStringLiteral("Nuova categoria")) {
                return *field;
            }
        }
        throw std::logic_error("no field for a new category");
    }
    QPushButton& button(const QString& text) {
        for (QPushButton* const found : editor().findChildren<QPushButton*>()) {
            if (found->text() == text) {
                return *found;
            }
        }
        throw std::logic_error("no such button");
    }
    QPushButton& add() { return button(QStringLiteral("Aggiungi")); }
    void save() { button(QStringLiteral("Salva")).click(); }

    QStringList choices(int row) {
        QStringList texts;
        for (int i = 0; i < picker(row).count(); ++i) {
            texts << picker(row).itemText(i);
        }
        return texts;
    }
    void pick(int row, int choice) {
        picker(row).setFocus();
        while (picker(row).currentIndex() != choice) {
            QTest::keyClick(&picker(row),
                            picker(row).currentIndex() < choice ? Qt::Key_Down : Qt::Key_Up);
        }
    }
    std::vector<std::string> savedNames() const {
        std::vector<std::string> names;
        for (const LauncherCategory& category : saved) {
            names.push_back(category.name);
        }
        return names;
    }
    static QString accessibleName(QWidget& widget) {
        return QAccessible::queryAccessibleInterface(&widget)->text(QAccessible::Name);
    }
    int rowsMade() {
        int count = 0;
        for (const QWidget* const widget : editor().findChildren<QWidget*>()) {
            count += dynamic_cast<const CategoryEditorRow*>(widget) != nullptr ? 1 : 0;
        }
        return count;
    }
    QWidget* focused() { return QApplication::focusWidget(); }

    std::vector<LauncherCategory> initial = {
        {"work", "Lavoro"}, {"creative", "Creatività"}, {"utility", "Utility"}};
    StringDictionary rules = {{"work", "codice, git"}};
    int saves = 0;
    int dismissals = 0;
    std::vector<LauncherCategory> saved;
    StringDictionary savedRules;

private:
    QWidget window_;
    CategoryEditor* editor_ = nullptr;  // owned by the window
};

TEST_F(CategoryEditorTest, add_is_disabled_for_blanks_and_return_then_adds_nothing) {
    EXPECT_FALSE(add().isEnabled());
    QTest::keyClicks(&newName(), QStringLiteral("   "));
    EXPECT_FALSE(add().isEnabled());
    QTest::keyClick(&newName(), Qt::Key_Return);
    EXPECT_EQ(rows().rowCount(), 3);
    EXPECT_EQ(newName().text(), QStringLiteral("   "));
    EXPECT_EQ(saves, 0);
    QTest::keyClick(&newName(), Qt::Key_X);
    EXPECT_TRUE(add().isEnabled());
}

TEST_F(CategoryEditorTest, a_name_that_differs_only_in_case_adds_nothing_and_stays_in_the_field) {
    QTest::keyClicks(&newName(), QStringLiteral("cREATIVITÀ"));
    QTest::keyClick(&newName(), Qt::Key_Return);
    EXPECT_EQ(rows().rowCount(), 3);
    EXPECT_EQ(newName().text(), QStringLiteral("cREATIVITÀ"));
}

TEST_F(CategoryEditorTest, a_name_that_differs_in_an_accent_is_added) {
    QTest::keyClicks(&newName(), QStringLiteral("Creativita"));
    add().click();
    EXPECT_EQ(rows().rowCount(), 4);
}

TEST_F(CategoryEditorTest, the_name_of_a_built_in_view_is_accepted) {
    QTest::keyClicks(&newName(), QStringLiteral("Tutte"));
    add().click();
    EXPECT_EQ(rows().rowCount(), 4);
}

TEST_F(CategoryEditorTest, adding_a_name_between_blanks_adds_it_bare_and_clears_the_field) {
    QTest::keyClicks(&newName(), QStringLiteral("  Progetti "));
    QTest::keyClick(&newName(), Qt::Key_Return);
    EXPECT_EQ(newName().text(), QString());
    EXPECT_EQ(nameField(3).text(), QStringLiteral("Progetti"));
    EXPECT_EQ(focused(), &newName());
    save();
    ASSERT_EQ(saved.size(), 4U);
    EXPECT_EQ(saved[3].name, "Progetti");
    EXPECT_EQ(saved[3].parentID, std::nullopt);
    EXPECT_EQ(saved[3].id.size(), 36U);
}

TEST_F(CategoryEditorTest, a_row_may_be_placed_under_every_row_above_it) {
    EXPECT_EQ(choices(0), QStringList{QStringLiteral("Categoria principale")});
    EXPECT_EQ(choices(2), (QStringList{QStringLiteral("Categoria principale"),
                                       QStringLiteral("Sottocategoria di Lavoro"),
                                       QStringLiteral("Sottocategoria di Creatività")}));
    pick(2, 1);
    save();
    EXPECT_EQ(saved[2].parentID, "work");
}

TEST_F(CategoryEditorTest, a_row_shows_where_it_is_and_can_become_a_main_category_again) {
    initial[1].parentID = "work";
    EXPECT_EQ(picker(1).currentText(), QStringLiteral("Sottocategoria di Lavoro"));
    pick(1, 0);
    save();
    EXPECT_EQ(saved[1].parentID, std::nullopt);
}

TEST_F(CategoryEditorTest, a_category_may_be_placed_under_its_own_sub_category_above_it) {
    initial = {{"child", "Figlia", "parent"}, {"parent", "Madre"}};
    pick(1, 1);
    save();
    EXPECT_EQ(saved[0].parentID, "parent");
    EXPECT_EQ(saved[1].parentID, "child");
}

TEST_F(CategoryEditorTest, a_parent_that_cannot_be_picked_shows_as_nothing_and_stays) {
    initial[0].parentID = "utility";
    EXPECT_EQ(picker(0).currentIndex(), -1);
    EXPECT_EQ(picker(0).currentText(), QString());
    save();
    EXPECT_EQ(saved[0].parentID, "utility");
}

TEST_F(CategoryEditorTest, names_are_taken_as_typed_also_empty_or_twice) {
    nameField(0).setFocus();
    nameField(0).selectAll();
    QTest::keyClick(&nameField(0), Qt::Key_Delete);
    nameField(1).setFocus();
    nameField(1).selectAll();
    QTest::keyClicks(&nameField(1), QStringLiteral("Utility"));
    save();
    EXPECT_EQ(savedNames(), (std::vector<std::string>{"", "Utility", "Utility"}));
}

TEST_F(CategoryEditorTest, a_new_name_shows_at_once_where_others_are_placed_under_it) {
    nameField(0).setFocus();
    nameField(0).selectAll();
    QTest::keyClicks(&nameField(0), QStringLiteral("Ufficio"));
    EXPECT_EQ(choices(1).at(1), QStringLiteral("Sottocategoria di Ufficio"));
}

TEST_F(CategoryEditorTest, deleting_leaves_the_parents_and_keywords_that_name_the_category) {
    initial[1].parentID = "work";
    pressRemove(0);
    EXPECT_EQ(nameField(0).text(), QStringLiteral("Creatività"));
    EXPECT_EQ(picker(0).currentIndex(), -1);
    EXPECT_EQ(choices(1), (QStringList{QStringLiteral("Categoria principale"),
                                       QStringLiteral("Sottocategoria di Creatività")}));
    save();
    EXPECT_EQ(savedNames(), (std::vector<std::string>{"Creatività", "Utility"}));
    EXPECT_EQ(saved[0].parentID, "work");
    EXPECT_EQ(savedRules, (StringDictionary{{"work", "codice, git"}}));
}

TEST_F(CategoryEditorTest, keywords_are_handed_over_exactly_as_typed_also_emptied) {
    EXPECT_EQ(ruleField(0).text(), QStringLiteral("codice, git"));
    ruleField(0).setFocus();
    ruleField(0).selectAll();
    QTest::keyClick(&ruleField(0), Qt::Key_Delete);
    ruleField(1).setFocus();
    QTest::keyClicks(&ruleField(1), QStringLiteral(" foto ,, "));
    save();
    EXPECT_EQ(savedRules, (StringDictionary{{"work", ""}, {"creative", " foto ,, "}}));
}

TEST_F(CategoryEditorTest, cancelling_hands_nothing_over) {
    ruleField(1).setFocus();
    QTest::keyClicks(&ruleField(1), QStringLiteral("foto"));
    button(QStringLiteral("Annulla")).click();
    EXPECT_EQ(saves, 0);
    EXPECT_EQ(dismissals, 1);
    EXPECT_FALSE(editor().isVisible());
}

TEST_F(CategoryEditorTest, escape_cancels_wherever_the_keyboard_is) {
    nameField(0).setFocus();
    QTest::keyClick(focused(), Qt::Key_Escape);
    EXPECT_EQ(saves, 0);
    EXPECT_EQ(dismissals, 1);
}

TEST_F(CategoryEditorTest, return_saves_once_wherever_the_keyboard_is_but_in_the_new_name) {
    for (const int which : {kName, kPosition, kRule, kRemove}) {
        SCOPED_TRACE(which);
        saves = 0;
        editor().present();
        control(1, which).setFocus();
        QTest::keyClick(focused(), Qt::Key_Return);
        EXPECT_EQ(saves, 1);
        EXPECT_EQ(saved.size(), 3U);
        EXPECT_FALSE(editor().isVisible());
    }
}

TEST_F(CategoryEditorTest, return_in_an_open_list_of_positions_only_picks) {
    QComboBox& opened = picker(2);
    opened.setFocus();
    opened.showPopup();
    QTest::keyClick(opened.view(), Qt::Key_Down);
    QTest::keyClick(opened.view(), Qt::Key_Return);
    EXPECT_EQ(saves, 0);
    EXPECT_TRUE(editor().isVisible());
    save();
    EXPECT_EQ(saved[2].parentID, "work");
}

TEST_F(CategoryEditorTest, adding_by_the_button_gives_the_keyboard_back_to_the_name) {
    QTest::keyClicks(&newName(), QStringLiteral("Progetti"));
    QTest::keyClick(focused(), Qt::Key_Tab);
    ASSERT_EQ(focused(), &add());
    QTest::keyClick(focused(), Qt::Key_Space);
    EXPECT_EQ(rows().rowCount(), 4);
    EXPECT_EQ(focused(), &newName());
}

TEST_F(CategoryEditorTest, deleting_a_row_leaves_the_list_where_it_is) {
    for (int i = 0; i < 40; ++i) {
        initial.emplace_back("id" + std::to_string(i), "Categoria " + std::to_string(i));
    }
    rows().rowAt(20, true);
    const int before = rows().verticalScrollBar()->value();
    ASSERT_GT(before, 0);
    nameField(20).setFocus();
    pressRemove(20);
    EXPECT_EQ(rows().verticalScrollBar()->value(), before);
    EXPECT_EQ(nameField(20).text(), QStringLiteral("Categoria 18"));
    EXPECT_EQ(focused(), &control(20, kRemove));
}

TEST_F(CategoryEditorTest, tab_goes_through_the_rows_then_below_and_round_again) {
    newName().setFocus();
    QList<QWidget*> order;
    for (int i = 0; i < 15; ++i) {
        order << focused();
        QTest::keyClick(focused(), Qt::Key_Tab);
    }
    // Tab skips the button "Aggiungi", which is disabled.
    const QList<QWidget*> expected = {&newName(),
                                      &button(QStringLiteral("Annulla")),
                                      &button(QStringLiteral("Salva")),
                                      &control(0, 0),
                                      &control(0, 1),
                                      &control(0, 2),
                                      &control(0, 3),
                                      &control(1, 0),
                                      &control(1, 1),
                                      &control(1, 2),
                                      &control(1, 3),
                                      &control(2, 0),
                                      &control(2, 1),
                                      &control(2, 2),
                                      &control(2, 3)};
    EXPECT_EQ(order, expected);
    EXPECT_EQ(focused(), &newName());
    QTest::keyClick(focused(), Qt::Key_Backtab);
    EXPECT_EQ(focused(), &control(2, 3));
}

TEST_F(CategoryEditorTest, deleting_by_keyboard_leaves_the_keyboard_on_the_next_row) {
    control(1, kRemove).setFocus();
    QTest::keyClick(focused(), Qt::Key_Space);
    EXPECT_EQ(rows().rowCount(), 2);
    EXPECT_EQ(focused(), &control(1, kRemove));
    QTest::keyClick(focused(), Qt::Key_Space);
    EXPECT_EQ(focused(), &control(0, kRemove));
    QTest::keyClick(focused(), Qt::Key_Space);
    EXPECT_EQ(rows().rowCount(), 0);
    EXPECT_EQ(focused(), &newName());
    save();
    EXPECT_TRUE(saved.empty());
}

TEST_F(CategoryEditorTest, every_control_is_named_with_its_category) {
    EXPECT_EQ(accessibleName(control(0, kName)), QStringLiteral("Nome categoria: Lavoro"));
    EXPECT_EQ(accessibleName(control(0, kPosition)), QStringLiteral("Posizione: Lavoro"));
    EXPECT_EQ(accessibleName(control(0, kRule)),
              QStringLiteral("Parole chiave automatiche, separate da virgole: Lavoro"));
    EXPECT_EQ(accessibleName(control(0, kRemove)), QStringLiteral("Elimina categoria: Lavoro"));
    EXPECT_EQ(control(0, kRemove).toolTip(), QStringLiteral("Elimina categoria"));
    EXPECT_EQ(accessibleName(newName()), QStringLiteral("Nuova categoria"));
    nameField(0).clear();
    EXPECT_EQ(accessibleName(control(0, kName)), QStringLiteral("Nome categoria"));
}

TEST_F(CategoryEditorTest, a_screen_reader_finds_every_row_and_types_into_it) {
    for (int i = 0; i < 200; ++i) {
        initial.emplace_back("id" + std::to_string(i), "Categoria " + std::to_string(i));
    }
    QAccessibleInterface* const list =
        QAccessible::queryAccessibleInterface(&control(0, kName))->parent()->parent();
    ASSERT_EQ(list->role(), QAccessible::List);
    ASSERT_EQ(list->childCount(), 203);
    QAccessibleInterface* const row = list->child(202);
    EXPECT_EQ(row->text(QAccessible::Name), QStringLiteral("Categoria 199"));
    EXPECT_EQ(list->indexOfChild(row), 202);
    QAccessibleInterface* const name = row->child(0);
    ASSERT_EQ(name->text(QAccessible::Name), QStringLiteral("Nome categoria: Categoria 199"));
    name->setText(QAccessible::Value, QStringLiteral("Ultima"));
    save();
    EXPECT_EQ(savedNames().back(), "Ultima");
}

TEST_F(CategoryEditorTest, a_screen_reader_picks_a_position) {
    QAccessibleInterface* const combo = QAccessible::queryAccessibleInterface(&picker(2));
    ASSERT_EQ(combo->role(), QAccessible::ComboBox);
    EXPECT_EQ(combo->text(QAccessible::Value), QStringLiteral("Categoria principale"));
    ASSERT_EQ(combo->childCount(), 3);
    QAccessibleInterface* const choice = combo->child(2);
    EXPECT_EQ(choice->text(QAccessible::Name), QStringLiteral("Sottocategoria di Creatività"));
    choice->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(combo->text(QAccessible::Value), QStringLiteral("Sottocategoria di Creatività"));
    EXPECT_TRUE(choice->state().selected);
    save();
    EXPECT_EQ(saved[2].parentID, "creative");
}

TEST_F(CategoryEditorTest, of_many_categories_only_the_rows_near_the_view_are_made) {
    initial.clear();
    for (int i = 0; i < 5000; ++i) {
        initial.emplace_back("id" + std::to_string(i), "Categoria " + std::to_string(i));
    }
    EXPECT_LT(rowsMade(), 12);
    rows().scrollToEnd();
    EXPECT_EQ(nameField(4999).text(), QStringLiteral("Categoria 4999"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_LT(rowsMade(), 12);
    EXPECT_EQ(picker(4999).count(), 5000);
    save();
    EXPECT_EQ(saved, initial);
}

TEST_F(CategoryEditorTest, tab_brings_the_next_row_into_view) {
    for (int i = 0; i < 20; ++i) {
        initial.emplace_back("id" + std::to_string(i), "Categoria " + std::to_string(i));
    }
    newName().setFocus();
    QTest::keyClick(focused(), Qt::Key_Backtab);
    EXPECT_EQ(focused(), &control(22, kRemove));
    const QWidget& last = rows().rowAt(22);
    EXPECT_TRUE(rows().viewport()->rect().contains(
        QRect(last.mapTo(rows().viewport(), QPoint()), last.size())));
}

TEST_F(CategoryEditorTest, keywords_of_a_hundred_thousand_characters_come_back_whole) {
    std::string longText;
    while (longText.size() < 100'000) {
        longText += "parola" + std::to_string(longText.size()) + ", ";
    }
    rules["creative"] = longText;
    ruleField(1).setFocus();
    QTest::keyClick(&ruleField(1), Qt::Key_End);
    QTest::keyClick(&ruleField(1), Qt::Key_X);
    save();
    EXPECT_EQ(savedRules["creative"], longText + "x");
}

TEST_F(CategoryEditorTest, hostile_names_come_back_untouched) {
    const std::vector<std::string> names = {
        "<b>x</b>", "a\nb", "\u202Erovescio", "e\u0301\u0301", "👍🏽", std::string(10'000, 'W'),
        "a&b"};
    initial.clear();
    for (const std::string& name : names) {
        initial.emplace_back(name);
    }
    editor();
    for (int i = 0; i < rows().rowCount(); ++i) {
        rows().rowAt(i, true);
        EXPECT_LE(picker(i).width(), rows().viewport()->width());
    }
    save();
    EXPECT_EQ(savedNames(), names);
}

TEST_F(CategoryEditorTest, the_wheel_over_a_combo_box_is_left_to_the_list_and_moves_no_category) {
    QComboBox& over = picker(1);
    QWheelEvent wheel(QPointF(5, 5), over.mapToGlobal(QPointF(5, 5)), QPoint(), QPoint(0, -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&over, &wheel);
    EXPECT_EQ(over.currentIndex(), 0);
    EXPECT_FALSE(wheel.isAccepted());
}

TEST_F(CategoryEditorTest, a_screen_reader_is_told_that_the_sheet_is_modal) {
    const QAccessibleInterface* const sheet = QAccessible::queryAccessibleInterface(&editor());
    EXPECT_EQ(sheet->role(), QAccessible::Dialog);
    EXPECT_TRUE(sheet->state().modal);
}

TEST_F(CategoryEditorTest, a_screen_reader_opens_the_list_of_positions_and_is_told_the_choice) {
    QAccessibleInterface* const position = QAccessible::queryAccessibleInterface(&picker(1));
    EXPECT_EQ(position->role(), QAccessible::ComboBox);
    EXPECT_EQ(position->text(QAccessible::Description), QStringLiteral("Categoria principale"));
    EXPECT_TRUE(position->state().expandable);
    EXPECT_FALSE(position->state().expanded);
    const QString open = QAccessibleActionInterface::showMenuAction();
    ASSERT_TRUE(position->actionInterface()->actionNames().contains(open));
    position->actionInterface()->doAction(open);
    EXPECT_TRUE(picker(1).view()->isVisible());
    EXPECT_TRUE(position->state().expanded);
    picker(1).hidePopup();
    EXPECT_FALSE(position->state().expanded);
    // As Qt closes popups when another window takes the focus.
    picker(1).showPopup();
    EXPECT_TRUE(position->state().expanded);
    picker(1).view()->window()->close();
    EXPECT_FALSE(position->state().expanded);
    picker(1).setEnabled(false);
    position->actionInterface()->doAction(open);
    EXPECT_FALSE(picker(1).view()->isVisible());
}

TEST_F(CategoryEditorTest, a_position_chosen_by_a_key_is_announced) {
    auto* const statusBar = new QWidget(&editor());
    setAccessibleRole(*statusBar, QAccessible::StatusBar);
    const ScreenReader reader;
    pick(1, 1);
    EXPECT_EQ(ScreenReader::heard(), QStringList{QStringLiteral("Sottocategoria di Lavoro")});
    QTest::keyClick(&picker(1), Qt::Key_Down);
    EXPECT_EQ(ScreenReader::heard().size(), 1);
}

TEST_F(CategoryEditorTest, it_is_five_hundred_wide_and_high_and_shrinks_with_no_window) {
    const QWidget& card = *newName().parentWidget()->parentWidget();
    EXPECT_EQ(card.size(), QSize(500, 500));
    editor().parentWidget()->resize(760, 520);
    EXPECT_EQ(card.size(), QSize(500, 500));
    EXPECT_EQ(card.geometry().center(), QRect(0, 0, 760, 520).center());
    EXPECT_GE(rows().height(), 180 - 2);
}

}  // namespace
}  // namespace tavo
