#include <QAbstractButton>
#include <QAccessible>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QtTest/QTest>

#include <gtest/gtest.h>

#include "tests/catalogue/ModelHarness.h"
#include "tests/fakes/FakeIconSource.h"
#include "tests/ui/ActiveWindow.h"
#include "tests/ui/MadeUpView.h"
#include "ui/grid/TileGrid.h"
#include "ui/look/Appearance.h"
#include "ui/look/Contrast.h"
#include "ui/look/TextSanitizer.h"
#include "ui/sidebar/SidebarList.h"
#include "ui/window/AlertSheet.h"
#include "ui/window/LauncherView.h"

namespace tavo {
namespace {

// The content of the window over a made-up model. Tests use keys and read the result from its
// widgets.
class LauncherViewTest : public testing::Test {
protected:
    LauncherView& view() {
        if (!view_) {
            view_ = makeMadeUpView(world, icons);
            view_->onClose = [this] { ++closed; };
            view_->onEscape = [this] { ++escaped; };
            view_->resize(980, 640);
            view_->show();
            EXPECT_TRUE(QTest::qWaitForWindowExposed(view_.get()));
            activate(*view_);
        }
        return *view_;
    }

    template<typename List>
    List& list() {
        for (auto* const area : view().findChildren<QAbstractScrollArea*>()) {
            if (auto* const found = dynamic_cast<List*>(area)) {
                return *found;
            }
        }
        throw std::logic_error("no such list");
    }

    // The names of the tiles in the grid after the event loop has run.
    QStringList shown() {
        QCoreApplication::processEvents();
        QStringList names;
        for (int i = 0; i < list<TileGrid>().itemCount(); ++i) {
            names << list<TileGrid>().itemName(i);
        }
        return names;
    }
    bool saysSomewhere(const QString& text) {
        QCoreApplication::processEvents();
        for (const QLabel* const label : view().findChildren<QLabel*>()) {
            if (label->text() == text && label->isVisible()) {
                return true;
            }
        }
        return false;
    }
    QWidget& focused() { return *QApplication::focusWidget(); }
    void openEditor() {
        for (auto* const button : view().findChildren<QAbstractButton*>()) {
            if (button->text() == QStringLiteral("Modifica categorie")) {
                button->click();
            }
        }
        QCoreApplication::processEvents();
    }

