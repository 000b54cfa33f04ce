#include <QAccessible>
#include <QApplication>
#include <QElapsedTimer>
#include <QIcon>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>
#include <iostream>

#include <gtest/gtest.h>

#include "tests/ui/ScreenReader.h"
#include "ui/accessibility/AccessibleItems.h"
#include "ui/controls/ControlPainting.h"
#include "ui/controls/PopupMenu.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/TextSanitizer.h"
#include "ui/look/TextScale.h"

namespace tavo {
namespace {

// Presses an entry as an accessibility client does.
void press(QMenu& menu, const QString& name) {
    QAccessibleInterface* const tree = QAccessible::queryAccessibleInterface(&menu);
    ASSERT_NE(tree, nullptr);
    for (int index = 0; index < tree->childCount(); ++index) {
        QAccessibleInterface* const entry = tree->child(index);
        if (entry->text(QAccessible::Name) == name) {
            ASSERT_NE(entry->actionInterface(), nullptr);
            entry->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
            return;
        }
    }
    FAIL() << "no entry is called " << name.toStdString();
}

class PopupMenuTest : public testing::Test {
protected:
    PopupMenuTest() {
        setAccessibleRole(window, QAccessible::Window);
        window.setWindowTitle(QStringLiteral("Finestra"));
        window.resize(400, 300);
        line = new QLineEdit(&window);
        line->setFocus();
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));

        menu = new PopupMenu(QStringLiteral("Note"), &window);
        menu->addEntry(QStringLiteral("Nascondi"), u"eye.slash", chosen("Nascondi"));
        menu->addEntry(QStringLiteral("Preferiti"), u"star", chosen("Preferiti"));
        submenu = menu->addSubmenu(QStringLiteral("Categorie"));
        submenu->addTick(QStringLiteral("Lavoro"), true, chosen("Lavoro"));
        submenu->addTick(QStringLiteral("Creatività"), false, chosen("Creatività"));
        menu->addEntry(QStringLiteral("Informazioni"), {}, chosen("Informazioni"));
    }

    ~PopupMenuTest() override {
        if (menu != nullptr) {
            menu->close();
        }
    }

    std::function<void()> chosen(const char* name) {
        return [this, name] {
            happened.append(QString::fromUtf8(name));
            openWhenItHappened += menu->isVisible() || submenu->isVisible() ? 1 : 0;
        };
    }

    void open() {
        menu->openAt(window.mapToGlobal(QPoint(10, 40)), PopupMenu::By::Pointer);
        ASSERT_TRUE(menu->isVisible());
    }

    // As a hand does it: the pointer comes to the entry, and then presses. Later versions of Qt
    // take a release without a way of the pointer before it for that of the click that opened the
    // menu.
    void click(QAction* entry) {
        const QPoint place = menu->actionGeometry(entry).center();
        for (int left = 8; left >= 0; --left) {
            QTest::mouseMove(menu, place - QPoint(left, 0));
        }
        QTest::mouseClick(menu, Qt::LeftButton, {}, place);
    }

    static void key(Qt::Key key) {
        ASSERT_NE(QApplication::activePopupWidget(), nullptr);
        QTest::keyClick(QApplication::activePopupWidget(), key);
    }

    QWidget window;
    QLineEdit* line = nullptr;
    QPointer<PopupMenu> menu;
    QPointer<PopupMenu> submenu;
    QStringList happened;
    int openWhenItHappened = 0;
};

TEST_F(PopupMenuTest, opened_by_a_key_has_its_first_entry_chosen_and_by_the_pointer_none) {
    open();
    EXPECT_EQ(menu->activeAction(), nullptr);
    menu->close();
    auto* const fresh = new PopupMenu(QStringLiteral("Altro"), &window);
    fresh->addSeparator();
    QAction* const disabled = fresh->addEntry(QStringLiteral("Spenta"), {}, [] {});
    disabled->setEnabled(false);
    QAction* const first = fresh->addEntry(QStringLiteral("Prima"), {}, chosen("Prima"));
    fresh->openAt(window.mapToGlobal(QPoint(10, 40)), PopupMenu::By::Key);
    EXPECT_EQ(fresh->activeAction(), first);
    key(Qt::Key_Return);
    EXPECT_EQ(happened, QStringList{QStringLiteral("Prima")});
}

