#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QtTest/QTest>

#include <gtest/gtest.h>

#include "tests/catalogue/ModelHarness.h"
#include "tests/fakes/FakeIconSource.h"
#include "tests/ui/ActiveWindow.h"
#include "tests/ui/MadeUpView.h"
#include "tests/ui/ScreenReader.h"
#include "ui/sidebar/SidebarList.h"

namespace tavo {
namespace {

// The content of the window, used with keys alone while a screen reader listens.
class SpokenResultsTest : public testing::Test {
protected:
    SpokenResultsTest() {
        world.install({"Note", "Posta", "Terminale"});
        view = makeMadeUpView(world, icons);
        view->resize(980, 640);
        view->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(view.get()));
        activate(*view);
    }

    static void key(Qt::Key key) {
        QWidget* const popup = QApplication::activePopupWidget();
        QTest::keyClick(popup != nullptr ? popup : QApplication::focusWidget(), key);
    }
    // Opens the menu of the tile with the keyboard and chooses the entry so many below the first.
    static void chooseFromMenu(int entry) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F10, Qt::ShiftModifier);
        ASSERT_NE(QApplication::activePopupWidget(), nullptr);
        for (; entry > 0; --entry) {
            key(Qt::Key_Down);
        }
        key(Qt::Key_Return);
    }
    void press(const QString& name) {
        for (auto* const button : view->findChildren<QAbstractButton*>()) {
            if (button->accessibleName() == name) {
                button->click();
                return;
            }
        }
        FAIL() << "no button is called " << name.toStdString();
    }
    void expectToHear(const char* text) {
        // Without a window manager no window is active when a menu has closed.
        QCoreApplication::processEvents();
        activate(*view);
        EXPECT_TRUE(QTest::qWaitFor([] { return !ScreenReader::heard().isEmpty(); })) << text;
        EXPECT_EQ(ScreenReader::heard(), QStringList{QString::fromUtf8(text)});
        ScreenReader::heard().clear();
    }

    const ScreenReader reader;
    ModelHarness world;
    FakeIconSource icons;
    std::unique_ptr<LauncherView> view;
};

TEST_F(SpokenResultsTest, after_typing_the_number_and_the_first_are_said_once) {
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("te"));
    expectToHear("2 app, la prima: Note");
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("r"));
    expectToHear("1 app: Terminale");
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("zz"));
    expectToHear("Nessuna app");
    key(Qt::Key_Escape);
    expectToHear("3 app, la prima: Note");
}

TEST_F(SpokenResultsTest, hiding_and_showing_again_are_said) {
    key(Qt::Key_Down);
    chooseFromMenu(0);
    expectToHear("Nascosta dall’elenco: Note");
    for (auto* const area : view->findChildren<QAbstractScrollArea*>()) {
        if (auto* const sidebar = dynamic_cast<SidebarList*>(area)) {
            sidebar->pressItem(3);
        }
    }
    expectToHear("1 app: Note");
    chooseFromMenu(0);
    expectToHear("Mostrata nell’elenco: Note");
}

TEST_F(SpokenResultsTest, reloading_is_said) {
    press(QStringLiteral("Aggiorna app"));
    expectToHear("Elenco aggiornato: 3 app");
}

TEST_F(SpokenResultsTest, a_category_that_an_application_comes_into_or_leaves_is_said) {
    key(Qt::Key_Down);
    for (const char* const said : {"Aggiunta a Lavoro: Note", "Rimossa da Lavoro: Note"}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F10, Qt::ShiftModifier);
        key(Qt::Key_Down);
        key(Qt::Key_Down);
        key(Qt::Key_Right);
        key(Qt::Key_Return);
        expectToHear(said);
    }
}

TEST_F(SpokenResultsTest, a_favourite_is_said_only_where_its_tile_goes_away) {
    key(Qt::Key_Down);
    chooseFromMenu(1);
    press(QStringLiteral("Aggiorna app"));
    expectToHear("Elenco aggiornato: 3 app");
    press(QStringLiteral("Suggerimenti di ricerca"));
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    expectToHear("1 app: Note");
    key(Qt::Key_Down);
    chooseFromMenu(1);
    expectToHear("Rimossa dai preferiti: Note");
}

}  // namespace
}  // namespace tavo
