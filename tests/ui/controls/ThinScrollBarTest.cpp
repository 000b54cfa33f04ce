#include <QAbstractEventDispatcher>
#include <QAbstractScrollArea>
#include <QAccessible>
#include <QApplication>
#include <QStyle>
#include <QWheelEvent>
#include <QtTest/QTest>

#include <gtest/gtest.h>

#include "ui/controls/ThinScrollBar.h"
#include "ui/look/Motion.h"

namespace tavo {
namespace {

// A minimal scroll area of the kind that the scroll bar is for.
class Area final : public QAbstractScrollArea {
public:
    Area() {
        setFrameShape(QFrame::NoFrame);
        resize(300, 400);
        bar.place();
        verticalScrollBar()->setPageStep(400);
        verticalScrollBar()->setSingleStep(45);
        verticalScrollBar()->setRange(0, 3600);
    }

    int clicks = 0;
    ThinScrollBar bar{*this};

protected:
    void wheelEvent(QWheelEvent* event) override {
        if (!bar.scrollByPixels(*event)) {
            QAbstractScrollArea::wheelEvent(event);
        }
    }
    void mousePressEvent(QMouseEvent*) override { ++clicks; }
};

class ThinScrollBarTest : public testing::Test {
protected:
    void SetUp() override {
        setReducedMotion(true);
        QCursor::setPos(700, 700);  // far from the area
        area.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&area));
    }
    void TearDown() override { setReducedMotion(false); }