TEST_F(PopupMenuTest, opened_by_a_key_with_nothing_to_choose_it_is_just_there) {
    auto* const fresh = new PopupMenu(QStringLiteral("Altro"), &window);
    fresh->addSeparator();
    fresh->openAt(window.mapToGlobal(QPoint(10, 40)), PopupMenu::By::Key);
    EXPECT_EQ(fresh->activeAction(), nullptr);
    fresh->close();
}

TEST_F(PopupMenuTest, belongs_to_its_window_and_a_submenu_to_its_entry_in_the_tree) {
    open();
    QAccessibleInterface* const tree = QAccessible::queryAccessibleInterface(menu);
    QAccessibleInterface* const frame = QAccessible::queryAccessibleInterface(&window);
    EXPECT_EQ(tree->parent(), frame);
    ASSERT_GE(frame->indexOfChild(tree), 0);
    EXPECT_EQ(frame->child(frame->indexOfChild(tree)), tree);
    QAccessibleInterface* const entry = tree->child(2);
    EXPECT_EQ(entry->parent(), tree);
    EXPECT_EQ(tree->indexOfChild(entry), 2);
    EXPECT_EQ(tree->child(2), entry);
    EXPECT_TRUE(entry->state().hasPopup);
    QAccessibleInterface* const inner = QAccessible::queryAccessibleInterface(submenu);
    EXPECT_EQ(entry->child(0), inner);
    EXPECT_EQ(entry->indexOfChild(inner), 0);
    EXPECT_EQ(inner->parent(), entry);
    EXPECT_EQ(inner->role(), QAccessible::PopupMenu);
    EXPECT_TRUE(inner->child(0)->state().checked);
    EXPECT_FALSE(inner->child(1)->state().checked);
    EXPECT_TRUE(inner->child(1)->state().checkable);
    EXPECT_EQ(tree->childAt(entry->rect().center().x(), entry->rect().center().y()), entry);
    EXPECT_EQ(tree->child(4), nullptr);
}

TEST_F(PopupMenuTest, the_name_of_an_entry_is_what_is_shown) {
    menu->addEntry(menuText("R&D && altro"), {}, [] {});
    menu->addSeparator();
    open();
    QAccessibleInterface* const tree = QAccessible::queryAccessibleInterface(menu);
    EXPECT_EQ(tree->child(4)->text(QAccessible::Name), QStringLiteral("R&D && altro"));
    EXPECT_EQ(tree->child(5)->role(), QAccessible::Separator);
    EXPECT_TRUE(tree->child(5)->actionInterface()->actionNames().isEmpty());
}

TEST_F(PopupMenuTest, the_focus_is_told_once_for_each_step_into_a_submenu_and_back) {
    const ScreenReader reader;
    menu->openAt(window.mapToGlobal(QPoint(10, 40)), PopupMenu::By::Key);
    key(Qt::Key_Down);
    key(Qt::Key_Down);
    key(Qt::Key_Right);
    ASSERT_TRUE(submenu->isVisible());
    key(Qt::Key_Left);
    ASSERT_FALSE(submenu->isVisible());
    QCoreApplication::processEvents();
    EXPECT_EQ(ScreenReader::focused(),
              (QStringList{QStringLiteral("Nascondi"), QStringLiteral("Preferiti"),
                           QStringLiteral("Categorie"), QStringLiteral("Lavoro"),
                           QStringLiteral("Categorie")}));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(menu)->focusChild(),
              QAccessible::queryAccessibleInterface(menu)->child(2));
}

TEST_F(PopupMenuTest, is_gone_once_it_was_closed) {
    open();
    key(Qt::Key_Escape);
    EXPECT_FALSE(menu->isVisible());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(menu, nullptr);
    EXPECT_TRUE(happened.isEmpty());
}

TEST_F(PopupMenuTest, an_entry_pressed_through_the_tree_closes_the_menu_and_then_acts) {
    open();
    press(*menu, QStringLiteral("Preferiti"));
    EXPECT_EQ(happened, QStringList{QStringLiteral("Preferiti")});
    EXPECT_EQ(openWhenItHappened, 0);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(menu, nullptr);
}

