#include <QApplication>
#include <QLineEdit>
#include <QTimerEvent>
#include <QtTest/QTest>

#include <gtest/gtest.h>

#include "ui/look/CursorBlinkTimeout.h"

namespace tavo {
namespace {

TEST(CursorBlinkTimeout,
     the_cursor_stops_blinking_after_its_time_and_blinks_again_with_the_next_key) {
    const int usual = QApplication::cursorFlashTime();
    QApplication::setCursorFlashTime(1000);
    {
        CursorBlinkTimeout timeout;
        QLineEdit line;
        line.show();
        QTest::keyClick(&line, Qt::Key_A);
        EXPECT_EQ(QApplication::cursorFlashTime(), 1000);
        QTimerEvent over(0);
        QCoreApplication::sendEvent(&timeout, &over);
        EXPECT_EQ(QApplication::cursorFlashTime(), 0);
        QTest::keyClick(&line, Qt::Key_B);
        EXPECT_EQ(QApplication::cursorFlashTime(), 1000);
    }
    QApplication::setCursorFlashTime(usual);
}

TEST(CursorBlinkTimeout, the_time_that_the_desktop_tells_counts_from_the_next_key_at_the_latest) {
    const int usual = QApplication::cursorFlashTime();
    {
        CursorBlinkTimeout timeout;
        QLineEdit line;
        line.show();
        timeout.setBlinkTime(std::chrono::milliseconds(700));
        EXPECT_EQ(QApplication::cursorFlashTime(), 700);
        QTimerEvent over(0);
        QCoreApplication::sendEvent(&timeout, &over);
        timeout.setBlinkTime(std::chrono::milliseconds(0));
        QTest::keyClick(&line, Qt::Key_A);
        EXPECT_EQ(QApplication::cursorFlashTime(), 0);
        timeout.setBlinkTime(std::nullopt);
        EXPECT_EQ(QApplication::cursorFlashTime(), usual);
    }
    QApplication::setCursorFlashTime(usual);
}

}  // namespace
}  // namespace tavo