    int value() const { return area.verticalScrollBar()->value(); }
    QPoint onBar(int y) const { return {area.bar.width() / 2, y}; }
    void movePointer(QPoint point) {
        QMouseEvent move(QEvent::MouseMove, point, area.viewport()->mapToGlobal(QPointF(point)),
                         Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(area.viewport(), &move);
    }
    void leave() {
        QEvent event(QEvent::Leave);
        QApplication::sendEvent(area.viewport(), &event);
    }
    void wheel(QPoint pixels, QPoint angle) {
        const QPointF point(100, 100);
        QWheelEvent event(point, area.viewport()->mapToGlobal(point), pixels, angle, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(area.viewport(), &event);
    }
    // Whether the bar fades. Ends the delay before that at once, by sending its timer events.
    bool fadesAway() {
        for (const auto& timer :
             QAbstractEventDispatcher::instance()->registeredTimers(&area.bar)) {
            QTimerEvent over(timer.timerId);
            QApplication::sendEvent(&area.bar, &over);
        }
        return QTest::qWaitFor([&] { return area.bar.isHidden(); }, 10'000);
    }

    Area area;
};

TEST_F(ThinScrollBarTest, at_rest_it_is_not_there_and_clicks_go_to_what_lies_below) {
    EXPECT_TRUE(area.bar.isHidden());
    EXPECT_EQ(area.childAt(area.bar.geometry().center()), area.viewport());
    QTest::mouseClick(area.viewport(), Qt::LeftButton, {}, area.bar.geometry().center());
    EXPECT_EQ(area.clicks, 1);
    EXPECT_EQ(value(), 0);
}

TEST_F(ThinScrollBarTest, it_is_seen_while_the_area_scrolls_and_then_goes_by_itself) {
    area.verticalScrollBar()->setValue(100);
    EXPECT_TRUE(area.bar.isVisible());
    EXPECT_EQ(area.bar.value(), 100);
    EXPECT_TRUE(fadesAway());
}

TEST_F(ThinScrollBarTest, it_is_seen_while_the_pointer_is_near) {
    movePointer({100, 100});
    EXPECT_TRUE(area.bar.isHidden());
    movePointer({290, 100});
    EXPECT_TRUE(area.bar.isVisible());
    leave();
    EXPECT_TRUE(fadesAway());
}

TEST_F(ThinScrollBarTest, it_fades_in_and_out_within_120_milliseconds_and_takes_clicks_at_once) {
    setReducedMotion(false);
    area.verticalScrollBar()->setValue(100);
    EXPECT_TRUE(area.bar.isVisible());
    EXPECT_LE(motionDuration(area.bar), 120);
    const QImage faint = area.bar.grab().toImage();
    EXPECT_TRUE(QTest::qWaitFor([&] { return area.bar.grab().toImage() != faint; }, 10'000));
    QTest::mouseClick(&area.bar, Qt::LeftButton, {}, onBar(395));
    EXPECT_EQ(value(), 3600);
    EXPECT_TRUE(fadesAway());
}

TEST_F(ThinScrollBarTest, one_that_is_kept_stays_while_there_is_more_than_is_in_view) {
    area.bar.keepVisible();
    EXPECT_TRUE(area.bar.isVisible());
    EXPECT_TRUE(QAbstractEventDispatcher::instance()->registeredTimers(&area.bar).isEmpty());
    area.verticalScrollBar()->setRange(0, 0);
    EXPECT_TRUE(area.bar.isHidden());
    area.verticalScrollBar()->setRange(0, 100);
    EXPECT_TRUE(area.bar.isVisible());
    movePointer({290, 100});
    leave();
    EXPECT_TRUE(QAbstractEventDispatcher::instance()->registeredTimers(&area.bar).isEmpty());
    EXPECT_TRUE(area.bar.isVisible());
}

TEST_F(ThinScrollBarTest, with_nothing_to_scroll_it_never_shows) {
    area.verticalScrollBar()->setValue(100);
    area.verticalScrollBar()->setRange(0, 0);
    EXPECT_TRUE(area.bar.isHidden());
    movePointer({290, 100});
    EXPECT_TRUE(area.bar.isHidden());
}

TEST_F(ThinScrollBarTest, the_thumb_is_dragged_from_end_to_end) {
    movePointer({290, 5});
    QTest::mousePress(&area.bar, Qt::LeftButton, {}, onBar(10));
    EXPECT_EQ(value(), 0);
    QTest::mouseMove(&area.bar, onBar(200));
    EXPECT_GT(value(), 1500);
    EXPECT_LT(value(), 2300);
    QTest::mouseMove(&area.bar, onBar(5000));
    EXPECT_EQ(value(), 3600);
    QTest::mouseMove(&area.bar, onBar(10));
    EXPECT_EQ(value(), 0);
    QTest::mouseRelease(&area.bar, Qt::LeftButton, {}, onBar(10));
    QTest::mouseMove(&area.bar, onBar(200));
    EXPECT_EQ(value(), 0);
}

TEST_F(ThinScrollBarTest, beside_the_thumb_the_thumb_comes_to_the_pointer) {
    movePointer({290, 5});
    QTest::mouseClick(&area.bar, Qt::LeftButton, {}, onBar(200));
    EXPECT_NEAR(value(), 1800, 60);
}

TEST_F(ThinScrollBarTest, it_leaves_the_windows_edge_to_resizing) {
    EXPECT_EQ(area.bar.geometry().right() + 1, area.width() - 6);
}

TEST_F(ThinScrollBarTest, a_touchpad_scrolls_by_pixels_and_a_wheel_by_three_lines) {
    wheel({0, -7}, {0, -14});
    EXPECT_EQ(value(), 7);
    wheel({0, 2}, {0, 4});
    EXPECT_EQ(value(), 5);
    wheel({}, {0, -120});
    EXPECT_EQ(value(), 5 + 3 * 45);
    // A high-resolution wheel, which here has turned by an eighth of a notch.
    wheel({}, {0, -15});
    EXPECT_NEAR(value(), 5 + 3 * 45 + 3 * 45 / 8, 1);
}

TEST_F(ThinScrollBarTest, once_hidden_it_runs_no_timer) {
    area.verticalScrollBar()->setValue(100);
    ASSERT_TRUE(fadesAway());
    struct Timers final : QObject {
        int fired = 0;
        bool eventFilter(QObject*, QEvent* event) override {
            fired += event->type() == QEvent::Timer ? 1 : 0;
            return false;
        }
    } timers;
    QApplication::instance()->installEventFilter(&timers);
    QTest::qWait(300);
    EXPECT_EQ(timers.fired, 0);
}

TEST_F(ThinScrollBarTest, it_looks_the_same_behind_a_sheet) {
    area.verticalScrollBar()->setValue(100);
    const QImage before = area.bar.grab().toImage();
    area.setEnabled(false);
    EXPECT_EQ(area.bar.grab().toImage(), before);
}

TEST_F(ThinScrollBarTest, has_a_name_for_a_screen_reader) {
    QAccessibleInterface* const bar = QAccessible::queryAccessibleInterface(&area.bar);
    EXPECT_EQ(bar->text(QAccessible::Name), QStringLiteral("Barra di scorrimento"));
    EXPECT_EQ(bar->role(), QAccessible::ScrollBar);
}

}  // namespace
}  // namespace tavo