TEST_F(PopupMenuTest, an_entry_of_a_submenu_pressed_through_the_tree_closes_both_menus) {
    for (const bool opened : {true, false}) {
        SCOPED_TRACE(opened ? "the submenu is open" : "the submenu was never opened");
        if (menu == nullptr) {
            menu = new PopupMenu(QStringLiteral("Note"), &window);
            submenu = menu->addSubmenu(QStringLiteral("Categorie"));
            submenu->addTick(QStringLiteral("Lavoro"), true, chosen("Lavoro"));
        }
        open();
        if (opened) {
            menu->setActiveAction(submenu->menuAction());
            key(Qt::Key_Right);
            ASSERT_TRUE(submenu->isVisible());
        }
        happened.clear();
        press(*submenu, QStringLiteral("Lavoro"));
        EXPECT_EQ(happened, QStringList{QStringLiteral("Lavoro")});
        EXPECT_EQ(openWhenItHappened, 0);
        EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_EQ(menu, nullptr);
    }
}

TEST_F(PopupMenuTest, a_click_on_an_entry_acts_once_after_the_menu_closed) {
    open();
    click(menu->actions().at(1));
    EXPECT_EQ(happened, QStringList{QStringLiteral("Preferiti")});
    EXPECT_EQ(openWhenItHappened, 0);
}

struct Walk {
    const char* name;
    std::vector<Qt::Key> keys;
    const char* chosen;  // null if the menu is still open after the keys
};

TEST_F(PopupMenuTest, is_walked_by_keyboard_alone) {
    const Walk walks[] = {
        {"down and return", {Qt::Key_Down, Qt::Key_Down, Qt::Key_Return}, "Preferiti"},
        {"home", {Qt::Key_Up, Qt::Key_Home, Qt::Key_Enter}, "Nascondi"},
        {"end", {Qt::Key_Down, Qt::Key_End, Qt::Key_Return}, "Informazioni"},
        {"up from the first goes to the last",
         {Qt::Key_Home, Qt::Key_Up, Qt::Key_Return},
         "Informazioni"},
        {"space chooses", {Qt::Key_Home, Qt::Key_Space}, "Nascondi"},
        {"right enters the submenu",
         {Qt::Key_End, Qt::Key_Up, Qt::Key_Right, Qt::Key_Down, Qt::Key_Return},
         "Creatività"},
        {"left comes back from it",
         {Qt::Key_End, Qt::Key_Up, Qt::Key_Right, Qt::Key_Left, Qt::Key_Up, Qt::Key_Return},
         "Preferiti"},
        {"a letter goes to a word that begins with it", {Qt::Key_P, Qt::Key_Return}, "Preferiti"},
        {"letters that begin no word change nothing",
         {Qt::Key_Home, Qt::Key_X, Qt::Key_Y, Qt::Key_Return},
         "Nascondi"},
    };
    for (const Walk& walk : walks) {
        SCOPED_TRACE(walk.name);
        happened.clear();
        auto* const fresh = new PopupMenu(QStringLiteral("Note"), &window);
        for (QAction* const entry : menu->actions()) {
            fresh->addAction(entry);
        }
        fresh->openAt(window.mapToGlobal(QPoint(10, 40)), PopupMenu::By::Pointer);
        for (const Qt::Key pressed : walk.keys) {
            const bool letter = pressed >= Qt::Key_A && pressed <= Qt::Key_Z;
            QWidget* const popup = QApplication::activePopupWidget();
            ASSERT_NE(popup, nullptr);
            if (letter) {
                QTest::keyClick(popup, static_cast<char>(pressed - Qt::Key_A + 'a'));
            } else {
                QTest::keyClick(popup, pressed);
            }
        }
        EXPECT_EQ(happened, QStringList{QString::fromUtf8(walk.chosen)});
        EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(PopupMenuTest, esc_leaves_the_submenu_first_and_then_the_menu) {
    open();
    menu->setActiveAction(submenu->menuAction());
    key(Qt::Key_Right);
    ASSERT_TRUE(submenu->isVisible());
    key(Qt::Key_Escape);
    EXPECT_FALSE(submenu->isVisible());
    EXPECT_TRUE(menu->isVisible());
    key(Qt::Key_Escape);
    EXPECT_FALSE(menu->isVisible());
}

TEST_F(PopupMenuTest, the_focus_returns_to_the_widget_that_had_it) {
    open();
    key(Qt::Key_Down);
    key(Qt::Key_Escape);
    EXPECT_EQ(QApplication::focusWidget(), line);
    EXPECT_TRUE(line->hasFocus());
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("ciao"));
    EXPECT_EQ(line->text(), QStringLiteral("ciao"));
}

TEST_F(PopupMenuTest, a_tick_is_told_to_screen_readers_and_never_flips_by_itself) {
    QAction* const ticked = submenu->actions().at(0);
    QAction* const plain = submenu->actions().at(1);
    QAccessibleInterface* const tree = QAccessible::queryAccessibleInterface(submenu.data());
    EXPECT_TRUE(tree->child(0)->state().checkable);
    EXPECT_TRUE(tree->child(0)->state().checked);
    EXPECT_TRUE(tree->child(1)->state().checkable);
    EXPECT_FALSE(tree->child(1)->state().checked);
    ticked->trigger();
    plain->trigger();
    EXPECT_TRUE(ticked->isChecked());
    EXPECT_FALSE(plain->isChecked());
    EXPECT_EQ(happened.size(), 2);
}

TEST_F(PopupMenuTest, is_in_the_tree_below_its_window_while_it_is_open) {
    QAccessibleInterface* const tree = QAccessible::queryAccessibleInterface(&window);
    const int others = tree->childCount();
    open();
    ASSERT_EQ(tree->childCount(), others + 1);
    QAccessibleInterface* const found = tree->child(others);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->object(), menu);
    EXPECT_EQ(tree->indexOfChild(found), others);
    EXPECT_EQ(tree->indexOfChild(tree->child(0)), 0);
    EXPECT_EQ(tree->child(others + 1), nullptr);

    QAccessibleInterface* const entry = found->child(2);
    EXPECT_EQ(entry->text(QAccessible::Name), QStringLiteral("Categorie"));
    ASSERT_EQ(entry->childCount(), 1);
    EXPECT_EQ(entry->child(0)->object(), submenu);
    menu->close();
    EXPECT_EQ(tree->childCount(), others);
}