    ModelHarness world;
    FakeIconSource icons;
    int closed = 0;
    int escaped = 0;

private:
    std::unique_ptr<LauncherView> view_;
};

TEST_F(LauncherViewTest, typing_filters_grid_and_count) {
    world.install({"Note", "Posta", "Terminale"});
    EXPECT_EQ(view().findChild<QLineEdit*>()->placeholderText(),
              QStringLiteral("Cerca app o categoria…"));
    EXPECT_TRUE(saysSomewhere(QStringLiteral("3 app")));
    QTest::keyClicks(&focused(), QStringLiteral("te"));
    EXPECT_EQ(shown(),
              (QStringList{QStringLiteral("Apri Note"), QStringLiteral("Apri Terminale")}));
    EXPECT_TRUE(saysSomewhere(QStringLiteral("2 app")));
    QTest::keyClicks(&focused(), QStringLiteral("r"));
    EXPECT_TRUE(saysSomewhere(QStringLiteral("1 app")));
}

TEST_F(LauncherViewTest, return_opens_the_first_application_and_nothing_when_there_is_none) {
    world.install({"Note", "Posta"});
    view();
    QTest::keyClicks(&focused(), QStringLiteral("po"));
    QTest::keyClick(&focused(), Qt::Key_Return);
    ASSERT_EQ(world.workspace.openings.size(), 1U);
    EXPECT_EQ(world.workspace.openings[0].path, ModelHarness::pathOf("Posta"));
    QTest::keyClicks(&focused(), QStringLiteral("zzz"));
    QTest::keyClick(&focused(), Qt::Key_Return);
    EXPECT_EQ(world.workspace.openings.size(), 1U);
    EXPECT_TRUE(saysSomewhere(QStringLiteral("0 app")));
}

TEST_F(LauncherViewTest, down_enters_the_grid_and_typing_there_goes_on_searching) {
    world.install({"Note", "Posta"});
    view();
    QTest::keyClick(&focused(), Qt::Key_Down);
    EXPECT_EQ(&focused(), &list<TileGrid>());
    QTest::keyClick(&focused(), Qt::Key_Right);
    QTest::keyClick(&focused(), Qt::Key_Return);
    EXPECT_EQ(world.workspace.openings.at(0).path, ModelHarness::pathOf("Posta"));
    QTest::keyClick(&focused(), Qt::Key_N);
    QTest::keyClick(&focused(), Qt::Key_O);
    EXPECT_EQ(view().findChild<QLineEdit*>()->text(), QStringLiteral("no"));
    EXPECT_EQ(shown(), QStringList{QStringLiteral("Apri Note")});
}

TEST_F(LauncherViewTest, escape_clears_the_search_and_then_asks_to_go) {
    world.install({"Note", "Posta"});
    view();
    QTest::keyClicks(&focused(), QStringLiteral("po"));
    QTest::keyClick(&focused(), Qt::Key_Escape);
    EXPECT_EQ(shown().size(), 2);
    EXPECT_EQ(escaped, 0);
    QTest::keyClick(&focused(), Qt::Key_Escape);
    EXPECT_EQ(escaped, 1);
}

TEST_F(LauncherViewTest, shown_again_typing_replaces_the_search_wherever_the_keyboard_was) {
    world.install({"Note", "Posta"});
    view();
    QTest::keyClicks(&focused(), QStringLiteral("po"));
    QTest::keyClick(&focused(), Qt::Key_Down);
    ASSERT_EQ(&focused(), &list<TileGrid>());
    view().startSearchAnew();
    QTest::keyClicks(&focused(), QStringLiteral("no"));
    EXPECT_EQ(view().findChild<QLineEdit*>()->text(), QStringLiteral("no"));
    openEditor();
    view().startSearchAnew();
    EXPECT_EQ(view().findChild<QLineEdit*>()->selectedText(), QString());
    EXPECT_EQ(dynamic_cast<QLineEdit*>(&focused())->placeholderText(),
              QStringLiteral("Nuova categoria"));
}

TEST_F(LauncherViewTest, the_search_field_is_never_wider_than_900) {
    for (const int width : {760, 980, 1190, 1400, 3840}) {
        view().resize(width, 800);
        QCoreApplication::processEvents();
        const QWidget& field = *view().findChild<QLineEdit*>()->parentWidget();
        EXPECT_EQ(field.width(), std::min(900, width - 200 - 118)) << width;
        // The last button stays at the right edge.
        for (const auto* const button : view().findChildren<QAbstractButton*>()) {
            if (button->toolTip() == QStringLiteral("Aggiorna app")) {
                EXPECT_EQ(button->mapTo(&view(), button->rect().center()).x(), width - 31) << width;
            }
        }
    }
}

TEST_F(LauncherViewTest, the_close_button_is_large_enough_and_its_cross_can_be_seen) {
    for (const bool dark : {false, true}) {
        QApplication::setPalette(paletteOfLook(dark));
        QAbstractButton* close = nullptr;
        for (auto* const button : view().findChildren<QAbstractButton*>()) {
            close = button->toolTip() == QStringLiteral("Chiudi") ? button : close;
        }
        ASSERT_NE(close, nullptr);
        QCoreApplication::processEvents();
        EXPECT_GE(close->width(), 20);
        EXPECT_GE(close->height(), 20);
        const QPoint place = close->mapTo(&view(), QPoint());
        for (const QPoint& corner : {QPoint(1, 1), QPoint(18, 18)}) {
            EXPECT_EQ(view().childAt(place + corner), close);
        }
        const QImage seen = view().grab(QRect(place, close->size())).toImage();
        const QColor background = seen.pixelColor(close->width() - 3, close->height() / 2);
        for (const int along : {-2, 0, 2}) {
            const QPoint onCross(close->width() / 2 + along, close->height() / 2 + along);
            EXPECT_GE(contrast(seen.pixelColor(onCross), background), 3) << along << dark;
        }
    }
    QApplication::setPalette(QPalette());
}

TEST_F(LauncherViewTest, selecting_a_category_leaves_the_search_text) {
    world.install({"Note", "Posta"});
    world.storeFavorites({"Note"});
    view();
    QTest::keyClicks(&focused(), QStringLiteral("o"));
    list<SidebarList>().pressItem(1);
    EXPECT_EQ(shown(), QStringList{QStringLiteral("Apri Note")});
    EXPECT_EQ(view().findChild<QLineEdit*>()->text(), QStringLiteral("o"));
    EXPECT_TRUE(list<SidebarList>().itemIsSelected(1));
}

TEST_F(LauncherViewTest, a_failed_opening_is_an_alert_that_ok_clears) {
    world.install({"Note"});
    view();
    QTest::keyClick(&focused(), Qt::Key_Return);
    world.workspace.complete(0, std::nullopt, Error{"<b>Non</b> c’è"});
    world.mainQueue.run();
    EXPECT_TRUE(saysSomewhere(QStringLiteral("Impossibile aprire l’app")));
    EXPECT_TRUE(saysSomewhere(breakable(QStringLiteral("<b>Non</b> c’è"))));
    QTest::keyClick(&focused(), Qt::Key_Return);
    EXPECT_FALSE(saysSomewhere(QStringLiteral("Impossibile aprire l’app")));
    EXPECT_EQ(&focused(), view().findChild<QLineEdit*>());
    EXPECT_EQ(world.workspace.openings.size(), 1U);
}

TEST_F(LauncherViewTest, behind_the_alert_nothing_can_be_typed_or_clicked) {
    world.install({"Note"});
    view();
    QTest::keyClick(&focused(), Qt::Key_Return);
    world.workspace.complete(0, std::nullopt, Error{"x"});
    world.mainQueue.run();
    QCoreApplication::processEvents();
    QTest::keyClicks(&focused(), QStringLiteral("abc"));
    QTest::keyClick(&focused(), Qt::Key_Tab);
    QTest::keyClicks(&focused(), QStringLiteral("abc"));
    EXPECT_EQ(view().findChild<QLineEdit*>()->text(), QString());
    EXPECT_EQ(view().childAt(600, 200)->window(), &view());
    EXPECT_NE(view().childAt(600, 200), list<TileGrid>().viewport());
    QTest::keyClick(&focused(), Qt::Key_Escape);
    EXPECT_EQ(escaped, 0);
    EXPECT_FALSE(saysSomewhere(QStringLiteral("x")));
}

TEST_F(LauncherViewTest, a_newer_error_replaces_the_text_of_the_older) {
    world.install({"Note"});
    view();
    QTest::keyClick(&focused(), Qt::Key_Return);
    QTest::keyClick(&focused(), Qt::Key_Return);
    world.workspace.complete(0, std::nullopt, Error{"primo"});
    world.mainQueue.run();
    EXPECT_TRUE(saysSomewhere(QStringLiteral("primo")));
    world.workspace.complete(1, std::nullopt, Error{"secondo"});
    world.mainQueue.run();
    EXPECT_TRUE(saysSomewhere(QStringLiteral("secondo")));
    EXPECT_FALSE(saysSomewhere(QStringLiteral("primo")));
}

TEST_F(LauncherViewTest, an_error_while_hidden_waits_until_the_window_is_shown) {
    world.install({"Note"});
    view();
    QTest::keyClick(&focused(), Qt::Key_Return);
    view().hide();
    world.workspace.complete(0, std::nullopt, Error{"tardi"});
    world.mainQueue.run();
    EXPECT_FALSE(saysSomewhere(QStringLiteral("tardi")));
    view().show();
    EXPECT_TRUE(saysSomewhere(QStringLiteral("tardi")));
}

TEST_F(LauncherViewTest, edited_categories_and_keywords_show_once_saved) {
    world.install({"Note", "Posta"});
    view();
    openEditor();
    QTest::keyClicks(&focused(), QStringLiteral("Scrittura"));
    QTest::keyClick(&focused(), Qt::Key_Return);
    QTest::keyClick(&focused(), Qt::Key_Backtab);
    QTest::keyClick(&focused(), Qt::Key_Backtab);
    QTest::keyClicks(&focused(), QStringLiteral("note"));
    EXPECT_EQ(list<SidebarList>().itemCount(), 7);
    QTest::keyClick(&focused(), Qt::Key_Return);
    EXPECT_EQ(shown().size(), 2);
    ASSERT_EQ(list<SidebarList>().itemCount(), 8);
    EXPECT_EQ(list<SidebarList>().itemName(7), QStringLiteral("Scrittura"));
    list<SidebarList>().pressItem(7);
    EXPECT_EQ(shown(), QStringList{QStringLiteral("Apri Note")});
    EXPECT_EQ(&focused(), view().findChild<QLineEdit*>());
}

TEST_F(LauncherViewTest, a_dismissed_editor_leaves_keywords_and_categories_as_they_were) {
    world.store({{"work", "Lavoro"}});
    view();
    openEditor();
    QTest::keyClicks(&focused(), QStringLiteral("Scrittura"));
    QTest::keyClick(&focused(), Qt::Key_Return);
    QTest::keyClick(&focused(), Qt::Key_Escape);
    QCoreApplication::processEvents();
    EXPECT_EQ(list<SidebarList>().itemCount(), 5);
    EXPECT_EQ(escaped, 0);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    openEditor();
    EXPECT_EQ(view().findChildren<QLineEdit*>().size(), 1 + 2 + 1);
}

TEST_F(LauncherViewTest, keywords_typed_and_cancelled_change_no_rule) {
    world.store({{"work", "Lavoro"}});
    world.storeRules({{"work", "note"}});
    world.install({"Note", "Posta"});
    view();
    const std::size_t writes = world.defaults.writes.size();
    openEditor();
    QTest::keyClick(&focused(), Qt::Key_Backtab);
    QTest::keyClick(&focused(), Qt::Key_Backtab);
    QTest::keyClicks(&focused(), QStringLiteral(", posta"));
    for (auto* const button : view().findChildren<QAbstractButton*>()) {
        if (button->text() == QStringLiteral("Annulla")) {
            button->click();
        }
    }
    list<SidebarList>().pressItem(4);
    EXPECT_EQ(shown(), QStringList{QStringLiteral("Apri Note")});
    EXPECT_EQ(world.defaults.writes.size(), writes);
}

TEST_F(LauncherViewTest, behind_the_editor_everything_is_disabled) {
    world.install({"Note"});
    view();
    openEditor();
    EXPECT_FALSE(list<TileGrid>().isEnabled());
    EXPECT_FALSE(list<SidebarList>().isEnabled());
    QTest::keyClick(&focused(), Qt::Key_Escape);
    EXPECT_TRUE(list<TileGrid>().isEnabled());
    EXPECT_TRUE(list<SidebarList>().isEnabled());
}

TEST_F(LauncherViewTest, an_error_while_categories_are_edited_waits_until_that_is_done) {
    world.install({"Note"});
    view();
    QTest::keyClick(&focused(), Qt::Key_Return);
    openEditor();
    world.workspace.complete(0, std::nullopt, Error{"primo"});
    world.mainQueue.run();
    EXPECT_FALSE(saysSomewhere(QStringLiteral("primo")));
    QTest::keyClick(&focused(), Qt::Key_Escape);
    EXPECT_TRUE(saysSomewhere(QStringLiteral("primo")));
    QTest::keyClick(&focused(), Qt::Key_Escape);
    EXPECT_FALSE(saysSomewhere(QStringLiteral("primo")));
    EXPECT_EQ(&focused(), view().findChild<QLineEdit*>());
    EXPECT_TRUE(list<TileGrid>().isEnabled());
}

TEST_F(LauncherViewTest, a_return_held_down_presses_a_button_once) {
    world.install({"Note"});
    view();
    const int before = world.applications.calls();
    for (auto* const button : view().findChildren<QAbstractButton*>()) {
        if (button->toolTip() == QStringLiteral("Aggiorna app")) {
            QTest::keyClick(button, Qt::Key_Return);
            QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QString(), true);
            QCoreApplication::sendEvent(button, &repeated);
        }
    }
    EXPECT_EQ(world.applications.calls(), before + 1);
}

TEST_F(LauncherViewTest, a_grid_that_runs_empty_hands_the_keyboard_to_the_search) {
    world.install({"Note"});
    world.storeHidden({"Note"});
    view();
    list<SidebarList>().pressItem(3);
    ASSERT_EQ(shown().size(), 1);
    QTest::keyClick(&focused(), Qt::Key_Down);
    ASSERT_EQ(&focused(), &list<TileGrid>());
    list<SidebarList>().pressItem(0);
    EXPECT_TRUE(shown().isEmpty());
    EXPECT_EQ(&focused(), view().findChild<QLineEdit*>());
}

TEST_F(LauncherViewTest, a_return_held_down_opens_nothing_more) {
    world.install({"Note"});
    view();
    QTest::keyClick(&focused(), Qt::Key_Return);
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"),
                       true);
    QCoreApplication::sendEvent(&focused(), &repeated);
    EXPECT_EQ(world.workspace.openings.size(), 1U);
}

