#include <QScreen>
#include <QWindow>
#include <QtTest/QTest>

#include <gtest/gtest.h>

#include "platform/Compositing.h"
#include "ui/LauncherWindow.h"

namespace tavo {
namespace {

class FixedCompositing final : public Compositing {
public:
    bool active() const override { return on; }
    bool on = true;
};

class LauncherWindowTest : public testing::Test {
protected:
    LauncherWindowTest() {
        window.setContent(new QWidget(&window));
        window.onClose = [this] { ++closed; };
        window.onQuit = [this] { ++quit; };
    }

    void present() {
        window.present();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    }

    FixedCompositing compositing;
    LauncherWindow window{compositing};
    int closed = 0;
    int quit = 0;
};

TEST_F(LauncherWindowTest, has_no_frame_and_is_called_tavo_launcher) {
    EXPECT_TRUE(window.windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Tavo Launcher"));
}

TEST_F(LauncherWindowTest, cannot_be_made_smaller_than_760_by_520) {
    present();
    window.resize(10, 10);
    EXPECT_EQ(window.size(), QSize(760, 520));
    EXPECT_EQ(window.minimumSize(), QSize(760, 520));
}

TEST_F(LauncherWindowTest, is_first_shown_in_the_middle_of_the_screen_within_it) {
    present();
    const QRect area = window.screen()->availableGeometry();
    EXPECT_EQ(window.width(), qMax(760, qMin(980, area.width())));
    EXPECT_EQ(window.height(), qMax(520, qMin(640, area.height())));
    EXPECT_LE((window.geometry().center() - area.center()).manhattanLength(), 2);
}

TEST_F(LauncherWindowTest, stays_where_it_was_put_when_it_is_shown_again) {
    present();
    window.setGeometry(3, 4, 800, 600);
    window.hide();
    present();
    EXPECT_EQ(window.geometry(), QRect(3, 4, 800, 600));
}

TEST_F(LauncherWindowTest, its_corners_are_cut_only_where_nothing_blends_them) {
    present();
    EXPECT_TRUE(window.mask().isEmpty());
    compositing.on = false;
    window.resize(900, 600);
    EXPECT_FALSE(window.mask().contains(QPoint(1, 1)));
    EXPECT_TRUE(window.mask().contains(QPoint(450, 300)));
    EXPECT_TRUE(window.mask().contains(QPoint(450, 599)));
}

TEST_F(LauncherWindowTest, is_blended_where_the_desktop_blends_when_it_is_shown) {
    present();
    EXPECT_TRUE(window.windowHandle()->requestedFormat().hasAlpha());
    compositing.on = false;
    window.hide();
    present();
    EXPECT_FALSE(window.windowHandle()->requestedFormat().hasAlpha());
    EXPECT_FALSE(window.mask().contains(QPoint(1, 1)));
    compositing.on = true;
    window.hide();
    present();
    EXPECT_TRUE(window.windowHandle()->requestedFormat().hasAlpha());
    EXPECT_TRUE(window.mask().isEmpty());
}

TEST_F(LauncherWindowTest, closing_is_asked_of_whoever_owns_it) {
    present();
    window.close();
    EXPECT_TRUE(window.isVisible());
    QTest::keyClick(&window, Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(closed, 2);
    QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(quit, 1);
}

}  // namespace
}  // namespace tavo