TEST_F(PopupMenuTest, a_screen_reader_hears_what_the_menu_is_called) {
    EXPECT_EQ(QAccessible::queryAccessibleInterface(menu.data())->text(QAccessible::Name),
              QStringLiteral("Note"));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(submenu.data())->text(QAccessible::Name),
              QStringLiteral("Categorie"));
}

TEST_F(PopupMenuTest, a_long_name_is_told_whole_and_drawn_as_far_as_there_is_room) {
    const std::string name = "Una categoria " + std::string(300, 'm') + " e la sua fine";
    PopupMenu names(QStringLiteral("Categorie"), &window);
    QAction* const entry = names.addTick(menuText(name), true, [] {});
    names.popup(QPoint(0, 0));
    EXPECT_EQ(names.actionGeometry(entry).width(), controls::kWidestEntry);
    const QImage row = names.grab(names.actionGeometry(entry)).toImage();
    for (int y = 0; y < row.height(); ++y) {
        EXPECT_EQ(row.pixelColor(row.width() - 2, y), row.pixelColor(1, y)) << y;
    }
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&names)->child(0)->text(QAccessible::Name),
              QString::fromStdString(name));
    names.hide();
}

// The leftmost column, right of the symbols, in which the entry's text is painted.
int textStart(QMenu& menu, QAction* entry) {
    const QRect row = menu.actionGeometry(entry);
    const QImage image = menu.grab().toImage();
    const QColor background = image.pixelColor(row.topLeft() + QPoint(1, row.height() / 2));
    for (int x = row.left() + controls::kEntryInset + controls::kEntrySymbol + 1; x < row.right();
         ++x) {
        for (int y = row.top() + 2; y < row.bottom() - 2; ++y) {
            if (image.pixelColor(x, y) != background) {
                return x;
            }
        }
    }
    return -1;
}

TEST_F(PopupMenuTest, names_stand_one_below_the_other_with_and_without_a_tick) {
    PopupMenu names(QStringLiteral("Categorie"), &window);
    QAction* const ticked = names.addTick(QStringLiteral("HHH"), true, [] {});
    QAction* const plain = names.addTick(QStringLiteral("HHH"), false, [] {});
    names.popup(QPoint(0, 0));
    EXPECT_GT(textStart(names, ticked), 0);
    EXPECT_EQ(textStart(names, ticked), textStart(names, plain));
    names.hide();
}