TEST_F(LauncherViewTest, text_put_in_by_a_screen_reader_is_searched_for) {
    world.install({"Note", "Posta"});
    QAccessible::queryAccessibleInterface(view().findChild<QLineEdit*>())
        ->setText(QAccessible::Value, QStringLiteral("pos"));
    EXPECT_EQ(shown(), QStringList{QStringLiteral("Apri Posta")});
}

TEST_F(LauncherViewTest, however_many_changes_one_turn_redraws_once) {
    world.install({"Note"});
    view();
    QCoreApplication::processEvents();
    const std::size_t before = world.applications.calls();
    for (int i = 0; i < 5; ++i) {
        QTest::keyClick(&focused(), Qt::Key_Space);
    }
    EXPECT_EQ(shown().size(), 1);
    EXPECT_EQ(world.applications.calls(), static_cast<int>(before));
}

TEST_F(LauncherViewTest, the_suggestions_end_with_a_divider_when_there_are_no_categories) {
    world.store({});
    for (auto* const button : view().findChildren<QAbstractButton*>()) {
        if (button->toolTip() == QStringLiteral("Suggerimenti di ricerca")) {
            button->click();
        }
    }
    auto* const menu = view().findChild<QMenu*>();
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->actions().size(), 3);
    EXPECT_EQ(menu->actions()[0]->text(), QStringLiteral("Recenti"));
    EXPECT_EQ(menu->actions()[1]->text(), QStringLiteral("Preferite"));
    EXPECT_TRUE(menu->actions()[2]->isSeparator());
    EXPECT_GT(menu->actionGeometry(menu->actions()[2]).height(), 0);
    menu->actions()[0]->trigger();
    QCoreApplication::processEvents();
    EXPECT_TRUE(list<SidebarList>().itemIsSelected(2));
    EXPECT_EQ(view().findChild<QMenu*>(), nullptr);
}

