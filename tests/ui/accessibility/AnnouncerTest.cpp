#include <QApplication>
#include <QLabel>
#include <QtTest/QTest>

#include <gtest/gtest.h>

#include "tests/ui/ActiveWindow.h"
#include "tests/ui/ScreenReader.h"
#include "ui/accessibility/AccessibleItems.h"
#include "ui/accessibility/Announcer.h"

namespace tavo {
namespace {

const QString kOne = QStringLiteral("Uno");
const QString kTwo = QStringLiteral("Due");

class AnnouncerTest : public testing::Test {
protected:
    AnnouncerTest() {
        setAccessibleRole(*statusBar, QAccessible::StatusBar);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        activate(window);
    }

    static bool hear(const QStringList& texts) {
        return QTest::qWaitFor([&] { return ScreenReader::heard() == texts; });
    }
    static std::function<QString()> text(const QString& what) {
        return [what] { return what; };
    }

    QWidget window;
    QWidget* statusBar = new QWidget(&window);
    QLabel* label = new QLabel(statusBar);
    Announcer announcer{*statusBar};
};

TEST_F(AnnouncerTest, of_several_texts_the_last_is_said_once) {
    const ScreenReader reader;
    announcer.say(text(kOne));
    announcer.say(text(kTwo));
    EXPECT_TRUE(hear({kTwo}));
    announcer.say(text(kTwo));
    EXPECT_TRUE(hear({kTwo, kTwo}));
}

TEST_F(AnnouncerTest, nothing_is_asked_or_said_while_no_screen_reader_listens) {
    int asked = 0;
    announcer.say([&asked] {
        ++asked;
        return kOne;
    });
    const ScreenReader reader;
    // Said after the same pause, but later: by then the first text would have been said.
    Announcer other(*statusBar);
    other.say(text(kTwo));
    EXPECT_TRUE(hear({kTwo}));
    EXPECT_EQ(asked, 0);
}

TEST_F(AnnouncerTest, nothing_is_said_of_a_window_that_the_user_has_left) {
    const ScreenReader reader;
    announcer.say(text(kOne));
    QWidget another;
    another.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&another));
    activate(another);
    QWidget* const otherBar = new QWidget(&another);
    setAccessibleRole(*otherBar, QAccessible::StatusBar);
    Announcer other(*otherBar);
    other.say(text(kTwo));
    EXPECT_TRUE(hear({kTwo}));
}

TEST_F(AnnouncerTest, any_part_of_the_window_can_speak_at_once) {
    const ScreenReader reader;
    announce(*label, kOne);
    EXPECT_EQ(ScreenReader::heard(), QStringList{kOne});
}

#if QT_VERSION < QT_VERSION_CHECK(6, 8, 0)
TEST_F(AnnouncerTest, what_was_said_last_is_the_last_thing_in_the_status_bar) {
    const ScreenReader reader;
    QAccessibleInterface* const bar = QAccessible::queryAccessibleInterface(statusBar);
    EXPECT_EQ(bar->role(), QAccessible::StatusBar);
    ASSERT_EQ(bar->childCount(), 1);
    announce(*statusBar, kOne);
    announce(*statusBar, kTwo);
    ASSERT_EQ(bar->childCount(), 2);
    QAccessibleInterface* const said = bar->child(1);
    EXPECT_EQ(said->role(), QAccessible::Notification);
    EXPECT_EQ(said->text(QAccessible::Name), kTwo);
    EXPECT_EQ(said->parent(), bar);
    EXPECT_EQ(bar->indexOfChild(said), 1);
    EXPECT_EQ(bar->child(0)->object(), label);
}
#endif

}  // namespace
}  // namespace tavo