TEST_F(PopupMenuTest, an_empty_submenu_can_be_reached_and_opens_nothing) {
    PopupMenu* const empty = menu->addSubmenu(QStringLiteral("Vuoto"));
    open();
    key(Qt::Key_End);
    EXPECT_EQ(menu->activeAction(), empty->menuAction());
    key(Qt::Key_Right);
    key(Qt::Key_Return);
    EXPECT_FALSE(empty->isVisible());
    click(empty->menuAction());
    EXPECT_FALSE(empty->isVisible());
    EXPECT_TRUE(menu->isVisible());
    key(Qt::Key_Home);
    key(Qt::Key_Return);
    EXPECT_EQ(happened, QStringList{QStringLiteral("Nascondi")});
}

TEST_F(PopupMenuTest, symbols_are_tinted_anew_when_the_palette_changes) {
    const auto tint = [this](QIcon::Mode mode) {
        const QImage image = menu->actions().at(0)->icon().pixmap(QSize(64, 64), 1, mode).toImage();
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixelColor(x, y).alpha() == 255) {
                    return image.pixelColor(x, y);
                }
            }
        }
        return QColor();
    };
    open();
    for (const QColor& background : {QColor(40, 40, 44), QColor(243, 243, 246)}) {
        SCOPED_TRACE(background.name().toStdString());
        QPalette palette(background);
        palette.setColor(QPalette::Window, background);
        palette.setColor(QPalette::Highlight, QColor(0, 122, 255));
        window.setPalette(palette);
        const Appearance look(palette);
        EXPECT_EQ(tint(QIcon::Normal), look.text);
        EXPECT_EQ(tint(QIcon::Selected), look.textOnAccent);
        EXPECT_EQ(tint(QIcon::Disabled), look.disabledText);
    }
}

TEST_F(PopupMenuTest, an_open_one_follows_the_size_of_text) {
    open();
    const QSize before = menu->size();
    setTextScale(2);
    EXPECT_EQ(menu->font().pixelSize(), 2 * metrics::kBody);
    EXPECT_GT(menu->width(), before.width());
    EXPECT_GT(menu->height(), before.height());
    setTextScale(1);
    EXPECT_EQ(menu->size(), before);
}

TEST_F(PopupMenuTest, opens_below_its_control_or_above_it_where_the_screen_ends) {
    QPushButton button(QStringLiteral("Suggerimenti"), &window);
    button.show();
    const QRect screen = window.screen()->availableGeometry();
    for (const int top : {100, screen.bottom() - 40}) {
        SCOPED_TRACE(top);
        window.move(50, top);
        auto* const fresh = new PopupMenu(QStringLiteral("Suggerimenti"), &window);
        for (int i = 0; i < 5; ++i) {
            fresh->addEntry(QStringLiteral("Voce"), {}, [] {});
        }
        fresh->openAt(button, PopupMenu::By::Pointer);
        const QRect control(button.mapToGlobal(QPoint()), button.size());
        EXPECT_TRUE(screen.contains(fresh->geometry()));
        EXPECT_FALSE(fresh->geometry().intersects(control));
        EXPECT_EQ(fresh->geometry().top() > control.top(), top == 100);
        fresh->close();
    }
}

TEST_F(PopupMenuTest, five_thousand_entries_stay_on_the_screen_and_within_reach) {
    QElapsedTimer time;
    time.start();
    for (int i = 0; i < 5000; ++i) {
        submenu->addTick(QStringLiteral("Numero %1").arg(i), i % 2 == 0, chosen("Numero"));
    }
    const qint64 filled = time.restart();
    open();
    menu->setActiveAction(submenu->menuAction());
    key(Qt::Key_Right);
    ASSERT_TRUE(submenu->isVisible());
    submenu->repaint();
    std::cout << "filled in " << filled << " ms, open after " << time.elapsed() << " ms more\n";
    EXPECT_TRUE(window.screen()->availableGeometry().contains(submenu->geometry()));
    key(Qt::Key_End);
    QAction* const last = submenu->actions().constLast();
    EXPECT_EQ(submenu->activeAction(), last);
    EXPECT_TRUE(submenu->rect().contains(submenu->actionGeometry(last).center()));
    QTest::keyClicks(submenu, QStringLiteral("2500"));
    EXPECT_EQ(submenu->activeAction()->text(), QStringLiteral("Numero 2500"));
    EXPECT_TRUE(
        submenu->rect().contains(submenu->actionGeometry(submenu->activeAction()).center()));
}

}  // namespace
}  // namespace tavo