TEST_F(LauncherViewTest, what_an_input_method_composes_over_the_grid_is_searched_for) {
    world.install({"Àncora", "Note"});
    view();
    QTest::keyClick(&focused(), Qt::Key_Down);
    ASSERT_EQ(&focused(), &list<TileGrid>());
    QInputMethodEvent composed;
    composed.setCommitString(QStringLiteral("à"));
    QCoreApplication::sendEvent(&focused(), &composed);
    EXPECT_EQ(shown(), QStringList{QStringLiteral("Apri Àncora")});
    EXPECT_EQ(&focused(), view().findChild<QLineEdit*>());
}

TEST_F(LauncherViewTest, a_reset_of_the_input_method_moves_no_focus) {
    world.install({"Note"});
    view();
    QTest::keyClick(&focused(), Qt::Key_Down);
    ASSERT_EQ(&focused(), &list<TileGrid>());
    QInputMethodEvent reset;
    QCoreApplication::sendEvent(&focused(), &reset);
    EXPECT_EQ(&focused(), &list<TileGrid>());
}

TEST_F(LauncherViewTest, hostile_names_are_shown_as_they_are_spelt) {
    world.install({"<img src=x>", std::string(250, 'W'), "a\x01"});
    EXPECT_TRUE(shown().contains(QStringLiteral("Apri <img src=x>")));
    EXPECT_TRUE(shown().contains(QStringLiteral("Apri a␁")));
}

// The lightness, of 255, at the left edge of the view, at its middle, on such a background.
int edgeLightness(QWidget& view, QColor background) {
    QImage image(view.size() * view.devicePixelRatioF(), QImage::Format_RGB32);
    image.setDevicePixelRatio(view.devicePixelRatioF());
    image.fill(background);
    view.render(&image, {}, {}, QWidget::RenderFlags());
    return image.pixelColor(0, image.height() / 2).lightness();
}

TEST_F(LauncherViewTest, a_hairline_keeps_the_window_apart_from_a_desktop_like_itself) {
    for (const bool dark : {false, true}) {
        QApplication::setPalette(paletteOfLook(dark));
        view();
        QCoreApplication::processEvents();
        const Appearance look(view().palette());
        ASSERT_EQ(look.dark, dark);
        const QColor inside = over(look.recess, look.material);
        const int hairline = edgeLightness(view(), inside);
        EXPECT_GE(dark ? hairline - inside.lightness() : inside.lightness() - hairline, 30);
    }
    QApplication::setPalette(QPalette());
}

TEST_F(LauncherViewTest, a_maximised_window_has_no_hairline_and_no_round_corners) {
    QApplication::setPalette(paletteOfLook(false));
    const Appearance look(view().palette());
    view().showMaximized();
    ASSERT_TRUE(QTest::qWaitFor([this] { return view().isMaximized(); }));
    EXPECT_NEAR(edgeLightness(view(), Qt::red), over(look.recess, look.material).lightness(), 1);
    QImage image(view().size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    view().render(&image, {}, {}, QWidget::DrawChildren);
    EXPECT_EQ(image.pixelColor(0, 0), image.pixelColor(40, 0));
    QApplication::setPalette(QPalette());
}

}  // namespace
}  // namespace tavo
